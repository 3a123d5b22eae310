// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "tools/bus/Options.h"

namespace Bus {

// Until when a command works: the count and the duration of its options, counted from construction,
// and the stop signals. One thread.
class Limit {
  public:
    using Clock = std::chrono::steady_clock;

    explicit Limit(const Options& options);

    /// Counts one more sample.
    void count() { ++m_seen; }
    uint64_t seen() const { return m_seen; }

    bool reached() const;
    /// The end of the duration; the end of time without one.
    Clock::time_point deadline() const { return m_deadline; }
    /// What to wait for at most: the time left, but not so long that a signal would go unseen.
    Clock::duration patience() const;

    /// Whether enough was seen. A signal asks for no more than there was.
    ExitStatus status() const;

  private:
    const uint64_t m_wanted;
    const Clock::time_point m_deadline;
    uint64_t m_seen = 0;
};

}  // namespace Bus

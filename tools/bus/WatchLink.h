// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>

#include "tools/bus/Bus.h"
#include "tools/bus/RateMeter.h"

namespace Bus {

// How one topic is doing: how often samples come, how old the last one is, and what is missing in
// the sequence numbers of their headers. One thread.
class WatchLink {
  public:
    using Clock = RateMeter::Clock;

    void add(const Sample& sample);

    uint64_t samples() const { return m_count; }
    /// Of the last samples; empty before the second.
    std::optional<double> hz(Clock::time_point now) const;
    /// Seconds since the last sample; empty before the first.
    std::optional<double> age(Clock::time_point now) const;
    /// Whether the last sample is older than three of the usual periods. What comes only now and
    /// then is never stale.
    bool isStale(Clock::time_point now) const;
    /// Messages that the sequence numbers say are missing.
    uint64_t missing() const { return m_missing; }
    /// The participant that published the last sample.
    const std::string& publisher() const { return m_publisher; }
    size_t publishers() const { return m_lastNumbers.size(); }

  private:
    /// Seconds; empty for a topic without one.
    std::optional<double> period() const;

    std::string m_typeName;
    std::string m_publisher;
    std::deque<Clock::time_point> m_arrivals;  // the last ones
    std::map<Directory::Guid, int64_t> m_lastNumbers;
    uint64_t m_count = 0;
    uint64_t m_missing = 0;
};

}  // namespace Bus

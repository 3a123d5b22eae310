// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>

#include "tools/common/StopSignals.h"

namespace GssipTool {

// Until when a command works: its duration, counted from construction, and the stop signals. One
// thread.
class Until {
  public:
    using Clock = std::chrono::steady_clock;

    /// Zero or less: without limit.
    explicit Until(double seconds) : m_deadline(deadlineAfter(seconds)) {}

    bool reached() const { return Tools::StopSignals::arrived() || Clock::now() >= m_deadline; }

    /// What to wait for at most: the time left, but not so long that a signal would go unseen.
    std::chrono::milliseconds patience() const {
        using std::chrono::milliseconds;
        constexpr milliseconds kLongest(50);
        const auto left = std::chrono::ceil<milliseconds>(m_deadline - Clock::now());
        return std::clamp(left, milliseconds::zero(), kLongest);
    }

  private:
    static Clock::time_point deadlineAfter(double seconds) {
        constexpr double kLongest = 1e9;  // a lifetime, and far from the end of the clock
        if (!(seconds > 0) || seconds > kLongest) {
            return Clock::time_point::max();
        }
        return Clock::now() +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    const Clock::time_point m_deadline;
};

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

namespace Utility {

/// The time point `timeout` from now on the monotonic clock; the clock's last one where the sum
/// would leave its range, so that a very long time-out is no past one.
inline std::chrono::steady_clock::time_point deadlineAfter(std::chrono::nanoseconds timeout) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point now = Clock::now();
    return timeout > Clock::time_point::max() - now ? Clock::time_point::max() : now + timeout;
}

}  // namespace Utility

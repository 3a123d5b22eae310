// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/UtcText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace Bus {

std::string utcText(int64_t unixNs) {
    constexpr int64_t kNsPerSec = 1'000'000'000;
    // Before 1970 too the fraction counts forward.
    const int64_t fraction = (unixNs % kNsPerSec + kNsPerSec) % kNsPerSec;
    const auto seconds = static_cast<std::time_t>((unixNs - fraction) / kNsPerSec);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z", fmt::gmtime(seconds), fraction / 1000);
}

}  // namespace Bus

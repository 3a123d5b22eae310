// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Settled.h"

#include <algorithm>

#include "tools/bus/Limit.h"
#include "utility/Sleep.h"

namespace Bus {
namespace {

// Whoever else is there is heard of within this time.
constexpr std::chrono::milliseconds kQuiet{300};

}  // namespace

bool waitUntilSettled(const Directory& directory, const std::function<bool()>& condition,
                      double seconds) {
    using Clock = Limit::Clock;
    Options patience;
    patience.durationSeconds = seconds;
    const Limit limit(patience);
    uint64_t changes = 0;
    Clock::time_point lastChange = Clock::now();
    do {
        const bool holds = condition();
        const Clock::time_point now = Clock::now();
        if (directory.changes() != changes) {
            changes = directory.changes();
            lastChange = now;
        }
        if (holds && now - lastChange >= kQuiet) {
            return true;
        }
        Utility::sleepFor(std::min<Clock::duration>(limit.patience(), kQuiet / 10));
    } while (!limit.reached());
    return false;
}

}  // namespace Bus

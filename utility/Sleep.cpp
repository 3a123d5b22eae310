// SPDX-License-Identifier: Apache-2.0
#include "utility/Sleep.h"

#include <time.h>

#include <cerrno>

namespace Utility {

void sleepFor(std::chrono::nanoseconds duration) {
    if (duration <= std::chrono::nanoseconds::zero()) {
        return;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    timespec remaining{};
    remaining.tv_sec = static_cast<time_t>(seconds.count());
    remaining.tv_nsec = static_cast<long>((duration - seconds).count());
    while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {}
}

}  // namespace Utility

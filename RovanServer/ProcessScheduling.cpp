// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ProcessScheduling.h"

#include <sched.h>

#include <algorithm>
#include <string>

#include "utility/Console.h"

bool okSetRealtimeProcessPriority(int priority) {
    const int lowest = sched_get_priority_min(SCHED_FIFO);
    const int highest = sched_get_priority_max(SCHED_FIFO);
    sched_param parameters{};
    parameters.sched_priority =
        std::clamp(priority, lowest < 0 ? 1 : lowest, highest < 0 ? 99 : highest);
    return sched_setscheduler(0, SCHED_FIFO, &parameters) == 0;
}

bool okSetCpuAffinity(int cpu) {
    // The comparison is unsigned: a number below 1 is as bad as one that is too large.
    const unsigned bit = static_cast<unsigned>(cpu) - 1u;
    cpu_set_t mask;
    CPU_ZERO(&mask);
    if (bit < CPU_SETSIZE) {
        CPU_SET(bit, &mask);
    }
    const bool ok = sched_setaffinity(0, sizeof(mask), &mask) == 0;

    cpu_set_t inForce;
    CPU_ZERO(&inForce);
    if (sched_getaffinity(0, sizeof(inForce), &inForce) == 0) {
        for (unsigned i = 0; i < CPU_SETSIZE; ++i) {
            if (CPU_ISSET(i, &inForce)) {
                Console::line("Has CPU Affinity for CPU" + std::to_string(i + 1));
            }
        }
    }
    return ok;
}

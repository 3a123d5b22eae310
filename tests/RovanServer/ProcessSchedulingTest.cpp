// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ProcessScheduling.h"

#include <gtest/gtest.h>
#include <sched.h>

#include "tests/RovanServer/SchedulingRestored.h"

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

/// Whether this process may ask for a real-time priority at all.
bool mayBeRealtime() {
    sched_param parameters{};
    parameters.sched_priority = 1;
    return sched_setscheduler(0, SCHED_FIFO, &parameters) == 0;
}

int priorityInForce() {
    sched_param parameters{};
    return sched_getparam(0, &parameters) == 0 ? parameters.sched_priority : -1;
}

}  // namespace

TEST(ProcessScheduling, ClampsThePriorityIntoTheRangeOfTheClass) {
    const SchedulingRestored restored;
    const bool allowed = mayBeRealtime();
    EXPECT_EQ(okSetRealtimeProcessPriority(500), allowed);
    EXPECT_EQ(priorityInForce(), allowed ? sched_get_priority_max(SCHED_FIFO) : 0);
    EXPECT_EQ(okSetRealtimeProcessPriority(-3), allowed);
    EXPECT_EQ(priorityInForce(), allowed ? sched_get_priority_min(SCHED_FIFO) : 0);
    EXPECT_EQ(sched_getscheduler(0), allowed ? SCHED_FIFO : SCHED_OTHER);
}

TEST(ProcessScheduling, CountsProcessorsFromOne) {
    const SchedulingRestored restored;
    CaptureStdout();
    EXPECT_TRUE(okSetCpuAffinity(1));
    EXPECT_EQ(GetCapturedStdout(), "Has CPU Affinity for CPU1\n");
    cpu_set_t mask;
    ASSERT_EQ(sched_getaffinity(0, sizeof(mask), &mask), 0);
    EXPECT_TRUE(CPU_ISSET(0, &mask));
    EXPECT_EQ(CPU_COUNT(&mask), 1);
}

TEST(ProcessScheduling, ANumberWithoutAProcessorIsRefusedAndChangesNothing) {
    cpu_set_t before;
    ASSERT_EQ(sched_getaffinity(0, sizeof(before), &before), 0);
    for (const int cpu : {0, -1, 1025, 100000}) {
        CaptureStdout();
        EXPECT_FALSE(okSetCpuAffinity(cpu)) << cpu;
        // What is in force is printed all the same.
        EXPECT_NE(GetCapturedStdout(), "") << cpu;
    }
    cpu_set_t after;
    ASSERT_EQ(sched_getaffinity(0, sizeof(after), &after), 0);
    EXPECT_TRUE(CPU_EQUAL(&before, &after));
}

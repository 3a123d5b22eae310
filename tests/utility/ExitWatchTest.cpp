// SPDX-License-Identifier: Apache-2.0
#include "utility/ExitWatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

TEST(ExitWatch, GivesUpOnceWhenTheLimitHasPassed) {
    std::promise<steady_clock::time_point> called;
    const auto start = steady_clock::now();
    {
        // A second call would throw on its thread and end the process.
        const Utility::ExitWatch watch(50ms, [&] { called.set_value(steady_clock::now()); });
        auto when = called.get_future();
        ASSERT_EQ(when.wait_for(30s), std::future_status::ready);
        EXPECT_GE(when.get() - start, 50ms);
    }
}

TEST(ExitWatch, DoesNotGiveUpWhatEndsInTime) {
    bool called = false;
    const auto start = steady_clock::now();
    {
        const Utility::ExitWatch watch(1h, [&] { called = true; });
    }
    EXPECT_FALSE(called);
    EXPECT_LT(steady_clock::now() - start, 30s);
}

TEST(ExitWatchDeathTest, CanEndAProcessThatWaitsForEver) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const Utility::ExitWatch watch(10ms, [] { std::_Exit(0); });
            std::promise<void>().get_future().wait();
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace

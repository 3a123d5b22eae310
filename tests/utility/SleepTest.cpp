// SPDX-License-Identifier: Apache-2.0
#include "utility/Sleep.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::atomic<int> signalsSeen{0};

TEST(Sleep, LastsTheWholeTime) {
    const auto before = Clock::now();
    Utility::sleepFor(20ms);
    EXPECT_GE(Clock::now() - before, 20ms);
}

TEST(Sleep, OfMoreThanASecondLastsTheWholeTime) {
    const auto before = Clock::now();
    Utility::sleepFor(1010ms);
    EXPECT_GE(Clock::now() - before, 1010ms);
}

TEST(Sleep, OfNoTimeReturnsAtOnce) {
    const auto before = Clock::now();
    Utility::sleepFor(0ns);
    Utility::sleepFor(-1h);
    EXPECT_LT(Clock::now() - before, 1s);
}

TEST(Sleep, GoesOnAfterASignal) {
    struct sigaction action {};
    action.sa_handler = [](int) { ++signalsSeen; };  // without SA_RESTART: the sleep is cut short
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, nullptr));

    std::atomic<bool> done{false};
    Clock::duration slept{};
    std::thread sleeper([&] {
        const auto before = Clock::now();
        Utility::sleepFor(200ms);
        slept = Clock::now() - before;
        done = true;
    });
    while (!done) {
        pthread_kill(sleeper.native_handle(), SIGUSR1);
        std::this_thread::sleep_for(5ms);
    }
    sleeper.join();

    EXPECT_GT(signalsSeen, 1);
    EXPECT_GE(slept, 200ms);
}

}  // namespace

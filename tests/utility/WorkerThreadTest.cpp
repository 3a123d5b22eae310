// SPDX-License-Identifier: Apache-2.0
#include "utility/WorkerThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

namespace {

using namespace std::chrono_literals;
using Utility::WorkerThread;

/// Runs until the worker is asked to stop.
std::function<void()> untilStopped(WorkerThread& worker) {
    return [&worker] {
        while (!worker.stopRequested()) {
            std::this_thread::sleep_for(1ms);
        }
    };
}

TEST(WorkerThread, RunsItsFunctionOnAnotherThread) {
    WorkerThread worker;
    std::thread::id id;
    worker.start([&id] { id = std::this_thread::get_id(); });
    worker.join();
    EXPECT_NE(std::thread::id(), id);
    EXPECT_NE(std::this_thread::get_id(), id);
}

TEST(WorkerThread, StopAsksTheFunctionToReturnAndJoins) {
    WorkerThread worker;
    worker.start(untilStopped(worker));
    EXPECT_TRUE(worker.joinable());
    EXPECT_FALSE(worker.stopRequested());
    EXPECT_FALSE(worker.finished());

    worker.stop();

    EXPECT_FALSE(worker.joinable());
    EXPECT_TRUE(worker.stopRequested());
    EXPECT_TRUE(worker.finished());
}

TEST(WorkerThread, StopWithoutAThreadDoesNothing) {
    WorkerThread worker;
    worker.stop();
    EXPECT_FALSE(worker.stopRequested());
    worker.start([] {});
    worker.stop();
    worker.stop();
    EXPECT_FALSE(worker.joinable());
}

TEST(WorkerThread, AFunctionThatReturnedLeavesTheThreadJoinable) {
    WorkerThread worker;
    EXPECT_FALSE(worker.finished());
    worker.start([] {});
    const auto limit = std::chrono::steady_clock::now() + 30s;
    while (!worker.finished() && std::chrono::steady_clock::now() < limit) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(worker.finished());
    EXPECT_TRUE(worker.joinable());
    worker.join();
    EXPECT_FALSE(worker.joinable());
}

TEST(WorkerThread, AStopRequestFromAnotherThreadIsSeen) {
    WorkerThread worker;
    worker.start(untilStopped(worker));
    std::thread([&worker] { worker.requestStop(); }).join();
    worker.join();
    EXPECT_TRUE(worker.finished());
}

TEST(WorkerThread, CanBeStartedAgainAfterAJoin) {
    WorkerThread worker;
    worker.start(untilStopped(worker));
    worker.stop();

    std::promise<bool> stopSeenAtStart;
    worker.start([&] {
        stopSeenAtStart.set_value(worker.stopRequested());
        untilStopped(worker)();
    });
    EXPECT_FALSE(stopSeenAtStart.get_future().get()) << "the earlier stop request is forgotten";
    EXPECT_FALSE(worker.finished());
    worker.stop();
}

TEST(WorkerThreadDeathTest, StartingOverAJoinableThreadEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            WorkerThread worker;
            worker.start([] {});
            worker.start([] {});
        },
        "");
}

TEST(WorkerThreadDeathTest, DestroyingAJoinableThreadEndsTheProcess) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH({ WorkerThread().start([] {}); }, "");
}

}  // namespace

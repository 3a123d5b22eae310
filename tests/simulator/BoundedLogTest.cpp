// SPDX-License-Identifier: Apache-2.0
#include "simulator/BoundedLog.h"

#include <gmock/gmock.h>

#include <thread>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::BoundedLog;
using SimulatorTest::kSoon;
using std::chrono::milliseconds;

TEST(BoundedLog, KeepsTheLatestEntriesAndCountsThemAll) {
    BoundedLog<int> log(3);
    for (int i = 0; i < 5; ++i) {
        log.add(i);
    }
    EXPECT_THAT(log.entries(), testing::ElementsAre(2, 3, 4));
    EXPECT_EQ(log.count(), 5u);
}

TEST(BoundedLog, FindsTheFirstMatchFromANumberOn) {
    BoundedLog<int> log(10);
    for (const int entry : {1, 2, 1, 4}) {
        log.add(entry);
    }
    EXPECT_EQ(log.waitFor([](int entry) { return entry > 1; }, kSoon), 2);
    EXPECT_EQ(log.waitFor([](int entry) { return entry > 1; }, kSoon, 2), 4);
}

TEST(BoundedLog, GivesUpWhenNothingMatchesInTime) {
    BoundedLog<int> log(10);
    log.add(1);
    EXPECT_EQ(log.waitFor([](int entry) { return entry > 1; }, milliseconds(10)), std::nullopt);
}

TEST(BoundedLog, WakesAWaiterWhenTheEntryComes) {
    BoundedLog<int> log(2);
    std::thread writer([&] {
        for (int i = 0; i <= 1000; ++i) {
            log.add(i == 1000 ? -1 : i);
        }
    });
    EXPECT_EQ(log.waitFor([](int entry) { return entry < 0; }, kSoon), -1);
    writer.join();
}

}  // namespace

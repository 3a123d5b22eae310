// SPDX-License-Identifier: Apache-2.0
#include "utility/SyncQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Utility::SyncQueue;

constexpr auto kNoWait = 0ns;
constexpr auto kLong = 30s;  // reached only by a test that fails

std::vector<int> drain(SyncQueue<int>& queue) {
    std::vector<int> items;
    for (int item = 0; queue.pop_front(item, kNoWait);) {
        items.push_back(item);
    }
    return items;
}

TEST(SyncQueue, GivesItemsInTheOrderOfTheirArrival) {
    SyncQueue<int> queue(3);
    const int one = 1;
    EXPECT_TRUE(queue.push_back(one));
    EXPECT_TRUE(queue.push_back(2));
    EXPECT_TRUE(queue.emplace_back(3));
    EXPECT_THAT(drain(queue), testing::ElementsAre(1, 2, 3));
}

TEST(SyncQueue, DropsTheNewItemWhenFullAndTakesItemsAgainAfterAPop) {
    SyncQueue<int> queue(2);
    queue.push_back(1);
    queue.push_back(2);
    const auto before = Clock::now();
    EXPECT_FALSE(queue.push_back(3));
    EXPECT_FALSE(queue.emplace_back(4));
    EXPECT_LT(Clock::now() - before, 1s) << "a full queue makes no producer wait";

    int item = 0;
    ASSERT_TRUE(queue.pop_front(item, kNoWait));
    EXPECT_TRUE(queue.push_back(5));
    EXPECT_THAT(drain(queue), testing::ElementsAre(2, 5));
}

TEST(SyncQueue, OfCapacityZeroTakesNothing) {
    SyncQueue<int> queue(0);
    EXPECT_FALSE(queue.push_back(1));
    EXPECT_TRUE(drain(queue).empty());
}

TEST(SyncQueue, EmplaceConstructsFromItsArgumentsInPlace) {
    SyncQueue<std::pair<std::string, std::unique_ptr<int>>> queue(1);
    EXPECT_TRUE(queue.emplace_back("text", std::make_unique<int>(7)));
    std::pair<std::string, std::unique_ptr<int>> item;
    ASSERT_TRUE(queue.pop_front(item, kNoWait));
    EXPECT_EQ("text", item.first);
    EXPECT_EQ(7, *item.second);
}

TEST(SyncQueue, MovesItemsInAndOut) {
    SyncQueue<std::unique_ptr<int>> queue(1);
    auto pushed = std::make_unique<int>(7);
    const int* const address = pushed.get();
    EXPECT_TRUE(queue.push_back(std::move(pushed)));
    std::unique_ptr<int> popped;
    ASSERT_TRUE(queue.pop_front(popped, kNoWait));
    EXPECT_EQ(address, popped.get());
}

TEST(SyncQueue, AMovedItemThatIsDroppedStaysWithItsOwner) {
    SyncQueue<std::unique_ptr<int>> queue(0);
    auto item = std::make_unique<int>(7);
    EXPECT_FALSE(queue.push_back(std::move(item)));
    EXPECT_NE(nullptr, item);
}

TEST(SyncQueue, APopThatTimesOutWaitsItsTimeAndLeavesTheItemAlone) {
    SyncQueue<int> queue(1);
    int item = 42;
    const auto before = Clock::now();
    EXPECT_FALSE(queue.pop_front(item, 20ms));
    EXPECT_GE(Clock::now() - before, 20ms);
    EXPECT_EQ(42, item);
}

TEST(SyncQueue, ATimeoutOfZeroOrLessDoesNotWait) {
    SyncQueue<int> queue(1);
    int item = 42;
    const auto before = Clock::now();
    EXPECT_FALSE(queue.pop_front(item, kNoWait));
    EXPECT_FALSE(queue.pop_front(item, -kLong));
    EXPECT_LT(Clock::now() - before, kLong / 2);
    queue.push_back(1);
    EXPECT_TRUE(queue.pop_front(item, -kLong));
}

TEST(SyncQueue, APushWakesAWaiter) {
    SyncQueue<int> queue(1);
    std::thread producer([&] { queue.push_back(7); });
    int item = 0;
    EXPECT_TRUE(queue.pop_front(item, kLong));
    EXPECT_EQ(7, item);
    producer.join();
}

TEST(SyncQueue, TheLongestTimeoutWaitsForAnItem) {
    SyncQueue<int> queue(1);
    std::thread producer([&] {
        std::this_thread::sleep_for(20ms);
        queue.push_back(7);
    });
    int item = 0;
    EXPECT_TRUE(queue.pop_front(item, std::chrono::nanoseconds::max()));
    EXPECT_EQ(7, item);
    producer.join();
}

TEST(SyncQueue, ClearDestroysAllItems) {
    SyncQueue<std::shared_ptr<int>> queue(2);
    const auto item = std::make_shared<int>(7);
    queue.push_back(item);
    queue.push_back(item);
    queue.clear();
    EXPECT_EQ(1, item.use_count());
    std::shared_ptr<int> popped;
    EXPECT_FALSE(queue.pop_front(popped, kNoWait));
    EXPECT_TRUE(queue.push_back(item)) << "there is room again";
}

TEST(SyncQueue, KeepsNoReferenceToAnItemThatWasPopped) {
    SyncQueue<std::shared_ptr<int>> queue(1);
    auto item = std::make_shared<int>(7);
    queue.push_back(item);
    std::shared_ptr<int> popped;
    ASSERT_TRUE(queue.pop_front(popped, kNoWait));
    EXPECT_EQ(2, item.use_count());
}

TEST(SyncQueue, SeveralProducersAndConsumersLoseAndDoubleNothing) {
    constexpr int kProducers = 3;
    constexpr int kEach = 2000;
    SyncQueue<int> queue(16);
    std::atomic<int> received{0};
    std::atomic<long long> sum{0};

    std::vector<std::thread> threads;
    for (int p = 0; p < kProducers; ++p) {
        threads.emplace_back([&queue, p] {
            for (int i = 0; i < kEach; ++i) {
                while (!queue.push_back(p * kEach + i)) {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (int c = 0; c < 2; ++c) {
        threads.emplace_back([&] {
            for (int item = 0; received < kProducers * kEach;) {
                if (queue.pop_front(item, 10ms)) {
                    sum += item;
                    ++received;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    constexpr long long kCount = kProducers * kEach;
    EXPECT_EQ(kCount, received);
    EXPECT_EQ(kCount * (kCount - 1) / 2, sum);
}

}  // namespace

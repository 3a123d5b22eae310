// SPDX-License-Identifier: Apache-2.0
#include "ASPN/EventQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using ASPN2::EventQueue;
using testing::ElementsAre;
using Clock = std::chrono::steady_clock;

constexpr int kConfigType = 2;
constexpr auto kNever = 24h;  // a repeat period that no test reaches
constexpr auto kLong = 30s;   // a time-out that only a failing test reaches

/// What comes out without waiting, as "<type>:<text>".
std::vector<std::string> drain(EventQueue& queue) {
    std::vector<std::string> events;
    int type = 0;
    for (std::string text; queue.pop_front(type, text, 0ns);) {
        events.push_back(std::to_string(type) + ':' + text);
    }
    return events;
}

std::string popOne(EventQueue& queue, std::chrono::nanoseconds timeout = 0ns) {
    int type = 0;
    std::string text;
    return queue.pop_front(type, text, timeout) ? std::to_string(type) + ':' + text : "(nothing)";
}

TEST(EventQueue, GivesEventsInTheOrderOfTheirArrival) {
    EventQueue queue(10, kConfigType, kNever);
    EXPECT_TRUE(queue.push_back(3, "a"));
    queue.push_back_config("b");
    EXPECT_TRUE(queue.push_back(4, "c"));
    EXPECT_THAT(drain(queue), ElementsAre("3:a", "2:b", "4:c"));
}

TEST(EventQueue, RefusesTheEleventhEventButNoConfigurationEvent) {
    EventQueue queue(10, kConfigType, kNever);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(queue.push_back(2, std::to_string(i)));
    }
    EXPECT_FALSE(queue.push_back(2, "eleventh"));
    queue.push_back_config("config");
    EXPECT_EQ(11u, queue.size());
    EXPECT_FALSE(queue.push_back(2, "twelfth"));
    EXPECT_THAT(drain(queue), ElementsAre("2:0", "2:1", "2:2", "2:3", "2:4", "2:5", "2:6", "2:7",
                                          "2:8", "2:9", "2:config"));
}

TEST(EventQueue, DoesNotCountRepeatsForTheLimit) {
    EventQueue queue(1, kConfigType, kNever);
    queue.push_back_config("a");
    queue.push_back_config("b");
    EXPECT_FALSE(queue.push_back(3, "c")) << "configuration events that wait do count";
    drain(queue);
    EXPECT_TRUE(queue.push_back(3, "c"));
}

TEST(EventQueue, APopThatFindsNothingLeavesTypeAndTextAlone) {
    EventQueue queue(10, kConfigType, kNever);
    int type = 42;
    std::string text = "untouched";
    EXPECT_FALSE(queue.pop_front(type, text, 0ns));
    EXPECT_EQ(42, type);
    EXPECT_EQ("untouched", text);
}

TEST(EventQueue, APopThatTimesOutHasWaitedItsTime) {
    EventQueue queue(10, kConfigType, kNever);
    const auto before = Clock::now();
    EXPECT_EQ("(nothing)", popOne(queue, 20ms));
    EXPECT_GE(Clock::now() - before, 20ms);
}

TEST(EventQueue, APushOfEitherKindWakesTheConsumer) {
    EventQueue queue(10, kConfigType, kNever);
    std::thread producer([&queue] { queue.push_back(4, "a"); });
    EXPECT_EQ("4:a", popOne(queue, kLong));
    producer.join();
    producer = std::thread([&queue] { queue.push_back_config("b"); });
    EXPECT_EQ("2:b", popOne(queue, std::chrono::nanoseconds::max()));
    producer.join();
}

TEST(EventQueue, AnEventOfTheConfigurationTypeDoesNotRepeat) {
    EventQueue queue(10, kConfigType, 0ns);
    queue.push_back(kConfigType, "a");
    EXPECT_EQ("2:a", popOne(queue));
    EXPECT_EQ(0u, queue.size());
    EXPECT_EQ("(nothing)", popOne(queue));
}

TEST(EventQueue, AConfigurationEventComesBackOncePerPeriod) {
    constexpr auto kPeriod = 40ms;
    EventQueue queue(10, kConfigType, kPeriod);
    queue.push_back_config("config");
    auto beforePop = Clock::now();
    ASSERT_EQ("2:config", popOne(queue));
    for (int cycle = 0; cycle < 3; ++cycle) {
        EXPECT_EQ(1u, queue.size()) << "it waits for its repeat";
        const auto handedOut = beforePop;
        std::string event;
        do {
            beforePop = Clock::now();
            event = popOne(queue, 1ms);
        } while (event == "(nothing)" && beforePop - handedOut < kLong);
        EXPECT_EQ("2:config", event);
        EXPECT_GE(Clock::now() - handedOut, kPeriod);
    }
}

TEST(EventQueue, ThePeriodBeginsWithThePopNotWithThePush) {
    constexpr auto kPeriod = 300ms;
    EventQueue queue(10, kConfigType, kPeriod);
    queue.push_back_config("config");
    std::this_thread::sleep_for(kPeriod);
    ASSERT_EQ("2:config", popOne(queue));
    EXPECT_EQ("(nothing)", popOne(queue)) << "only just handed out";
}

TEST(EventQueue, ARepeatThatFallsDueDuringAPopAppearsAtTheNext) {
    constexpr auto kPeriod = 300ms;
    EventQueue queue(10, kConfigType, kPeriod);
    queue.push_back_config("config");
    ASSERT_EQ("2:config", popOne(queue));
    EXPECT_EQ("(nothing)", popOne(queue, kPeriod + 50ms));
    EXPECT_EQ("2:config", popOne(queue));
}

TEST(EventQueue, DueRepeatsGoBehindWaitingEventsAndOverTheLimit) {
    EventQueue queue(2, kConfigType, 0ns);  // due again at the next pop
    queue.push_back_config("config");
    EXPECT_EQ("2:config", popOne(queue));
    queue.push_back(3, "x");
    queue.push_back(3, "y");
    EXPECT_EQ("3:x", popOne(queue));
    EXPECT_FALSE(queue.push_back(3, "z")) << "the repeat has come in as the third";
    EXPECT_EQ("3:y", popOne(queue));
    EXPECT_EQ("2:config", popOne(queue));
}

TEST(EventQueue, RepeatsThatFellDueTogetherComeInTheirOldOrder) {
    EventQueue queue(10, kConfigType, 50ms);
    queue.push_back_config("a");
    queue.push_back_config("b");
    EXPECT_EQ("2:a", popOne(queue));
    EXPECT_EQ("2:b", popOne(queue));
    std::this_thread::sleep_for(60ms);
    EXPECT_EQ("2:a", popOne(queue));
    EXPECT_EQ("2:b", popOne(queue));
}

TEST(EventQueue, TheHandleIsTheHashOfTheText) {
    EventQueue queue(10, kConfigType, kNever);
    EXPECT_EQ(static_cast<uint32_t>(std::hash<std::string>{}("config")),
              queue.push_back_config("config"));
    EXPECT_NE(queue.push_back_config("a"), queue.push_back_config("b"));
}

TEST(EventQueue, ReplacesAConfigurationEventThatWaits) {
    EventQueue queue(10, kConfigType, kNever);
    const uint32_t old = queue.push_back_config("old");
    queue.push_back(3, "x");
    const uint32_t replaced = queue.push_back_config("new", old);
    EXPECT_EQ(static_cast<uint32_t>(std::hash<std::string>{}("new")), replaced);
    EXPECT_THAT(drain(queue), ElementsAre("3:x", "2:new"));
}

TEST(EventQueue, ReplacesAConfigurationEventBetweenItsRepeats) {
    EventQueue queue(10, kConfigType, 5ms);
    const uint32_t old = queue.push_back_config("old");
    ASSERT_EQ("2:old", popOne(queue));
    queue.push_back_config("new", old);
    EXPECT_EQ(1u, queue.size());
    EXPECT_EQ("2:new", popOne(queue));
    std::this_thread::sleep_for(10ms);
    EXPECT_EQ("2:new", popOne(queue));
    EXPECT_EQ(1u, queue.size());
}

TEST(EventQueue, AnUnknownHandleReplacesNothing) {
    EventQueue queue(10, kConfigType, kNever);
    const uint32_t known = queue.push_back_config("a");
    queue.push_back_config("b", known + 1);
    EXPECT_THAT(drain(queue), ElementsAre("2:a", "2:b"));
}

TEST(EventQueue, HandleZeroDoesNotReachOneShotEvents) {
    EventQueue queue(10, kConfigType, kNever);
    queue.push_back(kConfigType, "a");
    queue.push_back_config("b", 0);
    EXPECT_THAT(drain(queue), ElementsAre("2:a", "2:b"));
}

TEST(EventQueue, TheSameTextTwiceHasOneHandleAndAReplaceRemovesOne) {
    EventQueue queue(10, kConfigType, kNever);
    const uint32_t first = queue.push_back_config("same");
    EXPECT_EQ(first, queue.push_back_config("same"));
    queue.push_back_config("new", first);
    EXPECT_THAT(drain(queue), ElementsAre("2:same", "2:new"));
}

TEST(EventQueue, OfTwoWithOneHandleAReplaceRemovesTheOneThatWaitsAndTheOneThatRepeats) {
    EventQueue queue(10, kConfigType, kNever);
    const uint32_t handle = queue.push_back_config("same");
    ASSERT_EQ("2:same", popOne(queue));
    queue.push_back_config("same");
    ASSERT_EQ(2u, queue.size());
    queue.push_back_config("new", handle);
    EXPECT_EQ(1u, queue.size());
    EXPECT_THAT(drain(queue), ElementsAre("2:new"));
}

TEST(EventQueue, SizeCountsAConfigurationEventOnceWhereverItIs) {
    EventQueue queue(10, kConfigType, kNever);
    EXPECT_EQ(0u, queue.size());
    queue.push_back_config("config");
    queue.push_back(3, "event");
    EXPECT_EQ(2u, queue.size());
    popOne(queue);
    EXPECT_EQ(2u, queue.size());
    popOne(queue);
    EXPECT_EQ(1u, queue.size());
}

TEST(EventQueue, ProducersOnSeveralThreadsLoseNothingThatWasAccepted) {
    EventQueue queue(10, kConfigType, kNever);
    std::atomic<int> accepted{0};
    std::atomic<int> running{3};
    std::vector<std::thread> producers;
    for (int p = 0; p < 3; ++p) {
        producers.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                accepted += queue.push_back(3, "event") ? 1 : 0;
                if (i % 100 == 0) {
                    queue.push_back_config("config");
                }
            }
            --running;
        });
    }
    int events = 0;
    int configs = 0;
    while (running > 0 || queue.size() > static_cast<std::size_t>(configs)) {
        const std::string event = popOne(queue, 1ms);
        events += event == "3:event" ? 1 : 0;
        configs += event == "2:config" ? 1 : 0;
    }
    for (std::thread& producer : producers) {
        producer.join();
    }
    EXPECT_EQ(accepted, events);
    EXPECT_EQ(15, configs);
}

}  // namespace

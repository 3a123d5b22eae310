// SPDX-License-Identifier: Apache-2.0
#include "simulator/LedgerMatch.h"

#include <gmock/gmock.h>

#include "simulator/LedgerKeys.h"
#include "simulator/ReceiverMessages.h"

namespace {

using namespace Simulator;
using testing::ElementsAre;
using testing::IsEmpty;

LedgerTime at(int seconds) {
    return LedgerTime(std::chrono::seconds(seconds));
}

// Frames at these seconds; a negative one is not due. Keyed ones say which they are.
std::vector<LedgerFrame> frames(const std::vector<int>& seconds, bool keyed) {
    std::vector<LedgerFrame> result;
    for (const int second : seconds) {
        const int time = second < 0 ? -second : second;
        result.push_back(
            {at(time), keyed ? Words{static_cast<std::uint16_t>(time)} : Words(), second > 0});
    }
    return result;
}

// Samples of the frames at these seconds, half a second later.
std::vector<LedgerSample> samples(const std::vector<int>& seconds, bool keyed) {
    std::vector<LedgerSample> result;
    for (const int second : seconds) {
        result.push_back({at(second) + std::chrono::milliseconds(500),
                          keyed ? Words{static_cast<std::uint16_t>(second)} : Words(),
                          static_cast<std::int64_t>(result.size())});
    }
    return result;
}

class LedgerMatch : public testing::TestWithParam<bool> {
  protected:
    TopicBalance matched(const std::vector<int>& said, const std::vector<int>& heard) {
        return match("T", frames(said, GetParam()), samples(heard, GetParam()));
    }
};

TEST_P(LedgerMatch, BalancesWhenEachFrameHasItsSample) {
    const TopicBalance balance = matched({1, 2, 3}, {1, 2, 3});
    EXPECT_TRUE(balance.balances());
    EXPECT_EQ(balance.due, 3u);
    EXPECT_EQ(balance.samples, 3u);
    EXPECT_TRUE(matched({}, {}).balances());
}

TEST_P(LedgerMatch, NamesTheFrameThatIsMissing) {
    EXPECT_THAT(matched({1, 2, 3, 4}, {1, 2, 4}).missing, ElementsAre(at(3)));
    EXPECT_THAT(matched({1, 2, 3, 4}, {2, 3, 4}).missing, ElementsAre(at(1)));
    EXPECT_THAT(matched({1, 2, 3, 4}, {1, 2, 3}).missing, ElementsAre(at(4)));
    EXPECT_THAT(matched({1, 2}, {}).missing, ElementsAre(at(1), at(2)));
    EXPECT_FALSE(matched({1, 2}, {}).balances());
}

TEST_P(LedgerMatch, CountsASampleWithoutAFrame) {
    EXPECT_EQ(matched({1, 2}, {1, 2, 2}).surplus.size(), 1u);
    EXPECT_THAT(matched({1, 2}, {1, 2, 2}).missing, IsEmpty());
    EXPECT_EQ(matched({}, {1}).surplus.size(), 1u);
    EXPECT_FALSE(matched({}, {1}).balances());
}

TEST_P(LedgerMatch, EarlyFramesMayComeOutOrNot) {
    const TopicBalance none = matched({-1, -2, 3, 4}, {3, 4});
    EXPECT_TRUE(none.balances());
    EXPECT_EQ(none.early, 2u);
    EXPECT_EQ(none.earlyOut, 0u);
    const TopicBalance one = matched({-1, -2, 3, 4}, {2, 3, 4});
    EXPECT_TRUE(one.balances());
    EXPECT_EQ(one.earlyOut, 1u);
    EXPECT_EQ(matched({-1, -2, 3, 4}, {2, 4}).missing.size(), GetParam() ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(KeyedOrNot, LedgerMatch, testing::Bool());

TEST(LedgerMatchWithKeys, OneLostAndAnotherTwiceIsNoBalance) {
    const TopicBalance balance = match("T", frames({1, 2, 3}, true), samples({1, 1, 3}, true));
    EXPECT_THAT(balance.missing, ElementsAre(at(2)));
    EXPECT_THAT(balance.surplus, ElementsAre(at(1) + std::chrono::milliseconds(500)));
}

TEST(LedgerMatchWithKeys, AnEarlyFrameThatSaysTheSameTakesNobodysSample) {
    std::vector<LedgerFrame> said = frames({-1, 2, 3}, true);
    said[1].key = said[0].key;
    EXPECT_TRUE(match("T", said, samples({1, 3}, true)).balances());
}

TEST(LedgerMatchWithKeys, CountsTheNumbersThatNeverCame) {
    std::vector<LedgerSample> heard = samples({1, 3}, true);
    heard[0].number = 7;
    heard[1].number = 10;
    EXPECT_EQ(match("T", frames({1, 2, 3}, true), heard).gaps, 2u);
}

TEST(LedgerKeys, AreTheSameOnBothSides) {
    NavigationReport navigation;
    // Exact in the receiver's formats: 5/8 and -5/4 in 40 bits, 100.5 in 24.
    navigation.latitude = 0.625;
    navigation.longitude = -1.25;
    navigation.altitude = 100.5;
    const auto frame = [&] { return makeFrame(8504, 0x8000, message8504(navigation)); };
    EXPECT_EQ(LedgerKeys::position(frame()), LedgerKeys::position(0.625, -1.25, 100.5));
    EXPECT_NE(LedgerKeys::position(frame()), LedgerKeys::position(0.625, -1.25, 100.25));
    navigation.noSolution = true;
    EXPECT_EQ(LedgerKeys::position(frame()), LedgerKeys::position(0, 0, 0));

    TimeReport time;
    time.secondOfWeek = 604'799;
    time.fractionOfSecond = 0.25;
    const Bytes frame9391 = makeFrame(9391, 0x8000, message9391(time));
    EXPECT_EQ(LedgerKeys::time(frame9391), LedgerKeys::time(604'799, 250'000'000.0));
    EXPECT_NE(LedgerKeys::time(frame9391), LedgerKeys::time(604'798, 250'000'000.0));
}

}  // namespace

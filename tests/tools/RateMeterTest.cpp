// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/RateMeter.h"

#include <gtest/gtest.h>

namespace {

using Bus::RateMeter;
using std::chrono::milliseconds;
using std::chrono::seconds;

const RateMeter::Clock::time_point kStart{seconds(1000)};

TEST(RateMeter, KnowsNothingBeforeTheFirstSample) {
    RateMeter meter(seconds(10));

    EXPECT_EQ(meter.count(), 0u);
    EXPECT_FALSE(meter.rate(kStart).has_value());
    EXPECT_FALSE(meter.age(kStart).has_value());
}

TEST(RateMeter, HasNoRateFromASingleSample) {
    RateMeter meter(seconds(10));
    meter.add(kStart);

    EXPECT_EQ(meter.count(), 1u);
    EXPECT_FALSE(meter.rate(kStart + seconds(1)).has_value());
    EXPECT_DOUBLE_EQ(*meter.age(kStart + seconds(1)), 1.0);
}

TEST(RateMeter, GivesRateAndShortestAndLongestInterval) {
    RateMeter meter(seconds(10));
    for (const int at : {0, 100, 400, 1000}) {
        meter.add(kStart + milliseconds(at));
    }

    const auto rate = meter.rate(kStart + milliseconds(1250));

    ASSERT_TRUE(rate.has_value());
    EXPECT_DOUBLE_EQ(rate->hz, 3.0);  // three intervals in one second
    EXPECT_DOUBLE_EQ(rate->minSeconds, 0.1);
    EXPECT_DOUBLE_EQ(rate->maxSeconds, 0.6);
    EXPECT_DOUBLE_EQ(*meter.age(kStart + milliseconds(1250)), 0.25);
}

TEST(RateMeter, LooksOnlyAtTheWindow) {
    RateMeter meter(seconds(2));
    meter.add(kStart);
    meter.add(kStart + milliseconds(1));
    for (const int at : {5000, 5500, 6000}) {
        meter.add(kStart + milliseconds(at));
    }

    const auto rate = meter.rate(kStart + milliseconds(6000));

    ASSERT_TRUE(rate.has_value());
    EXPECT_DOUBLE_EQ(rate->hz, 2.0);
    EXPECT_DOUBLE_EQ(rate->minSeconds, 0.5);
    EXPECT_EQ(meter.count(), 5u);
}

TEST(RateMeter, LosesTheRateOfAStreamThatHasStopped) {
    RateMeter meter(seconds(2));
    meter.add(kStart);
    meter.add(kStart + seconds(1));

    EXPECT_TRUE(meter.rate(kStart + seconds(2)).has_value());
    EXPECT_FALSE(meter.rate(kStart + seconds(4)).has_value());
    EXPECT_DOUBLE_EQ(*meter.age(kStart + seconds(4)), 3.0);
}

TEST(RateMeter, HasNoRateForSamplesOfOneInstant) {
    RateMeter meter(seconds(2));
    meter.add(kStart);
    meter.add(kStart);

    EXPECT_FALSE(meter.rate(kStart).has_value());
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "simulator/Truth.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <set>

namespace {

using Simulator::ChannelReport;
using Simulator::NavigationReport;
using Simulator::Truth;

constexpr double kTime = 2300 * 604'800.0 + 1234;
// Mean radius of the Earth: good to half a percent here.
constexpr double kRadius = 6.371e6;

TEST(Truth, MovesAsItsVelocitySays) {
    const Truth truth(1);
    for (double time = kTime; time < kTime + 700; time += 50) {
        const NavigationReport before = truth.at(time - 0.5);
        const NavigationReport now = truth.at(time);
        const NavigationReport after = truth.at(time + 0.5);
        const double north = (after.latitude - before.latitude) * kRadius;
        const double east = (after.longitude - before.longitude) * kRadius * std::cos(now.latitude);
        EXPECT_NEAR(north, now.northVelocity, 0.1);
        EXPECT_NEAR(east, now.eastVelocity, 0.1);
        EXPECT_NEAR(after.altitude - before.altitude, now.upVelocity, 1e-4);
        EXPECT_NEAR(std::hypot(now.northVelocity, now.eastVelocity), 10.0, 1e-9);
    }
}

TEST(Truth, StaysWithinAKilometreOfItsCentre) {
    const Truth truth(1);
    const double degree = std::atan(1.0) / 45.0;
    for (double time = kTime; time < kTime + 1000; time += 100) {
        const NavigationReport report = truth.at(time);
        const double north = (report.latitude - 54.0 * degree) * kRadius;
        const double east = (report.longitude - 7.5 * degree) * kRadius * std::cos(54.0 * degree);
        EXPECT_NEAR(std::hypot(north, east), 1000.0, 10.0);
        EXPECT_NEAR(report.altitude, 30.0, 5.0);
    }
}

TEST(Truth, TracksTwelveDifferentSatellitesInThirtyTwoChannels) {
    const NavigationReport report = Truth(1).at(kTime);
    std::set<unsigned> prns;
    std::set<unsigned> numbers;
    for (const ChannelReport& channel : report.channels) {
        numbers.insert(channel.channel);
        if (channel.used) {
            prns.insert(channel.prn);
            EXPECT_GE(channel.prn, 1u);
            EXPECT_LE(channel.prn, 32u);
            EXPECT_EQ(channel.tracking, 5u);
            EXPECT_GE(channel.carrierToNoise, 35u);
            EXPECT_LE(channel.carrierToNoise, 51u);
        } else {
            EXPECT_LT(channel.tracking, 3u);
        }
    }
    EXPECT_EQ(prns.size(), 12u);
    EXPECT_EQ(numbers.size(), 32u);
}

TEST(Truth, TheSeedChoosesTheSatellitesAndNothingElse) {
    const auto satellites = [](std::uint32_t seed) {
        std::set<unsigned> prns;
        for (const ChannelReport& channel : Truth(seed).at(kTime).channels) {
            prns.insert(channel.prn);
        }
        return prns;
    };
    EXPECT_EQ(satellites(5), satellites(5));
    EXPECT_NE(satellites(5), satellites(6));
    EXPECT_EQ(Truth(5).at(kTime).latitude, Truth(6).at(kTime).latitude);
}

TEST(Truth, CountsTheTimeFromTheBeginningOfTheWeek) {
    EXPECT_EQ(Truth(1).at(kTime).time, 1234.0);
}

TEST(Truth, GpsTimeIsAheadOfUtcByTheLeapSeconds) {
    const double unixTime =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_NEAR(Simulator::gpsNow(), unixTime - 315'964'800 + 18, 5.0);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "simulator/Truth.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>

namespace {

using namespace Simulator;

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
            EXPECT_GE(channel.tracking, 3u);
            EXPECT_LE(channel.tracking, 5u);
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

// Satellites.

constexpr double kLight = 299'792'458.0;

double distanceOf(const std::array<double, 3>& a, const std::array<double, 3>& b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

EarthFixed ownPosition(const Truth& truth, double time) {
    const NavigationReport report = truth.at(time);
    return earthFixed({report.latitude, report.longitude, report.altitude});
}

TEST(Truth, CorrectedPseudorangesAreTheDistancesPlusWhatTheClockIsAhead) {
    Truth truth(1);
    for (const double bias : {1.25e-7, -3e-6}) {
        truth.clockBias = bias;
        for (double time = kTime; time < kTime + 20'000; time += 1000) {
            const EarthFixed here = ownPosition(truth, time);
            for (const MeasurementReport& report : truth.measurements(time)) {
                EXPECT_NEAR(report.pseudorange - report.pseudorangeCorrection,
                            distanceOf(here, report.stopPosition) + kLight * bias, 1e-6);
            }
        }
    }
}

TEST(Truth, CorrectedDeltaRangesAreTheChangesOfTheDistances) {
    const Truth truth(1);
    for (double time = kTime; time < kTime + 20'000; time += 1000) {
        const EarthFixed before = ownPosition(truth, time - 1);
        const EarthFixed here = ownPosition(truth, time);
        for (const MeasurementReport& report : truth.measurements(time)) {
            ASSERT_EQ(report.deltaRangeInterval, 1000u);
            const double rates = report.rateCorrection + report.secondRateCorrection.value_or(0.0);
            EXPECT_NEAR(
                report.deltaRange - 1.0 * rates,
                distanceOf(here, report.stopPosition) - distanceOf(before, report.startPosition),
                1e-6);
        }
    }
}

TEST(Truth, CorrectionsGoBothWays) {
    const auto reports = Truth(1).measurements(kTime);
    const auto negative = [](const MeasurementReport& report) {
        return report.pseudorangeCorrection < -1 && report.rateCorrection < -0.01;
    };
    const auto positive = [](const MeasurementReport& report) {
        return report.pseudorangeCorrection > 1 && report.rateCorrection > 0.01;
    };
    EXPECT_TRUE(std::any_of(reports.begin(), reports.end(), negative));
    EXPECT_TRUE(std::any_of(reports.begin(), reports.end(), positive));
}

TEST(Truth, SatellitesAreWhereNavigationSatellitesAreAndAsFast) {
    for (const MeasurementReport& report : Truth(1).measurements(kTime)) {
        EXPECT_NEAR(distanceOf(report.stopPosition, {}), 26'560'000.0, 1.0);
        const double speed = distanceOf(report.startPosition, report.stopPosition);
        EXPECT_GT(speed, 100.0);
        EXPECT_LT(speed, 3874.0);  // of the whole circle of that radius in half a sidereal day
    }
}

TEST(Truth, AllThatIsSaidOfASatelliteIsOfTheSameOne) {
    Truth truth(4);
    const unsigned bad = truth.at(kTime).channels[3].prn;
    truth.unhealthy = {bad};
    const auto measurements = truth.measurements(kTime);
    const auto satellites = truth.satellites(kTime);
    const NavigationReport navigation = truth.at(kTime);
    const Place here{navigation.latitude, navigation.longitude, navigation.altitude};
    ASSERT_EQ(measurements.size(), 12u);
    for (std::size_t i = 0; i < measurements.size(); ++i) {
        const ChannelReport& channel = navigation.channels[i];
        EXPECT_EQ(measurements[i].prn, channel.prn);
        EXPECT_EQ(measurements[i].carrierToNoise, channel.carrierToNoise);
        EXPECT_EQ(measurements[i].tracking, channel.tracking);
        EXPECT_EQ(measurements[i].frequency + 1, channel.frequency);
        EXPECT_EQ(satellites[i].id, channel.prn);
        EXPECT_EQ(satellites[i].healthy, channel.prn != bad);
        EXPECT_EQ(channel.used, channel.prn != bad);
        const Direction seen = directionOf(here, measurements[i].stopPosition);
        const double degree = std::atan(1.0) / 45.0;
        EXPECT_NEAR(std::remainder(seen.azimuth / degree - satellites[i].azimuth, 360.0), 0, 0.5);
        EXPECT_NEAR(seen.elevation / degree, satellites[i].elevation, 0.5);
    }
}

TEST(Truth, SatellitesRiseAndSinkAndNeverSet) {
    const Truth truth(1);
    std::set<std::pair<unsigned, bool>> seen;
    for (double time = kTime; time < kTime + 86'164; time += 600) {
        const auto now = truth.satellites(time);
        const auto later = truth.satellites(time + 600);
        for (std::size_t i = 0; i < now.size(); ++i) {
            seen.insert({now[i].id, now[i].rising});
            EXPECT_LT(now[i].azimuth, 360u);
            EXPECT_GE(now[i].elevation, 15);
            EXPECT_LE(now[i].elevation, 90);
            // Where the one ends that the other has not begun yet, in ten minutes.
            if (later[i].elevation > now[i].elevation + 1) {
                EXPECT_TRUE(now[i].rising || later[i].rising);
            }
            if (later[i].elevation < now[i].elevation - 1) {
                EXPECT_FALSE(now[i].rising && later[i].rising);
            }
        }
    }
    EXPECT_EQ(seen.size(), 24u) << "each of the twelve both ways";
}

TEST(Truth, NoEpochHasTheTagOfTheOneBefore) {
    const Truth truth(1);
    for (const double epoch : {0.02, 0.1, 1.0}) {
        for (int i = 0; i < 1000; ++i) {
            const unsigned tag = truth.measurements(kTime + i * epoch)[0].epochTag;
            const unsigned next = truth.measurements(kTime + (i + 1) * epoch)[0].epochTag;
            ASSERT_NE(tag, next);
            ASSERT_GE(tag, 1u);
            ASSERT_LE(tag, 65'535u);
        }
    }
}

// Time.

TEST(Truth, GoesOnOverTheEndOfAWeekWithoutAJump) {
    const Truth truth(1);
    const double end = 2300 * kSecondsPerWeek;
    EXPECT_NEAR(distanceOf(ownPosition(truth, end - 0.5), ownPosition(truth, end + 0.5)), 10.0,
                0.1);
    EXPECT_EQ(truth.clock(end - 1).week, 2299u);
    EXPECT_EQ(truth.clock(end - 1).secondOfWeek, 604'799);
    EXPECT_EQ(truth.clock(end).week, 2300u);
    EXPECT_EQ(truth.clock(end).secondOfWeek, 0);
    EXPECT_EQ(truth.at(end).time, 0.0);
    EXPECT_EQ(truth.utcParameters(end).week, 2300);
}

TEST(Truth, ShowsTheTimeOfItsOwnClock) {
    Truth truth(1);
    truth.clockBias = 2e-6;
    EXPECT_EQ(truth.clock(kTime).clockBias, 200'000);
    EXPECT_EQ(truth.clock(kTime).setSecond, 1234);
    EXPECT_NEAR(truth.clock(kTime).setFraction, 2e-6, 1e-15);
    truth.clockBias = -2e-6;
    EXPECT_EQ(truth.clock(kTime).clockBias, -200'000);
    EXPECT_EQ(truth.clock(kTime).setSecond, 1233);
    EXPECT_NEAR(truth.clock(kTime).setFraction, 1.0 - 2e-6, 1e-15);
    EXPECT_EQ(truth.clock(2300 * kSecondsPerWeek).setSecond, 604'799) << "the week before";
}

TEST(Truth, AnAnnouncedLeapSecondComesAtTheEndOfItsDay) {
    Truth truth(1);
    truth.utc.leapsAfter = 19;
    truth.utc.leapWeek = 2300;
    truth.utc.leapDay = 3;
    // UTC ends that day 18 seconds after GPS time.
    const double change = 2300 * kSecondsPerWeek + 3 * 86'400 + 18;
    EXPECT_EQ(truth.utcParameters(change - 1).leapSeconds, 18);
    EXPECT_EQ(truth.utcParameters(change - 1).futureLeapSeconds, 19);
    EXPECT_EQ(truth.utcParameters(change).leapSeconds, 19);
}

// Keys.

TEST(Truth, TellsTheKeysInBothMessagesAlike) {
    Truth truth(1);
    EXPECT_TRUE(truth.keyList(kTime).keys[0].active);
    EXPECT_EQ(truth.keyState(kTime).cryptoState, 2u);
    EXPECT_EQ(truth.keyState(kTime).remainingKeyTime, truth.keyList(kTime).keys[0].remainingTime);
    truth.keys.failToErase();
    EXPECT_TRUE(truth.keyList(kTime).keys[0].active);
    EXPECT_EQ(truth.keyList(kTime).keys[0].zeroization, 2u);
    EXPECT_EQ(truth.keyState(kTime).cryptoState, 6u);
    truth.keys.erase();
    for (const KeyWord& key : truth.keyList(kTime).keys) {
        EXPECT_FALSE(key.active);
        EXPECT_EQ(key.remainingTime, 0u);
        EXPECT_EQ(key.zeroization, 1u);
    }
    EXPECT_EQ(truth.keyList(kTime).furtherPresent, 0u);
    EXPECT_EQ(truth.keyState(kTime).cryptoState, 5u);
    EXPECT_EQ(truth.keyState(kTime).remainingKeyTime, 0u);
}

}  // namespace

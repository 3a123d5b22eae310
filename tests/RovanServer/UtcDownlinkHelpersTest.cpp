// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/UtcDownlinkHelpers.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "tests/RovanServer/RovanProcessorTimeAndKeysGolden.h"

using aspn2_msgs::idl::UtcDownlink;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Utc {
    int secOfDay = -1;
    double nsec = -1.0;
    int dayOfWeek = -1;
    int week = -1;
    double offset = -1.0;
};

Utc utcOf(const UtcDownlink& parameters, int towSec, double towNsec, int week) {
    Utc utc;
    utc.offset = UtcDownlinkHelpers::ToUtcTime(parameters, towSec, towNsec, week, utc.secOfDay,
                                               utc.nsec, utc.dayOfWeek, utc.week);
    return utc;
}

UtcDownlink leapSeconds(int seconds) {
    UtcDownlink parameters;
    parameters.delta_t_ls(seconds);
    return parameters;
}

/// 18 leap seconds and that correction in seconds.
UtcDownlink correction(double a0) {
    UtcDownlink parameters = leapSeconds(18);
    parameters.a0(a0);
    return parameters;
}

void expectUtc(const Utc& got, int week, int dayOfWeek, int secOfDay, double nsec) {
    EXPECT_EQ(got.week, week);
    EXPECT_EQ(got.dayOfWeek, dayOfWeek);
    EXPECT_EQ(got.secOfDay, secOfDay);
    EXPECT_EQ(got.nsec, nsec);
}

}  // namespace

TEST(UtcDownlinkHelpers, TakesTheLeapSecondsAway) {
    const Utc utc = utcOf(leapSeconds(18), 100, 0.0, 2000);

    expectUtc(utc, 2000, 0, 82, 0.0);
    EXPECT_EQ(utc.offset, 18.0);
}

TEST(UtcDownlinkHelpers, GoesBackIntoTheWeekBefore) {
    // 5 - 18 = -13, which is 604787 in the week before: 6 * 86400 + 86387.
    expectUtc(utcOf(leapSeconds(18), 5, 0.0, 2000), 1999, 6, 86387, 0.0);
}

TEST(UtcDownlinkHelpers, GoesOnIntoTheNextWeek) {
    expectUtc(utcOf(leapSeconds(-2), 604799, 0.0, 2000), 2001, 0, 1, 0.0);
}

TEST(UtcDownlinkHelpers, IsGpsTimeWithoutParameters) {
    const Utc utc = utcOf(UtcDownlink(), 345601, 250000000.0, 2345);

    expectUtc(utc, 2345, 4, 1, 250000000.0);
    EXPECT_EQ(utc.offset, 0.0);
}

TEST(UtcDownlinkHelpers, BorrowsASecondForNegativeNanoseconds) {
    // A quarter of a second after the full second, half a second of correction.
    expectUtc(utcOf(correction(0.5), 100, 250000000.0, 2000), 2000, 0, 81, 750000000.0);
    // The borrowed second is the first of the week.
    expectUtc(utcOf(correction(0.5), 18, 250000000.0, 2000), 1999, 6, 86399, 750000000.0);
}

TEST(UtcDownlinkHelpers, CarriesASecondOfNanosecondsOver) {
    expectUtc(utcOf(correction(-0.5), 100, 750000000.0, 2000), 2000, 0, 83, 250000000.0);
    // A full second exactly leaves no nanoseconds, in either direction.
    expectUtc(utcOf(correction(-0.5), 100, 500000000.0, 2000), 2000, 0, 83, 0.0);
    const Utc back = utcOf(correction(1.0), 100, 0.0, 2000);
    expectUtc(back, 2000, 0, 81, 0.0);
    EXPECT_FALSE(std::signbit(back.nsec));
}

TEST(UtcDownlinkHelpers, LetsTheLastBitOfASecondRoundUpToIt) {
    // 1e9 - 1e-10 has no double: it is the second before, and 1e9 nanoseconds.
    expectUtc(utcOf(correction(1e-19), 100, 0.0, 2000), 2000, 0, 81, 1e9);
}

TEST(UtcDownlinkHelpers, AddsTheDriftSinceTheReferenceTime) {
    UtcDownlink parameters = leapSeconds(18);
    parameters.a1(std::ldexp(1.0, -20));
    parameters.WNt(1999);
    parameters.tot(604800 - 1024);

    // 1024 seconds before the week begins and as many after: 2048 / 2^20 = 1 / 512 s.
    const Utc utc = utcOf(parameters, 1024, 0.0, 2000);

    expectUtc(utc, 2000, 0, 1024 - 19, 1e9 - 1953125.0);
    EXPECT_EQ(utc.offset, 18.001953125);
}

TEST(UtcDownlinkHelpers, LeavesAnAnnouncedLeapSecondAlone) {
    UtcDownlink parameters = leapSeconds(18);
    parameters.delta_t_lsf(19);
    parameters.wn_lsf(2000);
    parameters.dn(1);

    // Long after the day of the change, until the receiver changes its leap seconds.
    expectUtc(utcOf(parameters, 100, 0.0, 2010), 2010, 0, 82, 0.0);
    parameters.delta_t_ls(19);
    expectUtc(utcOf(parameters, 100, 0.0, 2010), 2010, 0, 81, 0.0);
}

// By exact arithmetic. The nanoseconds of a day have doubles some 1e-7 apart; what the formula
// rounds on its way adds less than that.
TEST(UtcDownlinkHelpers, ConvertsTheGoldenTimes) {
    int cases = 0;
    for (const auto& golden : TimeAndKeysGolden::kConversions) {
        SCOPED_TRACE(cases++);
        UtcDownlink parameters = leapSeconds(golden.leapSec);
        parameters.a0(golden.a0);
        parameters.a1(golden.a1);
        parameters.tot(golden.tot);
        parameters.WNt(golden.WNt);

        const Utc utc = utcOf(parameters, golden.towSec, golden.towNsec, golden.week);

        EXPECT_EQ(utc.week, golden.utcWeek);
        EXPECT_EQ(utc.dayOfWeek, golden.dayOfWeek);
        EXPECT_EQ(utc.secOfDay, golden.secOfDay);
        EXPECT_NEAR(utc.nsec, golden.nsec, 1e-6);
        EXPECT_NEAR(utc.offset, golden.offset, std::fabs(golden.offset) * 1e-15);
    }
    EXPECT_EQ(cases, 30);
}

TEST(UtcDownlinkHelpers, ConvertsAlikeUnderBothNames) {
    for (const auto& golden : TimeAndKeysGolden::kConversions) {
        UtcDownlink parameters = leapSeconds(golden.leapSec);
        parameters.a0(golden.a0);
        parameters.a1(golden.a1);
        parameters.tot(golden.tot);
        parameters.WNt(golden.WNt);
        Utc a;
        a.offset =
            UtcDownlinkHelpers::ToUtcTimeA(parameters, golden.towSec, golden.towNsec, golden.week,
                                           a.secOfDay, a.nsec, a.dayOfWeek, a.week);

        const Utc utc = utcOf(parameters, golden.towSec, golden.towNsec, golden.week);

        expectUtc(utc, a.week, a.dayOfWeek, a.secOfDay, a.nsec);
        EXPECT_EQ(utc.offset, a.offset);
    }
}

TEST(UtcDownlinkHelpers, TakesCenturiesOfCorrectionInOneStep) {
    // 1e9 s are 1653 weeks and 265600 s; with the 18 s of leap seconds, 100 - 18 - 265600 s lie
    // 339282 s into the week before those: day 3, and 80082 s of it.
    expectUtc(utcOf(correction(1e9), 100, 0.0, 2000), 2000 - 1654, 3, 80082, 0.0);
    // 265682 s into the week after those: day 3, and 6482 s of it.
    expectUtc(utcOf(correction(-1e9), 100, 0.0, 2000), 2000 + 1653, 3, 6482, 0.0);
}

TEST(UtcDownlinkHelpers, KeepsSecondAndDayInRangeForAnyFiniteCorrection) {
    for (const double a0 : {1e12, 1e18, 1e30, 1e250, 1e290}) {
        for (const double signedA0 : {a0, -a0}) {
            const Utc utc = utcOf(correction(signedA0), 100, 0.5, 2000);

            EXPECT_GE(utc.secOfDay, 0) << signedA0;
            EXPECT_LT(utc.secOfDay, 86400) << signedA0;
            EXPECT_GE(utc.dayOfWeek, 0) << signedA0;
            EXPECT_LE(utc.dayOfWeek, 6) << signedA0;
            EXPECT_GE(utc.nsec, 0.0) << signedA0;
            EXPECT_LE(utc.nsec, 1e9) << signedA0;
            EXPECT_EQ(utc.week<2000, signedA0> 0.0) << signedA0;
        }
    }
}

TEST(UtcDownlinkHelpers, StopsTheWeekAtItsLimits) {
    EXPECT_EQ(utcOf(correction(1e30), 100, 0.0, 2000).week, INT_MIN);
    EXPECT_EQ(utcOf(correction(-1e30), 100, 0.0, 2000).week, INT_MAX);
    EXPECT_EQ(utcOf(leapSeconds(18), 5, 0.0, INT_MIN).week, INT_MIN);
    EXPECT_EQ(utcOf(leapSeconds(-18), 604799, 0.0, INT_MAX).week, INT_MAX);
}

TEST(UtcDownlinkHelpers, LeavesOutACorrectionThatIsNotFinite) {
    for (const double a0 : {kInfinity, -kInfinity, std::nan("")}) {
        const Utc utc = utcOf(correction(a0), 100, 0.0, 2000);

        EXPECT_FALSE(std::isfinite(utc.nsec)) << a0;
        EXPECT_FALSE(std::isfinite(utc.offset)) << a0;
        EXPECT_EQ(utc.secOfDay, 82) << a0;
        EXPECT_EQ(utc.dayOfWeek, 0) << a0;
        EXPECT_EQ(utc.week, 2000) << a0;
    }
    const Utc utc = utcOf(leapSeconds(18), 100, std::nan(""), 2000);
    EXPECT_TRUE(std::isnan(utc.nsec));
    EXPECT_EQ(utc.secOfDay, 82);
}

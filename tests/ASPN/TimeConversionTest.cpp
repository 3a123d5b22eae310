// SPDX-License-Identifier: Apache-2.0
#include "ASPN/TimeConversion.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "ASPN/TimeCodeHelper.h"

namespace {

using ASPN2::IdlHeader;
using PlainHeader = ASPN2::header;
using std::chrono::nanoseconds;

struct Stamp {
    int64_t sec;
    int32_t nsec;
    int32_t timeCode;
};

bool operator==(const Stamp& a, const Stamp& b) {
    return a.sec == b.sec && a.nsec == b.nsec && a.timeCode == b.timeCode;
}

std::ostream& operator<<(std::ostream& out, const Stamp& stamp) {
    return out << stamp.sec << " s " << stamp.nsec << " ns code " << stamp.timeCode;
}

Stamp tov(const IdlHeader& h) {
    return {h.timestamp_valid().sec(), h.timestamp_valid().nsec(), h.timestamp_valid().time_code()};
}

Stamp tov(const PlainHeader& h) {
    return {h.valid_sec, h.valid_nsec, h.valid_time_code};
}

Stamp toa(const IdlHeader& h) {
    return {h.timestamp_arrival().sec(), h.timestamp_arrival().nsec(),
            h.timestamp_arrival().time_code()};
}

Stamp toa(const PlainHeader& h) {
    return {h.arrival_sec, h.arrival_nsec, h.arrival_time_code};
}

// Every field different, so that a swapped pair shows.
IdlHeader distinctIdlHeader() {
    IdlHeader h;
    h.seq_num(-1);
    h.timestamp_arrival().sec(0x100000002);
    h.timestamp_arrival().nsec(3);
    h.timestamp_arrival().time_code(4);
    h.timestamp_valid().sec(-5);
    h.timestamp_valid().nsec(6);
    h.timestamp_valid().time_code(7);
    h.device_id(8);
    return h;
}

PlainHeader distinctPlainHeader() {
    PlainHeader h;
    h.seq_num = -11;
    h.arrival_sec = 0x100000012;
    h.arrival_nsec = 13;
    h.arrival_time_code = 14;
    h.valid_sec = -15;
    h.valid_nsec = 16;
    h.valid_time_code = 17;
    h.device_id = 18;
    return h;
}

constexpr Stamp kZero{0, 0, 0};

struct TickCase {
    unsigned long long ticks;
    int64_t sec;
    int32_t nsec;
};

// Worked out with unbounded integers in Python: ns = ticks * 78125 // 4608 - 8, truncated towards
// zero. From 118059162071742 on the product is reduced to a signed 64-bit number first.
constexpr TickCase kTickCases[] = {
    {0, 0, -8},
    {1, 0, 8},
    {4608, 0, 78117},
    {58982399, 0, 999999975},
    {58982400, 0, 999999992},
    {58982401, 1, 8},
    {123456789012, 2093, 112335400},
    {212366131200, 3600, 499999992},
    {118059162071741, 2001599, 834386876},
    {118059162071742, -2001599, -834386880},
    {0xFFFFFFFFFFFFFFFF, 0, -24},
};

template <typename HEADER>
class TimeConversionOfTicks : public ::testing::Test {};
using BothHeaders = ::testing::Types<IdlHeader, PlainHeader>;
TYPED_TEST_SUITE(TimeConversionOfTicks, BothHeaders);

TYPED_TEST(TimeConversionOfTicks, GiveTheTimeOfValidityAlone) {
    for (const TickCase& c : kTickCases) {
        TypeParam h{};
        ASPN2::setToV_fromFpgaTicks(c.ticks, h);
        EXPECT_EQ(tov(h), (Stamp{c.sec, c.nsec, 100})) << c.ticks;
        EXPECT_EQ(toa(h), kZero) << c.ticks;
    }
}

TYPED_TEST(TimeConversionOfTicks, GiveTheTimeOfArrivalAlone) {
    for (const TickCase& c : kTickCases) {
        TypeParam h{};
        ASPN2::setToA_fromFpgaTicks(c.ticks, h);
        EXPECT_EQ(toa(h), (Stamp{c.sec, c.nsec, 100})) << c.ticks;
        EXPECT_EQ(tov(h), kZero) << c.ticks;
    }
}

TYPED_TEST(TimeConversionOfTicks, GiveBothTimes) {
    for (const TickCase& c : kTickCases) {
        TypeParam h{};
        ASPN2::setToVandToA_fromFpgaTicks(c.ticks, h);
        EXPECT_EQ(tov(h), (Stamp{c.sec, c.nsec, 100})) << c.ticks;
        EXPECT_EQ(toa(h), (Stamp{c.sec, c.nsec, 100})) << c.ticks;
    }
}

TYPED_TEST(TimeConversionOfTicks, CarryTheTimeCodeOfTheMoment) {
    TypeParam h{};
    ASPN2::TimeCodeHelper::Instance().setSimMode();
    ASPN2::setToVandToA_fromFpgaTicks(58982401, h);
    ASPN2::TimeCodeHelper::Instance().setLiveMode();
    ASPN2::setToA_fromFpgaTicks(58982401, h);

    EXPECT_EQ(tov(h), (Stamp{1, 8, 101}));
    EXPECT_EQ(toa(h), (Stamp{1, 8, 100}));
}

TEST(TimeConversion, LeavesSequenceNumberAndDeviceIdToTheirOwners) {
    IdlHeader idl = distinctIdlHeader();
    PlainHeader plain = distinctPlainHeader();

    ASPN2::setToVandToA_fromFpgaTicks(4608, idl);
    ASPN2::setToVandToA_fromFpgaTicks(4608, plain);

    EXPECT_EQ(idl.seq_num(), -1);
    EXPECT_EQ(idl.device_id(), 8);
    EXPECT_EQ(plain.seq_num, -11);
    EXPECT_EQ(plain.device_id, 18);
}

TEST(TimeConversion, TakesATimeOfValidityFromNanoseconds) {
    IdlHeader h;
    ASPN2::setToV_fromNSec(nanoseconds(1'700'000'000'123'456'789), h);

    EXPECT_EQ(tov(h), (Stamp{1'700'000'000, 123'456'789, 100}));
    EXPECT_EQ(toa(h), kZero);
}

TEST(TimeConversion, TakesBothTimesFromNanoseconds) {
    IdlHeader h;
    ASPN2::TimeCodeHelper::Instance().setSimMode();
    ASPN2::setToVandToA_fromNSec(nanoseconds(2'000'000'001), h);
    ASPN2::TimeCodeHelper::Instance().setLiveMode();

    EXPECT_EQ(tov(h), (Stamp{2, 1, 101}));
    EXPECT_EQ(toa(h), (Stamp{2, 1, 101}));
}

TEST(TimeConversion, TruncatesTimesBeforeZero) {
    IdlHeader h;
    ASPN2::setToV_fromNSec(nanoseconds(-1'000'000'001), h);
    EXPECT_EQ(tov(h), (Stamp{-1, -1, 100}));

    ASPN2::setToV_fromNSec(nanoseconds::min(), h);
    EXPECT_EQ(tov(h), (Stamp{-9'223'372'036, -854'775'808, 100}));
}

TEST(TimeConversion, ReadsTheTimeOfArrivalInNanoseconds) {
    IdlHeader h = distinctIdlHeader();
    h.timestamp_arrival().sec(1'700'000'000);
    h.timestamp_arrival().nsec(999'999'999);
    EXPECT_EQ(ASPN2::getNSec_fromToA(h), nanoseconds(1'700'000'000'999'999'999));

    h.timestamp_arrival().sec(0);
    h.timestamp_arrival().nsec(-8);
    EXPECT_EQ(ASPN2::getNSec_fromToA(h), nanoseconds(-8));
}

TEST(TimeConversion, SurvivesAnArrivalTimeThatNoNanosecondsCanHold) {
    IdlHeader h;
    h.timestamp_arrival().sec(std::numeric_limits<int64_t>::max());
    // (2^63 - 1) * 10^9 mod 2^64, as a signed number.
    EXPECT_EQ(ASPN2::getNSec_fromToA(h), nanoseconds(-1'000'000'000));
}

TEST(TimeConversion, TakesTheDifferenceOfTheTimesOfValidity) {
    IdlHeader a = distinctIdlHeader();
    IdlHeader b = distinctIdlHeader();
    a.timestamp_valid().sec(1'700'000'010);
    a.timestamp_valid().nsec(250'000'000);
    b.timestamp_valid().sec(1'700'000'008);
    b.timestamp_valid().nsec(750'000'000);

    EXPECT_DOUBLE_EQ(ASPN2::deltaTov(a, b), 1.5);
    EXPECT_DOUBLE_EQ(ASPN2::deltaTov(b, a), -1.5);
}

TEST(TimeConversion, TakesTheDifferenceOfPlainHeadersToo) {
    PlainHeader a = distinctPlainHeader();
    PlainHeader b = distinctPlainHeader();
    a.valid_sec = 5;
    a.valid_nsec = 1;
    b.valid_sec = 5;
    b.valid_nsec = 3;

    EXPECT_DOUBLE_EQ(ASPN2::deltaTov(a, b), -2e-9);
    EXPECT_DOUBLE_EQ(ASPN2::deltaTov(b, a), 2e-9);
}

TEST(TimeConversion, TakesTheDifferenceOfTheWildestTimes) {
    PlainHeader a;
    PlainHeader b;
    a.valid_sec = std::numeric_limits<int64_t>::max();
    a.valid_nsec = std::numeric_limits<int32_t>::max();
    b.valid_sec = std::numeric_limits<int64_t>::min();
    b.valid_nsec = std::numeric_limits<int32_t>::min();

    EXPECT_DOUBLE_EQ(ASPN2::deltaTov(a, b), 18446744073709551615.0);
}

TEST(TimeConversion, CopiesBothStampsToTheIdlHeaderAndNothingElse) {
    IdlHeader to = distinctIdlHeader();
    ASPN2::setToVandToA_fromTo(distinctPlainHeader(), to);

    EXPECT_EQ(toa(to), (Stamp{0x100000012, 13, 14}));
    EXPECT_EQ(tov(to), (Stamp{-15, 16, 17}));
    EXPECT_EQ(to.seq_num(), -1);
    EXPECT_EQ(to.device_id(), 8);
}

TEST(TimeConversion, CopiesBothStampsToThePlainHeaderAndNothingElse) {
    PlainHeader to = distinctPlainHeader();
    ASPN2::setToVandToA_fromTo(distinctIdlHeader(), to);

    EXPECT_EQ(toa(to), (Stamp{0x100000002, 3, 4}));
    EXPECT_EQ(tov(to), (Stamp{-5, 6, 7}));
    EXPECT_EQ(to.seq_num, -11);
    EXPECT_EQ(to.device_id, 18);
}

TEST(TimeConversion, CopiesAWholeHeaderToTheIdlForm) {
    IdlHeader to = distinctIdlHeader();
    ASPN2::copyHeader_fromTo(distinctPlainHeader(), to);

    EXPECT_EQ(toa(to), (Stamp{0x100000012, 13, 14}));
    EXPECT_EQ(tov(to), (Stamp{-15, 16, 17}));
    EXPECT_EQ(to.seq_num(), -11);
    EXPECT_EQ(to.device_id(), 18);
}

TEST(TimeConversion, CopiesAWholeHeaderToThePlainForm) {
    PlainHeader to = distinctPlainHeader();
    ASPN2::copyHeader_fromTo(distinctIdlHeader(), to);

    EXPECT_EQ(toa(to), (Stamp{0x100000002, 3, 4}));
    EXPECT_EQ(tov(to), (Stamp{-5, 6, 7}));
    EXPECT_EQ(to.seq_num, -1);
    EXPECT_EQ(to.device_id, 8);
}

}  // namespace

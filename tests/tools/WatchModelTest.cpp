// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "tests/tools/WatchSamples.h"
#include "tools/bus/WatchModel.h"

namespace {

using namespace tools_test;
using Bus::Number;
using Bus::stateOf;
using Bus::WatchLink;
using Bus::WatchModel;
using ::testing::HasSubstr;

const double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(WatchState, PositionHasOneSigmaFromTheVariances) {
    const auto state = stateOf(position());
    EXPECT_TRUE(state.isSolution);
    EXPECT_NEAR(state.latitudeDegrees.value_or(0), 45, 1e-12);
    EXPECT_NEAR(state.longitudeDegrees.value_or(0), -90, 1e-12);
    EXPECT_EQ(state.altitude, Number(100.5));
    EXPECT_EQ(state.positionSigma[0], Number(2));
    EXPECT_EQ(state.positionSigma[2], Number(3));
    EXPECT_EQ(state.velocity[1], Number(-2.5));
    EXPECT_EQ(state.velocitySigma[0], Number(0.5));
    EXPECT_EQ(state.velocitySigma[2], Number(1));
}

TEST(WatchState, WithoutASolutionThereIsNoNumber) {
    const auto state = stateOf(noPosition());
    EXPECT_FALSE(state.isSolution);
    EXPECT_FALSE(state.latitude || state.longitude || state.altitude);
    EXPECT_FALSE(state.latitudeDegrees || state.longitudeDegrees);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_FALSE(state.velocity[i] || state.positionSigma[i] || state.velocitySigma[i]);
    }
}

TEST(WatchState, AnyVarianceThatIsNoneTakesTheNumbersWithIt) {
    for (size_t i = 0; i < 6; ++i) {
        for (const double bad : {kInfinity, kNan, -1.0}) {
            auto message = position();
            message.covariance()[i][i] = bad;
            const auto state = stateOf(message);
            EXPECT_FALSE(state.isSolution) << i;
            EXPECT_EQ(state.latitude.has_value(), i >= 3) << i;
            EXPECT_EQ(state.velocity[0].has_value(), i < 3) << i;
        }
    }
}

TEST(WatchState, NumbersThatAreNoneAreNotShown) {
    auto message = position();
    message.position().latitude(kNan);
    message.position().altitude(-kInfinity);
    message.velocity()[2] = kNan;
    const auto state = stateOf(message);
    EXPECT_FALSE(state.latitude || state.latitudeDegrees || state.altitude || state.velocity[2]);
    EXPECT_TRUE(state.longitude && state.velocity[0]);
}

TEST(WatchState, DegreesAreShownOnlyOfWhatCanBeRadians) {
    auto message = position();
    message.position().latitude(45);
    message.position().longitude(90);
    const auto state = stateOf(message);
    EXPECT_EQ(state.latitude, Number(45));
    EXPECT_FALSE(state.latitudeDegrees || state.longitudeDegrees);
}

TEST(WatchState, ADilutionOfZeroIsNone) {
    auto message = receiver();
    EXPECT_EQ(stateOf(message).pdop, Number(1.64));
    message.pdop(0);
    message.tdop(kNan);
    EXPECT_FALSE(stateOf(message).pdop || stateOf(message).tdop);
    EXPECT_EQ(stateOf(message).used, Number(8));
}

TEST(WatchState, UtcWithoutParametersIsNotShown) {
    EXPECT_EQ(stateOf(utc(1, 5, 4)).timeOfDayNs, 1'000'000'005);
    EXPECT_FALSE(stateOf(utc(1, 5, kInfinity)).timeOfDayNs);
    EXPECT_FALSE(stateOf(utc(86'400, 5, 4)).timeOfDayNs);
    EXPECT_FALSE(stateOf(utc(-1, 5, 4)).timeOfDayNs);
    EXPECT_FALSE(stateOf(utc(1, kNan, 4)).timeOfDayNs);
    EXPECT_FALSE(stateOf(utc(1, -1, 4)).timeOfDayNs);
    EXPECT_FALSE(stateOf(utc(1, 1.1e9, 4)).timeOfDayNs);
    // A whole second in the fraction, by rounding.
    EXPECT_EQ(stateOf(utc(1, 1e9, 4)).timeOfDayNs, 2'000'000'000);
    EXPECT_EQ(stateOf(utc(86'399, 1e9, 4)).timeOfDayNs, 0);
}

TEST(WatchState, AChannelThatSaysNothingIsLeftOut) {
    const auto states = stateOf(channels());
    ASSERT_EQ(states.size(), 2u);
    EXPECT_EQ(states[0].prn, 7);
    EXPECT_EQ(states[0].carrierToNoise, Number(30));
    EXPECT_FALSE(states[1].carrierToNoise);
}

TEST(WatchState, DirectionsThatAreNoDegreesAreNotPlaced) {
    const auto states = stateOf(satellites());
    ASSERT_EQ(states.size(), 4u);
    EXPECT_EQ(states[1].azimuth, Number(90));
    EXPECT_EQ(states[1].elevation, Number(45));
    EXPECT_FALSE(states[3].azimuth || states[3].elevation);
}

class Link : public ::testing::Test {
  protected:
    void add(double seconds, int64_t number, const std::string& type = "GPSTime") {
        if (type == "EventLog") {
            m_link.add(sampleOf(type, event(""), seconds, number));
        } else {
            m_link.add(sampleOf("GPSTime", idl::GPSTime(), seconds, number));
        }
    }
    WatchLink m_link;
};

TEST_F(Link, KnowsNothingAtFirst) {
    EXPECT_FALSE(m_link.hz(at(0)) || m_link.age(at(0)) || m_link.isStale(at(0)));
    EXPECT_EQ(m_link.samples(), 0u);
}

TEST_F(Link, CountsRateAndAge) {
    for (int i = 0; i < 5; ++i) {
        add(0.5 * i, i);
    }
    EXPECT_NEAR(m_link.hz(at(2.1)).value_or(0), 2, 1e-9);
    EXPECT_NEAR(m_link.age(at(2.1)).value_or(0), 0.1, 1e-9);
    // Four intervals in 2 s of samples and 6 s of silence.
    EXPECT_NEAR(m_link.hz(at(8)).value_or(0), 0.5, 1e-9);
}

TEST_F(Link, IsStaleAfterThreeOfItsOwnPeriods) {
    for (int i = 0; i < 8; ++i) {
        add(10.0 * i, i);
    }
    EXPECT_FALSE(m_link.isStale(at(70 + 30.4)));
    EXPECT_TRUE(m_link.isStale(at(70 + 30.6)));
}

TEST_F(Link, IsStaleAfterThreeUsualPeriodsBeforeItHasShownItsOwn) {
    add(0, 0);
    EXPECT_FALSE(m_link.isStale(at(3.4)));
    EXPECT_TRUE(m_link.isStale(at(3.6)));
}

TEST_F(Link, APauseDoesNotMakeItPatient) {
    for (int i = 0; i < 5; ++i) {
        add(i, i);
    }
    for (int i = 0; i < 3; ++i) {
        add(1000 + i, 5 + i);
    }
    EXPECT_TRUE(m_link.isStale(at(1002 + 3.6)));
}

TEST_F(Link, WhatComesNowAndThenIsNeverStale) {
    for (int i = 0; i < 9; ++i) {
        add(i, i, "EventLog");
    }
    EXPECT_FALSE(m_link.isStale(at(10'000)));
}

TEST_F(Link, CountsWhatTheNumbersSayIsMissing) {
    add(0, 7);
    add(1, 8);
    EXPECT_EQ(m_link.missing(), 0u);
    add(2, 12);
    EXPECT_EQ(m_link.missing(), 3u);
    add(3, 0);  // a publisher that began anew
    add(4, 1);
    EXPECT_EQ(m_link.missing(), 3u);
}

TEST_F(Link, NumbersAtTheEndsOfTheirRangeDoNoHarm) {
    add(0, std::numeric_limits<int64_t>::min());
    add(1, std::numeric_limits<int64_t>::max());
    EXPECT_EQ(m_link.missing(), std::numeric_limits<uint64_t>::max() - 1);
    add(2, std::numeric_limits<int64_t>::min());
    add(3, std::numeric_limits<int64_t>::max());
    EXPECT_EQ(m_link.missing(), std::numeric_limits<uint64_t>::max());
}

TEST_F(Link, CountsThePublishersApart) {
    auto other = sampleOf("GPSTime", idl::GPSTime(), 1, 500);
    other.writer.entityId.value[0] = 1;
    add(0, 1);
    m_link.add(other);
    add(2, 2);
    EXPECT_EQ(m_link.missing(), 0u);
    EXPECT_EQ(m_link.publishers(), 2u);
}

TEST(WatchModel, KeysOfAllMessagesStandTogether) {
    WatchModel model({});
    model.take(sampleOf("GPSCryptoStatus", keys(9, 100), 0));
    model.take(sampleOf("GPSCryptoStatus", keys(0, 30), 25));
    ASSERT_EQ(model.keys().size(), 2u);
    EXPECT_EQ(model.keys().at(9).state.remaining, 100);
    EXPECT_EQ(model.keys().at(0).state.remaining, 30);
    EXPECT_FALSE(model.keyFreshness(at(29)).isStale);
    EXPECT_TRUE(model.keyFreshness(at(31)).isStale) << "the older key alone";
}

TEST(WatchModel, LogsEventsRecordsCommandsAndResponses) {
    WatchModel model({});
    model.take(sampleOf("EventLog", event("a \x1b[2J b"), 0));
    idl::MaintenanceEvent maintenance;
    maintenance.identity() = {'N', 'a', 'm', 'e'};
    maintenance.description() = {'T', 'e', 'x', 't'};
    maintenance.fault_sources()[0].lru_id(3);
    maintenance.fault_sources()[0].component_id(4);
    model.take(sampleOf("MaintenanceEvent", maintenance, 1));
    idl::CommandResponse response;
    response.command_response("X_PASS");
    response.command_identifier(5);
    response.command_response_type(idl::COMMAND_RESPONSE_TYPE_1);
    auto sample = sampleOf("CommandResponse", response, 2);
    model.take(sample);

    ASSERT_EQ(model.log().size(), 3u);
    EXPECT_EQ(model.log()[0].kind, "EVT");
    EXPECT_EQ(model.log()[0].text, "error: a \\x1b[2J b");
    EXPECT_TRUE(model.log()[0].isAlarm);
    EXPECT_EQ(model.log()[1].kind, "MNT");
    EXPECT_THAT(model.log()[1].text, HasSubstr("Name: Text"));
    EXPECT_THAT(model.log()[1].text, HasSubstr("faults 3/4"));
    EXPECT_EQ(model.log()[2].kind, "RSP");
    EXPECT_EQ(model.log()[2].text, "Rovan: X_PASS (identifier 5)");
}

TEST(WatchModel, MemoryIsBounded) {
    WatchModel model({});
    for (int i = 0; i < 3000; ++i) {
        model.take(sampleOf("EventLog", event(std::string(5000, 'x')), i, i));
        auto sample = sampleOf("GPSCryptoStatus", keys(static_cast<uint32_t>(i), 1), i);
        sample.topic = std::to_string(i);
        model.take(sample);
    }
    EXPECT_EQ(model.logged(), 3000u);
    EXPECT_LE(model.log().size(), 2000u);
    EXPECT_LE(model.log()[0].text.size(), 1020u);
    EXPECT_LE(model.links().size(), 256u);
    EXPECT_LE(model.keys().size(), 32u);
}

TEST(WatchModel, FreshnessIsThatOfTheTopicThatCarriedIt) {
    WatchModel model({"GPSTime"});
    EXPECT_FALSE(model.freshness("GPSTime", at(0)).ageSeconds);
    model.take(sampleOf("GPSTime", idl::GPSTime(), 0));
    EXPECT_NEAR(model.freshness("GPSTime", at(1)).ageSeconds.value_or(0), 1, 1e-9);
    EXPECT_FALSE(model.freshness("GPSTime", at(1)).isStale);
    EXPECT_TRUE(model.freshness("GPSTime", at(9)).isStale);
}

}  // namespace

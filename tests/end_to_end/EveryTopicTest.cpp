// SPDX-License-Identifier: Apache-2.0
// Everything that the receiver says by itself, and what of it arrives on the bus: each frame in its
// rate, and its fields as the receiver's truth has them, to the steps of the receiver's numbers.
#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "tests/end_to_end/EveryTopic.h"

using namespace Simulator;
using namespace aspn2_msgs::idl;
using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLight = 299'792'458.0;

std::vector<std::string> descriptions(const Topic<MaintenanceEvent>& topic) {
    std::vector<std::string> texts;
    for (const MaintenanceEvent& event : topic.samples()) {
        texts.emplace_back(event.description().data());
    }
    return texts;
}

}  // namespace

TEST_F(EveryTopic, ArrivesAtItsRateAndTellsTheTruth) {
    m_truth.unhealthy = {m_truth.at(kStart).channels[4].prn};
    startAndHear();
    // One at the connection, and one at each sixtieth epoch.
    ASSERT_TRUE(
        waitFor([&] { return bus().utcDownlink.count() >= 2 && bus().svStatus.count() >= 2; }));
    stopReports();
    expectPositions();
    expectChannels();
    expectTimes();
    expectUtcDownlinks();
    expectSatellites();
    expectMeasurements();

    // A topic of several messages: all frames of each, and what each says.
    const auto keys = bus().cryptoStatus.samples();
    EXPECT_LE(keys.size(), said(5040).size() + said(8040).size());
    EXPECT_GE(keys.size() + early(5040) + early(8040), said(5040).size() + said(8040).size());
    std::map<int, std::size_t> samplesOf;
    for (const GPSCryptoStatus& sample : keys) {
        ++samplesOf[sample.num_key_types()];
    }
    expectRate("PositionVelocity", bus().position.count(), 1);
    expectRate("GPSTime", bus().gpsTime.count(), 1);
    expectRate("UTCTime", bus().utcTime.count(), 1);
    expectRate("ChallengedEnvironment", bus().environment.count(), 1);
    expectRate("GPSCryptoStatus of 5040", samplesOf[1], 10);
    expectRate("GPSCryptoStatus of 8040", samplesOf[7], 10);
    expectRate("SVStatus", bus().svStatus.count(), 30);
    expectRate("UtcDownlink", bus().utcDownlink.count(), 60);
    // An epoch that the server sees begin within 50 ms of the one before takes its place; a busy
    // machine makes that of some, with epochs of 100 ms.
    EXPECT_GE(bus().lineOfSight.count(), 1u);
    EXPECT_FALSE(said(253).empty());
    EXPECT_THAT(bus().eventTexts(), Contains("ROVAN present and communicating."));
}

TEST_F(EveryTopic, EveryMeasurementOfEveryBurstArrivesAndAgreesWithThePosition) {
    m_unitOptions.receiver.epoch = std::chrono::milliseconds(1000);
    startAndHear();
    ASSERT_TRUE(waitFor([&] { return bus().lineOfSight.count() >= 5; }));
    stopReports();
    const auto heard = [&] {
        std::vector<gpslos_obs> all;
        for (const GPSLineOfSight& sample : bus().lineOfSight.samples()) {
            all.insert(all.end(), sample.obs().begin(), sample.obs().end());
        }
        return all;
    };
    EXPECT_TRUE(waitFor([&] { return heard().size() + early(7270) >= said(7270).size(); }));
    EXPECT_LE(heard().size(), said(7270).size());
    expectMeasurements();

    // The satellite's distance from the position of the same epoch, and what the clock is ahead.
    std::map<double, double> times;
    for (const SaidFrame& frame : said(7270)) {
        times[satellitePosition(frame)] = gpsTime(frame, kStart);
    }
    const auto positions = bus().position.samples();
    const auto frames = framesOf(8504, positions);
    std::set<std::pair<double, int>> compared;
    for (const gpslos_obs& obs : heard()) {
        const double time = times[obs.sv_position_stop()[0]];
        for (std::size_t i = 0; i < frames.size(); ++i) {
            if (gpsTime(frames[i], kStart) == time) {
                const auto& place = positions[i].position();
                const EarthFixed here =
                    earthFixed({place.latitude(), place.longitude(), place.altitude()});
                EXPECT_NEAR(obs.pseudorange_measurement() - kLight * m_truth.clockBias,
                            distanceBetween(here, obs.sv_position_stop()), 1e-3);
                EXPECT_TRUE(compared.insert({time, obs.prn()}).second) << "twice";
            }
        }
    }
    EXPECT_GE(compared.size(), 48u) << "twelve satellites in four epochs";
}

TEST_F(EveryTopic, TheWeekRollsOver) {
    m_truth.utc.a0 = 0;
    m_truth.utc.a1 = 0;
    startAndHear();
    receiver().setGpsTime(kWeek + kSecondsPerWeek - 0.5);
    ASSERT_TRUE(waitFor([&] {
        const auto samples = bus().gpsTime.samples();
        return samples.back().gps_week() == 2413 && samples.back().gps_tow_sec() >= 1;
    }));
    stopReports();
    expectPositions();
    expectTimes();
    expectUtcDownlinks();
    expectMeasurements();
    const auto samples = bus().gpsTime.samples();
    EXPECT_TRUE(std::any_of(samples.begin(), samples.end(), [](const GPSTime& sample) {
        return sample.gps_week() == 2412 && sample.gps_tow_sec() == 604'799;
    }));
    EXPECT_EQ(bus().utcDownlink.samples().back().WNt(), 2413);
    EXPECT_EQ(bus().utcTime.samples().back().utc_tod_sec(),
              86'400 + samples.back().gps_tow_sec() - 18);
}

TEST_F(EveryTopic, AnAnnouncedLeapSecondTakesEffect) {
    m_truth.utc.leapsAfter = 19;
    m_truth.utc.leapWeek = 2412;
    m_truth.utc.leapDay = 5;  // ends after 432,000 s of UTC, 432,018 s of GPS time
    startAndHear();
    receiver().setGpsTime(kWeek + 432'018 - 0.5);
    ASSERT_TRUE(waitFor([&] {
        const auto samples = bus().utcDownlink.samples();
        return !samples.empty() && samples.back().delta_t_ls() == 19;
    }));
    const auto after = bus().utcTime.count() + 3;
    ASSERT_TRUE(waitFor([&] { return bus().utcTime.count() > after; }));
    stopReports();
    expectTimes();
    expectUtcDownlinks();
    EXPECT_EQ(bus().utcDownlink.samples().front().delta_t_ls(), 18);
    EXPECT_EQ(bus().utcDownlink.samples().front().delta_t_lsf(), 19);
    // The last second of the day comes twice.
    std::set<std::pair<int, int>> seconds;
    for (const UTCTime& sample : bus().utcTime.samples()) {
        seconds.insert({sample.gps_tow_sec(), sample.utc_tod_sec()});
    }
    EXPECT_TRUE(seconds.count({432'017, 86'399}) != 0);
    EXPECT_TRUE(seconds.count({432'018, 86'399}) != 0 || seconds.count({432'019, 0}) != 0);
}

TEST_F(EveryTopic, CorrectionsMoveTheTimeBothWays) {
    m_truth.utc.a0 = 0.37;
    m_truth.utc.a1 = -1.7e-9;
    m_truth.clockBias = -3.33e-6;
    startAndHear();
    ASSERT_TRUE(waitFor([&] { return bus().utcTime.count() >= 12; }));
    stopReports();
    expectTimes();
    expectUtcDownlinks();
    expectMeasurements();
    EXPECT_NEAR(bus().gpsTime.samples().back().rcvr_time_bias(), -3330.0, 1e-9);
    // With 0 to 0.3 s of the second the correction borrows one.
    const auto samples = bus().utcTime.samples();
    EXPECT_TRUE(std::any_of(samples.begin(), samples.end(), [](const UTCTime& sample) {
        return sample.utc_tod_sec() == (sample.gps_tow_sec() - 19) % 86'400;
    }));
}

TEST_F(EveryTopic, WhatIsNotKnownHasInfiniteVariances) {
    m_truth.utc.valid = false;
    m_unitOptions.receiver.prepare = [this](ReceiverReports& reports) {
        reports.truth = m_truth;
        reports.noSolution = true;
    };
    startAndHear();
    ASSERT_TRUE(waitFor([&] { return bus().utcTime.count() >= 3; }));
    EXPECT_EQ(bus().utcDownlink.count(), 0u);
    for (const UTCTime& sample : bus().utcTime.samples()) {
        EXPECT_EQ(sample.covariance()[0][0], kInfinity);
        EXPECT_EQ(sample.covariance()[1][1], kInfinity);
        EXPECT_EQ(sample.covariance()[0][1], 0.0);
        EXPECT_EQ(sample.utc_tod_sec(), sample.gps_tow_sec() % 86'400);
        EXPECT_EQ(sample.a1(), 0.0);
    }
    for (const PositionVelocity& sample : bus().position.samples()) {
        EXPECT_EQ(sample.position().latitude(), 0.0);
        EXPECT_EQ(sample.velocity(), (std::array<double, 3>{}));
        for (std::size_t i = 0; i < 6; ++i) {
            EXPECT_EQ(sample.covariance()[i][i], kInfinity);
        }
    }
    EXPECT_EQ(bus().receiverStatus.samples().back().pdop(), 0.0);
    EXPECT_EQ(bus().receiverStatus.samples().back().num_satellites_avail(), 12);

    // The parameters become valid, which the receiver tells at once.
    changeTruth([](Truth& truth) { truth.utc.valid = true; });
    receiver().changeReports([](ReceiverReports& reports) { reports.noSolution = false; });
    EXPECT_TRUE(waitFor([&] {
        return bus().utcTime.samples().back().covariance()[0][0] < 1.0 &&
               bus().position.samples().back().covariance()[0][0] == 4.5;
    }));
    EXPECT_GE(bus().utcDownlink.count(), 1u);
}

TEST_F(EveryTopic, InterferenceIsToldAsItIs) {
    startAndHear();
    const auto told = [&] {
        std::vector<int> values;
        const auto samples = bus().environment.samples();
        if (!samples.empty()) {
            EXPECT_EQ(samples.back().num_interference_types(), 4);
            for (const interference_type_set& set : samples.back().interference_types()) {
                values.push_back(set.interference_value());
            }
        }
        return values;
    };
    const auto becomes = [&](bool InterferenceReport::*kind, const std::vector<int>& expected) {
        changeTruth([&](Truth& truth) {
            truth.interference = {};
            truth.interference.*kind = true;
        });
        return waitFor([&] { return told() == expected; });
    };
    EXPECT_TRUE(waitFor([&] { return told() == std::vector<int>{0, 0, 0, 0}; }));
    EXPECT_TRUE(becomes(&InterferenceReport::anySignal, {1, 0, 0, 0}));
    EXPECT_TRUE(becomes(&InterferenceReport::fourthSignal, {0, 1, 0, 0}));
    EXPECT_TRUE(becomes(&InterferenceReport::thirdSignal, {0, 0, 1, 0}));
    EXPECT_TRUE(becomes(&InterferenceReport::otherKind, {0, 0, 0, 1}));
    EXPECT_TRUE(becomes(&InterferenceReport::anySignal, {1, 0, 0, 0}));
    EXPECT_TRUE(becomes(&InterferenceReport::otherKindToo, {0, 0, 0, 1}));
}

TEST_F(EveryTopic, KeysEventsAndMaintenanceComeOnTheirOccasions) {
    startAndHear();
    const auto latest = [&](int types) {
        std::vector<key_type_set> keys;
        for (const GPSCryptoStatus& sample : bus().cryptoStatus.samples()) {
            if (sample.num_key_types() == types) {
                keys = sample.key_types();
            }
        }
        return keys;
    };
    // Of an epoch one of the two comes first.
    ASSERT_TRUE(waitFor([&] { return !latest(7).empty() && !latest(1).empty(); }));
    // Type, remaining time, status, load, zeroization.
    const auto text = [](const std::vector<key_type_set>& keys) {
        std::string result;
        for (const key_type_set& key : keys) {
            result += std::to_string(key.key_type()) + ':' +
                      std::to_string(key.remaining_key_time()) + ' ' +
                      std::to_string(key.key_status()) + std::to_string(key.key_load_status()) +
                      std::to_string(key.key_zeroization_status()) + ' ';
        }
        return result;
    };
    EXPECT_EQ(text(latest(7)), "0:30 203 1:29 203 2:0 103 5:14 203 6:2 103 7:0 503 8:0 503 ");
    EXPECT_EQ(text(latest(1)), "9:30 223 ");
    EXPECT_TRUE(waitFor([&] { return bus().maintenance.count() >= 6; }));
    EXPECT_THAT(
        descriptions(bus().maintenance),
        ElementsAre("M Key loaded and Active", "CVD Key Loaded and Active",
                    "Last M Key load was a success", "Last BCVm Key load was a success",
                    "Last BGUV2 Key load was a success", "Last BBKAUPD Key load was a success"));
    EXPECT_EQ(bus().maintenance.samples().front().outcome_id(), 2);
    EXPECT_STREQ(bus().maintenance.samples().front().identity().data(), "Key Loader");

    // A load that failed, and one that then replaces it.
    changeTruth([](Truth& truth) { truth.keys.furtherLoadFailed[1] = true; });
    EXPECT_TRUE(waitFor([&] { return bus().maintenance.count() >= 7; }));
    EXPECT_THAT(descriptions(bus().maintenance), Contains("Last BGUV2 key load Failed"));
    EXPECT_EQ(bus().maintenance.samples().back().outcome_id(), 3);

    // All keys gone, by the operator's command.
    const int number = send("ROVAN_CV_ZEROIZE");
    EXPECT_FALSE(waitForAnswers(number).empty());
    const std::string gone = "0:0 102 1:0 102 2:0 102 5:0 103 6:0 103 7:0 503 8:0 503 ";
    EXPECT_TRUE(waitFor([&] { return text(latest(7)) == gone; })) << text(latest(7));
    EXPECT_TRUE(waitFor([&] { return text(latest(1)) == "9:0 122 "; })) << text(latest(1));
    EXPECT_TRUE(waitFor([&] {
        const auto texts = descriptions(bus().maintenance);
        return std::count(texts.begin(), texts.end(), "M Key Deactivated") == 1 &&
               std::count(texts.begin(), texts.end(), "CVD Key Deactivated") == 1;
    }));

    // An event of the receiver's becomes one of the server's.
    receiver().sendEvent(99, "SOMETHING HAPPENED");
    EXPECT_TRUE(waitFor([&] {
        const auto texts = bus().eventTexts();
        return std::any_of(texts.begin(), texts.end(), [](const std::string& event) {
            return event.find("SOMETHING HAPPENED") != std::string::npos;
        });
    }));
}

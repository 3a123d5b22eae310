// SPDX-License-Identifier: Apache-2.0
// Everything that the receiver says by itself, and what of it arrives on the bus: each frame in its
// rate, and its fields as the receiver's truth has them, to the steps of the receiver's numbers.
// What is expected is worked out here from the truth and from the books of the line.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <set>

#include "simulator/Truth.h"
#include "tests/end_to_end/Steering.h"

using namespace Simulator;
using namespace aspn2_msgs::idl;
using std::chrono::milliseconds;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLight = 299'792'458.0;
constexpr std::uint32_t kSeed = 7;
// Late in a week, and never half a week away from any time of these tests.
constexpr double kWeek = 2412 * kSecondsPerWeek;
constexpr double kStart = kWeek + 400'000;

double ieeeDouble(const SaidFrame& frame, std::size_t dataWord) {
    double value = 0;
    std::memcpy(&value, frame.bytes.data() + 2 * (5 + dataWord), sizeof value);
    return value;
}

// The message time: exponent in excess 128, a leading 1 behind the point, 55 more bits.
double timeOfWeek(const SaidFrame& frame) {
    std::uint64_t bits = 0;
    for (std::size_t word = 5; word < 9; ++word) {
        bits = bits << 16 | frameWord(frame.bytes, word);
    }
    const auto fraction = static_cast<double>(bits & ((std::uint64_t{1} << 55) - 1));
    const int exponent = static_cast<int>(bits >> 55 & 0xFF) - 128;
    return bits == 0 ? 0.0 : std::ldexp(0.5 + std::ldexp(fraction, -56), exponent);
}

double gpsTime(const SaidFrame& frame) {
    const double second = timeOfWeek(frame);
    return second + kSecondsPerWeek * std::round((kStart - second) / kSecondsPerWeek);
}

// Seconds from one time of a day to another, over midnight too.
double betweenTimesOfDay(double from, double to) {
    return std::remainder(to - from, 86'400.0);
}

class EveryTopic : public Steering {
  protected:
    static constexpr double kEpoch = 0.1;

    EveryTopic() {
        m_unitOptions.receiver.epoch = milliseconds(100);
        m_unitOptions.receiver.gpsStart = kStart;
        m_unitOptions.receiver.seed = kSeed;
        m_unitOptions.receiver.prepare = [this](ReceiverReports& reports) {
            reports.truth = m_truth;
        };
        // All that the shipped deployment has but 9225, whose many events leave no room for others.
        m_deployment.setServer("PARAM_7",
                               "8,253,5040,5042,5044,5047,5048,5404,7270,8040,8080,8504,9391,9405,"
                               "30409");
    }

    /// Changes the truth of the receiver and of this test.
    template <typename Change>
    void changeTruth(Change change) {
        change(m_truth);
        receiver().changeReports([&](ReceiverReports& reports) { change(reports.truth); });
    }

    void startAndHear() {
        startAndPing();
        ASSERT_TRUE(
            waitFor([&] { return bus().gpsTime.count() > 0 && bus().position.count() > 0; }));
    }

    /// The receiver falls silent; afterwards everything that it said has arrived.
    void stopReports() {
        receiver().silence();
        ASSERT_TRUE(receiver().waitUntilQuiet(kPatience));
        m_said.clear();
        for (const SaidFrame& frame : receiver().ledger().said().entries()) {
            if (frame.intact && frame.delivered && frame.bytes.size() > 10) {
                m_said[frame.msgId()].push_back(frame);
            }
        }
        findFirstPublished();
        EXPECT_TRUE(arrived(8504, bus().position) && arrived(8504, bus().receiverStatus) &&
                    arrived(8504, bus().channelStatus) && arrived(9391, bus().gpsTime) &&
                    arrived(9391, bus().utcTime) && arrived(8080, bus().environment) &&
                    arrived(5048, bus().svStatus));
        settle();
    }

    /// The frames that the samples of a topic came from. The server may have dropped those that
    /// came while it started, so that they are counted from the end.
    template <typename T>
    std::vector<SaidFrame> framesOf(std::uint16_t msgId, const std::vector<T>& samples) {
        const std::vector<SaidFrame>& said = m_said[msgId];
        EXPECT_LE(samples.size(), said.size()) << msgId;
        EXPECT_GE(samples.size() + early(msgId), said.size()) << msgId;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            EXPECT_EQ(samples[i].header().seq_num(), static_cast<std::int64_t>(i)) << msgId;
        }
        const auto count = static_cast<std::ptrdiff_t>(std::min(samples.size(), said.size()));
        return {said.end() - count, said.end()};
    }

    /// Every epoch's time, the lost ones of a busy machine included: first to last frame.
    double nominalEpochs() {
        const auto& all = m_said[8504];
        return std::round((gpsTime(all.back()) - gpsTime(all.front())) / kEpoch) + 1;
    }

    void expectRate(const char* topic, std::size_t samples, double every) {
        const double epochs = nominalEpochs();
        const double lost = epochs - static_cast<double>(m_said[8504].size());
        EXPECT_NEAR(static_cast<double>(samples), epochs / every, 2 + lost) << topic;
    }

    void expectPositions();
    void expectChannels();
    void expectTimes();
    void expectUtcDownlinks();
    void expectSatellites();
    void expectMeasurements();

    Truth m_truth{kSeed};
    std::map<std::uint16_t, std::vector<SaidFrame>> m_said;

  private:
    // A GPSTime tells which frame it came from, so that it shows when the server had started.
    void findFirstPublished() {
        const GPSTime first = bus().gpsTime.samples().front();
        const double second = first.gps_tow_sec() + first.gps_tow_nsec() * 1e-9;
        const auto& said = m_said[9391];
        const auto frame = std::find_if(said.begin(), said.end(), [&](const SaidFrame& candidate) {
            return std::fabs(timeOfWeek(candidate) - second) < kEpoch / 2;
        });
        ASSERT_NE(frame, said.end());
        m_firstPublished = frame->at;
    }
    /// How many frames the server may have dropped.
    std::size_t early(std::uint16_t msgId) {
        const auto& said = m_said[msgId];
        return static_cast<std::size_t>(
            std::count_if(said.begin(), said.end(),
                          [&](const SaidFrame& frame) { return frame.at < m_firstPublished; }));
    }
    template <typename T>
    bool arrived(std::uint16_t msgId, const Topic<T>& topic) {
        return waitFor([&] { return topic.count() + early(msgId) >= m_said[msgId].size(); },
                       kPatience);
    }

    std::chrono::steady_clock::time_point m_firstPublished{};
};

void EveryTopic::expectPositions() {
    const auto samples = bus().position.samples();
    const auto frames = framesOf(8504, samples);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const NavigationReport truth = m_truth.at(gpsTime(frames[i]));
        const auto& position = samples[i].position();
        // 40 bits of fraction below 1 and below 1/4, cut off; singles.
        EXPECT_NEAR(position.latitude(), truth.latitude, std::ldexp(1.0, -40));
        EXPECT_NEAR(position.longitude(), truth.longitude, std::ldexp(1.0, -42));
        EXPECT_EQ(position.altitude(), static_cast<float>(truth.altitude));
        EXPECT_EQ(samples[i].velocity()[0], static_cast<float>(truth.northVelocity));
        EXPECT_EQ(samples[i].velocity()[1], static_cast<float>(truth.eastVelocity));
        EXPECT_EQ(samples[i].velocity()[2], -static_cast<float>(truth.upVelocity));
        // Errors of 3 m, 5 m, 0.125 m/s and 0.1875 m/s.
        const double variances[] = {4.5, 4.5, 25.0, 0.0078125, 0.0078125, 0.03515625};
        for (std::size_t row = 0; row < 6; ++row) {
            EXPECT_EQ(samples[i].covariance()[row][row], variances[row]);
        }
    }
}

void EveryTopic::expectChannels() {
    const auto statuses = bus().receiverStatus.samples();
    framesOf(8504, statuses);
    for (const ReceiverStatus& status : statuses) {
        EXPECT_FALSE(status.rcvr_fail());
        EXPECT_EQ(status.num_satellites_avail(), 12);
        EXPECT_EQ(status.num_satellites_used(), 11);
        EXPECT_NEAR(status.pdop(), std::hypot(0.9, 1.3), 1e-12);
        EXPECT_NEAR(status.tdop(), 0.8, 1e-12);
    }
    // The signals 2 to 5 of the receiver.
    constexpr unsigned kAttributes[] = {1, 0, 3, 4};
    const auto samples = bus().channelStatus.samples();
    const auto frames = framesOf(8504, samples);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const NavigationReport truth = m_truth.at(gpsTime(frames[i]));
        ASSERT_EQ(samples[i].channels().size(), 32u);
        for (std::size_t c = 0; c < 32; ++c) {
            const channel_status_obs& channel = samples[i].channels()[c];
            const ChannelReport& expected = truth.channels[c];
            EXPECT_EQ(channel.prn(), static_cast<int>(expected.prn));
            EXPECT_EQ(channel.channel(), static_cast<int>(c + 1));
            EXPECT_EQ(channel.carrier_to_noise(), static_cast<float>(expected.carrierToNoise));
            EXPECT_EQ(channel.jammer_to_signal(), c < 12 ? 4.0f : 0.0f);
            EXPECT_EQ(channel.used_in_solution(), expected.used);
            EXPECT_EQ(unsigned{channel.gnss_tracking_status()}, expected.tracking);
            EXPECT_EQ(unsigned{channel.rinex3_band()}, c < 12 ? expected.frequency - 1 : 7);
            EXPECT_EQ(unsigned{channel.rinex3_attribute()},
                      c < 12 ? kAttributes[expected.signalCode - 2] : 15);
            EXPECT_EQ(unsigned{channel.assurance_level()}, c < 12 ? 1u : 2u);
        }
    }
}

// UTC by the parameters that the receiver sent last before the time.
void EveryTopic::expectTimes() {
    const auto times = bus().gpsTime.samples();
    const auto utcs = bus().utcTime.samples();
    const auto frames = framesOf(9391, times);
    ASSERT_EQ(framesOf(9391, utcs).size(), frames.size());
    const auto& downlinks = m_said[30409];
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const double time = gpsTime(frames[i]);
        const double second = timeOfWeek(frames[i]);
        const GPSTime& sample = times[i];
        EXPECT_EQ(sample.gps_week(), time < kWeek + kSecondsPerWeek ? 2412 : 2413);
        EXPECT_EQ(sample.gps_tow_sec(), static_cast<int>(second));
        EXPECT_EQ(sample.gps_tow_nsec(), (second - std::floor(second)) * 1e9);
        EXPECT_NEAR(sample.rcvr_time_bias(), m_truth.clockBias * 1e9, 0.005);
        EXPECT_NEAR(sample.rcvr_time_bias_error(), 1e-8, 1e-20);
        EXPECT_NEAR(sample.rcvr_time_bias_error_rate(), 1e-10, 1e-16);
        const double shown = sample.rcvr_set_time_sec() + sample.rcvr_set_time_nsec() * 1e-9;
        EXPECT_NEAR(std::remainder(shown - second, kSecondsPerWeek), m_truth.clockBias, 1e-9);
        EXPECT_GE(sample.rcvr_set_time_nsec(), 0.0);
        EXPECT_LT(sample.rcvr_set_time_nsec(), 1e9);
        EXPECT_NEAR(sample.covariance()[0][0], 4e-16, 1e-21);
        EXPECT_NEAR(sample.covariance()[1][1], 1e-20, 1e-25);

        const UTCTime& utc = utcs[i];
        EXPECT_EQ(utc.gps_tow_sec(), sample.gps_tow_sec());
        EXPECT_EQ(utc.gps_tow_nsec(), sample.gps_tow_nsec());
        EXPECT_EQ(utc.gps_week(), sample.gps_week());
        double ahead = 0;  // GPS time of UTC
        const auto next = std::find_if(downlinks.begin(), downlinks.end(),
                                       [&](const auto& frame) { return frame.at > frames[i].at; });
        const bool known = next != downlinks.begin();
        if (known) {
            const double sent = gpsTime(*std::prev(next));
            const double week = std::floor(sent / kSecondsPerWeek);
            const double age = kSecondsPerWeek * (sample.gps_week() - week) + (second - 405'504.0);
            ahead = m_truth.utc.leapsAt(sent) + m_truth.utc.a0 + m_truth.utc.a1 * age;
        }
        EXPECT_NEAR(betweenTimesOfDay(std::fmod(second - ahead + 86'400, 86'400),
                                      utc.utc_tod_sec() + utc.utc_tod_nsec() * 1e-9),
                    0.0, 1e-9);
        EXPECT_GE(utc.utc_tod_nsec(), 0.0);
        EXPECT_LT(utc.utc_tod_nsec(), 1e9);
        EXPECT_EQ(utc.a1(), known ? m_truth.utc.a1 : 0.0);
        EXPECT_EQ(utc.covariance()[0][0], known ? sample.covariance()[0][0] : kInfinity);
        EXPECT_EQ(utc.covariance()[1][1], known ? sample.covariance()[1][1] : kInfinity);
    }
}

void EveryTopic::expectUtcDownlinks() {
    const auto samples = bus().utcDownlink.samples();
    const auto frames = framesOf(30409, samples);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const UtcDownlink& sample = samples[i];
        const double time = gpsTime(frames[i]);
        EXPECT_EQ(sample.a0(), m_truth.utc.a0);
        EXPECT_EQ(sample.a1(), m_truth.utc.a1);
        EXPECT_EQ(sample.tot(), 405'504);
        EXPECT_EQ(sample.WNt(), static_cast<int>(time / kSecondsPerWeek));
        EXPECT_EQ(sample.delta_t_ls(), m_truth.utc.leapsAt(time));
        EXPECT_EQ(sample.delta_t_lsf(), m_truth.utc.leapsAfter);
        EXPECT_EQ(sample.wn_lsf(), m_truth.utc.leapWeek);
        EXPECT_EQ(sample.dn(), m_truth.utc.leapDay);
    }
}

void EveryTopic::expectSatellites() {
    const auto samples = bus().svStatus.samples();
    const auto frames = framesOf(5048, samples);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const auto truth = m_truth.satellites(gpsTime(frames[i]));
        ASSERT_EQ(samples[i].num_svs(), 12);
        ASSERT_EQ(samples[i].svs().size(), 12u);
        for (std::size_t s = 0; s < 12; ++s) {
            const sv_set& satellite = samples[i].svs()[s];
            EXPECT_EQ(satellite.svid(), static_cast<int>(truth[s].id));
            EXPECT_EQ(satellite.healthy(), truth[s].healthy);
            EXPECT_EQ(satellite.azimuth(), static_cast<int>(truth[s].azimuth));
            EXPECT_EQ(satellite.elevation(), truth[s].elevation);
            EXPECT_EQ(satellite.rising(), truth[s].rising);
        }
    }
}

// A measurement is known by the position of its satellite, which passes through as it is.
void EveryTopic::expectMeasurements() {
    std::map<double, double> times;
    for (const SaidFrame& frame : m_said[7270]) {
        times[ieeeDouble(frame, 27)] = gpsTime(frame);
    }
    constexpr double kRangeErrors[] = {2.0, 2.8, 4.0, 5.7};
    std::int64_t number = 0;
    for (const GPSLineOfSight& sample : bus().lineOfSight.samples()) {
        EXPECT_EQ(sample.header().seq_num(), number++);
        EXPECT_EQ(sample.num_measurements(), static_cast<int>(sample.obs().size()));
        for (const gpslos_obs& obs : sample.obs()) {
            const auto found = times.find(obs.sv_position_stop()[0]);
            ASSERT_NE(found, times.end());
            const auto truths = m_truth.measurements(found->second);
            const auto truth = std::find_if(truths.begin(), truths.end(), [&](const auto& report) {
                return static_cast<int>(report.prn) == obs.prn();
            });
            ASSERT_NE(truth, truths.end());
            const unsigned code = truth->code + 1;
            const bool precise = code == 4;  // in the states 3 to 5, which are all that there are
            EXPECT_EQ(unsigned{obs.channel_state()}, truth->tracking);
            EXPECT_EQ(unsigned{obs.channel_frequency()}, truth->frequency + 1);
            EXPECT_EQ(unsigned{obs.channel_code()}, code);
            EXPECT_EQ(obs.ere(), kRangeErrors[truth->rangeErrorIndex]);
            EXPECT_EQ(obs.c_n0(), static_cast<int>(truth->carrierToNoise));
            EXPECT_EQ(unsigned{obs.assurance()}, 1u);
            EXPECT_EQ(obs.sv_position_start(), truth->startPosition);
            EXPECT_EQ(obs.sv_position_stop(), truth->stopPosition);
            EXPECT_EQ(obs.tropo_correction_applied(), truth->tropoApplied);
            EXPECT_EQ(obs.iono_correction_applied(), truth->ionoApplied);
            EXPECT_EQ(unsigned{obs.iono_correction_source()}, truth->ionoSource);
            // Half a step of the correction.
            EXPECT_TRUE(obs.pseudorange_measurement_valid());
            EXPECT_NEAR(obs.pseudorange_measurement(),
                        truth->pseudorange - truth->pseudorangeCorrection,
                        std::ldexp(1.0, -11) + 1e-7);
            // 28 steps of 1/16 m, but for two cases by their tables at 28 dB-Hz and above.
            const bool table = (code == 2 || code == 3) && truth->tracking == 3;
            EXPECT_EQ(obs.pseudorange_measurement_variance(),
                      precise ? 0.12 : (table ? 2.25 : 3.0625));
            if (truth->tracking == 3) {
                EXPECT_FALSE(obs.deltarange_measurement_valid());
                EXPECT_EQ(obs.deltarange_measurement(), 0.0);
                EXPECT_EQ(obs.deltarange_measurement_variance(), 0.0);
                EXPECT_EQ(obs.deltarange_interval(), 0.0);
                continue;
            }
            EXPECT_TRUE(obs.deltarange_measurement_valid());
            EXPECT_EQ(obs.deltarange_interval(), 1.0);
            // Half a step of the range and of both rates.
            EXPECT_NEAR(obs.deltarange_measurement(),
                        truth->deltaRange - truth->rateCorrection -
                            truth->secondRateCorrection.value_or(0.0),
                        std::ldexp(1.0, -14) + 2 * std::ldexp(1.0, -11) + 1e-7);
            // 164 steps of 2^-15 m.
            EXPECT_NEAR(obs.deltarange_measurement_variance(),
                        precise ? 0.00017 : std::ldexp(164.0 * 164.0, -30), 1e-15);
        }
    }
}

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
    EXPECT_LE(keys.size(), m_said[5040].size() + m_said[8040].size());
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
    EXPECT_FALSE(m_said[253].empty());
    EXPECT_THAT(bus().eventTexts(), Contains("ROVAN present and communicating."));
}

TEST_F(EveryTopic, EveryMeasurementOfEveryBurstArrivesAndAgreesWithThePosition) {
    m_unitOptions.receiver.epoch = milliseconds(1000);
    startAndHear();
    ASSERT_TRUE(waitFor([&] { return bus().lineOfSight.count() >= 5; }));
    stopReports();
    expectMeasurements();
    std::map<double, std::size_t> said;
    for (const SaidFrame& frame : m_said[7270]) {
        ++said[gpsTime(frame)];
    }
    std::map<double, double> stops;  // of the epochs whose burst is whole, by satellite position
    for (const SaidFrame& frame : m_said[7270]) {
        if (said[gpsTime(frame)] == 12) {
            stops[ieeeDouble(frame, 27)] = gpsTime(frame);
        }
    }
    std::map<double, std::set<int>> heard;
    const auto positions = bus().position.samples();
    const auto positionFrames = framesOf(8504, positions);
    for (const GPSLineOfSight& sample : bus().lineOfSight.samples()) {
        for (const gpslos_obs& obs : sample.obs()) {
            const auto stop = stops.find(obs.sv_position_stop()[0]);
            if (stop == stops.end()) {
                continue;
            }
            EXPECT_TRUE(heard[stop->second].insert(obs.prn()).second) << "twice";
            for (std::size_t i = 0; i < positionFrames.size(); ++i) {
                if (gpsTime(positionFrames[i]) == stop->second) {
                    const auto& place = positions[i].position();
                    const EarthFixed here =
                        earthFixed({place.latitude(), place.longitude(), place.altitude()});
                    EXPECT_NEAR(obs.pseudorange_measurement() - kLight * m_truth.clockBias,
                                distanceBetween(here, obs.sv_position_stop()), 1e-3);
                }
            }
        }
    }
    EXPECT_GE(heard.size(), 4u);
    for (const auto& [time, satellites] : heard) {
        EXPECT_EQ(satellites.size(), 12u) << time - kStart;
    }
    // Four of the bursts at least, and all but the first and the last.
    EXPECT_GE(heard.size() + 2, said.size());
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
    EXPECT_TRUE(waitFor([&] { return text(latest(1)) == "9:0 122 "; })) << text(latest(1));
    EXPECT_EQ(text(latest(7)), "0:0 102 1:0 102 2:0 102 5:0 103 6:0 103 7:0 503 8:0 503 ");
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

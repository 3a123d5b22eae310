// SPDX-License-Identifier: Apache-2.0
#include "tests/end_to_end/EveryTopic.h"

#include <cmath>
#include <cstring>
#include <limits>

using namespace Simulator;
using namespace aspn2_msgs::idl;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::chrono::milliseconds kEpoch{100};
constexpr std::uint32_t kSeed = 7;

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

// Seconds from one time of a day to another, over midnight too.
double betweenTimesOfDay(double from, double to) {
    return std::remainder(to - from, 86'400.0);
}

}  // namespace

double gpsTime(const SaidFrame& frame, double near) {
    const double second = timeOfWeek(frame);
    return second + kSecondsPerWeek * std::round((near - second) / kSecondsPerWeek);
}

double satellitePosition(const SaidFrame& frame7270) {
    constexpr std::size_t kByte = 2 * (5 + 27);  // data word 27
    double value = 0;
    std::memcpy(&value, frame7270.bytes.data() + kByte, sizeof value);
    return value;
}

EveryTopic::EveryTopic() : m_truth(kSeed) {
    m_unitOptions.receiver.epoch = kEpoch;
    m_unitOptions.receiver.gpsStart = kStart;
    m_unitOptions.receiver.seed = kSeed;
    m_unitOptions.receiver.prepare = [this](ReceiverReports& reports) { reports.truth = m_truth; };
    // All that the shipped deployment has but 9225, whose many events leave no room for others.
    m_deployment.setServer("PARAM_7",
                           "8,253,5040,5042,5044,5047,5048,5404,7270,8040,8080,8504,9391,9405,"
                           "30409");
}

void EveryTopic::startAndHear() {
    startAndPing();
    ASSERT_TRUE(waitFor([&] { return bus().gpsTime.count() > 0 && bus().position.count() > 0; }));
}

void EveryTopic::stopReports() {
    receiver().silence();
    ASSERT_TRUE(receiver().waitUntilQuiet(kPatience));
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

// A GPSTime tells which frame it came from, and so from when on the server has published.
void EveryTopic::findFirstPublished() {
    const GPSTime first = bus().gpsTime.samples().front();
    const double second = first.gps_tow_sec() + first.gps_tow_nsec() * 1e-9;
    const auto frame =
        std::find_if(said(9391).begin(), said(9391).end(), [&](const SaidFrame& candidate) {
            return std::fabs(timeOfWeek(candidate) - second) < 0.01;
        });
    ASSERT_NE(frame, said(9391).end());
    m_firstPublished = frame->at;
}

std::size_t EveryTopic::early(std::uint16_t msgId) {
    return static_cast<std::size_t>(
        std::count_if(said(msgId).begin(), said(msgId).end(),
                      [&](const SaidFrame& frame) { return frame.at < m_firstPublished; }));
}

void EveryTopic::expectRate(const char* topic, std::size_t samples, double every) {
    // From the first frame to the last, those included that a busy machine lost.
    const auto& all = said(8504);
    const double time = gpsTime(all.back(), kStart) - gpsTime(all.front(), kStart);
    const double epochs = std::round(time / std::chrono::duration<double>(kEpoch).count()) + 1;
    const double lost = epochs - static_cast<double>(all.size());
    EXPECT_NEAR(static_cast<double>(samples), epochs / every, 2 + lost) << topic;
}

void EveryTopic::expectPositions() {
    const auto samples = bus().position.samples();
    const auto frames = framesOf(8504, samples);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const NavigationReport truth = m_truth.at(gpsTime(frames[i], kStart));
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
        const NavigationReport truth = m_truth.at(gpsTime(frames[i], kStart));
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
    const auto& downlinks = said(30409);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const double time = gpsTime(frames[i], kStart);
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
            const double sent = gpsTime(*std::prev(next), kStart);
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
        const double time = gpsTime(frames[i], kStart);
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
        const auto truth = m_truth.satellites(gpsTime(frames[i], kStart));
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
    for (const SaidFrame& frame : said(7270)) {
        times[satellitePosition(frame)] = gpsTime(frame, kStart);
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

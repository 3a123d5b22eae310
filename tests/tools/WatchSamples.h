// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <limits>
#include <string>

#include "aspn2_msgs/Records.h"
#include "tools/bus/Bus.h"

// Samples for the live view, as the bus would deliver them.
namespace tools_test {

namespace idl = aspn2_msgs::idl;
using WatchClock = std::chrono::steady_clock;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
// 22:13:20 UTC
constexpr int64_t kUnixNs = 1'700'000'000'000'000'000;

inline WatchClock::time_point at(double seconds) {
    return WatchClock::time_point() + std::chrono::hours(1) +
           std::chrono::duration_cast<WatchClock::duration>(std::chrono::duration<double>(seconds));
}

template <typename T>
Bus::Sample sampleOf(const std::string& type, T message, double seconds, int64_t number = 0) {
    Bus::Sample sample;
    sample.topic = type;
    sample.typeName = "aspn2_msgs::idl::" + type;
    sample.publisher = "Rovan";
    sample.sequence = 1;
    sample.receivedNs = kUnixNs;
    sample.arrival = at(seconds);
    sample.message = Bus::makeMessage(sample.typeName);
    message.header().seq_num(number);
    *static_cast<T*>(sample.message->data()) = message;
    return sample;
}

/// 45 degrees north and 90 degrees west, 100.5 m; variances 4 and 9 m2, 0.25 and 1 (m/s)2.
inline idl::PositionVelocity position() {
    idl::PositionVelocity message;
    message.position().latitude(0.78539816339744831);
    message.position().longitude(-1.5707963267948966);
    message.position().altitude(100.5);
    message.velocity() = {1.25, -2.5, 0.125};
    const double variances[] = {4, 4, 9, 0.25, 0.25, 1};
    for (size_t i = 0; i < 6; ++i) {
        message.covariance()[i][i] = variances[i];
    }
    return message;
}

/// As the server sends it without a solution.
inline idl::PositionVelocity noPosition() {
    idl::PositionVelocity message;
    for (size_t i = 0; i < 6; ++i) {
        message.covariance()[i][i] = kInfinity;
    }
    return message;
}

inline idl::ReceiverStatus receiver() {
    idl::ReceiverStatus message;
    message.num_satellites_used(8);
    message.num_satellites_avail(11);
    message.pdop(1.64);
    message.tdop(0.9);
    return message;
}

inline idl::UTCTime utc(int32_t seconds, double ns, double variance) {
    idl::UTCTime message;
    message.utc_tod_sec(seconds);
    message.utc_tod_nsec(ns);
    message.covariance()[0][0] = variance;
    message.covariance()[1][1] = variance;
    return message;
}

inline idl::SVStatus satellites() {
    idl::SVStatus message;
    const int32_t rows[][3] = {{7, 0, 0}, {12, 90, 45}, {31, 180, 90}, {5, 16384, 8192}};
    for (const auto& row : rows) {
        idl::sv_set satellite;
        satellite.svid(row[0]);
        satellite.healthy(row[0] != 12);
        satellite.azimuth(row[1]);
        satellite.elevation(row[2]);
        message.svs().push_back(satellite);
    }
    message.num_svs(4);
    return message;
}

inline idl::ChannelStatus channels() {
    idl::ChannelStatus message;
    for (const int32_t prn : {7, 0, 12}) {
        idl::channel_status_obs channel;
        channel.prn(prn);
        channel.carrier_to_noise(prn == 7 ? 30.0F : std::numeric_limits<float>::quiet_NaN());
        channel.used_in_solution(prn == 7);
        message.channels().push_back(channel);
    }
    message.num_channels(3);
    return message;
}

inline idl::GPSCryptoStatus keys(uint32_t type, int32_t left) {
    idl::GPSCryptoStatus message;
    idl::key_type_set key;
    key.key_type(static_cast<idl::key_type_enum>(type));
    key.remaining_key_time(left);
    key.key_status(idl::KEY_STATUS_2);
    key.key_load_status(idl::KEY_LOAD_STATUS_1);
    key.key_zeroization_status(idl::KEY_ZEROIZATION_STATUS_3);
    message.key_types().push_back(key);
    message.num_key_types(1);
    return message;
}

inline idl::EventLog event(const std::string& text) {
    idl::EventLog message;
    message.event_log_type(idl::EVENT_LOG_TYPE_3);
    message.eventlog(text);
    return message;
}

}  // namespace tools_test

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchState.h"

#include <cmath>

namespace Bus {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int64_t kNsPerSec = 1'000'000'000;
constexpr int64_t kSecondsPerDay = 86'400;
constexpr int64_t kSecondsPerWeek = 7 * kSecondsPerDay;

Number within(double value, double least, double most) {
    return value >= least && value <= most ? Number(value) : std::nullopt;
}

Number finite(double value) {
    return std::isfinite(value) ? Number(value) : std::nullopt;
}

// A dilution of precision of 0 stands for "no solution".
Number positive(double value) {
    return std::isfinite(value) && value > 0 ? Number(value) : std::nullopt;
}

Number sigmaOf(double variance) {
    return std::isfinite(variance) && variance >= 0 ? Number(std::sqrt(variance)) : std::nullopt;
}

Number degreesOf(double radians, double most) {
    return std::abs(radians) <= most ? Number(radians * 180 / kPi) : std::nullopt;
}

// Nanoseconds since a start from whole seconds and the rest, within one turn. The rest may be a
// whole second by rounding.
std::optional<int64_t> sinceStart(int32_t seconds, double ns, int64_t turnSeconds) {
    const bool isTime = seconds >= 0 && seconds < turnSeconds && ns >= 0 && ns <= kNsPerSec;
    return isTime ? std::optional<int64_t>((seconds * kNsPerSec + std::llround(ns)) %
                                           (turnSeconds * kNsPerSec))
                  : std::nullopt;
}

}  // namespace

PositionState stateOf(const idl::PositionVelocity& message) {
    PositionState state;
    bool hasPosition = true;
    bool hasVelocity = true;
    for (size_t i = 0; i < 3; ++i) {
        state.positionSigma[i] = sigmaOf(message.covariance()[i][i]);
        state.velocitySigma[i] = sigmaOf(message.covariance()[i + 3][i + 3]);
        hasPosition = hasPosition && state.positionSigma[i];
        hasVelocity = hasVelocity && state.velocitySigma[i];
    }
    if (hasPosition) {
        const auto& position = message.position();
        state.latitude = finite(position.latitude());
        state.longitude = finite(position.longitude());
        state.altitude = finite(position.altitude());
        state.latitudeDegrees = degreesOf(position.latitude(), kPi / 2);
        state.longitudeDegrees = degreesOf(position.longitude(), 2 * kPi);
    }
    for (size_t i = 0; i < 3 && hasVelocity; ++i) {
        state.velocity[i] = finite(message.velocity()[i]);
    }
    state.isSolution = hasPosition && hasVelocity;
    return state;
}

ReceiverState stateOf(const idl::ReceiverStatus& message) {
    ReceiverState state;
    state.fails = message.rcvr_fail();
    state.used = within(message.num_satellites_used(), 0, INT32_MAX);
    state.available = within(message.num_satellites_avail(), 0, INT32_MAX);
    state.pdop = positive(message.pdop());
    state.tdop = positive(message.tdop());
    return state;
}

std::vector<ChannelState> stateOf(const idl::ChannelStatus& message) {
    std::vector<ChannelState> states;
    for (const auto& channel : message.channels()) {
        if (channel.prn() == 0) {
            continue;
        }
        ChannelState state;
        state.prn = channel.prn();
        state.channel = channel.channel();
        state.band = static_cast<uint32_t>(channel.rinex3_band());
        state.trackingStatus = static_cast<uint32_t>(channel.gnss_tracking_status());
        state.isUsed = channel.used_in_solution();
        state.carrierToNoise = within(channel.carrier_to_noise(), 0, 99);
        state.jammerToSignal = within(channel.jammer_to_signal(), 0, 999);
        states.push_back(state);
    }
    return states;
}

std::vector<SatelliteState> stateOf(const idl::SVStatus& message) {
    std::vector<SatelliteState> states;
    for (const auto& satellite : message.svs()) {
        SatelliteState state;
        state.id = satellite.svid();
        state.isHealthy = satellite.healthy();
        state.isRising = satellite.rising();
        state.azimuth = within(satellite.azimuth(), 0, 360);
        state.elevation = within(satellite.elevation(), -90, 90);
        states.push_back(state);
    }
    return states;
}

GpsTimeState stateOf(const idl::GPSTime& message) {
    GpsTimeState state;
    state.week = within(message.gps_week(), 0, INT32_MAX);
    state.timeOfWeekNs = sinceStart(message.gps_tow_sec(), message.gps_tow_nsec(), kSecondsPerWeek);
    state.bias = finite(message.rcvr_time_bias());
    state.biasError = finite(message.rcvr_time_bias_error());
    return state;
}

UtcState stateOf(const idl::UTCTime& message) {
    UtcState state;
    // Without UTC parameters it is GPS time, off by the leap seconds.
    if (sigmaOf(message.covariance()[0][0])) {
        state.timeOfDayNs =
            sinceStart(message.utc_tod_sec(), message.utc_tod_nsec(), kSecondsPerDay);
    }
    return state;
}

LeapState stateOf(const idl::UtcDownlink& message) {
    LeapState state;
    state.now = message.delta_t_ls();
    state.announced = message.delta_t_lsf();
    state.week = message.wn_lsf();
    state.day = message.dn();
    return state;
}

std::vector<KeyState> stateOf(const idl::GPSCryptoStatus& message) {
    std::vector<KeyState> states;
    for (const auto& key : message.key_types()) {
        states.push_back({static_cast<uint32_t>(key.key_type()), key.remaining_key_time(),
                          static_cast<uint32_t>(key.key_status()),
                          static_cast<uint32_t>(key.key_load_status()),
                          static_cast<uint32_t>(key.key_zeroization_status())});
    }
    return states;
}

std::vector<InterferenceState> stateOf(const idl::ChallengedEnvironment& message) {
    std::vector<InterferenceState> states;
    for (const auto& what : message.interference_types()) {
        states.push_back({static_cast<uint32_t>(what.interference_type()),
                          static_cast<uint32_t>(what.interference_signal()),
                          static_cast<uint32_t>(what.interference_band()),
                          what.interference_value() != 0});
    }
    return states;
}

}  // namespace Bus

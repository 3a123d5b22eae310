// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "aspn2_msgs/Records.h"

// What the live view shows, as taken from the messages. A number that the message marks as not
// valid, or that cannot be one, is empty: it is shown as "--".
namespace Bus {

namespace idl = aspn2_msgs::idl;

using Number = std::optional<double>;

struct PositionState {
    bool isSolution = false;  // the variances are numbers
    Number latitude;          // as sent
    Number longitude;
    Number altitude;
    Number latitudeDegrees;  // when what was sent can be radians
    Number longitudeDegrees;
    std::array<Number, 3> positionSigma;  // m; north, east, down
    std::array<Number, 3> velocity;       // m/s; north, east, down
    std::array<Number, 3> velocitySigma;  // m/s
};

struct ReceiverState {
    bool fails = false;
    Number used;  // satellites
    Number available;
    Number pdop;
    Number tdop;
};

struct ChannelState {
    int32_t prn = 0;
    int32_t channel = 0;
    uint32_t band = 0;
    uint32_t trackingStatus = 0;
    bool isUsed = false;
    Number carrierToNoise;
    Number jammerToSignal;
};

struct SatelliteState {
    int32_t id = 0;
    bool isHealthy = false;
    bool isRising = false;
    Number azimuth;  // degrees, when what was sent can be degrees
    Number elevation;
};

struct GpsTimeState {
    Number week;
    std::optional<int64_t> timeOfWeekNs;
    Number bias;  // receiver's unit
    Number biasError;
};

struct UtcState {
    std::optional<int64_t> timeOfDayNs;
};

struct LeapState {
    Number now;  // seconds
    Number announced;
    Number week;
    Number day;
};

struct KeyState {
    uint32_t type = 0;
    int32_t remaining = 0;
    uint32_t status = 0;
    uint32_t load = 0;
    uint32_t zeroization = 0;
};

struct InterferenceState {
    uint32_t type = 0;
    uint32_t signal = 0;
    uint32_t band = 0;
    bool isIndicated = false;
};

PositionState stateOf(const idl::PositionVelocity& message);
ReceiverState stateOf(const idl::ReceiverStatus& message);
/// The channels that say something.
std::vector<ChannelState> stateOf(const idl::ChannelStatus& message);
std::vector<SatelliteState> stateOf(const idl::SVStatus& message);
GpsTimeState stateOf(const idl::GPSTime& message);
UtcState stateOf(const idl::UTCTime& message);
LeapState stateOf(const idl::UtcDownlink& message);
std::vector<KeyState> stateOf(const idl::GPSCryptoStatus& message);
std::vector<InterferenceState> stateOf(const idl::ChallengedEnvironment& message);

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <vector>

#include "simulator/Geodesy.h"
#include "simulator/ReceiverMessages.h"
#include "simulator/Sky.h"

namespace Simulator {

constexpr double kSecondsPerWeek = 604'800.0;
/// What GPS time is ahead of UTC.
constexpr int kLeapSeconds = 18;

/// GPS time by the machine's clock, to the whole second.
GpsSeconds gpsNow();

/// What ties GPS time to UTC, and the latest leap second, past or announced.
struct UtcTruth {
    bool valid = true;
    double a0 = 9.3e-10;  // s
    double a1 = 1.7e-15;  // s/s
    double referenceSecond = 405'504.0;
    int leapsBefore = kLeapSeconds;
    int leapsAfter = kLeapSeconds;
    int leapWeek = 1929;  // at the end of this day of this week; Sunday is 1
    int leapDay = 7;

    /// The leap seconds in force. A new one is from when UTC ends that day by the old count.
    int leapsAt(GpsSeconds time) const;
};

/// The keys, as all messages about them tell it.
struct KeyTruth {
    std::array<KeyWord, 3> keys{{{true, false, 30, 3}, {true, false, 29, 3}, {false, false, 0, 3}}};
    unsigned furtherPresent = 1;
    std::array<bool, 4> furtherLoadFailed{};
    unsigned firstFurtherRemainingTime = 14;
    unsigned secondFurtherRemainingTime = 2;
    unsigned cryptoState = 2;  // four bits

    /// Nothing is left of them.
    void erase();
    /// They should have been erased, and are still there.
    void failToErase();
};

// The one truth behind all that the receiver says: the unit goes round a circle of 1 km at sea, at
// 10 m/s, while it rises and falls by 5 m within ten minutes. Positions follow from the time alone,
// velocities are their exact derivatives, and satellites, ranges and directions belong to the same
// positions. The same seed sees the same satellites. What a test may set stands first.
class Truth {
  public:
    explicit Truth(std::uint32_t seed);

    double clockBias = 1.25e-7;  // s, what the receiver's clock is ahead of GPS time
    UtcTruth utc;
    KeyTruth keys;
    InterferenceReport interference;
    std::set<unsigned> unhealthy;  // PRNs; they are tracked, but not used in the solution

    Place place(GpsSeconds time) const;

    /// The navigation solution at `time`, with twelve satellites tracked in the 32 channels.
    NavigationReport at(GpsSeconds time) const;
    /// One measurement of each tracked satellite, in the order of the channels.
    std::vector<MeasurementReport> measurements(GpsSeconds time) const;
    /// The same satellites as they are seen in the sky.
    std::array<SatelliteReport, Sky::kSatellites> satellites(GpsSeconds time) const;
    TimeReport clock(GpsSeconds time) const;
    UtcReport utcParameters(GpsSeconds time) const;
    /// Both without an operating mode, which is none of the keys'.
    KeyReport keyState(GpsSeconds time) const;
    KeysReport keyList(GpsSeconds time) const;

  private:
    Direction direction(std::size_t satellite, GpsSeconds time) const;
    double range(std::size_t satellite, GpsSeconds time) const;
    unsigned carrierToNoise(std::size_t satellite, GpsSeconds time) const;

    Sky m_sky;
};

}  // namespace Simulator

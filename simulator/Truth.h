// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "simulator/ReceiverMessages.h"

namespace Simulator {

/// GPS time: seconds since 6 January 1980, without leap seconds.
using GpsSeconds = double;

constexpr double kSecondsPerWeek = 604'800.0;
/// What GPS time is ahead of UTC.
constexpr int kLeapSeconds = 18;

/// GPS time by the machine's clock, to the whole second.
GpsSeconds gpsNow();

// Where the simulated unit really is: on a circle of 1 km round a point at sea, at 10 m/s, while it
// rises and falls by 5 m within ten minutes. All values follow from the time alone, velocities are
// the exact derivatives of the position, and the same seed sees the same satellites.
class Truth {
  public:
    explicit Truth(std::uint32_t seed);

    /// The navigation solution at `time`, with twelve satellites tracked in the 32 channels.
    NavigationReport at(GpsSeconds time) const;

  private:
    struct Satellite {
        unsigned prn;
        unsigned carrierToNoise;
    };
    std::array<Satellite, 12> m_tracked{};
};

}  // namespace Simulator

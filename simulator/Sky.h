// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "simulator/Geodesy.h"

namespace Simulator {

/// GPS time: seconds since 6 January 1980, without leap seconds.
using GpsSeconds = double;

/// What does not change about a satellite.
struct Satellite {
    unsigned prn = 0;
    unsigned carrierToNoise = 0;  // dB-Hz, in the mean
    unsigned code = 0;            // 0 to 3: the signal that is tracked
    unsigned frequency = 0;       // 1 first, 2 second
    unsigned tracking = 0;        // 3, only by its code, 4 or 5
};

// The satellites over a place. Each goes round one common point of the sky in a circle of its own,
// as far from the Earth and as fast round its circle as a navigation satellite, but it never sets:
// the circles lie in the Earth-fixed frame. So they rise and sink all the time, and a receiver
// keeps twelve of them for ever. Light takes no time here.
class Sky {
  public:
    static constexpr std::size_t kSatellites = 12;

    /// The seed chooses PRNs and signal strengths.
    Sky(const Place& over, std::uint32_t seed);

    const std::array<Satellite, kSatellites>& satellites() const { return m_satellites; }

    /// Where a satellite is, by its index.
    EarthFixed position(std::size_t index, GpsSeconds time) const;

  private:
    std::array<Satellite, kSatellites> m_satellites{};
    // The point that they go round, and two directions across it.
    EarthFixed m_middle{};
    EarthFixed m_across{};
    EarthFixed m_along{};
};

}  // namespace Simulator

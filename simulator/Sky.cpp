// SPDX-License-Identifier: Apache-2.0
#include "simulator/Sky.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace Simulator {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRadiansPerDegree = kPi / 180.0;

constexpr double kOrbitRadius = 26'560'000.0;
constexpr double kOrbitPeriod = 43'082.0;  // half a sidereal day

// Seen from the Earth's centre the common point is this far south of the zenith, the smallest and
// the largest circle have these radii. The lowest elevation is 17 degrees then.
constexpr double kTilt = 10.0 * kRadiansPerDegree;
constexpr double kSmallestCircle = 6.0 * kRadiansPerDegree;
constexpr double kLargestCircle = 50.0 * kRadiansPerDegree;
// Turns from one satellite to the next; this angle spreads any number of them evenly.
constexpr double kGoldenAngle = 2.399963229728653;

constexpr unsigned kTracking[] = {5, 5, 4, 5, 4, 3};

}  // namespace

Sky::Sky(const Place& over, std::uint32_t seed) {
    std::mt19937 random(seed);
    std::array<unsigned, 32> prns{};
    std::iota(prns.begin(), prns.end(), 1u);
    std::shuffle(prns.begin(), prns.end(), random);
    std::uniform_int_distribution<unsigned> carrierToNoise(36, 50);
    for (unsigned i = 0; i < m_satellites.size(); ++i) {
        m_satellites[i] = {prns[i], carrierToNoise(random), i % 4, 1 + i % 2,
                           kTracking[i % std::size(kTracking)]};
    }

    const auto [east, north, up] = localAxes(over);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        m_middle[axis] = std::cos(kTilt) * up[axis] - std::sin(kTilt) * north[axis];
        m_across[axis] = east[axis];
        m_along[axis] = std::sin(kTilt) * up[axis] + std::cos(kTilt) * north[axis];
    }
}

EarthFixed Sky::position(std::size_t index, GpsSeconds time) const {
    const auto number = static_cast<double>(index);
    const double circle =
        kSmallestCircle + (kLargestCircle - kSmallestCircle) * number / (kSatellites - 1);
    const double turn = kGoldenAngle * number + 2.0 * kPi / kOrbitPeriod * time;
    EarthFixed position{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        position[axis] =
            kOrbitRadius *
            (std::cos(circle) * m_middle[axis] +
             std::sin(circle) * (std::cos(turn) * m_across[axis] + std::sin(turn) * m_along[axis]));
    }
    return position;
}

}  // namespace Simulator

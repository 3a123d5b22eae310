// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

// Places and directions on the WGS 84 ellipsoid. Angles in radians, lengths in metres.
namespace Simulator {

/// Semi-major axis, and square of the first eccentricity.
constexpr double kEarthAxis = 6'378'137.0;
constexpr double kEarthEccentricitySquared = 6.69437999014e-3;

/// Earth-centred, Earth-fixed: through the equator at longitude 0, at 90 degrees east, and through
/// the North Pole.
using EarthFixed = std::array<double, 3>;

struct Place {
    double latitude = 0;
    double longitude = 0;
    double altitude = 0;
};

struct Direction {
    double azimuth = 0;  // from north over east, from 0 to below 2 pi
    double elevation = 0;
};

EarthFixed earthFixed(const Place& place);

/// The unit vectors to the east, to the north and upwards at a place.
std::array<EarthFixed, 3> localAxes(const Place& place);

double distanceBetween(const EarthFixed& from, const EarthFixed& to);

/// Where `to` is seen from a place.
Direction directionOf(const Place& from, const EarthFixed& to);

}  // namespace Simulator

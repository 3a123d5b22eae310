// SPDX-License-Identifier: Apache-2.0
#include "simulator/Geodesy.h"

#include <cmath>
#include <numeric>

namespace Simulator {
namespace {

constexpr double kPi = 3.14159265358979323846;

double dot(const EarthFixed& a, const EarthFixed& b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

EarthFixed difference(const EarthFixed& from, const EarthFixed& to) {
    return {to[0] - from[0], to[1] - from[1], to[2] - from[2]};
}

}  // namespace

EarthFixed earthFixed(const Place& place) {
    const double sine = std::sin(place.latitude);
    const double normal = kEarthAxis / std::sqrt(1.0 - kEarthEccentricitySquared * sine * sine);
    const double fromAxis = (normal + place.altitude) * std::cos(place.latitude);
    return {fromAxis * std::cos(place.longitude), fromAxis * std::sin(place.longitude),
            (normal * (1.0 - kEarthEccentricitySquared) + place.altitude) * sine};
}

std::array<EarthFixed, 3> localAxes(const Place& place) {
    const double sinLat = std::sin(place.latitude);
    const double cosLat = std::cos(place.latitude);
    const double sinLon = std::sin(place.longitude);
    const double cosLon = std::cos(place.longitude);
    return {EarthFixed{-sinLon, cosLon, 0.0},
            EarthFixed{-sinLat * cosLon, -sinLat * sinLon, cosLat},
            EarthFixed{cosLat * cosLon, cosLat * sinLon, sinLat}};
}

double distanceBetween(const EarthFixed& from, const EarthFixed& to) {
    const EarthFixed way = difference(from, to);
    return std::sqrt(dot(way, way));
}

Direction directionOf(const Place& from, const EarthFixed& to) {
    const EarthFixed way = difference(earthFixed(from), to);
    const auto [eastAxis, northAxis, upAxis] = localAxes(from);
    const double east = dot(way, eastAxis);
    const double north = dot(way, northAxis);
    const double azimuth = std::atan2(east, north);
    return {azimuth < 0.0 ? azimuth + 2.0 * kPi : azimuth,
            std::atan2(dot(way, upAxis), std::hypot(east, north))};
}

}  // namespace Simulator

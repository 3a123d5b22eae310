// SPDX-License-Identifier: Apache-2.0
#include "simulator/Truth.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <random>

namespace Simulator {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRadiansPerDegree = kPi / 180.0;
constexpr std::int64_t kGpsEpochInUnixTime = 315'964'800;

constexpr double kCentreLatitude = 54.0 * kRadiansPerDegree;
constexpr double kCentreLongitude = 7.5 * kRadiansPerDegree;
constexpr double kCentreAltitude = 30.0;
constexpr double kCircleRadius = 1000.0;
constexpr double kSpeed = 10.0;
constexpr double kHeave = 5.0;
constexpr double kHeavePeriod = 600.0;

// WGS 84: semi-major axis and square of the first eccentricity.
constexpr double kAxis = 6'378'137.0;
constexpr double kEccentricitySquared = 6.69437999014e-3;

}  // namespace

GpsSeconds gpsNow() {
    const auto unixTime = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::system_clock::now().time_since_epoch());
    return static_cast<double>(unixTime.count() - kGpsEpochInUnixTime + kLeapSeconds);
}

Truth::Truth(std::uint32_t seed) {
    std::mt19937 random(seed);
    std::array<unsigned, 32> prns{};
    std::iota(prns.begin(), prns.end(), 1u);
    std::shuffle(prns.begin(), prns.end(), random);
    std::uniform_int_distribution<unsigned> carrierToNoise(36, 50);
    for (std::size_t i = 0; i < m_tracked.size(); ++i) {
        m_tracked[i] = {prns[i], carrierToNoise(random)};
    }
}

NavigationReport Truth::at(GpsSeconds time) const {
    NavigationReport report;
    report.time = std::fmod(time, kSecondsPerWeek);

    const double turn = kSpeed / kCircleRadius * report.time;
    const double north = kCircleRadius * std::cos(turn);
    const double east = kCircleRadius * std::sin(turn);
    const double heave = 2.0 * kPi / kHeavePeriod * report.time;

    // Metres to radians by the ellipsoid's radii of curvature at the centre.
    const double sine = std::sin(kCentreLatitude);
    const double root = std::sqrt(1.0 - kEccentricitySquared * sine * sine);
    const double meridian = kAxis * (1.0 - kEccentricitySquared) / (root * root * root);
    const double normal = kAxis / root;
    report.latitude = kCentreLatitude + north / meridian;
    report.longitude = kCentreLongitude + east / (normal * std::cos(kCentreLatitude));
    report.altitude = kCentreAltitude + kHeave * std::sin(heave);
    report.northVelocity = -kSpeed * std::sin(turn);
    report.eastVelocity = kSpeed * std::cos(turn);
    report.upVelocity = kHeave * 2.0 * kPi / kHeavePeriod * std::cos(heave);

    report.horizontalPositionError = 3;
    report.verticalPositionError = 5;
    report.horizontalVelocityError = 0.125;
    report.verticalVelocityError = 0.1875;
    report.hdop = 0.9;
    report.vdop = 1.3;
    report.tdop = 0.8;

    for (std::size_t i = 0; i < report.channels.size(); ++i) {
        ChannelReport& channel = report.channels[i];
        channel.channel = static_cast<unsigned>(i + 1);
        if (i < m_tracked.size()) {
            channel.prn = m_tracked[i].prn;
            channel.used = true;
            channel.signalCode = 3;
            channel.frequency = 1 + static_cast<unsigned>(i % 2);
            channel.assurance = 1;
            // Each signal swings by 1 dB-Hz in a rhythm of its own.
            const double swing = std::sin(report.time / 30.0 + static_cast<double>(i));
            channel.carrierToNoise = static_cast<unsigned>(
                std::lround(static_cast<double>(m_tracked[i].carrierToNoise) + swing));
            channel.jammerToSignal = 2;
            channel.tracking = 5;
        } else {
            channel.tracking = 1;
        }
    }
    return report;
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/Truth.h"

#include <chrono>
#include <cmath>

namespace Simulator {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRadiansPerDegree = kPi / 180.0;
constexpr std::int64_t kGpsEpochInUnixTime = 315'964'800;
constexpr double kSecondsPerDay = 86'400.0;

constexpr double kCircleRadius = 1000.0;
constexpr double kSpeed = 10.0;
constexpr double kHeave = 5.0;
constexpr double kHeavePeriod = 600.0;

/// Hundredths of a nanosecond.
constexpr double kClockBiasStep = 1e-11;

double timeOfWeek(GpsSeconds time) {
    return std::fmod(time, kSecondsPerWeek);
}

Place centre() {
    return {54.0 * kRadiansPerDegree, 7.5 * kRadiansPerDegree, 30.0};
}

double turnAt(GpsSeconds time) {
    return kSpeed / kCircleRadius * time;
}

double heaveAt(GpsSeconds time) {
    return 2.0 * kPi / kHeavePeriod * time;
}

}  // namespace

GpsSeconds gpsNow() {
    const auto unixTime = std::chrono::duration_cast<std::chrono::seconds>(
        std::chrono::system_clock::now().time_since_epoch());
    return static_cast<double>(unixTime.count() - kGpsEpochInUnixTime + kLeapSeconds);
}

int UtcTruth::leapsAt(GpsSeconds time) const {
    const double change = leapWeek * kSecondsPerWeek + leapDay * kSecondsPerDay + leapsBefore;
    return time < change ? leapsBefore : leapsAfter;
}

void KeyTruth::erase() {
    // Zeroization 1 and crypto state 5 say that it is done, 2 and 6 that it is not.
    *this = KeyTruth();
    keys.fill({false, false, 0, 1});
    furtherPresent = 0;
    firstFurtherRemainingTime = 0;
    secondFurtherRemainingTime = 0;
    cryptoState = 5;
}

void KeyTruth::failToErase() {
    for (KeyWord& key : keys) {
        key.zeroization = 2;
    }
    cryptoState = 6;
}

Truth::Truth(std::uint32_t seed) : m_sky(centre(), seed) {
}

Place Truth::place(GpsSeconds time) const {
    // Metres to radians by the ellipsoid's radii of curvature at the centre.
    Place place = centre();
    const double sine = std::sin(place.latitude);
    const double root = std::sqrt(1.0 - kEarthEccentricitySquared * sine * sine);
    const double meridian = kEarthAxis * (1.0 - kEarthEccentricitySquared) / (root * root * root);
    const double parallel = kEarthAxis / root * std::cos(place.latitude);
    place.latitude += kCircleRadius * std::cos(turnAt(time)) / meridian;
    place.longitude += kCircleRadius * std::sin(turnAt(time)) / parallel;
    place.altitude += kHeave * std::sin(heaveAt(time));
    return place;
}

NavigationReport Truth::at(GpsSeconds time) const {
    NavigationReport report;
    report.time = timeOfWeek(time);
    const Place here = place(time);
    report.latitude = here.latitude;
    report.longitude = here.longitude;
    report.altitude = here.altitude;
    report.northVelocity = -kSpeed * std::sin(turnAt(time));
    report.eastVelocity = kSpeed * std::cos(turnAt(time));
    report.upVelocity = kHeave * 2.0 * kPi / kHeavePeriod * std::cos(heaveAt(time));

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
        if (i < Sky::kSatellites) {
            const Satellite& satellite = m_sky.satellites()[i];
            channel.prn = satellite.prn;
            channel.used = unhealthy.count(satellite.prn) == 0;
            channel.signalCode = 2 + satellite.code;
            channel.frequency = satellite.frequency;
            channel.assurance = 1;
            channel.carrierToNoise = carrierToNoise(i, time);
            channel.jammerToSignal = 2;
            channel.tracking = satellite.tracking;
        } else {
            channel.tracking = 1;
        }
    }
    return report;
}

std::array<SatelliteReport, Sky::kSatellites> Truth::satellites(GpsSeconds time) const {
    std::array<SatelliteReport, Sky::kSatellites> reports{};
    for (std::size_t i = 0; i < reports.size(); ++i) {
        const Direction seen = direction(i, time);
        SatelliteReport& report = reports[i];
        report.id = m_sky.satellites()[i].prn;
        report.healthy = unhealthy.count(report.id) == 0;
        report.azimuth = static_cast<unsigned>(std::lround(seen.azimuth / kRadiansPerDegree)) % 360;
        report.elevation = static_cast<int>(std::lround(seen.elevation / kRadiansPerDegree));
        report.rising = direction(i, time + 1.0).elevation > seen.elevation;
    }
    return reports;
}

TimeReport Truth::clock(GpsSeconds time) const {
    const double second = std::floor(time);
    TimeReport report;
    report.time = timeOfWeek(time);
    report.clockBias = static_cast<int>(std::lround(clockBias / kClockBiasStep));
    report.week = static_cast<unsigned>(time / kSecondsPerWeek);
    report.secondOfWeek = static_cast<int>(timeOfWeek(second));
    report.fractionOfSecond = time - second;
    // What the receiver's own clock shows. The bias is too small to be added to the whole time.
    const double shown = report.fractionOfSecond + clockBias;
    report.setSecond = static_cast<int>(timeOfWeek(second + std::floor(shown) + kSecondsPerWeek));
    report.setFraction = shown - std::floor(shown);
    report.clockBiasError = 1e-8;
    report.clockBiasErrorRate = 1e-10F;
    report.timeSigma = 2e-8F;
    report.rateSigma = 1e-10F;
    return report;
}

UtcReport Truth::utcParameters(GpsSeconds time) const {
    UtcReport report;
    report.time = timeOfWeek(time);
    report.valid = utc.valid;
    report.a0 = utc.a0;
    report.a1 = utc.a1;
    report.tot = utc.referenceSecond;
    report.leapSeconds = utc.leapsAt(time);
    report.futureLeapSeconds = utc.leapsAfter;
    report.week = static_cast<int>(time / kSecondsPerWeek);
    report.leapWeek = utc.leapWeek;
    report.leapDay = utc.leapDay;
    return report;
}

KeyReport Truth::keyState(GpsSeconds time) const {
    KeyReport report;
    report.time = timeOfWeek(time);
    report.remainingKeyTime = keys.keys[0].remainingTime;
    report.cryptoState = keys.cryptoState;
    return report;
}

KeysReport Truth::keyList(GpsSeconds time) const {
    return {timeOfWeek(time),
            keys.keys,
            keys.furtherPresent,
            keys.furtherLoadFailed,
            keys.firstFurtherRemainingTime,
            keys.secondFurtherRemainingTime};
}

Direction Truth::direction(std::size_t satellite, GpsSeconds time) const {
    return directionOf(place(time), m_sky.position(satellite, time));
}

double Truth::range(std::size_t satellite, GpsSeconds time) const {
    return distanceBetween(earthFixed(place(time)), m_sky.position(satellite, time));
}

unsigned Truth::carrierToNoise(std::size_t satellite, GpsSeconds time) const {
    // Each signal swings by 1 dB-Hz in a rhythm of its own.
    const double swing = std::sin(time / 30.0 + static_cast<double>(satellite));
    return static_cast<unsigned>(std::lround(m_sky.satellites()[satellite].carrierToNoise + swing));
}

}  // namespace Simulator

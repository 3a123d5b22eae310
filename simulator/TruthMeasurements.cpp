// SPDX-License-Identifier: Apache-2.0
// The ranges that the receiver measures: the true one, plus what its clock is ahead, plus errors
// that it knows and reports as corrections. So each correction takes away exactly what was added,
// but for the steps of its field.
#include <cmath>

#include "simulator/Truth.h"

namespace Simulator {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kSpeedOfLight = 299'792'458.0;
/// Of a delta range, in seconds.
constexpr double kInterval = 1.0;

// Of the clock in a satellite, as a length: up to so many metres to either side.
double satelliteClock(std::size_t satellite, GpsSeconds time) {
    constexpr double kMost = 80.0;
    constexpr double kPeriod = 1800.0;
    return kMost * std::sin(2.0 * kPi / kPeriod * time + static_cast<double>(satellite));
}

// Of the lower atmosphere: the longer, the lower the satellite stands.
double troposphere(double elevation) {
    constexpr double kAtZenith = 2.4;
    return kAtZenith / std::sin(elevation);
}

// Hundredths of a second, from 1 on: two epochs in a row never have the same tag.
unsigned epochTag(GpsSeconds time) {
    return static_cast<unsigned>(1 + std::llround(time * 100.0) % 65'535);
}

}  // namespace

std::vector<MeasurementReport> Truth::measurements(GpsSeconds time) const {
    std::vector<MeasurementReport> reports;
    for (std::size_t i = 0; i < Sky::kSatellites; ++i) {
        const Satellite& satellite = m_sky.satellites()[i];
        const GpsSeconds start = time - kInterval;
        MeasurementReport report;
        report.time = std::fmod(time, kSecondsPerWeek);
        report.epochTag = epochTag(time);
        report.pseudorangeValid = true;
        // It takes the carrier's phase, which is not tracked in state 3.
        report.deltaRangeValid = satellite.tracking != 3;
        report.rangeErrorIndex = static_cast<unsigned>(i % 4);
        report.prn = satellite.prn;
        report.frequency = satellite.frequency - 1;
        report.carrierToNoise = carrierToNoise(i, time);
        report.tracking = satellite.tracking;
        report.code = satellite.code;
        report.assurance = 1;
        report.startPosition = m_sky.position(i, start);
        report.stopPosition = m_sky.position(i, time);
        report.deltaRangeInterval = static_cast<unsigned>(std::lround(kInterval * 1000.0));
        report.pseudorangeSigma = 1.75;
        report.deltaRangeSigma = 0.005;
        report.ionoApplied = i % 2 == 0;
        report.ionoSource = static_cast<unsigned>(i % 3);

        double error = satelliteClock(i, time);
        const double clockChange = error - satelliteClock(i, start);
        double change = clockChange;
        report.rateCorrection = clockChange / kInterval;
        // Every sixth signal comes without a model of the troposphere, and without the troposphere.
        report.tropoApplied = i % 6 != 1;
        if (report.tropoApplied) {
            const double delay = troposphere(direction(i, time).elevation);
            const double delayChange = delay - troposphere(direction(i, start).elevation);
            error += delay;
            change += delayChange;
            report.secondRateCorrection = delayChange / kInterval;
        }
        report.pseudorange = range(i, time) + kSpeedOfLight * clockBias + error;
        report.pseudorangeCorrection = error;
        report.deltaRange = range(i, time) - range(i, start) + change;
        reports.push_back(report);
    }
    return reports;
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/ReceiverReports.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

std::vector<Words> ReceiverReports::make(std::uint16_t msgId, GpsSeconds time) const {
    const double timeOfWeek = std::fmod(time, kSecondsPerWeek);
    switch (msgId) {
        case 8:
        case 253:
            return {messageTimeOnly(timeOfWeek)};
        case 5040: {
            KeyReport report = truth.keyState(time);
            report.operatingMode = operatingMode;
            return {message5040(report)};
        }
        case 5042:
            return {message5042(timeOfWeek, dataTransfer)};
        case 5047:
            return {satellites(time, 0)};
        case 5048:
            return {satellites(time, 1)};
        case 5404:
            return {message5404(timeOfWeek, ipZeroizeStatus)};
        case 7270:
            return measurements(time);
        case 8040:
            return {message8040(truth.keyList(time))};
        case 8080: {
            InterferenceReport report = truth.interference;
            report.time = timeOfWeek;
            return {message8080(report)};
        }
        case 8504:
            return {navigation(time)};
        case 9225: {
            VersionReport report = versions;
            report.time = timeOfWeek;
            return {message9225(report)};
        }
        case 9391:
            return {message9391(truth.clock(time))};
        case 9405: {
            ConnectionReport report = connection;
            report.time = timeOfWeek;
            return {message9405(report)};
        }
        case 30409:
            return {message30409(truth.utcParameters(time))};
        default:
            return {};
    }
}

Words ReceiverReports::navigation(GpsSeconds time) const {
    NavigationReport report = truth.at(time);
    report.receiverFailure = receiverFailure;
    report.noSolution = noSolution || standby;
    return message8504(report);
}

Words ReceiverReports::satellites(GpsSeconds time, std::size_t half) const {
    const auto all = truth.satellites(time);
    std::array<SatelliteReport, 6> six{};
    std::copy_n(all.begin() + 6 * half, six.size(), six.begin());
    return messageSatellites(std::fmod(time, kSecondsPerWeek), six);
}

std::vector<Words> ReceiverReports::measurements(GpsSeconds time) const {
    std::vector<Words> messages;
    for (const MeasurementReport& report : truth.measurements(time)) {
        messages.push_back(message7270(report));
    }
    return messages;
}

}  // namespace Simulator

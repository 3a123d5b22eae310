// SPDX-License-Identifier: Apache-2.0
#include "simulator/ReceiverReports.h"

#include <cmath>

namespace Simulator {
namespace {

Words time9391(GpsSeconds time) {
    const double second = std::floor(time);
    TimeReport report;
    report.time = std::fmod(time, kSecondsPerWeek);
    report.clockBias = 25;
    report.week = static_cast<unsigned>(time / kSecondsPerWeek);
    report.secondOfWeek = static_cast<int>(std::fmod(second, kSecondsPerWeek));
    report.fractionOfSecond = time - second;
    report.setSecond = report.secondOfWeek;
    report.setFraction = report.fractionOfSecond;
    report.clockBiasError = 1e-8;
    report.clockBiasErrorRate = 1e-10F;
    report.timeSigma = 2e-8F;
    report.rateSigma = 1e-10F;
    return message9391(report);
}

Words utc30409(GpsSeconds time) {
    UtcReport report;
    report.time = std::fmod(time, kSecondsPerWeek);
    report.a0 = 9.3e-10;
    report.a1 = 1.7e-15;
    report.tot = 405'504.0;
    report.leapSeconds = kLeapSeconds;
    report.futureLeapSeconds = kLeapSeconds;
    report.week = static_cast<int>(time / kSecondsPerWeek);
    report.leapWeek = 1929;
    report.leapDay = 7;
    return message30409(report);
}

}  // namespace

std::optional<Words> ReceiverReports::make(std::uint16_t msgId, GpsSeconds time) const {
    const double timeOfWeek = std::fmod(time, kSecondsPerWeek);
    switch (msgId) {
        case 8:
        case 253:
            return messageTimeOnly(timeOfWeek);
        case 5040: {
            KeyReport report;
            report.time = timeOfWeek;
            report.operatingMode = operatingMode;
            return message5040(report);
        }
        case 5042:
            return message5042(timeOfWeek, dataTransfer);
        case 5404:
            return message5404(timeOfWeek, ipZeroizeStatus);
        case 8504:
            return navigation(time);
        case 9225: {
            VersionReport report = versions;
            report.time = timeOfWeek;
            return message9225(report);
        }
        case 9391:
            return time9391(time);
        case 9405: {
            ConnectionReport report = connection;
            report.time = timeOfWeek;
            return message9405(report);
        }
        case 30409:
            return utc30409(time);
        default:
            return std::nullopt;
    }
}

Words ReceiverReports::navigation(GpsSeconds time) const {
    NavigationReport report = m_truth.at(time);
    report.receiverFailure = receiverFailure;
    report.noSolution = noSolution || standby;
    return message8504(report);
}

}  // namespace Simulator

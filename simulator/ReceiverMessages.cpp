// SPDX-License-Identifier: Apache-2.0
#include "simulator/ReceiverMessages.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "simulator/MessageBody.h"

namespace Simulator {
namespace {

// A quantity in the steps of its field, to the nearest one and within an unsigned word.
unsigned steps(double value, double step) {
    const double count = std::round(value / step);
    return static_cast<unsigned>(
        std::fmin(std::fmax(count, 0.0), std::numeric_limits<std::uint16_t>::max()));
}

// The same in a signed field of so many bits.
std::int32_t signedSteps(double value, double step, int bits) {
    const double limit = std::ldexp(1.0, bits - 1);
    return static_cast<std::int32_t>(std::clamp(std::round(value / step), -limit, limit - 1.0));
}

unsigned pattern(std::int32_t value) {
    return static_cast<std::uint32_t>(value);
}

unsigned bit(bool value, unsigned at) {
    return value ? 1u << at : 0u;
}

void putChannel(MessageBody& body, std::size_t at, const ChannelReport& channel) {
    body.bits(at, 7, 0, channel.prn);
    body.bits(at, 14, 8, channel.channel);
    body.bits(at, 15, 15, channel.used ? 1 : 0);
    body.bits(at + 1, 3, 0, channel.signalCode);
    body.bits(at + 1, 10, 7, channel.frequency);
    body.bits(at + 1, 12, 11, channel.assurance);
    body.bits(at + 2, 5, 0, channel.carrierToNoise);
    body.bits(at + 2, 11, 6, channel.jammerToSignal);
    body.bits(at + 3, 11, 8, channel.tracking);
}

}  // namespace

Words message8504(const NavigationReport& report) {
    MessageBody body(200);
    body.pdpDouble(0, report.time);
    body.veskExtended(8, report.latitude);
    body.veskExtended(11, report.longitude);
    body.pdpSingle(28, report.altitude);
    body.pdpSingle(30, report.eastVelocity);
    body.pdpSingle(32, report.northVelocity);
    body.pdpSingle(34, report.upVelocity);
    body.word(44, report.horizontalPositionError);
    body.word(45, report.verticalPositionError);
    body.word(46, steps(report.horizontalVelocityError, 0.03125));
    body.word(47, steps(report.verticalVelocityError, 0.03125));
    body.bits(48, 4, 4, report.receiverFailure ? 1 : 0);
    body.bits(48, 5, 5, report.noSolution ? 1 : 0);
    body.bits(48, 7, 6, report.solutionSource);
    body.word(55, steps(report.hdop, 0.1));
    body.word(56, steps(report.vdop, 0.1));
    body.word(57, steps(report.tdop, 0.1));
    body.bits(58, 10, 9, report.differentialCorrections);
    body.bits(58, 12, 11, report.satelliteCorrections);
    for (std::size_t i = 0; i < report.channels.size(); ++i) {
        putChannel(body, 72 + 4 * i, report.channels[i]);
    }
    return body.words();
}

Words message9391(const TimeReport& report) {
    MessageBody body(84);
    body.pdpDouble(0, report.time);
    body.int32(6, report.clockBias);
    body.word(12, report.week);
    body.int32(14, report.secondOfWeek);
    body.ieeeDouble(16, report.fractionOfSecond);
    body.int32(20, report.setSecond);
    body.ieeeDouble(24, report.setFraction);
    body.ieeeDouble(32, report.clockBiasError);
    body.ieeeSingle(36, report.clockBiasErrorRate);
    body.ieeeSingle(44, report.timeSigma);
    body.ieeeSingle(46, report.rateSigma);
    return body.words();
}

Words message9405(const ConnectionReport& report) {
    MessageBody body(104);
    body.pdpDouble(0, report.time);
    body.word(26, bit(report.fpgaTurnOnFailed, 0) | bit(report.clockTurnOnFailed, 1) |
                      bit(report.cableLost, 2) | bit(report.invalidFpgaSignal, 3) |
                      bit(report.clockFailed, 4));
    body.word(27, bit(report.serialCableDisconnected, 0));
    body.word(86, bit(report.rerad, 14));
    return body.words();
}

Words message9225(const VersionReport& report) {
    MessageBody body(416);
    body.pdpDouble(0, report.time);
    const unsigned buildTime[] = {report.month, report.day,    report.year,
                                  report.hour,  report.minute, report.second};
    for (std::size_t i = 0; i < std::size(buildTime); ++i) {
        body.byte(40 + i, buildTime[i]);
    }
    body.text(24, 120, report.papProgram);
    body.text(84, 120, report.papBoot);
    body.text(164, 120, report.pspProgram);
    body.text(224, 120, report.pspBoot);
    body.word(298, report.bootNormal ? 1 : 0);
    const std::string* const partNumbers[] = {
        &report.hpnPapProgram, &report.hpnPapBoot,   &report.hpnPspProgram,
        &report.hpnPspBoot,    &report.hpnCivilBoot, &report.hpnCivilProgram,
        &report.hpnFpga,       &report.hardware,     &report.hpnBsl};
    for (std::size_t i = 0; i < std::size(partNumbers); ++i) {
        body.text(338 + 8 * i, 16, *partNumbers[i]);
    }
    body.text(410, 12, report.fcmId);
    return body.words();
}

Words message5040(const KeyReport& report) {
    MessageBody body(88);
    body.pdpDouble(0, report.time);
    body.bits(49, 3, 0, report.operatingMode);
    body.word(75, report.remainingKeyTime);
    body.bits(77, 3, 0, report.cryptoState);
    return body.words();
}

Words message8040(const KeysReport& report) {
    MessageBody body(25);
    body.pdpDouble(0, report.time);
    for (std::size_t i = 0; i < report.keys.size(); ++i) {
        const KeyWord& key = report.keys[i];
        body.bits(4 + i, 0, 0, key.active ? 1 : 0);
        body.bits(4 + i, 1, 1, key.loadFailed ? 1 : 0);
        body.bits(4 + i, 11, 2, key.remainingTime);
        body.bits(4 + i, 13, 12, key.zeroization);
    }
    body.bits(9, 1, 0, report.furtherPresent);
    for (unsigned i = 0; i < report.furtherLoadFailed.size(); ++i) {
        body.bits(9, 2 + i, 2 + i, report.furtherLoadFailed[i] ? 1 : 0);
    }
    body.bits(9, 13, 6, report.firstFurtherRemainingTime);
    body.bits(9, 15, 14, report.secondFurtherRemainingTime);
    return body.words();
}

Words message8080(const InterferenceReport& report) {
    MessageBody body(6);
    body.pdpDouble(0, report.time);
    body.word(4, bit(report.anySignal, 0) | bit(report.thirdSignal, 1) |
                     bit(report.fourthSignal, 2) | bit(report.otherKind, 3) |
                     bit(report.otherKindToo, 4));
    return body.words();
}

Words messageSatellites(double time, const std::array<SatelliteReport, 6>& satellites) {
    MessageBody body(100);
    body.pdpDouble(0, time);
    for (std::size_t i = 0; i < satellites.size(); ++i) {
        const SatelliteReport& satellite = satellites[i];
        const std::size_t at = 4 + 16 * i;
        if (satellite.id != 0) {
            body.word(at, satellite.id);
            body.word(at + 1, satellite.healthy ? 1 : 0);
            body.word(at + 2, satellite.azimuth);
            body.word(at + 3, pattern(satellite.elevation));
            body.word(at + 4, bit(satellite.rising, 0));
        }
    }
    return body.words();
}

Words message7270(const MeasurementReport& report) {
    const double correctionStep = std::ldexp(1.0, -10);
    MessageBody body(59);
    body.pdpDouble(0, report.time);
    body.word(5, report.epochTag);
    body.bits(6, 1, 1, report.deltaRangeValid ? 1 : 0);
    body.bits(6, 2, 2, report.pseudorangeValid ? 1 : 0);
    body.bits(6, 7, 4, report.rangeErrorIndex);
    body.bits(6, 15, 10, report.prn);
    body.bits(7, 3, 2, report.frequency);
    body.bits(7, 11, 4, report.carrierToNoise);
    body.bits(7, 15, 12, report.tracking);
    body.ieeeDouble(8, report.pseudorange);
    body.int32(12, signedSteps(report.deltaRange, std::ldexp(1.0, -13), 32));
    body.word(14, report.deltaRangeInterval);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        body.ieeeDouble(15 + 4 * axis, report.startPosition[axis]);
        body.ieeeDouble(27 + 4 * axis, report.stopPosition[axis]);
    }
    body.int32(39, signedSteps(report.pseudorangeCorrection, correctionStep, 32));
    body.word(41, pattern(signedSteps(report.rateCorrection, correctionStep, 16)));
    if (report.secondRateCorrection) {
        body.bits(42, 0, 0, 1);
        body.bits(42, 15, 1,
                  pattern(signedSteps(*report.secondRateCorrection, correctionStep, 15)));
    }
    body.bits(53, 2, 1, report.assurance);
    body.bits(53, 12, 12, report.tropoApplied ? 1 : 0);
    body.bits(53, 13, 13, report.ionoApplied ? 1 : 0);
    body.bits(53, 15, 14, report.ionoSource);
    body.bits(56, 2, 0, report.code);
    body.word(57, pattern(signedSteps(report.pseudorangeSigma, std::ldexp(1.0, -4), 16)));
    body.word(58, pattern(signedSteps(report.deltaRangeSigma, std::ldexp(1.0, -15), 16)));
    return body.words();
}

Words message5042(double time, bool dataTransfer) {
    MessageBody body(100);
    body.pdpDouble(0, time);
    body.bits(48, 1, 1, dataTransfer ? 1 : 0);
    return body.words();
}

Words message5404(double time, unsigned ipZeroizeStatus) {
    MessageBody body(60);
    body.pdpDouble(0, time);
    body.bits(5, 5, 4, ipZeroizeStatus);
    return body.words();
}

Words message5044(double time, unsigned eventId, const std::string& text) {
    MessageBody body(21);
    body.pdpDouble(0, time);
    body.word(4, eventId);
    // The first character of each pair stands in the high byte.
    for (std::size_t i = 0; i < text.size() && i < 32; ++i) {
        body.byte(10 + (i ^ 1), static_cast<unsigned char>(text[i]));
    }
    return body.words();
}

Words message30409(const UtcReport& report) {
    MessageBody body(32);
    body.pdpDouble(0, report.time);
    body.word(6, bit(report.sourceOne, 0));
    body.word(9, bit(report.sourceTwo, 0));
    body.ieeeDouble(12, report.a1);
    body.ieeeDouble(16, report.a0);
    body.ieeeDouble(20, report.tot);
    body.word(24, pattern(report.futureLeapSeconds));
    body.word(25, pattern(report.week));
    body.word(26, pattern(report.leapDay));
    body.word(27, pattern(report.leapWeek));
    body.word(28, pattern(report.leapSeconds));
    body.word(30, bit(report.valid, 0));
    return body.words();
}

Words messageTimeOnly(double time) {
    MessageBody body(4);
    body.pdpDouble(0, time);
    return body.words();
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "simulator/Frame.h"

// The messages that the simulated receiver sends: what each says, and its data words by the
// receiver's word table. A message time is in seconds of the GPS week.
namespace Simulator {

/// One of the 32 channels of message 8504.
struct ChannelReport {
    unsigned prn = 0;
    unsigned channel = 0;
    bool used = false;            // in the solution
    unsigned signalCode = 0;      // 2 to 6
    unsigned frequency = 0;       // 1 first, 2 second
    unsigned assurance = 0;       // two bits, not zero is assured
    unsigned carrierToNoise = 0;  // dB-Hz, up to 63
    unsigned jammerToSignal = 0;  // units of 2
    unsigned tracking = 0;        // 3, 4 and 5 are an available satellite
};

/// Message 8504, the navigation solution. Angles in radians, lengths in metres, times in seconds.
struct NavigationReport {
    double time = 0;
    double latitude = 0;
    double longitude = 0;
    double altitude = 0;
    double eastVelocity = 0;
    double northVelocity = 0;
    double upVelocity = 0;
    unsigned horizontalPositionError = 0;  // whole metres
    unsigned verticalPositionError = 0;
    double horizontalVelocityError = 0;  // sent in units of 0.03125 m/s
    double verticalVelocityError = 0;
    bool receiverFailure = false;
    bool noSolution = false;
    unsigned solutionSource = 0;  // two bits
    double hdop = 0;              // sent in tenths
    double vdop = 0;
    double tdop = 0;
    unsigned differentialCorrections = 0;  // two bits
    unsigned satelliteCorrections = 0;     // two bits
    std::array<ChannelReport, 32> channels{};
};
Words message8504(const NavigationReport& report);

/// Message 9391, the time solution.
struct TimeReport {
    double time = 0;
    int clockBias = 0;  // units of 0.01
    unsigned week = 0;
    int secondOfWeek = 0;
    double fractionOfSecond = 0;
    int setSecond = 0;
    double setFraction = 0;
    double clockBiasError = 0;
    float clockBiasErrorRate = 0;
    float timeSigma = 0;
    float rateSigma = 0;
};
Words message9391(const TimeReport& report);

/// Message 9405, the state of the cables and of the accessory.
struct ConnectionReport {
    double time = 0;
    bool fpgaTurnOnFailed = false;
    bool clockTurnOnFailed = false;
    bool cableLost = false;
    bool invalidFpgaSignal = false;
    bool clockFailed = false;
    bool serialCableDisconnected = false;
    bool rerad = false;
};
Words message9405(const ConnectionReport& report);

/// Message 9225, what the receiver is made of. A text longer than its field is cut.
struct VersionReport {
    double time = 0;
    unsigned month = 9, day = 18, year = 24, hour = 13, minute = 48, second = 46;
    std::string papProgram = "SIM-PAP-1.0";
    std::string papBoot = "SIM-PAPBOOT-1.0";
    std::string pspProgram = "SIM-PSP-1.0";
    std::string pspBoot = "SIM-PSPBOOT-1.0";
    bool bootNormal = true;
    std::string hpnPapProgram = "100-1001-001";
    std::string hpnPapBoot = "100-1002-001";
    std::string hpnPspProgram = "100-1003-001";
    std::string hpnPspBoot = "100-1004-001";
    std::string hpnCivilBoot = "100-1005-001";
    std::string hpnCivilProgram = "100-1006-001";
    std::string hpnFpga = "100-1007-001";
    std::string hardware = "SIM-A";
    std::string hpnBsl = "100-1008-001";
    std::string fcmId = "SIM00001";
};
Words message9225(const VersionReport& report);

/// Message 5040, the key status, which also tells the operating mode.
struct KeyReport {
    double time = 0;
    unsigned operatingMode = 0;  // four bits; 0 is continuous operation
    unsigned remainingKeyTime = 30;
    unsigned cryptoState = 2;  // four bits
};
Words message5040(const KeyReport& report);

/// Message 8040: one of its three main keys.
struct KeyWord {
    bool active = false;
    bool loadFailed = false;
    unsigned remainingTime = 0;  // 10 bits
    unsigned zeroization = 3;    // two bits
};

/// Message 8040, the keys one by one.
struct KeysReport {
    double time = 0;
    std::array<KeyWord, 3> keys{};
    unsigned furtherPresent = 0;              // two bits: 1 the first, 3 the second
    std::array<bool, 4> furtherLoadFailed{};  // of the four further keys
    unsigned firstFurtherRemainingTime = 0;   // 8 bits
    unsigned secondFurtherRemainingTime = 0;  // two bits
};
Words message8040(const KeysReport& report);

/// Message 8080, what disturbs the reception.
struct InterferenceReport {
    double time = 0;
    bool anySignal = false;     // bit 0
    bool thirdSignal = false;   // bit 1
    bool fourthSignal = false;  // bit 2
    bool otherKind = false;     // bit 3
    bool otherKindToo = false;  // bit 4, the same to whoever hears it
};
Words message8080(const InterferenceReport& report);

/// Messages 5047 and 5048, the satellites in view, six in each.
struct SatelliteReport {
    unsigned id = 0;  // 0 is an empty record
    bool healthy = true;
    unsigned azimuth = 0;  // whole degrees
    int elevation = 0;
    bool rising = false;
};
Words messageSatellites(double time, const std::array<SatelliteReport, 6>& satellites);

/// Message 7270, one measurement. Lengths in metres, rates in m/s.
struct MeasurementReport {
    double time = 0;
    unsigned epochTag = 0;  // 0: no measurement
    bool deltaRangeValid = false;
    bool pseudorangeValid = false;
    unsigned rangeErrorIndex = 0;  // four bits
    unsigned prn = 0;
    unsigned frequency = 0;       // 0 first, 1 second
    unsigned carrierToNoise = 0;  // 8 bits
    unsigned tracking = 0;        // four bits
    double pseudorange = 0;
    double deltaRange = 0;            // sent in units of 2^-13
    unsigned deltaRangeInterval = 0;  // milliseconds
    std::array<double, 3> startPosition{};
    std::array<double, 3> stopPosition{};
    double pseudorangeCorrection = 0;  // sent in units of 2^-10, as the rates
    double rateCorrection = 0;
    std::optional<double> secondRateCorrection;
    unsigned assurance = 0;  // two bits
    bool tropoApplied = false;
    bool ionoApplied = false;
    unsigned ionoSource = 0;      // two bits
    unsigned code = 0;            // three bits
    double pseudorangeSigma = 0;  // sent in units of 2^-4
    double deltaRangeSigma = 0;   // sent in units of 2^-15
};
Words message7270(const MeasurementReport& report);

/// Message 5042: whether a time data transfer runs on the receiver's port.
Words message5042(double time, bool dataTransfer);

/// Message 5404: 0 says that the IP data are clear, 1 that they are not, 2 that nothing was cleared
/// yet.
Words message5404(double time, unsigned ipZeroizeStatus);

/// Message 5044, an event with its number and up to 32 characters of text.
Words message5044(double time, unsigned eventId, const std::string& text);

/// Message 30409, the UTC parameters of the GPS navigation message.
struct UtcReport {
    double time = 0;
    bool sourceOne = true;
    bool sourceTwo = false;
    bool valid = true;
    double a0 = 0;
    double a1 = 0;
    double tot = 0;
    int leapSeconds = 18;
    int futureLeapSeconds = 18;
    int week = 0;
    int leapWeek = 0;
    int leapDay = 0;
};
Words message30409(const UtcReport& report);

/// Messages 8 (the receiver has restarted) and 253 (it is alive): nothing but the time.
Words messageTimeOnly(double time);

}  // namespace Simulator

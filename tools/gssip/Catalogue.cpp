// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Catalogue.h"

#include <fmt/format.h>

#include <algorithm>

#include "MSID_messages/MessageTable.h"
#include "gssip/GssipFrame.h"
#include "tools/gssip/FieldForms.h"

namespace GssipTool {
namespace {

using namespace Forms;

// --- what numbers stand for

const std::vector<Name> kKeyZeroization{{1, "2 on the bus"}, {2, "1 on the bus"}};
const std::vector<Name> kAssurance{{1, "assured"}, {2, "assured"}, {3, "assured"}};
const std::vector<Name> kBauds{{1, "300 bit/s"},     {2, "600 bit/s"},     {3, "1200 bit/s"},
                               {4, "2400 bit/s"},    {5, "4800 bit/s"},    {6, "19200 bit/s"},
                               {7, "76800 bit/s"},   {10, "38400 bit/s"},  {11, "115200 bit/s"},
                               {12, "230400 bit/s"}, {13, "460800 bit/s"}, {14, "921600 bit/s"}};
const std::vector<Name> kSentences{{0, "none"}, {4, "DTM"},  {5, "GGA"},  {6, "GLL"},
                                   {7, "GSA"},  {8, "GSV"},  {9, "RMA"},  {11, "RMC"},
                                   {13, "STN"}, {14, "VTG"}, {19, "ZDA"}, {20, "ZLZ"}};

// Metres, by the index in word 6 of 7270; the last two are equal.
const std::vector<double> kExpectedRangeErrors{2.0,    2.8,    4.0,    5.7,   8.0,   11.3,
                                               16.0,   32.0,   64.0,   128.0, 256.0, 512.0,
                                               1024.0, 2048.0, 4096.0, 4096.0};

// --- the messages

std::vector<Field> fields5001() {
    return {time(),
            named(word("command", 4), {{0, "first command after power-on"},
                                       {1, "continuous operation"},
                                       {5, "standby"},
                                       {7, "emergency zeroize"},
                                       {8, "CV zeroize"},
                                       {64, "extended form"}}),
            named(word("extendedSelector", 5), {{14371, "extended form"}}),
            word("extendedValue", 6)};
}

std::vector<Field> fields5040() {
    std::vector<Field> fields{time()};
    for (unsigned i = 18; i <= 25; ++i) {
        fields.push_back(word(fmt::format("word{}", i), i));
    }
    const std::vector<Field> more{bits("nibble33", 33, 3, 0),
                                  veskSingle("single36", 36),
                                  bits("nibble38", 38, 3, 0),
                                  word("word42", 42),
                                  veskSingle("single44", 44),
                                  bits("nibble46", 46, 3, 0),
                                  bits("operatingMode", 49, 3, 0),
                                  bits("bit61", 61, 0, 0),
                                  word("word71", 71),
                                  word("word72", 72),
                                  word("word73", 73),
                                  signedWord("hundredths74", 74, 0.01),
                                  word("remainingKeyTime", 75),
                                  word("word76", 76),
                                  bits("cryptoState", 77, 3, 0),
                                  veskSingle("single78", 78),
                                  bits("nibble80", 80, 3, 0),
                                  veskSingle("single82", 82),
                                  bits("nibble84", 84, 3, 0)};
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

std::vector<Field> fields5042() {
    return {time(), flag("isDtsCom1", 48, 1), bits("lowByte58", 58, 7, 0)};
}

std::vector<Field> fields5044() {
    return {time(), word("eventId", 4), text("text", 5, 32, Form::kSwappedText)};
}

// Of these only the coming counts, and the time with which every message begins.
Message timeOnly(uint16_t msgId, const char* title) {
    return {msgId, 4, title, false, {time()}, {}, true};
}

Message svRise(uint16_t msgId) {
    return {
        msgId,
        Msid::wordCount(msgId),
        "satellites in view",
        false,
        {time()},
        {"records",
         4,
         6,
         16,
         {named(word("svid", 0), {{0, "empty"}}), named(word("health", 1), {{0, "not healthy"}}),
          word("azimuth", 2), signedWord("elevation", 3), flag("rising", 4, 0)}}};
}

std::vector<Field> fields5313() {
    return {time(), flags("validity", 4, {{0x0001, "codeType"}, {0x0002, "bfeaMode"}}),
            bits("codeType", 43, 3, 0), bits("bfeaMode", 44, 3, 0)};
}

std::vector<Field> fields5331() {
    std::vector<Field> fields{time(),
                              flags("validity", 4,
                                    {{0x8000, "receive"},
                                     {0x4000, "transmit"},
                                     {0x0800, "sentences"},
                                     {0x0200, "pulse"},
                                     {0x0080, "redundantPorts"}}),
                              word("port", 6),
                              word("receiveProtocol", 7),
                              named(word("receiveBaud", 8), kBauds),
                              word("receiveParity", 9),
                              word("transmitProtocol", 10),
                              named(word("transmitBaud", 11), kBauds),
                              word("transmitParity", 12)};
    for (unsigned i = 0; i < 7; ++i) {
        fields.push_back(named(word(fmt::format("sentence{}", i + 1), 23 + i), kSentences));
    }
    fields.push_back(word("pulse", 31));
    fields.push_back(named(word("redundantPorts", 33), {{0, "enabled"}, {1, "not enabled"}}));
    return fields;
}

std::vector<Field> fields5402() {
    return {time(), flags("selection", 4, {{0x0010, "cvZeroize"}, {0x0001, "ipZeroize"}}),
            flags("validity", 5,
                  {{0x0001, "cvZeroize"}, {0x0020, "ipZeroize"}, {0x0008, "missionDuration"}}),
            word("missionDuration", 6)};
}

std::vector<Field> fields7270() {
    constexpr double kDeltaRangeUnit = 1.0 / 8192;
    constexpr double kCorrectionUnit = 1.0 / 1024;
    constexpr double kPseudorangeSigmaUnit = 1.0 / 16;
    constexpr double kDeltaRangeSigmaUnit = 1.0 / 32768;
    Field expectedRangeError = bits("expectedRangeError", 6, 7, 4, "m");
    expectedRangeError.form = Form::kChoice;
    expectedRangeError.choices = kExpectedRangeErrors;
    std::vector<Field> fields{time(),
                              named(word("epochTag", 5), {{0, "no measurement"}}),
                              flag("deltaRangeValid", 6, 1),
                              flag("pseudorangeValid", 6, 2),
                              expectedRangeError,
                              bits("prn", 6, 15, 10),
                              named(bits("frequency", 7, 3, 2), {{0, "first"}, {1, "second"}}),
                              bits("carrierToNoise", 7, 11, 4),
                              bits("channelState", 7, 15, 12),
                              ieeeDouble("pseudorange", 8, "m"),
                              int32("deltaRange", 12, kDeltaRangeUnit, "m"),
                              word("deltaRangeIntervalMs", 14, "ms")};
    for (unsigned axis = 0; axis < 3; ++axis) {
        fields.push_back(
            ieeeDouble(std::string("svPositionStart") + "XYZ"[axis], 15 + 4 * axis, "m"));
    }
    for (unsigned axis = 0; axis < 3; ++axis) {
        fields.push_back(
            ieeeDouble(std::string("svPositionStop") + "XYZ"[axis], 27 + 4 * axis, "m"));
    }
    const std::vector<Field> more{
        int32("pseudorangeCorrection", 39, kCorrectionUnit, "m"),
        signedWord("rangeRateCorrection", 41, kCorrectionUnit, "m/s"),
        flag("hasSecondRateCorrection", 42, 0),
        signedBits("secondRateCorrection", 42, 15, 1, kCorrectionUnit, "m/s"),
        named(bits("assured", 53, 2, 1), kAssurance),
        flag("tropoCorrectionApplied", 53, 12),
        flag("ionoCorrectionApplied", 53, 13),
        bits("ionoCorrectionSource", 53, 15, 14),
        bits("channelCode", 56, 2, 0),
        signedWord("pseudorangeSigma", 57, kPseudorangeSigmaUnit, "m"),
        signedWord("deltaRangeSigma", 58, kDeltaRangeSigmaUnit, "m")};
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

std::vector<Field> fields8040() {
    return {time(),
            named(bits("selector", 9, 1, 0), {{1, "first key present"}, {3, "second key present"}}),
            flag("loadStatus0", 9, 2),
            flag("loadStatus1", 9, 3),
            flag("loadStatus2", 9, 4),
            flag("loadStatus3", 9, 5),
            bits("firstRemainingTime", 9, 13, 6),
            bits("secondRemainingTime", 9, 15, 14)};
}

Records keys8040() {
    return {"keys",
            4,
            3,
            1,
            {flag("status", 0, 0), flag("loadStatus", 0, 1), bits("remainingTime", 0, 11, 2),
             named(bits("zeroizationStatus", 0, 13, 12), kKeyZeroization)}};
}

std::vector<Field> fields8080() {
    return {time(),
            flag("interference0", 4, 0),
            flag("interference1", 4, 1),
            flag("interference2", 4, 2),
            bits("interference3", 4, 4, 3),
            word("word5", 5)};
}

std::vector<Field> fields8504() {
    constexpr double kVelocityErrorUnit = 1.0 / 32;
    std::vector<Field> fields{
        time(),
        pdpDouble("double4", 4),
        veskExtended("latitude", 8),
        veskExtended("longitude", 11),
        pdpDouble("double14", 14),
        pdpDouble("double18", 18),
        pdpDouble("double22", 22),
        pdpSingle("single26", 26),
        pdpSingle("altitude", 28),
        pdpSingle("eastVelocity", 30, "m/s"),
        pdpSingle("northVelocity", 32, "m/s"),
        pdpSingle("upVelocity", 34, "m/s"),
        pdpSingle("single42", 42),
        word("horizontalPositionError", 44, "m"),
        word("verticalPositionError", 45, "m"),
        counted("horizontalVelocityError", 46, 15, 0, kVelocityErrorUnit, "m/s"),
        counted("verticalVelocityError", 47, 15, 0, kVelocityErrorUnit, "m/s"),
        bits("bits48at0", 48, 3, 0),
        flag("receiverFailure", 48, 4),
        flag("noSolution", 48, 5),
        bits("bits48at6", 48, 7, 6),
        bits("bits48at8", 48, 9, 8),
        bits("bits48at10", 48, 15, 10),
        word("word49", 49),
        bits("byte50", 50, 7, 0),
        bits("bit50at8", 50, 8, 8),
        bits("bit50at9", 50, 9, 9),
        bits("bit50at10", 50, 10, 10),
        bits("bits50at11", 50, 15, 11)};
    for (unsigned i = 0; i < 8; ++i) {
        const unsigned low = i % 4 * 4;
        fields.push_back(bits(fmt::format("nibble51at{}", i), 51 + i / 4, low + 3, low));
    }
    const std::vector<Field> more{counted("hdop", 55, 15, 0, 0.1),
                                  counted("vdop", 56, 15, 0, 0.1),
                                  counted("tdop", 57, 15, 0, 0.1),
                                  bits("byte58", 58, 7, 0),
                                  bits("bit58at8", 58, 8, 8),
                                  bits("corrections58at9", 58, 10, 9),
                                  bits("corrections58at11", 58, 12, 11),
                                  bits("bits58at13", 58, 14, 13),
                                  bits("bit58at15", 58, 15, 15),
                                  bits("bits59at0", 59, 2, 0),
                                  bits("bits59at3", 59, 7, 3),
                                  bits("byte59at8", 59, 15, 8),
                                  bits("bits60at0", 60, 1, 0),
                                  bits("bit60at2", 60, 2, 2),
                                  bits("bits60at3", 60, 7, 3),
                                  bits("byte60at8", 60, 15, 8),
                                  veskSingle("single61", 61),
                                  veskSingle("single63", 63),
                                  bits("bits65at0", 65, 3, 0),
                                  bits("bits65at4", 65, 7, 4),
                                  bits("byte65at8", 65, 15, 8)};
    fields.insert(fields.end(), more.begin(), more.end());
    return fields;
}

Records channels8504() {
    return {"channels",
            72,
            32,
            4,
            {bits("prn", 0, 7, 0), bits("channel", 0, 14, 8), flag("usedInSolution", 0, 15),
             bits("signalCode", 1, 3, 0),
             named(bits("frequency", 1, 10, 7), {{1, "first"}, {2, "second"}}),
             named(bits("assured", 1, 12, 11), kAssurance), bits("carrierToNoise", 2, 5, 0),
             counted("jammerToSignal", 2, 11, 6, 2), bits("trackingStatus", 3, 11, 8)}};
}

std::vector<Field> fields9225() {
    return {time(),
            bits("buildMonth", 20, 7, 0),
            bits("buildDay", 20, 15, 8),
            bits("buildYear", 21, 7, 0),
            bits("buildHour", 21, 15, 8),
            bits("buildMinute", 22, 7, 0),
            bits("buildSecond", 22, 15, 8),
            text("PAP_SW_Build", 24, 120),
            text("PAP_Boot_Build", 84, 120),
            text("PSP_SW_Build", 164, 120),
            text("PSP_Boot_Build", 224, 120),
            named(word("bootFlag", 298), {{0, "not normal"}}),
            text("HPN_PAP_SW", 338, 16),
            text("HPN_PAP_Boot", 346, 16),
            text("HPN_PSP_SW", 354, 16),
            text("HPN_PSP_Boot", 362, 16),
            text("HPN_Civil_Boot", 370, 16),
            text("HPN_Civil_App", 378, 16),
            text("HPN_FPGA", 386, 16),
            text("HPN_HW", 394, 16),
            text("HPN_BSL", 402, 16),
            text("FCM_ID", 410, 12)};
}

std::vector<Field> fields9391() {
    return {time(),
            int32("clockBias", 6, 0.01),
            signedWord("gpsWeek", 12),
            int32("gpsTimeOfWeek", 14, 1, "s"),
            ieeeDouble("gpsTimeOfWeekFraction", 16, "s"),
            int32("receiverSetTime", 20, 1, "s"),
            ieeeDouble("receiverSetTimeFraction", 24, "s"),
            ieeeDouble("clockBiasError", 32),
            ieeeSingle("clockBiasErrorRate", 36),
            ieeeSingle("firstSigma", 44),
            ieeeSingle("secondSigma", 46)};
}

std::vector<Field> fields9405() {
    return {time(),
            flags("bciFailures", 26,
                  {{0x0001, "BCI_ST_FPGA_TURN_ON_FAIL"},
                   {0x0002, "BCI_ST_BCI_CLOCK_TRUN_FAIL"},
                   {0x0004, "BCI_ST_CABLE_LOSS"},
                   {0x0008, "BCI_ST_INVLD_FPGA_SIG"},
                   {0x0010, "BCI_ST_BCI_CLK_FAIL"}}),
            flag("serialCableDisconnected", 27, 0), flag("inReRad", 86, 14)};
}

std::vector<Field> fields30409() {
    return {time(),
            flag("sourceOneValid", 6, 0),
            flag("sourceTwoValid", 9, 0),
            ieeeDouble("a1", 12, "s/s"),
            ieeeDouble("a0", 16, "s"),
            ieeeDouble("tot", 20, "s"),
            signedWord("delta_t_lsf", 24, 1, "s"),
            signedWord("WNt", 25, 1, "weeks"),
            signedWord("dn", 26, 1, "days"),
            signedWord("wn_lsf", 27, 1, "weeks"),
            signedWord("delta_t_ls", 28, 1, "s"),
            flag("utcDataValid", 30, 0)};
}

Message toReceiver(uint16_t msgId, const char* title, std::vector<Field> fields) {
    return {msgId, Msid::wordCount(msgId), title, true, std::move(fields)};
}

Message fromReceiver(uint16_t msgId, const char* title, std::vector<Field> fields,
                     Records records = {}) {
    return {msgId, Msid::wordCount(msgId), title, false, std::move(fields), std::move(records)};
}

}  // namespace

const std::vector<Message>& catalogue() {
    static const std::vector<Message> kMessages{
        timeOnly(8, "receiver restarted"),
        timeOnly(253, "receiver alive"),
        toReceiver(5001, "mode command", fields5001()),
        fromReceiver(5040, "key status", fields5040()),
        fromReceiver(5042, "data transfer state", fields5042()),
        fromReceiver(5044, "event report", fields5044()),
        svRise(5047),
        svRise(5048),
        toReceiver(5313, "receiver set-up", fields5313()),
        toReceiver(5331, "port set-up", fields5331()),
        toReceiver(5402, "zeroize and mission set-up", fields5402()),
        fromReceiver(5404, "zeroize status", {time(), bits("ipZeroizeStatus", 5, 5, 4)}),
        fromReceiver(7270, "satellite measurement", fields7270()),
        fromReceiver(8040, "key status", fields8040(), keys8040()),
        fromReceiver(8080, "interference", fields8080()),
        fromReceiver(8504, "navigation solution", fields8504(), channels8504()),
        fromReceiver(9225, "version identifiers", fields9225()),
        fromReceiver(9391, "time solution", fields9391()),
        fromReceiver(9405, "connection status", fields9405()),
        fromReceiver(9409, "UTC parameters", fields30409()),
        fromReceiver(30409, "UTC parameters", fields30409()),
    };
    return kMessages;
}

const Message* findMessage(uint16_t msgId) {
    const auto& all = catalogue();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [msgId](const Message& m) { return m.msgId == msgId; });
    return found != all.end() ? &*found : nullptr;
}

const std::vector<Name>& headerFlags() {
    static const std::vector<Name> kFlags{{Gssip::kFlagFrameMarker, "marker"},
                                          {Gssip::kFlagAckRequest, "ack-request"},
                                          {Gssip::kFlagAck, "ack"},
                                          {Gssip::kFlagNak, "nak"},
                                          {Gssip::kFlagReply, "reply"},
                                          {Gssip::kFlagReject, "reject"},
                                          {Gssip::kFlagConnect, "connect"},
                                          {Gssip::kFlagDisconnect, "disconnect"},
                                          {Gssip::kFlagRequest, "request"}};
    return kFlags;
}

}  // namespace GssipTool

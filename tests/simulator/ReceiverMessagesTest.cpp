// SPDX-License-Identifier: Apache-2.0
// Expected words are worked out by hand from the word tables; floating-point words come from the
// same script as those of NumberFormatsTest, and all words of 5047, 7270, 8040 and 8080 from
// expected_words.py. What is not listed must be zero.
#include "simulator/ReceiverMessages.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using namespace Simulator;
using NonZero = std::map<std::size_t, unsigned>;

NonZero nonZero(const Words& words) {
    NonZero result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] != 0) {
            result[i] = words[i];
        }
    }
    return result;
}

std::string textAt(const Words& words, std::size_t at, std::size_t bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes; ++i) {
        const unsigned word = words[at + i / 2];
        const char character = static_cast<char>(i % 2 == 0 ? word & 0xFF : word >> 8);
        if (character == '\0') {
            break;
        }
        text += character;
    }
    return text;
}

TEST(ReceiverMessages, NavigationSolution8504) {
    NavigationReport report;
    report.time = 604799.5;
    report.latitude = -0.9424777960769379;
    report.longitude = 0.13089969389957472;
    report.altitude = -1234.5625;
    report.eastVelocity = 1.0;
    report.northVelocity = -2.5;
    report.upVelocity = static_cast<double>(0.1F);
    report.horizontalPositionError = 3;
    report.verticalPositionError = 5;
    report.horizontalVelocityError = 0.125;
    report.verticalVelocityError = 0.1875;
    report.receiverFailure = true;
    report.noSolution = true;
    report.solutionSource = 2;
    report.hdop = 0.9;
    report.vdop = 1.3;
    report.tdop = 0.8;
    report.differentialCorrections = 1;
    report.satelliteCorrections = 2;
    report.channels[0] = {5, 1, true, 3, 2, 1, 45, 2, 5};
    report.channels[31] = {32, 32, false, 0, 0, 0, 0, 0, 1};

    const Words words = message8504(report);

    EXPECT_EQ(words.size(), 200u);
    const NonZero expected = {
        {0, 0x4A13},  {1, 0xA7F8},                                             // time
        {8, 0x5B80},  {9, 0x398F},  {10, 0xF146},                              // latitude
        {11, 0x6B7E}, {12, 0x91C1}, {13, 0x060A},                              // longitude
        {28, 0xC59A}, {29, 0x5200},                                            // altitude
        {30, 0x4080},                                                          // east
        {32, 0xC120},                                                          // north
        {34, 0x3ECC}, {35, 0xCCCD},                                            // up
        {44, 3},      {45, 5},      {46, 4},      {47, 6},      {48, 0x00B0},  // bits 4, 5 and 7
        {55, 9},      {56, 13},     {57, 8},      {58, 0x1200},                // bits 9 and 12
        {72, 0x8105}, {73, 0x0903}, {74, 0x00AD}, {75, 0x0500}, {196, 0x2020}, {199, 0x0100}};
    EXPECT_EQ(nonZero(words), expected);
}

TEST(ReceiverMessages, ErrorsAndDilutionsStayWithinTheirWords) {
    NavigationReport report;
    report.horizontalVelocityError = -1;
    report.verticalVelocityError = 1e9;
    report.tdop = 0.16;
    const Words words = message8504(report);
    EXPECT_EQ(words[46], 0);
    EXPECT_EQ(words[47], 0xFFFF);
    EXPECT_EQ(words[57], 2);
}

TEST(ReceiverMessages, TimeSolution9391) {
    TimeReport report;
    report.time = 1.0;
    report.clockBias = -2;
    report.week = 2330;
    report.secondOfWeek = 604'799;
    report.fractionOfSecond = 0.5;
    report.setSecond = 70'000;
    report.setFraction = -0.25;
    report.clockBiasError = 1.0;
    report.clockBiasErrorRate = 1.0F;
    report.timeSigma = 2.0F;
    report.rateSigma = 0.5F;
    const Words words = message9391(report);
    EXPECT_EQ(words.size(), 84u);
    const NonZero expected = {
        {0, 0x4080},  {6, 0xFFFE},  {7, 0xFFFF},  {12, 2330},
        {14, 0x3A7F}, {15, 0x0009}, {19, 0x3FE0},  // 0.5 is 0x3FE0000000000000, low word first
        {20, 0x1170}, {21, 0x0001}, {27, 0xBFD0}, {35, 0x3FF0},
        {37, 0x3F80}, {45, 0x4000}, {47, 0x3F00}};
    EXPECT_EQ(nonZero(words), expected);
}

TEST(ReceiverMessages, EachBitOfTheConnectionStatus9405StandsForItself) {
    EXPECT_EQ(message9405({}).size(), 104u);
    EXPECT_EQ(nonZero(message9405({})), NonZero());
    struct Case {
        bool ConnectionReport::*flag;
        std::size_t word;
        unsigned value;
    };
    const Case cases[] = {{&ConnectionReport::fpgaTurnOnFailed, 26, 0x0001},
                          {&ConnectionReport::clockTurnOnFailed, 26, 0x0002},
                          {&ConnectionReport::cableLost, 26, 0x0004},
                          {&ConnectionReport::invalidFpgaSignal, 26, 0x0008},
                          {&ConnectionReport::clockFailed, 26, 0x0010},
                          {&ConnectionReport::serialCableDisconnected, 27, 0x0001},
                          {&ConnectionReport::rerad, 86, 0x4000}};
    for (const Case& entry : cases) {
        ConnectionReport report;
        report.*entry.flag = true;
        EXPECT_EQ(nonZero(message9405(report)), (NonZero{{entry.word, entry.value}}));
    }
}

TEST(ReceiverMessages, VersionIdentifiers9225StandInTheirFields) {
    VersionReport report;
    report.month = 1;
    report.day = 2;
    report.year = 3;
    report.hour = 4;
    report.minute = 5;
    report.second = 6;
    report.papProgram = std::string(130, 'p');
    report.fcmId = "123456789012";
    const Words words = message9225(report);
    ASSERT_EQ(words.size(), 416u);
    EXPECT_EQ(words[20], 0x0201);
    EXPECT_EQ(words[21], 0x0403);
    EXPECT_EQ(words[22], 0x0605);
    EXPECT_EQ(textAt(words, 24, 120), std::string(120, 'p'));
    EXPECT_EQ(textAt(words, 84, 120), "SIM-PAPBOOT-1.0") << "the long text ran over its field";
    EXPECT_EQ(textAt(words, 164, 120), "SIM-PSP-1.0");
    EXPECT_EQ(textAt(words, 224, 120), "SIM-PSPBOOT-1.0");
    EXPECT_NE(words[298], 0);
    EXPECT_EQ(textAt(words, 338, 16), "100-1001-001");
    EXPECT_EQ(textAt(words, 346, 16), "100-1002-001");
    EXPECT_EQ(textAt(words, 354, 16), "100-1003-001");
    EXPECT_EQ(textAt(words, 362, 16), "100-1004-001");
    EXPECT_EQ(textAt(words, 370, 16), "100-1005-001");
    EXPECT_EQ(textAt(words, 378, 16), "100-1006-001");
    EXPECT_EQ(textAt(words, 386, 16), "100-1007-001");
    EXPECT_EQ(textAt(words, 394, 16), "SIM-A");
    EXPECT_EQ(textAt(words, 402, 16), "100-1008-001");
    EXPECT_EQ(textAt(words, 410, 12), "123456789012");
    report.bootNormal = false;
    EXPECT_EQ(message9225(report)[298], 0);
}

TEST(ReceiverMessages, ZeroizeStatus5404) {
    EXPECT_EQ(message5404(0, 2).size(), 60u);
    EXPECT_EQ(nonZero(message5404(0, 2)), (NonZero{{5, 0x0020}}));
    EXPECT_EQ(nonZero(message5404(1.0, 3)), (NonZero{{0, 0x4080}, {5, 0x0030}}));
}

TEST(ReceiverMessages, TextOfAnEvent5044HasTheFirstOfEachPairInTheHighByte) {
    const Words words = message5044(0, 17, "ABC");
    EXPECT_EQ(words.size(), 21u);
    EXPECT_EQ(nonZero(words), (NonZero{{4, 17}, {5, 0x4142}, {6, 0x4300}}));
    const Words full = message5044(0, 3, std::string(40, 'Z'));
    EXPECT_EQ(full[20], 0x5A5A);
}

TEST(ReceiverMessages, UtcParameters30409) {
    UtcReport report;
    report.sourceTwo = true;
    report.a0 = 0.5;
    report.a1 = -0.25;
    report.tot = 1.0;
    report.leapSeconds = 18;
    report.futureLeapSeconds = -1;
    report.week = 300;
    report.leapWeek = 301;
    report.leapDay = 7;
    const Words words = message30409(report);
    EXPECT_EQ(words.size(), 32u);
    const NonZero expected = {{6, 1},       {9, 1},       {15, 0xBFD0}, {19, 0x3FE0},
                              {23, 0x3FF0}, {24, 0xFFFF}, {25, 300},    {26, 7},
                              {27, 301},    {28, 18},     {30, 1}};
    EXPECT_EQ(nonZero(words), expected);
}

TEST(ReceiverMessages, KeysOneByOne8040) {
    EXPECT_EQ(message8040({}).size(), 25u);
    // Nothing is known of the zeroization of the three main keys: 3 in bits 13 to 12.
    EXPECT_EQ(nonZero(message8040({})), (NonZero{{4, 0x3000}, {5, 0x3000}, {6, 0x3000}}));
    KeysReport report;
    report.time = 1.0;
    report.keys[0] = {true, false, 1023, 0};
    report.keys[1] = {false, true, 1, 1};
    report.keys[2] = {true, true, 512, 2};
    report.furtherPresent = 3;
    report.furtherLoadFailed = {true, false, true, false};
    report.firstFurtherRemainingTime = 0xA5;
    report.secondFurtherRemainingTime = 2;
    EXPECT_EQ(nonZero(message8040(report)),
              (NonZero{{0, 0x4080}, {4, 0x0FFD}, {5, 0x1006}, {6, 0x2803}, {9, 0xA957}}));
    report.furtherLoadFailed = {false, true, false, true};
    EXPECT_EQ(message8040(report)[9], 0xA957 ^ 0x003C);
}

TEST(ReceiverMessages, EachIndicationOfInterference8080StandsForItself) {
    EXPECT_EQ(message8080({}), Words(6));
    constexpr bool InterferenceReport::*kBits[] = {
        &InterferenceReport::anySignal, &InterferenceReport::thirdSignal,
        &InterferenceReport::fourthSignal, &InterferenceReport::otherKind,
        &InterferenceReport::otherKindToo};
    for (unsigned bit = 0; bit < std::size(kBits); ++bit) {
        InterferenceReport report;
        report.time = 1.0;
        report.*kBits[bit] = true;
        EXPECT_EQ(nonZero(message8080(report)), (NonZero{{0, 0x4080}, {4, 1u << bit}}));
    }
}

TEST(ReceiverMessages, SatellitesInView5047And5048WithEmptyRecordsBetween) {
    std::array<SatelliteReport, 6> satellites{};
    satellites[0] = {31, true, 359, -5, true};
    satellites[2] = {7, false, 0, 90, false};
    satellites[5] = {32, true, 180, -90, false};
    const Words words = messageSatellites(604799.5, satellites);
    EXPECT_EQ(words.size(), 100u);
    const NonZero expected = {{0, 0x4A13}, {1, 0xA7F8},  {4, 31},     {5, 1},   {6, 359},
                              {7, 0xFFFB}, {8, 1},       {36, 7},     {39, 90}, {84, 32},
                              {85, 1},     {86, 0x00B4}, {87, 0xFFA6}};
    EXPECT_EQ(nonZero(words), expected);
}

MeasurementReport measurement(double sign) {
    MeasurementReport report;
    report.time = 2.0;
    report.epochTag = 65535;
    report.deltaRangeValid = true;
    report.rangeErrorIndex = 9;
    report.prn = 33;
    report.frequency = 1;
    report.carrierToNoise = 0xB4;
    report.tracking = 5;
    report.pseudorange = 2.0e7;
    report.deltaRange = sign * 123.45;
    report.deltaRangeInterval = 1000;
    report.startPosition = {1.5, -2.25, 2.5e7};
    report.stopPosition = {-1.5, 2.25, -2.5e7};
    report.pseudorangeCorrection = sign * 80.3;
    report.rateCorrection = sign * 0.75;
    report.secondRateCorrection = sign * 0.125;
    report.assurance = 2;
    report.tropoApplied = true;
    report.ionoSource = 2;
    report.code = 3;
    report.pseudorangeSigma = 1.5;
    report.deltaRangeSigma = 0.005;
    return report;
}

TEST(ReceiverMessages, Measurement7270) {
    NonZero expected = {{0, 0x4100},  {5, 0xFFFF},  {6, 0x8492},  {7, 0x5B44},  {10, 0x12D0},
                        {11, 0x4173}, {12, 0x6E66}, {13, 0x000F}, {14, 0x03E8}, {18, 0x3FF8},
                        {22, 0xC002}, {25, 0xD784}, {26, 0x4177}, {30, 0xBFF8}, {34, 0x4002},
                        {37, 0xD784}, {38, 0xC177}, {39, 0x4133}, {40, 0x0001}, {41, 0x0300},
                        {42, 0x0101}, {53, 0x9004}, {56, 0x0003}, {57, 0x0018}, {58, 0x00A4}};
    const Words words = message7270(measurement(1.0));
    EXPECT_EQ(words.size(), 59u);
    EXPECT_EQ(nonZero(words), expected);

    // The same with all signed fields below zero.
    for (const auto& [word, value] : NonZero{
             {12, 0x919A}, {13, 0xFFF0}, {39, 0xBECD}, {40, 0xFFFE}, {41, 0xFD00}, {42, 0xFF01}}) {
        expected[word] = value;
    }
    EXPECT_EQ(nonZero(message7270(measurement(-1.0))), expected);

    // The other flags: pseudorange valid and ionosphere instead of delta range and troposphere.
    MeasurementReport other = measurement(-1.0);
    other.deltaRangeValid = false;
    other.pseudorangeValid = true;
    other.tropoApplied = false;
    other.ionoApplied = true;
    other.secondRateCorrection.reset();
    expected[6] = 0x8494;
    expected[53] = 0xA004;
    expected.erase(42);
    EXPECT_EQ(nonZero(message7270(other)), expected);
}

TEST(ReceiverMessages, WhatIsTooLargeForASignedFieldIsItsLargest) {
    MeasurementReport report;
    report.deltaRange = -1e9;
    report.rateCorrection = 1e9;
    report.secondRateCorrection = -1e9;
    EXPECT_EQ(nonZero(message7270(report)), (NonZero{{13, 0x8000}, {41, 0x7FFF}, {42, 0x8001}}));
}

TEST(ReceiverMessages, RestartAndLifeSignCarryTheTimeAlone) {
    EXPECT_EQ(messageTimeOnly(604799.5), (Words{0x4A13, 0xA7F8, 0, 0}));
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovancomPortSetup.h"

#include <gtest/gtest.h>

#include <map>

#include "Frames.h"
#include "GoldenFrames.h"

namespace {

using PortSetup = RovancomPortSetup;

/// The data words that are not zero.
std::map<unsigned, unsigned> setWords(const PortSetup& message) {
    std::map<unsigned, unsigned> words;
    for (unsigned i = 0; i < message.wdcnt(); ++i) {
        if (message.data()[i] != 0) {
            words[i] = message.data()[i];
        }
    }
    return words;
}

using Words = std::map<unsigned, unsigned>;

PortSetup::e5331_SerialBaud baud(unsigned code) {
    return static_cast<PortSetup::e5331_SerialBaud>(code);
}
PortSetup::e5331_SerialParity parity(unsigned code) {
    return static_cast<PortSetup::e5331_SerialParity>(code);
}
PortSetup::e5331_SerialProtocol protocol(unsigned code) {
    return static_cast<PortSetup::e5331_SerialProtocol>(code);
}

}  // namespace

TEST(RovancomPortSetup, GoesOnTheLineAsWorkedOutByTheScript) {
    PortSetup lineSpeed;
    lineSpeed.setBaud(PortSetup::e5331_Baud_115200, PortSetup::e5331_Parity_1);
    lineSpeed.setPort(PortSetup::e5331_Port_0);
    PortSetup redundant;
    redundant.setPort(PortSetup::e5331_Port_2);
    redundant.setRedundantComPorts(false);
    PortSetup pulse;
    pulse.setPulse(PortSetup::e5331_Pulse_2);
    pulse.setPort(PortSetup::e5331_Port_15);
    PortSetup sentences;
    sentences.setNMEASentenceID({"GGA", "RMC", "ZDA", "ZLZ", "DTM", "none", "VTG"});

    EXPECT_EQ(Frames::onTheLine(lineSpeed), Golden::kLineSpeed115200);
    EXPECT_EQ(Frames::onTheLine(redundant), Golden::kRedundantPort);
    EXPECT_EQ(Frames::onTheLine(pulse), Golden::kPulseOnPort15);
    EXPECT_EQ(Frames::onTheLine(sentences), Golden::kSentences);
}

TEST(RovancomPortSetup, StoresOnlyPortsThatExist) {
    for (unsigned port = 0; port < 0x10000; ++port) {
        PortSetup message;
        message.setPort(PortSetup::e5331_Port_1);

        message.setPort(static_cast<PortSetup::e5331Port>(port));

        const bool exists = port <= 3 || port == 15;
        ASSERT_EQ(message.data()[6], exists ? port : 1) << port;
        ASSERT_EQ(message.data()[4], 0) << port;
    }
}

TEST(RovancomPortSetup, MarksThePulseValidEvenWhenItIsNotStored) {
    for (const unsigned pulse : {0u, 1u, 2u, 3u, 4u, 0xFFFFu}) {
        PortSetup message;
        message.setPulse(PortSetup::e5331_Pulse_1);

        message.setPulse(static_cast<PortSetup::e5331Pulse>(pulse));

        EXPECT_EQ(setWords(message)[31], pulse < 4 ? pulse : 1) << pulse;
        EXPECT_EQ(message.data()[4], 0x0200) << pulse;
    }
}

TEST(RovancomPortSetup, StoresReceiveAndTransmitParametersApart) {
    PortSetup receive;
    receive.setRecParams(baud(14), parity(2), protocol(2));
    PortSetup transmit;
    transmit.setTransParams(baud(7), parity(1), protocol(2));

    EXPECT_EQ(setWords(receive), (Words{{4, 0x8000}, {7, 2}, {8, 14}, {9, 2}}));
    EXPECT_EQ(setWords(transmit), (Words{{4, 0x4000}, {10, 2}, {11, 7}, {12, 1}}));
}

TEST(RovancomPortSetup, StoresZeroForCodesThatDoNotExist) {
    for (unsigned code = 0; code < 0x10000; ++code) {
        PortSetup message;
        message.setTransParams(baud(1), parity(1), protocol(2));

        message.setTransParams(baud(code), parity(code), protocol(code));

        const bool isBaud = code <= 7 || (code >= 10 && code <= 14);
        ASSERT_EQ(message.data()[10], code == 2 ? code : 0) << code;
        ASSERT_EQ(message.data()[11], isBaud ? code : 0) << code;
        ASSERT_EQ(message.data()[12], code < 3 ? code : 0) << code;
    }
}

TEST(RovancomPortSetup, SetsABaudThatIsRefusedToZeroInBothDirections) {
    PortSetup message;

    message.setBaud(baud(8), parity(1));

    EXPECT_EQ(setWords(message), (Words{{4, 0xC000}, {9, 1}, {12, 1}}));
}

TEST(RovancomPortSetup, InvertsTheRedundantPorts) {
    PortSetup off;
    off.setRedundantComPorts(false);
    PortSetup on;
    on.setRedundantComPorts(false);
    on.setRedundantComPorts(true);

    EXPECT_EQ(setWords(off), (Words{{4, 0x0080}, {33, 1}}));
    EXPECT_EQ(setWords(on), (Words{{4, 0x0080}}));
}

TEST(RovancomPortSetup, KnowsTheSentences) {
    const std::unordered_map<std::string, uint16_t> expected{
        {"none", 0}, {"DTM", 4},  {"GGA", 5},  {"GLL", 6},  {"GSA", 7},  {"GSV", 8},
        {"RMA", 9},  {"RMC", 11}, {"STN", 13}, {"VTG", 14}, {"ZDA", 19}, {"ZLZ", 20}};

    EXPECT_EQ(PortSetup().sentenceNumbers(), expected);
}

TEST(RovancomPortSetup, PutsTheFirstSevenSentencesInOrder) {
    PortSetup message;

    message.setNMEASentenceID({"GLL", "GSA", "GSV", "RMA", "STN", "GGA", "RMC", "ZLZ"});

    EXPECT_EQ(
        setWords(message),
        (Words{{4, 0x0800}, {23, 6}, {24, 7}, {25, 8}, {26, 9}, {27, 13}, {28, 5}, {29, 11}}));
}

TEST(RovancomPortSetup, TakesAnUnknownSentenceAsZeroAndRemembersIt) {
    PortSetup message;
    message.setNMEASentenceID({"ZDA", "ZDA", "ZDA", "ZDA", "ZDA", "ZDA", "ZDA"});

    message.setNMEASentenceID({"GGA", "gga", "", "GGA", "GGA", "GGA", "GGA"});

    EXPECT_EQ(message.data()[24], 0);
    EXPECT_EQ(message.data()[25], 0);
    EXPECT_EQ(message.data()[29], 5);
    EXPECT_EQ(message.sentenceNumbers().size(), 14u);
    EXPECT_EQ(message.sentenceNumbers().at("gga"), 0);
}

TEST(RovancomPortSetup, TakesMissingSentencesAsNone) {
    PortSetup message;
    message.setNMEASentenceID({"ZDA", "ZDA", "ZDA", "ZDA", "ZDA", "ZDA", "ZDA"});

    message.setNMEASentenceID({"GGA", "RMC"});

    EXPECT_EQ(setWords(message), (Words{{4, 0x0800}, {23, 5}, {24, 11}}));
    EXPECT_EQ(message.sentenceNumbers().size(), 12u);
}

TEST(RovancomPortSetup, GathersTheValidityOfAllSetters) {
    PortSetup message;

    message.setPulse(PortSetup::e5331_Pulse_0);
    message.setBaud(baud(0), parity(0));
    message.setRedundantComPorts(true);
    message.setNMEASentenceID({});

    EXPECT_EQ(setWords(message), (Words{{4, 0xCA80}}));
}

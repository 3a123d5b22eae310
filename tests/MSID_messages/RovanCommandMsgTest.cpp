// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovanCommandMsg.h"

#include <gtest/gtest.h>

#include "Frames.h"
#include "GoldenFrames.h"

namespace {

using Frames::Frame;

std::vector<uint16_t> dataOf(const GssipMessage& message) {
    return {message.data(), message.data() + message.wdcnt()};
}

/// A frame whose data words are 1, 2, 3, ...
Frame countingFrame(unsigned wdcnt) {
    Frame frame(5001, wdcnt);
    for (unsigned i = 0; i < wdcnt; ++i) {
        frame.word(i, static_cast<uint16_t>(i + 1));
    }
    return frame;
}

}  // namespace

TEST(RovanCommandMsg, GoesOnTheLineAsWorkedOutByTheScript) {
    const std::pair<RovanCommandMsg::e5001_Command, Frames::Bytes> commands[] = {
        {RovanCommandMsg::e5001_Cmd_0, Golden::kPowerOnCommand},
        {RovanCommandMsg::e5001_Cmd_1, Golden::kContinuousCommand},
        {RovanCommandMsg::e5001_Cmd_5, Golden::kStandbyCommand},
        {RovanCommandMsg::e5001_Cmd_7, Golden::kEmergencyZeroize},
        {RovanCommandMsg::e5001_Cmd_8, Golden::kCvZeroizeCommand},
    };
    for (const auto& [command, bytes] : commands) {
        RovanCommandMsg message;
        message.setSimpleModeCommand(command);
        EXPECT_EQ(Frames::onTheLine(message), bytes) << command;
    }
    RovanCommandMsg mist;
    mist.setMistMode(RovanCommandMsg::e5001_Mist_Cmd_3);
    EXPECT_EQ(Frames::onTheLine(mist), Golden::kMistCommand);
}

// The standby command, added up by hand: 81FF + 1389 + 001F + 9000 = 1 25A7, so the header checksum
// is -25A7 = DA59; the only data word is 5, so the data checksum is FFFB.
TEST(RovanCommandMsg, GoesOnTheLineAsWorkedOutByHand) {
    Frames::Bytes expected(74, 0);
    const uint8_t header[] = {0xFF, 0x81, 0x89, 0x13, 0x1F, 0x00, 0x00, 0x90, 0x59, 0xDA};
    std::copy(std::begin(header), std::end(header), expected.begin());
    expected[18] = 0x05;
    expected[72] = 0xFB;
    expected[73] = 0xFF;
    RovanCommandMsg message;

    message.setSimpleModeCommand(RovanCommandMsg::e5001_Cmd_5);

    EXPECT_EQ(Frames::onTheLine(message), expected);
}

TEST(RovanCommandMsg, GivesItsCommandBackWhateverTheNumber) {
    RovanCommandMsg message;

    message.setSimpleModeCommand(static_cast<RovanCommandMsg::e5001_Command>(0xFFFF));

    EXPECT_EQ(message.getSimpleModeCommand(), 0xFFFF);
}

TEST(RovanCommandMsg, KeepsOnlyTheLastCommand) {
    RovanCommandMsg message;
    const Frame old = countingFrame(31);
    ASSERT_TRUE(message.OkSetContent(old.bytes(), old.size()));
    std::vector<uint16_t> mist(31);
    mist[4] = 64;
    mist[5] = 14371;
    mist[6] = 9;
    std::vector<uint16_t> simple(31);
    simple[4] = 1;

    message.setMistMode(static_cast<RovanCommandMsg::e5001_Mist_Command>(9));
    EXPECT_EQ(dataOf(message), mist);
    message.setSimpleModeCommand(RovanCommandMsg::e5001_Cmd_7);
    message.setSimpleModeCommand(RovanCommandMsg::e5001_Cmd_1);
    EXPECT_EQ(dataOf(message), simple);
    EXPECT_EQ(message.getSimpleModeCommand(), RovanCommandMsg::e5001_Cmd_1);
}

TEST(RovanCommandMsg, RefusesAFrameWithoutACommandAndSaysSo) {
    const Frame frame = countingFrame(4);
    const std::pair<unsigned, const char*> sizes[] = {{0, "-6"}, {1, "-6"}, {10, "-1"}, {12, "0"},
                                                      {13, "0"}, {14, "1"}, {21, "4"}};
    for (const auto& [size, words] : sizes) {
        RovanCommandMsg message;
        message.setSimpleModeCommand(RovanCommandMsg::e5001_Cmd_8);
        const auto before = Frames::wordsOf(message);

        testing::internal::CaptureStdout();
        const bool taken = message.ok_set_5001_gpsip(frame.bytes(), size);

        EXPECT_EQ(
            testing::internal::GetCapturedStdout(),
            std::string("Warning: Incoming 5001 message must be at least 5 words (GPS Time and "
                        "command) but only contains ") +
                words + " words : Message ignored\n");
        EXPECT_FALSE(taken);
        EXPECT_EQ(Frames::wordsOf(message), before);
    }
}

TEST(RovanCommandMsg, TakesAShorterFrameAndKeepsTheRestOfTheOldData) {
    const Frame whole = countingFrame(31);
    Frame shorter(5001, 5);
    for (unsigned i = 0; i < 5; ++i) {
        shorter.word(i, static_cast<uint16_t>(100 + i));
    }
    shorter.word(5, 0xCCCC);  // its data checksum
    RovanCommandMsg message;

    testing::internal::CaptureStdout();
    ASSERT_TRUE(message.ok_set_5001_gpsip(whole.bytes(), whole.size()));
    ASSERT_TRUE(message.ok_set_5001_gpsip(shorter.bytes(), shorter.size()));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    const std::vector<uint16_t> data = dataOf(message);
    EXPECT_EQ(std::vector<uint16_t>(data.begin(), data.begin() + 6),
              (std::vector<uint16_t>{100, 101, 102, 103, 104, 0xCCCC}));
    for (unsigned i = 6; i < 31; ++i) {
        EXPECT_EQ(data[i], i + 1) << i;
    }
    EXPECT_EQ(message.getSimpleModeCommand(), 104);
}

TEST(RovanCommandMsg, CutsALongerFrameAndSaysSo) {
    const Frame longer = countingFrame(40);
    RovanCommandMsg message;

    testing::internal::CaptureStdout();
    const bool taken = message.ok_set_5001_gpsip(longer.bytes(), longer.size());

    EXPECT_EQ(
        testing::internal::GetCapturedStdout(),
        "Info: Incoming 5001 message of 40 words truncated to only contain 31 words : Message "
        "accepted\n");
    EXPECT_TRUE(taken);
    EXPECT_EQ(std::memcmp(message.frame(), longer.bytes(), 74), 0);
    // Word 36 is the message's data checksum; it holds the first word that was cut off. The header
    // now tells another count than the object, so the message is not written.
    EXPECT_EQ(message.frame()[36], 32);
    EXPECT_EQ(message.wdcnt(), 31u);
    EXPECT_TRUE(Frames::onTheLine(message).empty());
}

TEST(RovanCommandMsg, TakesEveryLengthFromFiveWordsUpWithoutHarm) {
    for (unsigned size = 22; size <= 300; ++size) {
        const Frame frame = countingFrame(size / 2 - 6);
        Frames::Bytes bytes(static_cast<const uint8_t*>(frame.bytes()),
                            static_cast<const uint8_t*>(frame.bytes()) + frame.size());
        bytes.resize(size);
        const auto message = std::make_unique<RovanCommandMsg>();

        testing::internal::CaptureStdout();
        const bool taken = message->ok_set_5001_gpsip(bytes.data(), size);
        const bool announced = !testing::internal::GetCapturedStdout().empty();

        EXPECT_TRUE(taken) << size;
        EXPECT_EQ(announced, size >= 76) << size;
        EXPECT_EQ(message->getSimpleModeCommand(), 5) << size;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_7270_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"
#include "GoldenFrames.h"

namespace {

void expectSame(const unpacked_msg7270_t& unpacked, const Golden::Measurement7270& expected) {
    EXPECT_EQ(unpacked.epochTag(), expected.epochTag);
    EXPECT_EQ(unpacked.deltaRangeValid(), expected.deltaRangeValid);
    EXPECT_EQ(unpacked.pseudorangeValid(), expected.pseudorangeValid);
    EXPECT_EQ(unpacked.expectedRangeError(), expected.expectedRangeError);
    EXPECT_EQ(unpacked.prn(), expected.prn);
    EXPECT_EQ(unpacked.frequency(), expected.frequency);
    EXPECT_EQ(unpacked.carrierToNoise(), expected.carrierToNoise);
    EXPECT_EQ(unpacked.channelState(), expected.channelState);
    EXPECT_EQ(unpacked.pseudorange(), expected.pseudorange);
    EXPECT_EQ(unpacked.deltaRange(), expected.deltaRange);
    EXPECT_EQ(unpacked.deltaRangeIntervalMs(), expected.deltaRangeIntervalMs);
    EXPECT_EQ(unpacked.svPositionStart(), expected.svPositionStart);
    EXPECT_EQ(unpacked.svPositionStop(), expected.svPositionStop);
    EXPECT_EQ(unpacked.pseudorangeCorrection(), expected.pseudorangeCorrection);
    EXPECT_EQ(unpacked.rangeRateCorrection(), expected.rangeRateCorrection);
    EXPECT_EQ(unpacked.hasSecondRateCorrection(), expected.hasSecondRateCorrection);
    EXPECT_EQ(unpacked.secondRateCorrection(), expected.secondRateCorrection);
    EXPECT_EQ(unpacked.assured(), expected.assured);
    EXPECT_EQ(unpacked.tropoCorrectionApplied(), expected.tropoCorrectionApplied);
    EXPECT_EQ(unpacked.ionoCorrectionApplied(), expected.ionoCorrectionApplied);
    EXPECT_EQ(unpacked.ionoCorrectionSource(), expected.ionoCorrectionSource);
    EXPECT_EQ(unpacked.channelCode(), expected.channelCode);
    EXPECT_EQ(unpacked.pseudorangeSigma(), expected.pseudorangeSigma);
    EXPECT_EQ(unpacked.deltaRangeSigma(), expected.deltaRangeSigma);
}

void unpack(Rovan_7270_Msg& message, const Frames::Frame& frame) {
    ASSERT_TRUE(message.ok_set_7270_gpsip(frame.bytes(), frame.size()));
    message.unpack_7270();
}

}  // namespace

TEST(Rovan_7270_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k7270) {
        Rovan_7270_Msg message;
        ASSERT_TRUE(message.ok_set_7270_gpsip(sample.frame.data(), Frames::size(sample.frame)));
        message.unpack_7270();
        expectSame(message.unpacked(), sample.expected);

        packed_msg7270_t packed;
        std::memcpy(packed.words, message.data(), sizeof packed.words);
        unpacked_msg7270_t unpacked{};
        Rovan_7270_Msg::unpack_7270(packed, unpacked);
        expectSame(unpacked, sample.expected);
    }
}

TEST(Rovan_7270_Msg, CopiesAllWordsAsTheyAre) {
    const auto& frame = Golden::k7270[0].frame;
    Rovan_7270_Msg message;
    ASSERT_TRUE(message.ok_set_7270_gpsip(frame.data(), Frames::size(frame)));

    message.unpack_7270();

    EXPECT_EQ(sizeof message.unpacked(), 118u);
    EXPECT_EQ(std::memcmp(&message.unpacked(), frame.data() + 10, 118), 0);
}

TEST(Rovan_7270_Msg, KnowsSixteenExpectedRangeErrors) {
    const double errors[] = {2.0,  2.8,   4.0,   5.7,   8.0,    11.3,   16.0,   32.0,
                             64.0, 128.0, 256.0, 512.0, 1024.0, 2048.0, 4096.0, 4096.0};
    for (unsigned index = 0; index < 16; ++index) {
        Rovan_7270_Msg message;
        unpack(message,
               Frames::Frame(7270, 59).word(6, static_cast<uint16_t>(0xFF0F | index << 4)));
        EXPECT_EQ(message.unpacked().expectedRangeError(), errors[index]) << index;
    }
}

// Words 39 and 40 together: 0001 0002 hex are 65538 counts of 2^-10 m.
TEST(Rovan_7270_Msg, ReadsThePseudorangeCorrectionFromTwoWords) {
    Rovan_7270_Msg message;
    unpack(message, Frames::Frame(7270, 59).word(39, 2).word(40, 1));
    EXPECT_EQ(message.unpacked().pseudorangeCorrection(), 65538.0 / 1024);

    unpack(message, Frames::Frame(7270, 59).word(39, 0xFFFF).word(40, 0xFFFF));
    EXPECT_EQ(message.unpacked().pseudorangeCorrection(), -1.0 / 1024);
}

TEST(Rovan_7270_Msg, ReadsTheSecondRateCorrectionFrom15Bits) {
    const std::pair<uint16_t, double> words[] = {
        {0x0001, 0.0},  {0x0003, 1.0},      {0x0002, 1.0},    {0xFFFF, -1.0},
        {0xFFFE, -1.0}, {0x8000, -16384.0}, {0x7FFF, 16383.0}};
    for (const auto& [word, counts] : words) {
        Rovan_7270_Msg message;
        unpack(message, Frames::Frame(7270, 59).word(42, word));
        EXPECT_EQ(message.unpacked().secondRateCorrection(), counts / 1024) << word;
        EXPECT_EQ(message.unpacked().hasSecondRateCorrection(), (word & 1) != 0) << word;
    }
}

TEST(Rovan_7270_Msg, IsAssuredByEitherBit) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        Rovan_7270_Msg message;
        unpack(message, Frames::Frame(7270, 59).word(53, static_cast<uint16_t>(1u << bit)));
        EXPECT_EQ(message.unpacked().assured(), bit == 1 || bit == 2) << bit;
    }
}

TEST(Rovan_7270_Msg, PacksNothing) {
    Rovan_7270_Msg message;
    message.unpacked().words[5] = 5;
    packed_msg7270_t packed{};

    message.pack_7270();
    Rovan_7270_Msg::pack_7270(message.unpacked(), packed);

    EXPECT_EQ(message.data()[5], 0);
    EXPECT_EQ(packed.words[5], 0);
}

TEST(Rovan_7270_Msg, PrintsItsFrameFiveWordsToALine) {
    Rovan_7270_Msg message;
    Frames::Frame frame(7270, 59);
    frame.word(0, 0x1234).word(58, 0xABCD);
    ASSERT_TRUE(message.ok_set_7270_gpsip(frame.bytes(), frame.size()));
    std::string expected =
        "At here MSID_messages/Rovan7270Msg:44\n"
        "\n 001: 81FF 1C66 003B 8000 0000 "
        "\n 006: 1234 0000 0000 0000 0000 ";
    for (const char* line :
         {"011", "016", "021", "026", "031", "036", "041", "046", "051", "056"}) {
        expected += std::string("\n ") + line + ": 0000 0000 0000 0000 0000 ";
    }
    expected += "\n 061: 0000 0000 0000 ABCD 0000 \n";

    testing::internal::CaptureStdout();
    message.debugPrintMessage();

    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
}

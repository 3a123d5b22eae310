// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipFrame.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <vector>

// Expected checksums are worked out by hand: 65536 minus the sum of the words.
namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

// A frame whose data words are 1, 2, 3, ... and whose checksums are right.
std::vector<uint16_t> frameOf(uint16_t msgId, uint16_t wdcnt) {
    std::vector<uint16_t> frame = {0x81FF, msgId, wdcnt, 0x8000};
    const auto negatedSum = [&frame](unsigned from) {
        return static_cast<uint16_t>(0 - std::accumulate(frame.begin() + from, frame.end(), 0u));
    };
    frame.push_back(negatedSum(0));
    if (wdcnt != 0) {
        for (unsigned i = 1; i <= wdcnt; ++i) {
            frame.push_back(static_cast<uint16_t>(i));
        }
        frame.push_back(negatedSum(5));
    }
    return frame;
}

std::string verifyAndCapture(const std::vector<uint16_t>& frame, bool expected) {
    CaptureStderr();
    EXPECT_EQ(ChecksumsAreOkInGPSmessage(frame.data()), expected);
    return GetCapturedStderr();
}

std::string insertAndCapture(std::vector<uint16_t>& frame, bool expected) {
    CaptureStderr();
    EXPECT_EQ(OkChecksumGPSmessage(frame.data()), expected);
    return GetCapturedStderr();
}

TEST(GssipFrame, AChecksumIsTheNegatedSumOfTheWords) {
    const uint16_t words[] = {0x0001, 0x0002, 0xFFFF, 0x8000};
    EXPECT_EQ(CalculateChecksum(words, 0, 1), 0xFFFD);
    EXPECT_EQ(CalculateChecksum(words, 1, 2), 0xFFFF);  // 2 + 65535 wraps to 1
    EXPECT_EQ(CalculateChecksum(words, 0, 3), 0x7FFE);
}

TEST(GssipFrame, AChecksumOfOneWordIsThatWordNegated) {
    const uint16_t words[] = {0x1111, 0x0003, 0x2222};
    EXPECT_EQ(CalculateChecksum(words, 1, 1), 0xFFFD);
}

TEST(GssipFrame, AChecksumOfAnEmptyRangeIsZeroAndReadsNothing) {
    EXPECT_EQ(CalculateChecksum(nullptr, 1, 0), 0);
    EXPECT_EQ(CalculateChecksum(nullptr, 4000000000u, 7), 0);
}

TEST(GssipFrame, AHeaderHoldsItsFieldsAndReturnsItsChecksum) {
    std::array<uint16_t, 5> header{};
    // 81FF + 1389 + 001F + 9000 = 125A7; 10000 - 25A7 = DA59
    EXPECT_EQ(MakeHdrSpecifyFlagWd(header.data(), 5001, 0x9000, 31), 0xDA59);
    EXPECT_EQ(header, (std::array<uint16_t, 5>{0x81FF, 0x1389, 0x001F, 0x9000, 0xDA59}));
}

TEST(GssipFrame, APlainHeaderHasTheFrameMarkerOnly) {
    std::array<uint16_t, 5> header{};
    // 81FF + 2138 + 00C8 + 8000 = 123FF; 10000 - 23FF = DC01
    EXPECT_EQ(MakeHeader(header.data(), 8504, 200), 0xDC01);
    EXPECT_EQ(header, (std::array<uint16_t, 5>{0x81FF, 0x2138, 0x00C8, 0x8000, 0xDC01}));
}

TEST(GssipFrame, AnswersAreHeadersWithTheirFlag) {
    std::array<uint16_t, 5> header{};
    // 81FF + 2138 + 0000 + 8800 = 12B37; 10000 - 2B37 = D4C9
    EXPECT_EQ(MakeACK(header.data(), 8504), 0xD4C9);
    EXPECT_EQ(header, (std::array<uint16_t, 5>{0x81FF, 0x2138, 0, 0x8800, 0xD4C9}));
    EXPECT_EQ(MakeNAK(header.data(), 8504), 0xD8C9);
    EXPECT_EQ(header, (std::array<uint16_t, 5>{0x81FF, 0x2138, 0, 0x8400, 0xD8C9}));
}

TEST(GssipFrame, TheLengthInBytesFollowsTheWordCount) {
    EXPECT_EQ(Gssip::frameBytes(0), 10u);
    EXPECT_EQ(Gssip::frameBytes(1), 14u);
    EXPECT_EQ(Gssip::frameBytes(200), 412u);
    EXPECT_EQ(Gssip::frameBytes(65535), Gssip::kMaxFrameBytes);
}

TEST(GssipFrame, InsertingWritesBothChecksums) {
    std::vector<uint16_t> frame = frameOf(5044, 21);
    const std::vector<uint16_t> good = frame;
    frame[4] = 0xAAAA;
    frame.back() = 0xAAAA;
    EXPECT_EQ(insertAndCapture(frame, true), "");
    EXPECT_EQ(frame, good);
}

TEST(GssipFrame, InsertingAcceptsAWrongDelimiterWithoutData) {
    std::vector<uint16_t> frame = {0x1234, 5001, 0, 0x8000, 0xAAAA};
    EXPECT_EQ(insertAndCapture(frame, true), "");
    EXPECT_EQ(frame[4], 0x5A43);  // 1234 + 1389 + 0000 + 8000 = A5BD
}

TEST(GssipFrame, InsertingRefusesAWrongDelimiterWithDataButWritesTheHeaderChecksum) {
    std::vector<uint16_t> frame = {0x1234, 5001, 2, 0x8000, 0xAAAA, 1, 2, 0xAAAA};
    EXPECT_EQ(insertAndCapture(frame, false),
              "No delsoh checksumming Msg(5001) delsoh:1234 cnt:    2 flag:8000  hck:5A41\n");
    EXPECT_EQ(frame[4], 0x5A41);
    EXPECT_EQ(frame[7], 0xAAAA);
}

TEST(GssipFrame, InsertingTakes32500DataWordsAndNoMore) {
    std::vector<uint16_t> frame = frameOf(5001, 32500);
    const uint16_t dataChecksum = frame.back();
    frame.back() = 0;
    EXPECT_EQ(insertAndCapture(frame, true), "");
    EXPECT_EQ(frame.back(), dataChecksum);

    std::vector<uint16_t> longer = frameOf(5001, 32501);
    const uint16_t headerChecksum = longer[4];
    longer[4] = 0;
    longer.back() = 0xAAAA;
    EXPECT_EQ(insertAndCapture(longer, false), "Bad wdcnt (32501) checksumming Msg(5001) \n");
    EXPECT_EQ(longer[4], headerChecksum);
    EXPECT_EQ(longer.back(), 0xAAAA);
}

TEST(GssipFrame, VerifyingAcceptsGoodFramesOfUpTo106DataWords) {
    EXPECT_EQ(verifyAndCapture(frameOf(5001, 0), true), "");
    EXPECT_EQ(verifyAndCapture(frameOf(5001, 31), true), "");
    EXPECT_EQ(verifyAndCapture(frameOf(5001, 106), true), "");
    EXPECT_EQ(verifyAndCapture(frameOf(5001, 107), false),
              "Bad wdcnt (107) verifying checksums Msg(5001) \n");
}

TEST(GssipFrame, VerifyingRefusesEvenAGood8504) {
    EXPECT_EQ(verifyAndCapture(frameOf(8504, 200), false),
              "Bad wdcnt (200) verifying checksums Msg(8504) \n");
}

TEST(GssipFrame, VerifyingTellsTheHeaderSumBeforeAnythingElse) {
    std::vector<uint16_t> frame = frameOf(8504, 200);
    frame[4] = static_cast<uint16_t>(frame[4] + 258);
    frame.back() = static_cast<uint16_t>(frame.back() + 1);
    EXPECT_EQ(verifyAndCapture(frame, false),
              "Bad header chksum (258) verifying checksums Msg(8504) \n");
}

TEST(GssipFrame, VerifyingTellsTheDataSum) {
    std::vector<uint16_t> frame = frameOf(5001, 31);
    frame[7] = static_cast<uint16_t>(frame[7] - 1);
    EXPECT_EQ(verifyAndCapture(frame, false),
              "Bad data chksum (65535) verifying checksums Msg(5001) \n");
}

TEST(GssipFrame, AHeaderOnlyDumpIsOneLine) {
    CaptureStdout();
    PrintMessageInHex(frameOf(77, 0).data());  // 81FF + 004D + 8000 = 1024C
    EXPECT_EQ(GetCapturedStdout(), "Header:  81FF 004D 0000 8000 FDB4; msgId:   77 Wdcnt:    0\n");
}

TEST(GssipFrame, ADumpHasTenWordsALineAndABarAfterTheFifth) {
    std::vector<uint16_t> frame = frameOf(8504, 12);
    frame[5] = 0xABCD;
    CaptureStdout();
    PrintMessageInHex(frame.data(), "R:");
    // 81FF + 2138 + 000C + 8000 = 12343; the data words still sum up as 1 to 12: 78 = 004E
    EXPECT_EQ(GetCapturedStdout(),
              "R:Header:  81FF 2138 000C 8000 DCBD; msgId: 8504 Wdcnt:   12\n"
              "Data:  0  ABCD 0002 0003 0004 0005 | 0006 0007 0008 0009 000A \n"
              "Data: 10  000B 000C \n"
              "DataCks:  FFB2\n");
}

TEST(GssipFrame, ADumpOfExactlyTenWordsEndsWithTheTenth) {
    CaptureStdout();
    PrintMessageInHex(frameOf(1, 10).data(), "T:");
    // 81FF + 0001 + 000A + 8000 = 1020A; 1 + ... + 10 = 55 = 0037
    EXPECT_EQ(GetCapturedStdout(),
              "T:Header:  81FF 0001 000A 8000 FDF6; msgId:    1 Wdcnt:   10\n"
              "Data:  0  0001 0002 0003 0004 0005 | 0006 0007 0008 0009 000A \n"
              "DataCks:  FFC9\n");
}

TEST(GssipFrame, ADumpIsOnStandardOutputWhenTheCallReturns) {
    CaptureStdout();
    setvbuf(stdout, nullptr, _IOFBF, 4096);
    PrintMessageInHex(frameOf(8504, 200).data(), "R:");
    // Read through the descriptor: nothing may be left in the stream's buffer.
    std::array<char, 4096> text{};
    const ssize_t length = pread(STDOUT_FILENO, text.data(), text.size(), 0);
    GetCapturedStdout();
    ASSERT_GT(length, 8);
    EXPECT_EQ(std::string(text.data(), 9), "R:Header:");
    EXPECT_EQ(text[static_cast<size_t>(length) - 1], '\n');
}

}  // namespace

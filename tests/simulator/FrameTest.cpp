// SPDX-License-Identifier: Apache-2.0
#include "simulator/Frame.h"

#include <gtest/gtest.h>

namespace {

using Simulator::Bytes;
using Simulator::frameWord;
using Simulator::isIntact;
using Simulator::makeFrame;

// By hand: 0x81FF + 0x1389 + 0 + 0x8800 = 0x11D88; 0x10000 - 0x1D88 = 0xE278.
const Bytes kAck5001 = {0xFF, 0x81, 0x89, 0x13, 0x00, 0x00, 0x00, 0x88, 0x78, 0xE2};

// 0x81FF + 0x0008 + 2 + 0x8000 = 0x10209, checksum 0xFDF7; data 0x1234 + 0xF000 = 0x10234, 0xFDCC.
const Bytes kTwoWords = {0xFF, 0x81, 0x08, 0x00, 0x02, 0x00, 0x00, 0x80,
                         0xF7, 0xFD, 0x34, 0x12, 0x00, 0xF0, 0xCC, 0xFD};

TEST(Frame, WithoutDataIsItsHeader) {
    EXPECT_EQ(makeFrame(5001, 0x8800), kAck5001);
}

TEST(Frame, WithDataHasAChecksumBehindThem) {
    EXPECT_EQ(makeFrame(8, 0x8000, {0x1234, 0xF000}), kTwoWords);
}

TEST(Frame, OfZerosHasAChecksumOfZero) {
    const Bytes frame = makeFrame(8, 0x8000, {0, 0});
    EXPECT_EQ(frameWord(frame, 7), 0);
    EXPECT_TRUE(isIntact(frame));
}

TEST(Frame, IsIntactOnlyAsItWasMade) {
    EXPECT_TRUE(isIntact(kAck5001));
    EXPECT_TRUE(isIntact(kTwoWords));
    for (std::size_t i = 0; i < kTwoWords.size(); ++i) {
        Bytes damaged = kTwoWords;
        damaged[i] ^= 0x10;
        EXPECT_FALSE(isIntact(damaged)) << "byte " << i;
    }
    Bytes longer = kTwoWords;
    longer.push_back(0);
    EXPECT_FALSE(isIntact(longer));
    EXPECT_FALSE(isIntact(Bytes(kTwoWords.begin(), kTwoWords.end() - 1)));
    EXPECT_FALSE(isIntact({}));
    EXPECT_FALSE(isIntact(Bytes(10, 0))) << "sums of zero, but no delimiter";
}

TEST(Frame, WordsBeyondItsEndAreZero) {
    EXPECT_EQ(frameWord(kTwoWords, 1), 8);
    EXPECT_EQ(frameWord(kTwoWords, 5), 0x1234);
    EXPECT_EQ(frameWord(kTwoWords, 8), 0);
}

}  // namespace

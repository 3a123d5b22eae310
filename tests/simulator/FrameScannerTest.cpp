// SPDX-License-Identifier: Apache-2.0
#include "simulator/FrameScanner.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Simulator::Bytes;
using Simulator::FrameScanner;
using Simulator::makeFrame;
using Simulator::ScannedFrame;
using Simulator::Words;
using Kind = ScannedFrame::Kind;

std::vector<ScannedFrame> feed(FrameScanner& scanner, const Bytes& bytes) {
    return scanner.feed(bytes.data(), bytes.size());
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

const Bytes kCommand = makeFrame(5001, 0x9000, Words(31, 0x0101));
const Bytes kConnect = makeFrame(8504, 0x9040);

TEST(FrameScanner, FindsFramesBackToBack) {
    FrameScanner scanner;
    const auto found = feed(scanner, kConnect + kCommand + kConnect);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[0].kind, Kind::Intact);
    EXPECT_EQ(found[0].msgId(), 8504);
    EXPECT_EQ(found[0].flags(), 0x9040);
    EXPECT_TRUE(found[0].headerOnly());
    EXPECT_EQ(found[1].msgId(), 5001);
    EXPECT_EQ(found[1].data(30), 0x0101);
    EXPECT_EQ(found[1].bytes, kCommand);
    EXPECT_FALSE(found[1].headerOnly());
}

TEST(FrameScanner, PutsAFrameTogetherByteByByte) {
    FrameScanner scanner;
    for (std::size_t i = 0; i + 1 < kCommand.size(); ++i) {
        EXPECT_TRUE(feed(scanner, {kCommand[i]}).empty());
    }
    const auto found = feed(scanner, {kCommand.back()});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].bytes, kCommand);
    EXPECT_FALSE(scanner.waiting());
}

TEST(FrameScanner, NamesAFrameWhoseDataAreDamaged) {
    FrameScanner scanner;
    Bytes damaged = kCommand;
    damaged[40] ^= 0x04;
    const auto found = feed(scanner, damaged + kConnect);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].kind, Kind::Damaged);
    EXPECT_EQ(found[0].msgId(), 5001);
    EXPECT_EQ(found[0].bytes, damaged);
    EXPECT_EQ(found[1].kind, Kind::Intact);
}

TEST(FrameScanner, TakesAFrameWithADamagedHeaderForStrayBytes) {
    FrameScanner scanner;
    Bytes damaged = kConnect;
    damaged[6] ^= 0x04;
    const auto found = feed(scanner, damaged + kConnect);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].kind, Kind::Stray);
    EXPECT_EQ(found[0].bytes, damaged);
    EXPECT_EQ(found[0].msgId(), 0);
    EXPECT_EQ(found[1].bytes, kConnect);
}

TEST(FrameScanner, FindsAFrameBehindHalfADelimiter) {
    FrameScanner scanner;
    const auto found = feed(scanner, Bytes{0x00, 0xFF, 0xFF} + kConnect);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].bytes, (Bytes{0x00, 0xFF, 0xFF}));
    EXPECT_EQ(found[1].bytes, kConnect);
}

TEST(FrameScanner, DoesNotWaitForAFrameThatNobodySends) {
    FrameScanner scanner;
    const Bytes tooLong = makeFrame(5001, 0x9000, Words(1001));
    const auto found = feed(scanner, Bytes(tooLong.begin(), tooLong.begin() + 10) + kConnect);
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found.back().bytes, kConnect);
    const Bytes longest = makeFrame(5001, 0x9000, Words(1000, 0xFFFF));
    EXPECT_EQ(feed(scanner, longest).back().bytes, longest);
}

TEST(FrameScanner, ForgetsABegunFrameWhenItIsReset) {
    FrameScanner scanner;
    feed(scanner, Bytes(kCommand.begin(), kCommand.begin() + 30));
    EXPECT_TRUE(scanner.waiting());
    scanner.reset();
    const auto found = feed(scanner, kConnect);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].bytes, kConnect);
}

TEST(FrameScanner, LosesNoByteOfAnyStream) {
    std::mt19937 random(7);
    FrameScanner scanner;
    Bytes fed;
    Bytes out;
    for (int round = 0; round < 2000; ++round) {
        Bytes piece(random() % 40);
        for (auto& byte : piece) {
            byte = static_cast<std::uint8_t>(random() % 3 == 0 ? 0xFF : random() & 0xFF);
        }
        piece = round % 5 == 0 ? piece + kConnect : piece;
        fed = fed + piece;
        for (const ScannedFrame& frame : feed(scanner, piece)) {
            out = out + frame.bytes;
        }
    }
    ASSERT_LE(out.size(), fed.size());
    EXPECT_LE(fed.size() - out.size(), 2012u);
    EXPECT_TRUE(std::equal(out.begin(), out.end(), fed.begin()));
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipMessage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "gssip/GssipFrame.h"
#include "gssip/IWriteByteStreams.h"

namespace {

constexpr uint16_t kGuard = 0xBEEF;

// What a typed message is: one block of words, attached in the constructor. Guard words behind the
// block show what is written beyond it.
template <unsigned kDataWords>
class Message : public GssipMessage {
  public:
    explicit Message(uint16_t msgId) {
        MakeHdrSpecifyFlagWd(block, msgId, 0x9000, kDataWords);
        attach(block, kDataWords == 0 ? nullptr : block + 5, msgId, kDataWords, kBlockBytes);
    }
    void debugPrintMessage() const override { ++debugPrints; }

    bool guardsHold() const { return guards[0] == kGuard && guards[1] == kGuard; }

    static constexpr unsigned kBlockBytes = Gssip::frameBytes(kDataWords);
    uint16_t block[kBlockBytes / 2] = {};
    uint16_t guards[2] = {kGuard, kGuard};
    mutable int debugPrints = 0;
};

struct Stream : IWriteByteStreams {
    int WriteBytes(const void* bytes, unsigned count) override {
        const auto* first = static_cast<const unsigned char*>(bytes);
        writes.emplace_back(first, first + count);
        if (onWrite) {
            onWrite();
        }
        return static_cast<int>(count);
    }
    std::vector<std::vector<unsigned char>> writes;
    std::function<void()> onWrite;
};

// Not a message of its own: the base without any frame.
using BareMessage = GssipMessage;

TEST(GssipMessage, ABareBaseHasNothing) {
    BareMessage message;
    EXPECT_EQ(message.frame(), nullptr);
    EXPECT_EQ(message.data(), nullptr);
    EXPECT_EQ(message.wdcnt(), 0u);
    EXPECT_EQ(message.msgId(), 0);
    EXPECT_FALSE(message.isHeaderChecksumInserted());
    EXPECT_FALSE(message.isDataChecksumInserted());
}

TEST(GssipMessage, ABareBaseDoesNothing) {
    BareMessage message;
    Stream stream;
    const unsigned char bytes[12] = {};
    EXPECT_FALSE(message.OkSetContent(bytes, 12));
    EXPECT_EQ(message.checksumOfContents(), 0);
    EXPECT_EQ(message.calculateHeaderChecksum(), 0);
    EXPECT_EQ(message.checksumOfHeader(), 0);
    EXPECT_EQ(message.flagWord(), 0);
    message.insert_checksum();
    message.setHeaderChecksum();
    message.set_gpsip_wdcnt(7);
    message.clearContents();
    message.debugPrintMessage();
    message.WriteMessage(&stream);
    EXPECT_TRUE(stream.writes.empty());
    EXPECT_FALSE(message.isHeaderChecksumInserted());
}

TEST(GssipMessage, LoadsAFrameOfItsOwnLength) {
    Message<2> message(5001);
    const unsigned char frame[16] = {0xFF, 0x81, 0x34, 0x12, 2,    0,    0x00, 0x80,
                                     0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
    ASSERT_TRUE(message.OkSetContent(frame, 16));
    EXPECT_EQ(std::memcmp(message.block, frame, 16), 0);
    EXPECT_EQ(message.data()[0], 0x4433);
    EXPECT_EQ(message.data()[1], 0x6655);
}

TEST(GssipMessage, RefusesAnyOtherLengthAndChangesNothing) {
    Message<2> message(5001);
    message.block[5] = 0x1234;
    const std::vector<uint16_t> before(message.block, message.block + 8);
    const unsigned char bytes[64] = {};
    for (const unsigned size : {0u, 1u, 10u, 11u, 12u, 13u, 14u, 15u, 18u, 64u}) {
        EXPECT_FALSE(message.OkSetContent(bytes, size)) << size;
    }
    EXPECT_EQ(std::vector<uint16_t>(message.block, message.block + 8), before);
}

TEST(GssipMessage, AnOddLengthIsHalvedDownAndClippedAtTheBlock) {
    Message<2> message(5001);
    const std::vector<unsigned char> bytes(17, 0x5A);
    EXPECT_TRUE(message.OkSetContent(bytes.data(), 17));
    EXPECT_EQ(message.block[7], 0x5A5A);
    EXPECT_TRUE(message.guardsHold());
}

TEST(GssipMessage, AHeaderOnlyMessageRefuses10BytesAndTakes12Or13) {
    Message<0> message(5001);
    const std::vector<unsigned char> bytes(13, 0x5A);
    EXPECT_FALSE(message.OkSetContent(bytes.data(), 10));
    EXPECT_EQ(message.block[0], 0x81FF);
    EXPECT_TRUE(message.OkSetContent(bytes.data(), 12));
    EXPECT_TRUE(message.OkSetContent(bytes.data(), 13));
    EXPECT_EQ(message.block[4], 0x5A5A);
    EXPECT_TRUE(message.guardsHold());
}

TEST(GssipMessage, SumsItsHeaderAndItsData) {
    Message<2> message(5001);
    message.block[5] = 0x0102;
    message.block[6] = 0x0304;
    EXPECT_EQ(message.checksumOfContents(), 0xFBFA);  // 0102 + 0304 = 0406
    message.block[4] = 0x1111;
    EXPECT_EQ(message.calculateHeaderChecksum(), 0xDA76);  // 81FF + 1389 + 0002 + 9000 = 1258A
    EXPECT_EQ(message.checksumOfHeader(), 0xC965);         // 258A + 1111 = 369B
    message.setHeaderChecksum();
    EXPECT_EQ(message.block[4], 0xDA76);
    EXPECT_EQ(message.checksumOfHeader(), 0);
}

TEST(GssipMessage, SettingTheHeaderChecksumDoesNotCountAsInserted) {
    Message<2> message(5001);
    message.setHeaderChecksum();
    EXPECT_FALSE(message.isHeaderChecksumInserted());
    EXPECT_FALSE(message.isDataChecksumInserted());
}

TEST(GssipMessage, InsertsBothChecksums) {
    Message<2> message(5001);
    message.block[5] = 0x0102;
    message.block[6] = 0x0304;
    message.insert_checksum();
    EXPECT_EQ(message.block[4], 0xDA76);
    EXPECT_EQ(message.block[7], 0xFBFA);
    EXPECT_TRUE(message.isHeaderChecksumInserted());
    EXPECT_TRUE(message.isDataChecksumInserted());
}

TEST(GssipMessage, WithoutDataThereIsNoDataChecksum) {
    Message<0> message(5001);
    message.insert_checksum();
    EXPECT_TRUE(message.isHeaderChecksumInserted());
    EXPECT_FALSE(message.isDataChecksumInserted());
    EXPECT_EQ(message.checksumOfContents(), 0);
    EXPECT_TRUE(message.guardsHold());
}

TEST(GssipMessage, TheWordCountStandsInTheHeaderAndInTheObject) {
    Message<4> message(5001);
    message.set_gpsip_wdcnt(2);
    EXPECT_EQ(message.block[2], 2);
    EXPECT_EQ(message.wdcnt(), 2u);
    message.insert_checksum();
    EXPECT_EQ(message.block[7], 0);  // the checksum of two zero words, behind them
    EXPECT_TRUE(message.isDataChecksumInserted());
}

TEST(GssipMessage, ClearingZeroesTheDataWordsOnly) {
    Message<2> message(5001);
    message.block[5] = message.block[6] = message.block[7] = 0x7777;
    message.clearContents();
    EXPECT_EQ(message.block[0], 0x81FF);
    EXPECT_EQ(message.block[3], 0x9000);
    EXPECT_EQ(message.block[5], 0);
    EXPECT_EQ(message.block[6], 0);
    EXPECT_EQ(message.block[7], 0x7777);
}

TEST(GssipMessage, WritesItsFrameLeastSignificantByteFirst) {
    Message<2> message(5001);
    message.block[5] = 0x0102;
    message.block[6] = 0x0304;
    Stream stream;
    message.WriteMessage(&stream);
    const std::vector<unsigned char> expected = {0xFF, 0x81, 0x89, 0x13, 0x02, 0x00, 0x00, 0x90,
                                                 0x76, 0xDA, 0x02, 0x01, 0x04, 0x03, 0xFA, 0xFB};
    ASSERT_EQ(stream.writes.size(), 1u);
    EXPECT_EQ(stream.writes[0], expected);
}

TEST(GssipMessage, WritesTenBytesWithoutData) {
    Message<0> message(5001);
    Stream stream;
    message.WriteMessage(&stream);
    // 81FF + 1389 + 0000 + 9000 = 12588
    const std::vector<unsigned char> expected = {0xFF, 0x81, 0x89, 0x13, 0x00,
                                                 0x00, 0x00, 0x90, 0x78, 0xDA};
    ASSERT_EQ(stream.writes.size(), 1u);
    EXPECT_EQ(stream.writes[0], expected);
}

TEST(GssipMessage, WritingTwiceGivesTheSameBytes) {
    Message<31> message(5001);
    message.block[9] = 0xC0DE;
    Stream stream;
    message.WriteMessage(&stream);
    message.WriteMessage(&stream);
    ASSERT_EQ(stream.writes.size(), 2u);
    EXPECT_EQ(stream.writes[0].size(), 74u);
    EXPECT_EQ(stream.writes[0], stream.writes[1]);
}

TEST(GssipMessage, CallsTheDebugPrintJustBeforeTheBytesGoOut) {
    Message<2> message(5001);
    Stream stream;
    int printsAtWrite = -1;
    stream.onWrite = [&] { printsAtWrite = message.debugPrints; };
    message.WriteMessage(&stream);
    EXPECT_EQ(printsAtWrite, 1);
    EXPECT_EQ(message.debugPrints, 1);
}

TEST(GssipMessage, WritesNothingWithoutAStream) {
    Message<2> message(5001);
    message.WriteMessage(nullptr);
    EXPECT_EQ(message.debugPrints, 0);
    EXPECT_FALSE(message.isHeaderChecksumInserted());
}

TEST(GssipMessage, WritesNothingWhenTheHeaderCountWasChangedBehindItsBack) {
    Message<2> message(5001);
    message.block[2] = 1;
    Stream stream;
    message.WriteMessage(&stream);
    EXPECT_TRUE(stream.writes.empty());
    EXPECT_EQ(message.debugPrints, 0);
    EXPECT_FALSE(message.isHeaderChecksumInserted());
    EXPECT_FALSE(message.isDataChecksumInserted());
}

TEST(GssipMessage, AMessageOnceWrittenStaysInserted) {
    Message<2> message(5001);
    Stream stream;
    message.WriteMessage(&stream);
    message.block[2] = 1;
    message.WriteMessage(&stream);
    ASSERT_EQ(stream.writes.size(), 2u);
    EXPECT_EQ(stream.writes[1].size(), 16u);
}

TEST(GssipMessage, ACountBeyondTheBlockIsNeverSummedClearedOrWritten) {
    Message<2> message(5001);
    Stream stream;
    message.WriteMessage(&stream);
    message.set_gpsip_wdcnt(4);
    message.insert_checksum();
    message.clearContents();
    message.checksumOfContents();
    message.WriteMessage(&stream);
    EXPECT_EQ(stream.writes.size(), 1u);
    EXPECT_TRUE(message.guardsHold());
}

}  // namespace

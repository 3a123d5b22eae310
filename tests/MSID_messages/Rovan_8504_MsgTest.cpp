// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_8504_Msg.h"

#include <algorithm>
#include <set>

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

// Words that no field touches.
const std::set<unsigned> kFreeWords{36, 37, 38, 39, 40, 41, 53, 54, 66, 67, 68, 69, 70, 71};

// Every field but the channels and the split time.
void expectSameFields(const unpacked_msg8504_t& unpacked, const unpacked_msg8504_t& expected) {
    EXPECT_SAME_FIELD(time);
    EXPECT_SAME_FIELD(double4);
    EXPECT_SAME_FIELD(latitude);
    EXPECT_SAME_FIELD(longitude);
    EXPECT_SAME_FIELD(double14);
    EXPECT_SAME_FIELD(double18);
    EXPECT_SAME_FIELD(double22);
    EXPECT_SAME_FIELD(single26);
    EXPECT_SAME_FIELD(altitude);
    EXPECT_SAME_FIELD(eastVelocity);
    EXPECT_SAME_FIELD(northVelocity);
    EXPECT_SAME_FIELD(upVelocity);
    EXPECT_SAME_FIELD(single42);
    EXPECT_SAME_FIELD(horizontalPositionError);
    EXPECT_SAME_FIELD(verticalPositionError);
    EXPECT_SAME_FIELD(horizontalVelocityError);
    EXPECT_SAME_FIELD(verticalVelocityError);
    EXPECT_SAME_FIELD(bits48at0);
    EXPECT_SAME_FIELD(receiverFailure);
    EXPECT_SAME_FIELD(noSolution);
    EXPECT_SAME_FIELD(bits48at6);
    EXPECT_SAME_FIELD(bits48at8);
    EXPECT_SAME_FIELD(bits48at10);
    EXPECT_SAME_FIELD(word49);
    EXPECT_SAME_FIELD(byte50);
    EXPECT_SAME_FIELD(bit50at8);
    EXPECT_SAME_FIELD(bit50at9);
    EXPECT_SAME_FIELD(bit50at10);
    EXPECT_SAME_FIELD(bits50at11);
    EXPECT_SAME_ARRAY(nibbles51);
    EXPECT_SAME_FIELD(hdop);
    EXPECT_SAME_FIELD(vdop);
    EXPECT_SAME_FIELD(tdop);
    EXPECT_SAME_FIELD(byte58);
    EXPECT_SAME_FIELD(bit58at8);
    EXPECT_SAME_FIELD(corrections58at9);
    EXPECT_SAME_FIELD(corrections58at11);
    EXPECT_SAME_FIELD(bits58at13);
    EXPECT_SAME_FIELD(bit58at15);
    EXPECT_SAME_FIELD(bits59at0);
    EXPECT_SAME_FIELD(bits59at3);
    EXPECT_SAME_FIELD(byte59at8);
    EXPECT_SAME_FIELD(bits60at0);
    EXPECT_SAME_FIELD(bit60at2);
    EXPECT_SAME_FIELD(bits60at3);
    EXPECT_SAME_FIELD(byte60at8);
    EXPECT_SAME_FIELD(single61);
    EXPECT_SAME_FIELD(single63);
    EXPECT_SAME_FIELD(bits65at0);
    EXPECT_SAME_FIELD(bits65at4);
    EXPECT_SAME_FIELD(byte65at8);
}

void expectSame(const unpacked_msg8504_t& unpacked, const unpacked_msg8504_t& expected) {
    expectSameFields(unpacked, expected);
    EXPECT_EQ(std::memcmp(unpacked.channels, expected.channels, 256), 0);
    EXPECT_SAME_FIELD(wholeSeconds);
    EXPECT_SAME_FIELD(fractionOfSecond);
}

void load(Rovan_8504_Msg& message, const Frames::Bytes& frame) {
    ASSERT_TRUE(message.ok_set_8504_gpsip(frame.data(), Frames::size(frame)));
    message.unpack_8504();
}

packed_msg8504_t packedFrom(const Rovan_8504_Msg& message) {
    packed_msg8504_t packed;
    std::memcpy(packed.words, message.data(), sizeof packed.words);
    return packed;
}

}  // namespace

TEST(Rovan_8504_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k8504) {
        Rovan_8504_Msg message;
        load(message, sample.frame);
        expectSame(message.unpacked(), sample.expected);

        unpacked_msg8504_t unpacked{};
        Rovan_8504_Msg::unpack_8504(packedFrom(message), unpacked);
        expectSame(unpacked, sample.expected);
    }
}

TEST(Rovan_8504_Msg, UnpacksAnAllZeroFrameToZeros) {
    const Frames::Frame frame(8504, 200);
    Rovan_8504_Msg message;
    // What stood there before must not shine through.
    std::memset(static_cast<void*>(&message.unpacked()), 1, sizeof message.unpacked());
    ASSERT_TRUE(message.ok_set_8504_gpsip(frame.bytes(), frame.size()));

    message.unpack_8504();

    expectSame(message.unpacked(), unpacked_msg8504_t{});
}

// 100000.5 s is 1.1000011010100000 1 binary times 2^16: sign 0, exponent 128 + 17 = 0x91, and the
// fraction 100 0011 0101 0000 01 behind the implied bit.
TEST(Rovan_8504_Msg, SplitsTheTime) {
    Frames::Frame frame(8504, 200);
    frame.word(0, 0x48C3).word(1, 0x5040);
    Rovan_8504_Msg message;
    ASSERT_TRUE(message.ok_set_8504_gpsip(frame.bytes(), frame.size()));

    message.unpack_8504();

    EXPECT_EQ(message.unpacked().time, 100000.5);
    EXPECT_EQ(message.unpacked().wholeSeconds, 100000.0);
    EXPECT_EQ(message.unpacked().fractionOfSecond, 0.5);
}

// The three lowest of the 55 fraction bits are lost in the time itself but not in the split pair:
// 2^20 plus 2^-35, with the low bit of word 3 worth 2^(21 - 56).
TEST(Rovan_8504_Msg, LosesNoBitOfTheFractionOfASecond) {
    Frames::Frame frame(8504, 200);
    frame.word(0, static_cast<uint16_t>((128 + 21) << 7)).word(3, 1);
    Rovan_8504_Msg message;
    ASSERT_TRUE(message.ok_set_8504_gpsip(frame.bytes(), frame.size()));

    message.unpack_8504();

    EXPECT_EQ(message.unpacked().time, 0x1p20);
    EXPECT_EQ(message.unpacked().wholeSeconds, 0x1p20);
    EXPECT_EQ(message.unpacked().fractionOfSecond, 0x1p-35);
}

TEST(Rovan_8504_Msg, PacksWhatItUnpackedIntoAnEmptyFrame) {
    for (const auto& sample : Golden::k8504) {
        Rovan_8504_Msg source;
        load(source, sample.frame);
        Rovan_8504_Msg target;
        target.unpacked() = source.unpacked();

        target.pack_8504();

        for (const unsigned word : kFreeWords) {
            EXPECT_EQ(target.data()[word], 0) << word;
        }
        target.unpack_8504();
        expectSameFields(target.unpacked(), sample.expected);
        EXPECT_EQ(std::memcmp(target.unpacked().channels, sample.expected.channels, 256), 0);
    }
}

// Only the low three bits of a PDP double do not come back; the golden frame without them does.
TEST(Rovan_8504_Msg, PacksEveryWordOfAFrameThatLosesNothing) {
    Rovan_8504_Msg message;
    load(message, Golden::k8504[0].frame);
    packed_msg8504_t original = packedFrom(message);
    for (const unsigned lastOfDouble : {3u, 7u, 17u, 21u, 25u}) {
        original.words[lastOfDouble] &= 0xFFF8;
    }
    unpacked_msg8504_t unpacked{};
    Rovan_8504_Msg::unpack_8504(original, unpacked);
    packed_msg8504_t packed;
    std::fill(std::begin(packed.words), std::end(packed.words), uint16_t{0xA5A5});

    Rovan_8504_Msg::pack_8504(unpacked, packed);

    for (unsigned i = 0; i < 200; ++i) {
        EXPECT_EQ(packed.words[i], kFreeWords.count(i) != 0 ? 0xA5A5 : original.words[i]) << i;
    }
}

TEST(Rovan_8504_Msg, PacksTheTimeAndNotItsSplitPair) {
    unpacked_msg8504_t unpacked{};
    unpacked.time = 1.5;
    unpacked.wholeSeconds = 7.0;
    unpacked.fractionOfSecond = 0.25;
    packed_msg8504_t packed{};

    Rovan_8504_Msg::pack_8504(unpacked, packed);

    EXPECT_EQ(packed.words[0], 0x40C0);
}

TEST(Rovan_8504_Msg, CutsFieldsToTheirBits) {
    unpacked_msg8504_t unpacked{};
    unpacked.bits48at0 = 0xFF;
    unpacked.nibbles51[1] = 0xFF;
    packed_msg8504_t packed{};

    Rovan_8504_Msg::pack_8504(unpacked, packed);

    EXPECT_EQ(packed.words[48], 0x000F);
    EXPECT_EQ(packed.words[51], 0x00F0);
}

TEST(Rovan_8504_Msg, CopiesFrameAndUnpackedForm) {
    Rovan_8504_Msg source;
    load(source, Golden::k8504[1].frame);
    source.unpacked().altitude = 12.5f;
    Rovan_8504_Msg copy;

    copy.copy_all(source);
    source.unpacked().altitude = 0.0f;

    EXPECT_EQ(std::memcmp(copy.frame(), Golden::k8504[1].frame.data(), 412), 0);
    EXPECT_EQ(copy.unpacked().altitude, 12.5f);
    EXPECT_NE(copy.frame(), source.frame());
    copy.unpack_8504();
    expectSame(copy.unpacked(), Golden::k8504[1].expected);
}

TEST(Rovan_8504_Msg, DetectsAReceiverFailureInTheFrame) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        Frames::Frame frame(8504, 200);
        frame.word(48, static_cast<uint16_t>(1u << bit));
        Rovan_8504_Msg message;
        ASSERT_TRUE(message.ok_set_8504_gpsip(frame.bytes(), frame.size()));
        message.unpacked().receiverFailure = bit != 4;

        EXPECT_EQ(message.recieverFailureDetected(), bit == 4) << bit;
    }
}

TEST(Rovan_8504_Msg, IsNotTouchedBehindItsFrameByAnOddByte) {
    Frames::Bytes bytes(413, 0xFF);
    Rovan_8504_Msg message;

    ASSERT_TRUE(message.ok_set_8504_gpsip(bytes.data(), 413));

    expectSame(message.unpacked(), unpacked_msg8504_t{});
}

// Each field of a record filled alone, and everything but it.
TEST(Rovan_8504_Msg, ReadsTheFieldsOfAChannelRecord) {
    const channel_record_8504_t zero{};
    EXPECT_EQ((channel_record_8504_t{{0xFF, 0, 0, 0, 0, 0, 0, 0}}.prn()), 255u);
    EXPECT_EQ((channel_record_8504_t{{0, 0x7F, 0, 0, 0, 0, 0, 0}}.channel()), 127u);
    EXPECT_EQ((channel_record_8504_t{{0, 0x80, 0, 0, 0, 0, 0, 0}}.channel()), 0u);
    EXPECT_TRUE((channel_record_8504_t{{0, 0x80, 0, 0, 0, 0, 0, 0}}.usedInSolution()));
    EXPECT_FALSE((channel_record_8504_t{{0, 0x7F, 0, 0, 0, 0, 0, 0}}.usedInSolution()));
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0x0F, 0, 0, 0, 0, 0}}.signalCode()), 15u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0xF0, 0xFF, 0, 0, 0, 0}}.signalCode()), 0u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0x80, 0x07, 0, 0, 0, 0}}.frequency()), 15u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0x80, 0x00, 0, 0, 0, 0}}.frequency()), 1u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0x7F, 0xF8, 0, 0, 0, 0}}.frequency()), 0u);
    EXPECT_TRUE((channel_record_8504_t{{0, 0, 0, 0x08, 0, 0, 0, 0}}.assured()));
    EXPECT_TRUE((channel_record_8504_t{{0, 0, 0, 0x10, 0, 0, 0, 0}}.assured()));
    EXPECT_FALSE((channel_record_8504_t{{0, 0, 0xFF, 0xE7, 0, 0, 0, 0}}.assured()));
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0x3F, 0, 0, 0}}.carrierToNoise()), 63u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0xC0, 0xFF, 0, 0}}.carrierToNoise()), 0u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0xC0, 0x0F, 0, 0}}.jammerToSignal()), 126u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0x40, 0x00, 0, 0}}.jammerToSignal()), 2u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0x3F, 0xF0, 0, 0}}.jammerToSignal()), 0u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0, 0, 0, 0x0F}}.trackingStatus()), 15u);
    EXPECT_EQ((channel_record_8504_t{{0, 0, 0, 0, 0, 0, 0, 0xF0}}.trackingStatus()), 0u);
    EXPECT_EQ(zero.prn() + zero.channel() + zero.signalCode() + zero.frequency() +
                  zero.carrierToNoise() + zero.jammerToSignal() + zero.trackingStatus(),
              0u);
}

TEST(Rovan_8504_Msg, CountsTrackingStatus3To5AsAvailable) {
    for (unsigned status = 0; status < 16; ++status) {
        const channel_record_8504_t record{
            {0, 0, 0, 0, 0, 0, 0, static_cast<uint8_t>(0xF0 | status)}};
        EXPECT_EQ(record.satelliteAvailable(), status >= 3 && status <= 5) << status;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "ioss_mcsq/GssipTopicSerializer.h"

#include <gtest/gtest.h>

#include <exception>
#include <random>

#include "tests/ioss_mcsq/Samples.h"

namespace {

using aspn2_msgs::idl::GSSIP;
using Bytes = std::vector<uint8_t>;

// What comes of bytes that may be anything.
enum class Outcome { kSample, kRefused, kThrown };

Outcome deserialize(const Bytes& bytes, GSSIP& sample) {
    GssipTopicSerializer serializer;
    try {
        return serializer.Deserialize(bytes.data(), bytes.size(), sample) ? Outcome::kSample
                                                                          : Outcome::kRefused;
    } catch (const std::exception&) {
        return Outcome::kThrown;
    }
}

// Written out byte by byte: the encapsulation of little-endian CDR, seq_num, the two time stamps of
// sec, nsec and time_code, device_id, num_bytes, the length of the data, the data.
TEST(GssipTopicSerializer, WritesTheBytesOfASample) {
    Bytes bytes;
    GssipTopicSerializer serializer;
    ASSERT_TRUE(
        serializer.Serialize(sampleOf({0xFF, 0x81, 0x88, 0x13}, 0x0102030405060708), bytes));
    EXPECT_EQ(bytes, (Bytes{0x00, 0x01, 0x00, 0x00,                          //
                            0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,  //
                            0x18, 0x17, 0x16, 0x15, 0x14, 0x13, 0x12, 0x11,  //
                            0x24, 0x23, 0x22, 0x21, 0x64, 0x00, 0x00, 0x00,  //
                            0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  //
                            0xFF, 0xC9, 0x9A, 0x3B, 0x65, 0x00, 0x00, 0x00,  //
                            0x34, 0x33, 0x32, 0x31,                          //
                            0x04, 0x00, 0x00, 0x00,                          //
                            0x04, 0x00, 0x00, 0x00, 0xFF, 0x81, 0x88, 0x13}));
    EXPECT_EQ(bytes, bytesOf({0xFF, 0x81, 0x88, 0x13}, 0x0102030405060708));
}

TEST(GssipTopicSerializer, NeedsFiftySixBytesAroundTheFrame) {
    EXPECT_EQ(GssipTopicSerializer::kBytesAroundData, 56u);
    GssipTopicSerializer serializer;
    for (const size_t length : {0u, 1u, 2u, 3u, 10u, 101u, 224u, 131082u}) {
        const GSSIP sample = sampleOf(Bytes(length, 0x5A));
        EXPECT_EQ(GssipTopicSerializer::GetSerializedSize(sample), length + 56);
        Bytes bytes;
        ASSERT_TRUE(serializer.Serialize(sample, bytes));
        EXPECT_EQ(bytes, bytesOf(Bytes(length, 0x5A)));
    }
}

TEST(GssipTopicSerializer, ReadsEitherByteOrder) {
    for (const bool bigEndian : {false, true}) {
        Form form;
        form.seqNum = -3;
        form.bigEndian = bigEndian;
        GSSIP sample;
        ASSERT_EQ(deserialize(bytesOf(frameOf(8504, 6), form), sample), Outcome::kSample);
        EXPECT_EQ(sample.header().seq_num(), -3);
        EXPECT_EQ(sample.header().timestamp_arrival().sec(), 0x1112131415161718);
        EXPECT_EQ(sample.header().timestamp_arrival().nsec(), 0x21222324);
        EXPECT_EQ(sample.header().timestamp_arrival().time_code(), 100);
        EXPECT_EQ(sample.header().timestamp_valid().sec(), -2);
        EXPECT_EQ(sample.header().timestamp_valid().nsec(), 999999999);
        EXPECT_EQ(sample.header().timestamp_valid().time_code(), 101);
        EXPECT_EQ(sample.header().device_id(), 0x31323334);
        EXPECT_EQ(sample.num_bytes(), 16);
        EXPECT_EQ(sample.data(), frameOf(8504, 6));
    }
}

TEST(GssipTopicSerializer, ReadsFromAnyAddressAndLooksAtNothingBehind) {
    const Bytes bytes = Bytes(3, 0xEE) + bytesOf(frameOf(253)) + Bytes(40, 0xEE);
    GssipTopicSerializer serializer;
    GSSIP sample;
    ASSERT_TRUE(serializer.Deserialize(bytes.data() + 3, bytes.size() - 3, sample));
    EXPECT_EQ(sample.data(), frameOf(253));
}

TEST(GssipTopicSerializer, RefusesASampleThatIsCutAnywhere) {
    const Bytes whole = bytesOf(frameOf(253));
    for (size_t length = 0; length < whole.size(); ++length) {
        Bytes cut = whole;
        cut.resize(length);
        cut.shrink_to_fit();  // so that a sanitizer sees a read behind the end
        GSSIP sample;
        EXPECT_NE(deserialize(cut, sample), Outcome::kSample) << length;
    }
}

TEST(GssipTopicSerializer, RefusesDataLongerThanTheBytes) {
    for (const int64_t length : {13u, 1000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        Form form;
        form.dataLength = length;
        GSSIP sample;
        EXPECT_EQ(deserialize(bytesOf(frameOf(253), form), sample), Outcome::kRefused);
    }
}

TEST(GssipTopicSerializer, RefusesAnEncapsulationThatIsNone) {
    for (const size_t place : {0u, 1u}) {
        Bytes bytes = bytesOf(frameOf(253));
        bytes[place] = 0x77;
        GSSIP sample;
        EXPECT_NE(deserialize(bytes, sample), Outcome::kSample) << place;
    }
}

TEST(GssipTopicSerializer, SurvivesRandomBytes) {
    std::mt19937 random(20240229);
    int refused = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes(random() % 200);
        for (uint8_t& byte : bytes) {
            byte = static_cast<uint8_t>(random());
        }
        if (bytes.size() >= 4 && round % 2 == 0) {
            bytes[0] = 0;  // past the encapsulation every other time
            bytes[1] = static_cast<uint8_t>(round % 4 / 2);
        }
        GSSIP sample;
        refused += deserialize(bytes, sample) == Outcome::kSample ? 0 : 1;
    }
    EXPECT_GT(refused, 19000);
}

TEST(GssipTopicSerializer, UsesTheBytesAgain) {
    GssipTopicSerializer serializer;
    Bytes bytes;
    ASSERT_TRUE(serializer.Serialize(sampleOf(frameOf(253, 200)), bytes));
    const uint8_t* const store = bytes.data();
    ASSERT_TRUE(serializer.Serialize(sampleOf(frameOf(253, 4)), bytes));
    EXPECT_EQ(bytes.data(), store);
    EXPECT_EQ(bytes, bytesOf(frameOf(253, 4)));
}

}  // namespace

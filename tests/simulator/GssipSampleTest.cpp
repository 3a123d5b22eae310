// SPDX-License-Identifier: Apache-2.0
#include "simulator/GssipSample.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Simulator::Bytes;
using Simulator::GssipSample;

// By hand from the record: encapsulation, seq_num (8), arrival and valid (8 + 4 + 4 each),
// device_id (4), num_bytes (4), length of the sequence (4), the bytes.
const Bytes kSample = {
    0x00, 0x01, 0x00, 0x00,                          // plain CDR, little-endian
    0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // seq_num 2
    0x0A, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,  // arrival: 10 s
    0x00, 0xCA, 0x9A, 0x3B, 0x64, 0x00, 0x00, 0x00,  // 1000000000 ns, time code 100
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // valid: -1 s
    0xF8, 0xFF, 0xFF, 0xFF, 0x65, 0x00, 0x00, 0x00,  // -8 ns, time code 101
    0x00, 0x2E, 0x27, 0x03,                          // device id 3, 39, 46, 0
    0x03, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00,  // 3 bytes, twice
    0xFF, 0x81, 0x08};

GssipSample sample() {
    GssipSample sample;
    sample.sequenceNumber = 2;
    sample.arrival = {10, 1'000'000'000, 100};
    sample.valid = {-1, -8, 101};
    sample.deviceId = 0x03272E00;
    sample.frame = {0xFF, 0x81, 0x08};
    return sample;
}

TEST(GssipSample, IsPlainLittleEndianCdr) {
    EXPECT_EQ(sample().encode(), kSample);
}

TEST(GssipSample, IsReadBackFieldByField) {
    const auto decoded = GssipSample::decode(kSample.data(), kSample.size());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->sequenceNumber, 2);
    EXPECT_EQ(decoded->arrival.sec, 10);
    EXPECT_EQ(decoded->arrival.nsec, 1'000'000'000);
    EXPECT_EQ(decoded->arrival.timeCode, 100);
    EXPECT_EQ(decoded->valid.sec, -1);
    EXPECT_EQ(decoded->valid.nsec, -8);
    EXPECT_EQ(decoded->valid.timeCode, 101);
    EXPECT_EQ(decoded->deviceId, 0x03272E00);
    EXPECT_EQ(decoded->frame, (Bytes{0xFF, 0x81, 0x08}));
}

TEST(GssipSample, WaitsForTheRestOfItsBytes) {
    for (std::size_t size = 0; size < kSample.size(); ++size) {
        EXPECT_FALSE(GssipSample::decode(kSample.data(), size)) << size << " bytes";
    }
}

TEST(GssipSample, RefusesWhatIsNone) {
    Bytes bigEndian = kSample;
    bigEndian[1] = 0;
    EXPECT_THROW(GssipSample::decode(bigEndian.data(), bigEndian.size()), std::runtime_error);
    Bytes twoLengths = kSample;
    twoLengths[48] = 4;
    EXPECT_THROW(GssipSample::decode(twoLengths.data(), twoLengths.size()), std::runtime_error);
    Bytes huge = kSample;
    huge[51] = 0x7F;
    huge[55] = 0x7F;
    EXPECT_THROW(GssipSample::decode(huge.data(), huge.size()), std::runtime_error);
}

}  // namespace

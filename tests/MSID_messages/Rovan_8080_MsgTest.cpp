// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_8080_Msg.h"

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

void expectSame(const unpacked_msg8080_t& unpacked, const unpacked_msg8080_t& expected) {
    EXPECT_SAME_FIELD(time);
    EXPECT_SAME_FIELD(indications);
    EXPECT_SAME_FIELD(word5);
}

}  // namespace

TEST(Rovan_8080_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k8080) {
        Rovan_8080_Msg message;
        ASSERT_TRUE(message.ok_set_8080_gpsip(sample.frame.data(), Frames::size(sample.frame)));
        message.unpack_8080();
        expectSame(message.unpacked(), sample.expected);

        packed_msg8080_t packed;
        std::memcpy(packed.words, message.data(), sizeof packed.words);
        unpacked_msg8080_t unpacked{};
        Rovan_8080_Msg::unpack_8080(packed, unpacked);
        expectSame(unpacked, sample.expected);
    }
}

TEST(Rovan_8080_Msg, HasFourIndicationsInFiveBits) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        unpacked_msg8080_t unpacked{};
        unpacked.indications = static_cast<uint16_t>(1u << bit);
        for (unsigned number = 0; number < 4; ++number) {
            const bool expected = number < 3 ? bit == number : bit == 3 || bit == 4;
            EXPECT_EQ(unpacked.interference(number), expected) << number << " by bit " << bit;
        }
    }
}

TEST(Rovan_8080_Msg, PacksNothing) {
    Rovan_8080_Msg message;
    message.unpacked().indications = 5;
    packed_msg8080_t packed{};

    message.pack_8080();
    Rovan_8080_Msg::pack_8080(message.unpacked(), packed);

    EXPECT_EQ(message.data()[4], 0);
    EXPECT_EQ(packed.words[4], 0);
}

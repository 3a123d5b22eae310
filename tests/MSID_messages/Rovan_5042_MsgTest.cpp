// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5042_Msg.h"

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

void expectSame(const unpacked_msg5042_t& unpacked, const unpacked_msg5042_t& expected) {
    EXPECT_SAME_FIELD(time);
    EXPECT_SAME_FIELD(isDtsCom1);
    EXPECT_SAME_FIELD(lowByte58);
}

}  // namespace

TEST(Rovan_5042_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k5042) {
        Rovan_5042_Msg message;
        ASSERT_TRUE(message.ok_set_5042_gpsip(sample.frame.data(), Frames::size(sample.frame)));
        message.unpack_5042();
        expectSame(message.unpacked(), sample.expected);

        packed_msg5042_t packed;
        std::memcpy(packed.words, message.data(), sizeof packed.words);
        unpacked_msg5042_t unpacked{};
        Rovan_5042_Msg::unpack_5042(packed, unpacked);
        expectSame(unpacked, sample.expected);
    }
}

TEST(Rovan_5042_Msg, TakesItsFlagFromBit1OfWord48Alone) {
    for (unsigned bit = 0; bit < 16; ++bit) {
        Rovan_5042_Msg message;
        Frames::Frame frame(5042, 100);
        frame.word(48, static_cast<uint16_t>(1u << bit));
        ASSERT_TRUE(message.ok_set_5042_gpsip(frame.bytes(), frame.size()));

        message.unpack_5042();

        EXPECT_EQ(message.unpacked().isDtsCom1, bit == 1) << bit;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5040_Msg.h"

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

void expectSame(const unpacked_msg5040_t& unpacked, const unpacked_msg5040_t& expected) {
    EXPECT_SAME_FIELD(time);
    EXPECT_SAME_ARRAY(words18to24);
    EXPECT_SAME_FIELD(word25);
    EXPECT_SAME_FIELD(nibble33);
    EXPECT_SAME_FIELD(word42);
    EXPECT_SAME_FIELD(single44);
    EXPECT_SAME_FIELD(nibble46);
    EXPECT_SAME_FIELD(operatingMode);
    EXPECT_SAME_FIELD(word71);
    EXPECT_SAME_FIELD(word72);
    EXPECT_SAME_FIELD(word73);
    EXPECT_SAME_FIELD(hundredths74);
    EXPECT_SAME_FIELD(remainingKeyTime);
    EXPECT_SAME_FIELD(word76);
    EXPECT_SAME_FIELD(cryptoState);
    EXPECT_SAME_FIELD(single78);
    EXPECT_SAME_FIELD(nibble80);
    EXPECT_SAME_FIELD(single36);
    EXPECT_SAME_FIELD(nibble38);
    EXPECT_SAME_FIELD(single82);
    EXPECT_SAME_FIELD(nibble84);
    EXPECT_SAME_FIELD(bit61);
}

}  // namespace

TEST(Rovan_5040_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k5040) {
        Rovan_5040_Msg message;
        ASSERT_TRUE(message.ok_set_5040_gpsip(sample.frame.data(), Frames::size(sample.frame)));
        message.unpack_5040();
        expectSame(message.unpacked(), sample.expected);

        packed_msg5040_t packed;
        std::memcpy(packed.words, message.data(), sizeof packed.words);
        unpacked_msg5040_t unpacked{};
        Rovan_5040_Msg::unpack_5040(packed, unpacked);
        expectSame(unpacked, sample.expected);
    }
}

// The only field that is divided: -12345 hundredths.
TEST(Rovan_5040_Msg, ReadsSignedHundredths) {
    Rovan_5040_Msg message;
    Frames::Frame frame(5040, 88);
    frame.word(74, static_cast<uint16_t>(-12345));
    ASSERT_TRUE(message.ok_set_5040_gpsip(frame.bytes(), frame.size()));

    message.unpack_5040();

    EXPECT_EQ(message.unpacked().hundredths74, -123.45);
}

TEST(Rovan_5040_Msg, PacksNothing) {
    Rovan_5040_Msg message;
    message.unpacked().operatingMode = 5;
    packed_msg5040_t packed{};

    message.pack_5040();
    Rovan_5040_Msg::pack_5040(message.unpacked(), packed);

    EXPECT_EQ(message.data()[49], 0);
    EXPECT_EQ(packed.words[49], 0);
}

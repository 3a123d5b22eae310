// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5044_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"

namespace {

const std::string kThirtyTwo = "ABCDEFGHIJKLMNOPQRSTUVWXYZ012345";

/// The first character of each pair in the high byte, PDP 1.5 (0.11 binary times 2) as the time.
Frames::Frame frameOf(uint16_t id, std::string text) {
    Frames::Frame frame(5044, 21);
    frame.word(0, 0x40C0).word(4, id);
    text.resize(32);
    for (unsigned i = 0; i < 16; ++i) {
        frame.word(5 + i, static_cast<uint16_t>(text[2 * i] << 8 | text[2 * i + 1]));
    }
    return frame;
}

}  // namespace

TEST(Rovan_5044_Msg, UnpacksTimeIdAndText) {
    Rovan_5044_Msg message;
    const Frames::Frame frame = frameOf(0x1234, "IP ZEROIZE");
    ASSERT_TRUE(message.ok_set_5044_gpsip(frame.bytes(), frame.size()));

    message.unpack_5044();

    EXPECT_EQ(message.unpacked().time, 1.5);
    EXPECT_EQ(message.unpacked().eventId, 0x1234);
    EXPECT_STREQ(message.unpacked().text, "IP ZEROIZE");
}

TEST(Rovan_5044_Msg, TerminatesATextOf32Characters) {
    Rovan_5044_Msg message;
    const Frames::Frame frame = frameOf(3, kThirtyTwo);
    ASSERT_TRUE(message.ok_set_5044_gpsip(frame.bytes(), frame.size()));
    std::memset(message.unpacked().text, 'x', sizeof message.unpacked().text);

    message.unpack_5044();

    EXPECT_EQ(std::string(message.unpacked().text, 34), kThirtyTwo + std::string(2, '\0'));
    packed_msg5044_t packed;
    std::memcpy(packed.words, message.data(), sizeof packed.words);
    unpacked_msg5044_t unpacked;
    Rovan_5044_Msg::unpack_5044(packed, unpacked);
    EXPECT_STREQ(unpacked.text, kThirtyTwo.c_str());
    EXPECT_EQ(unpacked.eventId, 3);
}

TEST(Rovan_5044_Msg, LeavesTheFrameAsItIs) {
    Rovan_5044_Msg message;
    const Frames::Frame frame = frameOf(3, kThirtyTwo);
    ASSERT_TRUE(message.ok_set_5044_gpsip(frame.bytes(), frame.size()));

    message.unpack_5044();

    EXPECT_EQ(std::memcmp(message.frame(), frame.bytes(), frame.size()), 0);
}

TEST(Rovan_5044_Msg, PacksNothing) {
    Rovan_5044_Msg message;
    message.unpacked().eventId = 5;
    packed_msg5044_t packed{};

    message.pack_5044();
    Rovan_5044_Msg::pack_5044(message.unpacked(), packed);

    EXPECT_EQ(message.data()[4], 0);
    EXPECT_EQ(packed.words[4], 0);
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_SVRise_Msg.h"

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

void expectSame(const unpacked_SVRiseMsg_t& unpacked, const unpacked_SVRiseMsg_t& expected) {
    EXPECT_SAME_FIELD(time);
    for (unsigned i = 0; i < 6; ++i) {
        EXPECT_SAME_FIELD(records[i].svid);
        EXPECT_SAME_FIELD(records[i].health);
        EXPECT_SAME_FIELD(records[i].azimuth);
        EXPECT_SAME_FIELD(records[i].elevation);
        EXPECT_SAME_FIELD(records[i].flags);
        EXPECT_SAME_ARRAY(records[i].unused);
    }
}

}  // namespace

TEST(Rovan_SVRise_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k5047) {
        Rovan_SVRise_Msg message(5047);
        ASSERT_TRUE(
            message.ok_set_SVRiseMsg_gpsip(sample.frame.data(), Frames::size(sample.frame)));
        message.unpack_SVRiseMsg();
        expectSame(message.unpacked(), sample.expected);

        packed_SVRiseMsg_t packed;
        std::memcpy(packed.words, message.data(), sizeof packed.words);
        unpacked_SVRiseMsg_t unpacked{};
        Rovan_SVRise_Msg::unpack_SVRiseMsg(packed, unpacked);
        expectSame(unpacked, sample.expected);
    }
}

TEST(Rovan_SVRise_Msg, DecodesWhatASatelliteDoes) {
    Frames::Frame frame(5048, 100);
    // The second record begins at word 20.
    frame.word(20, 17).word(21, 0x0100).word(22, 359).word(23, 0xFFFB).word(24, 0x0001);
    frame.word(36 + 4, 0xFFFE);
    Rovan_SVRise_Msg message(5048);
    ASSERT_TRUE(message.ok_set_SVRiseMsg_gpsip(frame.bytes(), frame.size()));

    message.unpack_SVRiseMsg();

    const sv_rise_record_t& record = message.unpacked().records[1];
    EXPECT_EQ(record.svid, 17);
    EXPECT_TRUE(record.healthy());
    EXPECT_EQ(record.azimuth, 359);
    EXPECT_EQ(record.elevation, -5);
    EXPECT_TRUE(record.rising());
    EXPECT_FALSE(message.unpacked().records[0].healthy());
    EXPECT_FALSE(message.unpacked().records[2].rising());
}

TEST(Rovan_SVRise_Msg, HasItsOwnFlagWordUnlikeAllOthers) {
    EXPECT_EQ(Rovan_SVRise_Msg(5047).flagWord(), 0x8000);
    EXPECT_EQ(Rovan_SVRise_Msg(5048).flagWord(), 0x8000);
    EXPECT_EQ(Rovan_SVRise_Msg(5048).msgId(), 5048);
}

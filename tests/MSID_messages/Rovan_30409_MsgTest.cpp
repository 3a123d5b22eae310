// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_30409_Msg.h"

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

constexpr uint16_t kAllButBit0 = 0xFFFE;

}  // namespace

TEST(Rovan_30409_Msg, ReadsTheGoldenFrames) {
    for (const auto& [frame, expected] : Golden::k30409) {
        Rovan_30409_Msg message;
        ASSERT_TRUE(message.ok_set_30409_gpsip(frame.data(), Frames::size(frame)));
        const msg30409_t utc = message.contents();

        EXPECT_EQ(utc.sourceOneValid(), expected.sourceOneValid);
        EXPECT_EQ(utc.sourceTwoValid(), expected.sourceTwoValid);
        EXPECT_EQ(utc.a1(), expected.a1);
        EXPECT_EQ(utc.a0(), expected.a0);
        EXPECT_EQ(utc.tot(), expected.tot);
        EXPECT_EQ(utc.delta_t_lsf(), expected.delta_t_lsf);
        EXPECT_EQ(utc.WNt(), expected.WNt);
        EXPECT_EQ(utc.dn(), expected.dn);
        EXPECT_EQ(utc.wn_lsf(), expected.wn_lsf);
        EXPECT_EQ(utc.delta_t_ls(), expected.delta_t_ls);
        EXPECT_EQ(utc.utcDataValid(), expected.utcDataValid);
    }
}

// Bit 0 of words 6, 9 and 30 in all eight combinations; the other bits set or clear alike.
TEST(Rovan_30409_Msg, IsValidWithDataAndAtLeastOneSource) {
    unsigned valid = 0;
    for (const uint16_t others : {uint16_t{0}, kAllButBit0}) {
        for (unsigned i = 0; i < 8; ++i) {
            const bool one = (i & 1) != 0;
            const bool two = (i & 2) != 0;
            const bool data = (i & 4) != 0;
            Frames::Frame frame(30409, 32);
            frame.word(6, static_cast<uint16_t>(others | (one ? 1 : 0)))
                .word(9, static_cast<uint16_t>(others | (two ? 1 : 0)))
                .word(30, static_cast<uint16_t>(others | (data ? 1 : 0)));
            Rovan_30409_Msg message;
            ASSERT_TRUE(message.ok_set_30409_gpsip(frame.bytes(), frame.size()));

            EXPECT_EQ(message.isUtc_Valid(), data && (one || two)) << i;
            EXPECT_EQ(Rovan_30409_Msg::isUtc_Valid(message.contents()), message.isUtc_Valid());
            valid += message.isUtc_Valid() ? 1 : 0;
        }
    }
    EXPECT_EQ(valid, 6u);
}

TEST(Rovan_30409_Msg, TakesAFrameUnderItsOtherId) {
    Frames::Frame frame(9409, 32);
    frame.word(30, 1).word(9, 1).word(25, 77);
    Rovan_30409_Msg message;

    ASSERT_TRUE(message.ok_set_30409_gpsip(frame.bytes(), frame.size()));

    EXPECT_TRUE(message.isUtc_Valid());
    EXPECT_EQ(message.contents().WNt(), 77);
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5404_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"

TEST(Rovan_5404_Msg, ReadsTheIpZeroizeStatusFromBits5And4OfWord5) {
    const std::pair<uint16_t, unsigned> words[] = {{0x0000, 0}, {0x0010, 1}, {0x0020, 2},
                                                   {0x0030, 3}, {0xFFCF, 0}, {0xFFDF, 1},
                                                   {0xFFEF, 2}, {0xFFFF, 3}};
    for (const auto& [word, status] : words) {
        Rovan_5404_Msg message;
        Frames::Frame frame(5404, 60);
        frame.word(4, 0xFFFF).word(5, word).word(6, 0xFFFF);
        ASSERT_TRUE(message.ok_set_5404_gpsip(frame.bytes(), frame.size()));

        EXPECT_EQ(message.getIPZeroizeStatus(), status) << word;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovanHeaderOnlyMsg.h"

#include <gtest/gtest.h>

#include "Frames.h"
#include "GoldenFrames.h"

TEST(RovanHeaderOnlyMsg, GoesOnTheLineAsWorkedOutByTheScript) {
    RovanHeaderOnlyMsg connect(8504, Gssip::kFlagsConnect);
    RovanHeaderOnlyMsg disconnect(0, Gssip::kFlagsDisconnect);
    RovanHeaderOnlyMsg request(9225, Gssip::kFlagsRequest);
    RovanHeaderOnlyMsg acknowledge(8504, Gssip::kFlagsAckAnswer);

    EXPECT_EQ(Frames::onTheLine(connect), Golden::kConnect8504);
    EXPECT_EQ(Frames::onTheLine(disconnect), Golden::kDisconnect0);
    EXPECT_EQ(Frames::onTheLine(request), Golden::kRequest9225);
    EXPECT_EQ(Frames::onTheLine(acknowledge), Golden::kAcknowledge8504);
}

TEST(RovanHeaderOnlyMsg, StoresIdAndFlagWord) {
    const RovanHeaderOnlyMsg message(5040, 0x9010);

    EXPECT_EQ(message.msgId(), 5040);
    EXPECT_EQ(Frames::wordsOf(message), (std::vector<uint16_t>{0x81FF, 5040, 0, 0x9010, 0}));
}

TEST(RovanHeaderOnlyMsg, IsRewrittenWhole) {
    RovanHeaderOnlyMsg message(5040, 0x9010);
    Frames::onTheLine(message);
    ASSERT_NE(message.frame()[4], 0);

    message.setMsgIdAndFlag(8504, 0x9020);

    EXPECT_EQ(Frames::wordsOf(message), (std::vector<uint16_t>{0x81FF, 8504, 0, 0x9020, 0}));
    EXPECT_EQ(message.msgId(), 8504);
}

// Half of 10 less 6 is -1, not 0, so a header alone is refused; 12 and 13 bytes are taken, though
// they are more than the frame.
TEST(RovanHeaderOnlyMsg, IsLoadedFromTwelveOrThirteenBytesOnly) {
    for (unsigned size = 0; size <= 20; ++size) {
        const auto message = std::make_unique<RovanHeaderOnlyMsg>();
        const Frames::Bytes bytes(size, 0xAB);

        EXPECT_EQ(message->OkSetContent(bytes.data(), size), size == 12 || size == 13) << size;
        EXPECT_EQ(message->frame()[0], size == 12 || size == 13 ? 0xABAB : 0x81FF) << size;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5402_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"
#include "GoldenFrames.h"

TEST(Rovan_5402_Msg, GoesOnTheLineAsWorkedOutByTheScript) {
    Rovan_5402_Msg ip;
    ip.setIpZeroize();
    Rovan_5402_Msg cv;
    cv.setCvZeroize();
    Rovan_5402_Msg mission;
    mission.setMissionDuration(84);

    EXPECT_EQ(Frames::onTheLine(ip), Golden::kIpZeroize);
    EXPECT_EQ(Frames::onTheLine(cv), Golden::kCvZeroize);
    EXPECT_EQ(Frames::onTheLine(mission), Golden::kMission84);
}

TEST(Rovan_5402_Msg, RefusesAMissionBeyond84) {
    Rovan_5402_Msg message;
    ASSERT_TRUE(message.setMissionDuration(7));
    const auto before = Frames::wordsOf(message);

    for (const unsigned duration : {85u, 65536u, 65537u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(message.setMissionDuration(duration)) << duration;
    }

    EXPECT_EQ(Frames::wordsOf(message), before);
}

TEST(Rovan_5402_Msg, DoesNotMarkARefusedMissionValid) {
    Rovan_5402_Msg message;

    EXPECT_FALSE(message.setMissionDuration(85));

    EXPECT_EQ(message.data()[5], 0);
    EXPECT_EQ(message.data()[6], 0);
}

TEST(Rovan_5402_Msg, TakesEveryMissionUpTo84) {
    for (unsigned duration = 0; duration <= 84; ++duration) {
        Rovan_5402_Msg message;
        EXPECT_TRUE(message.setMissionDuration(duration));
        EXPECT_EQ(message.data()[5], 0x0008);
        EXPECT_EQ(message.data()[6], duration);
    }
}

TEST(Rovan_5402_Msg, GathersWhatItsSettersSet) {
    Rovan_5402_Msg message;

    message.setCvZeroize();
    message.setIpZeroize();
    message.setMissionDuration(12);

    EXPECT_EQ(message.data()[4], 0x0011);
    EXPECT_EQ(message.data()[5], 0x0029);
    EXPECT_EQ(message.data()[6], 12);
}

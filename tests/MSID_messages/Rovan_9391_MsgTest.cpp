// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_9391_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"
#include "GoldenFrames.h"

TEST(Rovan_9391_Msg, ReadsTheGoldenFrames) {
    for (const auto& [frame, expected] : Golden::k9391) {
        Rovan_9391_Msg message;
        ASSERT_TRUE(message.ok_set_9391_gpsip(frame.data(), Frames::size(frame)));

        EXPECT_EQ(message.clockBias(), expected.clockBias);
        EXPECT_EQ(message.gpsWeek(), expected.gpsWeek);
        EXPECT_EQ(message.gpsTimeOfWeek(), expected.gpsTimeOfWeek);
        EXPECT_EQ(message.gpsTimeOfWeekFraction(), expected.gpsTimeOfWeekFraction);
        EXPECT_EQ(message.receiverSetTime(), expected.receiverSetTime);
        EXPECT_EQ(message.receiverSetTimeFraction(), expected.receiverSetTimeFraction);
        EXPECT_EQ(message.clockBiasError(), expected.clockBiasError);
        EXPECT_EQ(message.clockBiasErrorRate(), expected.clockBiasErrorRate);
        EXPECT_EQ(message.firstSigma(), expected.firstSigma);
        EXPECT_EQ(message.secondSigma(), expected.secondSigma);
    }
}

TEST(Rovan_9391_Msg, ReadsTheWeekSigned) {
    Rovan_9391_Msg message;
    Frames::Frame frame(9391, 84);
    frame.word(12, 0xFFFF);
    ASSERT_TRUE(message.ok_set_9391_gpsip(frame.bytes(), frame.size()));

    EXPECT_EQ(message.gpsWeek(), -1);
}

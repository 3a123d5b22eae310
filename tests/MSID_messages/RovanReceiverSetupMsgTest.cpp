// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovanReceiverSetupMsg.h"

#include <gtest/gtest.h>

#include "Frames.h"
#include "GoldenFrames.h"

namespace {

using ReceiverSetup = RovanReceiverSetupMsg;

/// A message whose words 43 and 44 are all ones.
void allOnes(ReceiverSetup& message) {
    Frames::Frame frame(5313, 100);
    frame.word(43, 0xFFFF).word(44, 0xFFFF);
    ASSERT_TRUE(message.OkSetContent(frame.bytes(), frame.size()));
}

}  // namespace

TEST(RovanReceiverSetupMsg, GoesOnTheLineAsWorkedOutByTheScript) {
    ReceiverSetup message;
    message.setCodeType(ReceiverSetup::e5313_CodeType_1);
    message.setBFEA_Mode(ReceiverSetup::e5313_BfeaMode_2);

    EXPECT_EQ(Frames::onTheLine(message), Golden::kReceiverSetup);
}

TEST(RovanReceiverSetupMsg, SetsOnlyTheNibbleOfTheCodeType) {
    for (const auto& [type, word] : {std::pair{0, 0xFFF0}, std::pair{1, 0xFFFB},
                                     std::pair{2, 0xFFFF}, std::pair{77, 0xFFFF}}) {
        ReceiverSetup message;
        allOnes(message);

        EXPECT_EQ(message.setCodeType(static_cast<ReceiverSetup::e5313_CodeType>(type)), 0);

        EXPECT_EQ(message.data()[43], word) << type;
        EXPECT_EQ(message.data()[44], 0xFFFF) << type;
        EXPECT_EQ(message.data()[4], 0x0001) << type;
    }
}

TEST(RovanReceiverSetupMsg, SetsOnlyTheNibbleOfTheBfeaMode) {
    for (const auto& [mode, word] :
         {std::pair{0, 0xFFF0}, std::pair{1, 0xFFF1}, std::pair{2, 0xFFF2}, std::pair{3, 0xFFF3},
          std::pair{4, 0xFFF0}}) {
        ReceiverSetup message;
        allOnes(message);

        message.setBFEA_Mode(static_cast<ReceiverSetup::e5313_BfeaMode>(mode));

        EXPECT_EQ(message.data()[44], word) << mode;
        EXPECT_EQ(message.data()[43], 0xFFFF) << mode;
        EXPECT_EQ(message.data()[4], 0x0002) << mode;
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_9405_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"

namespace {

/// A frame with one bit set.
Frames::Frame frameWith(unsigned word, unsigned bit) {
    Frames::Frame frame(9405, 104);
    frame.word(word, static_cast<uint16_t>(1u << bit));
    return frame;
}

void load(Rovan_9405_Msg& message, const Frames::Frame& frame) {
    ASSERT_TRUE(message.ok_set_9405_gpsip(frame.bytes(), frame.size()));
}

}  // namespace

// Every getter against every bit of the three words.
TEST(Rovan_9405_Msg, ReadsEachStateFromItsOwnBit) {
    unsigned checked = 0;
    for (const unsigned word : {26u, 27u, 86u}) {
        for (unsigned bit = 0; bit < 16; ++bit) {
            Rovan_9405_Msg message;
            load(message, frameWith(word, bit));
            EXPECT_EQ(message.isFpgaOff(), word == 26 && bit == 0);
            EXPECT_EQ(message.isBciClockOff(), word == 26 && bit == 1);
            EXPECT_EQ(message.isFpgaRecievingInvalidSignal(), word == 26 && bit == 3);
            EXPECT_EQ(message.isDorvelNotUsingBciClock(), word == 26 && bit == 4);
            EXPECT_EQ(message.isBciCableDisconnected(), word == 26 && bit <= 4);
            EXPECT_EQ(message.isSerialCableDisconnected(), word == 27 && bit == 0);
            EXPECT_EQ(message.isInReRad(), word == 86 && bit == 14);
            ++checked;
        }
    }
    EXPECT_EQ(checked, 48u);
}

TEST(Rovan_9405_Msg, NamesEachFailure) {
    const char* names[] = {"BCI_ST_FPGA_TURN_ON_FAIL ", "BCI_ST_BCI_CLOCK_TRUN_FAIL ",
                           "BCI_ST_CABLE_LOSS ", "BCI_ST_INVLD_FPGA_SIG ", "BCI_ST_BCI_CLK_FAIL "};
    for (unsigned bit = 0; bit < 16; ++bit) {
        Rovan_9405_Msg message;
        load(message, frameWith(26, bit));
        EXPECT_EQ(message.getBciConnectionFailure(),
                  std::string("BCI Connection Failures: ") + (bit < 5 ? names[bit] : "") + "\n");
    }
}

TEST(Rovan_9405_Msg, NamesAllFailuresInTheirOrder) {
    Rovan_9405_Msg message;
    load(message, Frames::Frame(9405, 104).word(26, 0xFFFF));

    EXPECT_EQ(message.getBciConnectionFailure(),
              "BCI Connection Failures: BCI_ST_FPGA_TURN_ON_FAIL BCI_ST_BCI_CLOCK_TRUN_FAIL "
              "BCI_ST_CABLE_LOSS BCI_ST_INVLD_FPGA_SIG BCI_ST_BCI_CLK_FAIL \n");
}

TEST(Rovan_9405_Msg, NamesNothingWithoutAFailure) {
    Rovan_9405_Msg message;
    load(message, Frames::Frame(9405, 104).word(25, 0xFFFF).word(27, 0xFFFF));

    EXPECT_EQ(message.getBciConnectionFailure(), "BCI Connection Failures: \n");
}

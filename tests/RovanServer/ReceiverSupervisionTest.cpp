// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverSupervision.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/RovanServer/RecordedActions.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Word 26 of a 9405, one bit for each failure of the BCI connection.
constexpr unsigned kFpgaOff = 1;
constexpr unsigned kClockOff = 2;
constexpr unsigned kCableLoss = 4;
constexpr unsigned kInvalidSignal = 8;
constexpr unsigned kClockNotUsed = 16;

struct Report {
    unsigned bci = 0;
    bool serialDisconnected = false;
    bool reradMode = false;
};

class ReceiverSupervisionTest : public testing::Test {
  protected:
    /// What a 9405 frame of 104 data words leads to. Nobody checks its checksums here.
    std::vector<std::string> process(const Report& report, bool bitRunning = false) {
        std::vector<uint16_t> words(5 + 104 + 1);
        words[0] = 0x81FF;
        words[1] = 9405;
        words[2] = 104;
        words[5 + 26] = static_cast<uint16_t>(report.bci);
        words[5 + 27] = report.serialDisconnected ? 1 : 0;
        words[5 + 86] = report.reradMode ? 0x4000 : 0;
        m_supervision.process9405(words.data(), 2 * words.size(), bitRunning);
        return m_actions.take();
    }

    std::string requestAntennaState(int32_t deviceId = 0x032A0001) {
        auto command = commandOf("REQUEST_ANTENNA_STATE");
        command.header().device_id(deviceId);
        return m_supervision.requestAntennaState(command);
    }

    RecordedActions m_actions;
    ReceiverSupervision m_supervision{m_actions, "Rovan"};
};

const std::string kCableLossText = "event 2 BCI Connection Failures: BCI_ST_CABLE_LOSS \n";
const std::string kBciDisconnected = "event 3 ZELM_BCI_CABLE_DISCONNECTED";
const std::string kCableFault =
    "fault ST_CABLE_LOSS: The Cable Equalizer does not detect a valid signal";

}  // namespace

TEST_F(ReceiverSupervisionTest, AReportWithoutFaultSaysNothing) {
    EXPECT_THAT(process({}), IsEmpty());
    EXPECT_FALSE(m_supervision.hasFault());
    EXPECT_FALSE(m_supervision.isReradMode());
}

TEST_F(ReceiverSupervisionTest, AFrameOfAnotherLengthIsDropped) {
    std::vector<uint16_t> words(5 + 103 + 1);
    words[5 + 26] = kCableLoss;
    m_supervision.process9405(words.data(), 2 * words.size(), false);
    m_supervision.process9405(words.data(), 0, false);
    EXPECT_THAT(m_actions.take(), IsEmpty());
}

TEST_F(ReceiverSupervisionTest, TheLossOfTheBciCableIsToldOnceAndItsEventComesWithEachReport) {
    EXPECT_THAT(process({kCableLoss}), ElementsAre(kCableLossText, kBciDisconnected, kCableFault));
    EXPECT_THAT(process({kCableLoss}), ElementsAre(kBciDisconnected, kCableFault));
}

TEST_F(ReceiverSupervisionTest, TheBciCableStaysLostUntilItIsClearedWhileTheFaultEndsAtOnce) {
    process({kCableLoss});
    EXPECT_THAT(process({}), ElementsAre(kBciDisconnected));
    m_supervision.clearBciCable();
    EXPECT_THAT(process({}), IsEmpty());
    EXPECT_THAT(process({kCableLoss}), ElementsAre(kCableLossText, kBciDisconnected, kCableFault));
}

TEST_F(ReceiverSupervisionTest, EachChangeOfTheSerialCableIsOneEvent) {
    Report disconnected;
    disconnected.serialDisconnected = true;
    const std::string fault = "fault AJ_Com_Fail: Failed to get a BIT response from the AJ";
    EXPECT_THAT(process(disconnected),
                ElementsAre("event 3 ZELM_SERIAL_CABLE_DISCONNECTED", fault));
    EXPECT_THAT(process(disconnected), ElementsAre(fault));
    EXPECT_THAT(process({}), ElementsAre("event 2 ZELM_SERIAL_CABLE_CONNECTED"));
    EXPECT_THAT(process({}), IsEmpty());
}

TEST_F(ReceiverSupervisionTest, TheFaultsComeInTheirOrderWithTheirTexts) {
    Report all;
    all.bci = kFpgaOff | kClockOff | kCableLoss | kInvalidSignal | kClockNotUsed;
    all.serialDisconnected = true;
    all.reradMode = true;
    EXPECT_THAT(
        process(all),
        ElementsAre("event 2 BCI Connection Failures: BCI_ST_FPGA_TURN_ON_FAIL "
                    "BCI_ST_BCI_CLOCK_TRUN_FAIL BCI_ST_CABLE_LOSS BCI_ST_INVLD_FPGA_SIG "
                    "BCI_ST_BCI_CLK_FAIL \n",
                    kBciDisconnected, "event 3 ZELM_SERIAL_CABLE_DISCONNECTED",
                    "config event Rovan Rerad mode ENABLED for 0",
                    "fault FPGA_POWER_FAIL: FPGA failed to turn on",
                    "fault BCI_POWER_FAIL: FPGA Failed to derive clock frequency from BCI input",
                    kCableFault, "fault INVLD_FPGA_SIG: FPGA is not receiving a valid signal",
                    "fault ST_BCI_CLK_FAIL: Dorvel not operating on clock derived from BCI signal",
                    "fault AJ_Com_Fail: Failed to get a BIT response from the AJ"));
    EXPECT_TRUE(m_supervision.hasFault());
}

TEST_F(ReceiverSupervisionTest, EachBciFailureAloneRaisesTheCableFaultToo) {
    const struct {
        unsigned bit;
        const char* fault;
    } failures[] = {
        {kFpgaOff, "fault FPGA_POWER_FAIL: FPGA failed to turn on"},
        {kClockOff, "fault BCI_POWER_FAIL: FPGA Failed to derive clock frequency from BCI input"},
    };
    for (const auto& failure : failures) {
        process({failure.bit});
        EXPECT_THAT(process({failure.bit}),
                    ElementsAre(kBciDisconnected, failure.fault, kCableFault));
    }
    EXPECT_THAT(process({kInvalidSignal}),
                ElementsAre(kBciDisconnected, kCableFault,
                            "fault INVLD_FPGA_SIG: FPGA is not receiving a valid signal"));
    EXPECT_THAT(
        process({kClockNotUsed}),
        ElementsAre(
            kBciDisconnected, kCableFault,
            "fault ST_BCI_CLK_FAIL: Dorvel not operating on clock derived from BCI signal"));
}

TEST_F(ReceiverSupervisionTest, AFaultIsRememberedForGood) {
    process({kFpgaOff});
    m_supervision.clearBciCable();
    process({});
    EXPECT_TRUE(m_supervision.hasFault());
}

TEST_F(ReceiverSupervisionTest, WhoAsksForTheAntennaIsToldOfEachChange) {
    EXPECT_EQ(requestAntennaState(), "CURRENT_ANTENNA_STATE,CRPA,No");
    EXPECT_THAT(process({}), IsEmpty());
    Report disconnected;
    disconnected.serialDisconnected = true;
    const std::string answer = "respond CURRENT_ANTENNA_STATE,CRPA,Yes to REQUEST_ANTENNA_STATE";
    EXPECT_THAT(process(disconnected), testing::Contains(answer));
    EXPECT_THAT(process(disconnected), testing::Not(testing::Contains(answer)));
    EXPECT_EQ(requestAntennaState(), "CURRENT_ANTENNA_STATE,CRPA,Yes");
    EXPECT_THAT(process({}),
                ElementsAre("event 2 ZELM_SERIAL_CABLE_CONNECTED",
                            "respond CURRENT_ANTENNA_STATE,CRPA,No to REQUEST_ANTENNA_STATE"));
}

TEST_F(ReceiverSupervisionTest, TheAntennaIsDisconnectedWithEitherCable) {
    requestAntennaState();
    process({kCableLoss});
    EXPECT_EQ(requestAntennaState(), "CURRENT_ANTENNA_STATE,CRPA,Yes");
    Report serialToo;
    serialToo.bci = kCableLoss;
    serialToo.serialDisconnected = true;
    // The second cable changes nothing of the answer.
    EXPECT_THAT(process(serialToo),
                ElementsAre(kBciDisconnected, "event 3 ZELM_SERIAL_CABLE_DISCONNECTED", kCableFault,
                            "fault AJ_Com_Fail: Failed to get a BIT response from the AJ"));
}

TEST_F(ReceiverSupervisionTest, BeforeTheFirstRequestChangesAreNotEvenNoted) {
    process({kCableLoss});
    // The answer says what is, but it is the next report that counts as the first change.
    EXPECT_EQ(requestAntennaState(), "CURRENT_ANTENNA_STATE,CRPA,Yes");
    EXPECT_THAT(process({kCableLoss}),
                ElementsAre(kBciDisconnected,
                            "respond CURRENT_ANTENNA_STATE,CRPA,Yes to REQUEST_ANTENNA_STATE",
                            kCableFault));
}

TEST_F(ReceiverSupervisionTest, ARequestWithoutASenderIsAnsweredAndNotRemembered) {
    EXPECT_EQ(requestAntennaState(0), "CURRENT_ANTENNA_STATE,CRPA,No");
    EXPECT_THAT(process({kCableLoss}), ElementsAre(kCableLossText, kBciDisconnected, kCableFault));
}

TEST_F(ReceiverSupervisionTest, AChangeOfTheReradModeReplacesTheConfigurationEvent) {
    m_supervision.setReradConfigEvent(7);
    Report rerad;
    rerad.reradMode = true;
    EXPECT_THAT(process(rerad), ElementsAre("config event Rovan Rerad mode ENABLED for 7"));
    EXPECT_TRUE(m_supervision.isReradMode());
    EXPECT_THAT(process(rerad), IsEmpty());
    EXPECT_THAT(process({}), ElementsAre("config event Rovan Rerad mode DISABLED for 100"));
    EXPECT_FALSE(m_supervision.isReradMode());
}

TEST_F(ReceiverSupervisionTest, TheConfiguredReradModeIsWhatAChangeIsMeasuredBy) {
    m_supervision.setReradMode(true);
    Report rerad;
    rerad.reradMode = true;
    EXPECT_THAT(process(rerad), IsEmpty());
    EXPECT_THAT(process({}), ElementsAre("config event Rovan Rerad mode DISABLED for 0"));
}

TEST_F(ReceiverSupervisionTest, DuringABuiltInTestTheReradModeIsNotTakenOver) {
    Report rerad;
    rerad.reradMode = true;
    EXPECT_THAT(process(rerad, true), IsEmpty());
    EXPECT_FALSE(m_supervision.isReradMode());
    EXPECT_THAT(process(rerad), ElementsAre("config event Rovan Rerad mode ENABLED for 0"));
}

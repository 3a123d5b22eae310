// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/CommandedBit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/RovanServer/RecordedActions.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// Actions that fail when told so, before anything is done.
class FailingActions : public RecordedActions {
  public:
    using RecordedActions::queueMessage;
    void queueMessage(GssipMessagePtr message) override {
        failIf("queue");
        RecordedActions::queueMessage(std::move(message));
    }
    void respondText(const CommandResponse& cmd, const std::string& text) override {
        failIf("respond");
        RecordedActions::respondText(cmd, text);
    }
    void enableRovanPower() override {
        failIf("power on");
        RecordedActions::enableRovanPower();
    }
    void disableRovanPower() override {
        failIf("power off");
        RecordedActions::disableRovanPower();
    }

    /// What fails, once each.
    std::multiset<std::string> failures;

  private:
    void failIf(const std::string& what) {
        if (const auto failure = failures.find(what); failure != failures.end()) {
            failures.erase(failure);
            throw std::runtime_error(what);
        }
    }
};

class CommandedBitTest : public testing::Test {
  protected:
    /// The command arrives, and its thread starts.
    void start(const std::string& command = "REQUEST_COMPONENT_CBIT") {
        m_bit.begin(commandOf(command));
        m_bit.enterThread();
        m_second = 0;
        m_goesOn = true;
    }

    /// The passes of the thread up to and including the one at `second`, the first being at 0. What
    /// they did, each with its second.
    Lines runThrough(int second) {
        Lines lines;
        while (m_goesOn && m_second <= second) {
            try {
                m_goesOn = m_bit.step();
            } catch (const std::runtime_error& error) {
                lines.push_back(std::to_string(m_second) + " s: exception " + error.what());
            }
            for (const std::string& line : m_actions.take()) {
                lines.push_back(std::to_string(m_second) + " s: " + line);
            }
            m_actions.wait(1s);
            ++m_second;
        }
        return lines;
    }

    /// To the end of second 17: the accessory is done at once, the receiver has sent message 8
    /// after its restart, and command 0 has gone out.
    void startAndRestart() {
        start();
        m_bit.onAccessoryDone();
        runThrough(16);
        m_bit.onMessage8();
        ASSERT_THAT(runThrough(17), ElementsAre("17 s: queue 5001 mode 0"));
    }

    /// An 8504 comes; it is processed if the BIT lets it through.
    void report(bool fault) {
        if (m_bit.takes8504()) {
            m_receiverFails = fault;
            m_bit.on8504Processed();
        }
    }

    FailingActions m_actions;
    bool m_receiverFails = false;
    int m_bciClearings = 0;
    CommandedBit m_bit{m_actions, [this] { return m_receiverFails; }, [this] { ++m_bciClearings; }};
    int m_second = 0;
    bool m_goesOn = true;
};

TEST_F(CommandedBitTest, WithoutTheAccessoryTheAckComesAfterTenSeconds) {
    start();
    EXPECT_THAT(runThrough(9), IsEmpty());
    EXPECT_THAT(runThrough(10), ElementsAre("10 s: respond ACK to REQUEST_COMPONENT_CBIT"));
}

TEST_F(CommandedBitTest, WithTheAccessoryDoneTheAckComesAfterFourSeconds) {
    start();
    m_bit.onAccessoryDone();
    EXPECT_THAT(runThrough(3), IsEmpty());
    EXPECT_THAT(runThrough(4), ElementsAre("4 s: respond ACK to REQUEST_COMPONENT_CBIT"));
}

TEST_F(CommandedBitTest, AnAccessoryThatIsDoneLaterIsSeenAtTheNextPass) {
    start();
    runThrough(6);
    m_bit.onAccessoryDone();
    EXPECT_THAT(runThrough(7), ElementsAre("7 s: respond ACK to REQUEST_COMPONENT_CBIT"));
}

TEST_F(CommandedBitTest, AnAccessoryThatWasDoneBeforeTheCommandDoesNotCount) {
    m_bit.onAccessoryDone();
    start();
    EXPECT_THAT(runThrough(9), IsEmpty());
}

TEST_F(CommandedBitTest, ThePowerIsOffForElevenSeconds) {
    start();
    m_bit.onAccessoryDone();
    EXPECT_THAT(runThrough(16), ElementsAre("4 s: respond ACK to REQUEST_COMPONENT_CBIT",
                                            "5 s: power off", "16 s: power on"));
}

TEST_F(CommandedBitTest, ARestartThatIsNotSeenIsWaitedForElevenSeconds) {
    start();
    EXPECT_THAT(runThrough(32), ElementsAre("10 s: respond ACK to REQUEST_COMPONENT_CBIT",
                                            "11 s: power off", "22 s: power on"));
    EXPECT_THAT(runThrough(33), ElementsAre("33 s: queue 5001 mode 0"));
}

TEST_F(CommandedBitTest, Message8EndsTheWaitForTheRestart) {
    start();
    runThrough(24);
    m_bit.onMessage8();
    EXPECT_THAT(runThrough(25), ElementsAre("25 s: queue 5001 mode 0"));
}

TEST_F(CommandedBitTest, AMessage8FromBeforeThePowerCameOnIsNoRestart) {
    start();
    runThrough(21);
    m_bit.onMessage8();
    EXPECT_THAT(runThrough(32), ElementsAre("22 s: power on"));
}

TEST_F(CommandedBitTest, AMessage8FromBeforeTheBitIsNoRestart) {
    m_bit.onMessage8();
    start();
    EXPECT_FALSE(m_bit.takes8504());
    runThrough(23);
    EXPECT_THAT(runThrough(32), IsEmpty());
}

TEST_F(CommandedBitTest, TheReportAfterTheRestartDecides) {
    startAndRestart();
    m_bit.onMessage8();
    report(false);
    EXPECT_THAT(runThrough(100), ElementsAre("18 s: event 2 ROVAN Commanded BIT complete",
                                             "18 s: respond PASS to REQUEST_COMPONENT_CBIT",
                                             "18 s: queue 5001 mode 1"));
    EXPECT_FALSE(m_goesOn);
}

TEST_F(CommandedBitTest, AReportOfAFaultFailsTheBitThoughItIsComplete) {
    startAndRestart();
    m_bit.onMessage8();
    report(true);
    EXPECT_THAT(runThrough(100), ElementsAre("18 s: event 2 ROVAN Commanded BIT complete",
                                             "18 s: respond FAIL to REQUEST_COMPONENT_CBIT",
                                             "18 s: queue 5001 mode 1"));
}

TEST_F(CommandedBitTest, TheWholeBitInItsOrder) {
    start();
    Lines all = runThrough(23);
    for (int second = 24; second <= 40; ++second) {
        m_bit.onMessage8();
        report(false);
        for (const std::string& line : runThrough(second)) {
            all.push_back(line);
        }
    }
    EXPECT_THAT(all, ElementsAre("10 s: respond ACK to REQUEST_COMPONENT_CBIT", "11 s: power off",
                                 "22 s: power on", "24 s: queue 5001 mode 0",
                                 "25 s: event 2 ROVAN Commanded BIT complete",
                                 "25 s: respond PASS to REQUEST_COMPONENT_CBIT",
                                 "25 s: queue 5001 mode 1"));
}

TEST_F(CommandedBitTest, NothingQueuedForTheReceiverIsAnsweredByTheLink) {
    startAndRestart();
    m_bit.onMessage8();
    report(false);
    runThrough(18);
    EXPECT_THAT(m_actions.callbacks, ElementsAre(testing::IsNull(), testing::IsNull()));
}

TEST_F(CommandedBitTest, ReportsAreTakenOutsideABitAndInItAfterMessage8) {
    EXPECT_TRUE(m_bit.takes8504());
    start();
    EXPECT_FALSE(m_bit.takes8504());
    m_bit.onAccessoryDone();
    runThrough(16);
    EXPECT_FALSE(m_bit.takes8504());
    m_bit.onMessage8();
    EXPECT_TRUE(m_bit.takes8504());
    runThrough(17);  // command 0
    EXPECT_FALSE(m_bit.takes8504());
    m_bit.onMessage8();
    EXPECT_TRUE(m_bit.takes8504());
    report(false);
    EXPECT_TRUE(m_bit.takes8504());
    runThrough(18);  // the end
    EXPECT_TRUE(m_bit.takes8504());
}

TEST_F(CommandedBitTest, AReportWithoutAMessage8AfterCommand0DoesNotCount) {
    startAndRestart();
    report(true);
    EXPECT_THAT(runThrough(100), IsEmpty());
    EXPECT_FALSE(m_receiverFails);
}

TEST_F(CommandedBitTest, AMessage8WithoutAReportDoesNotEndTheBit) {
    startAndRestart();
    m_bit.onMessage8();
    EXPECT_THAT(runThrough(100), IsEmpty());
}

TEST_F(CommandedBitTest, AReportFromBeforeTheBitDoesNotCount) {
    report(false);
    startAndRestart();
    m_bit.onMessage8();
    EXPECT_THAT(runThrough(100), IsEmpty());
}

TEST_F(CommandedBitTest, AReportTakenEarlierInTheBitCountsOnceMessage8HasComeAgain) {
    start();
    m_bit.onAccessoryDone();
    runThrough(16);
    m_bit.onMessage8();
    report(false);
    EXPECT_THAT(runThrough(60), ElementsAre("17 s: queue 5001 mode 0"));
    m_bit.onMessage8();
    EXPECT_THAT(runThrough(61), ElementsAre("61 s: event 2 ROVAN Commanded BIT complete",
                                            "61 s: respond PASS to REQUEST_COMPONENT_CBIT",
                                            "61 s: queue 5001 mode 1"));
}

TEST_F(CommandedBitTest, WithoutAReportTheBitFailsAfter181Seconds) {
    start();
    runThrough(33);
    EXPECT_THAT(runThrough(180), IsEmpty());
    EXPECT_TRUE(m_bit.isRunning());
    EXPECT_THAT(runThrough(300), ElementsAre("181 s: event 3 ROVAN Commanded BIT Incomplete",
                                             "181 s: respond FAIL to REQUEST_COMPONENT_CBIT",
                                             "181 s: queue 5001 mode 1"));
    EXPECT_FALSE(m_goesOn);
}

TEST_F(CommandedBitTest, TheLimitForTheReportIsInWholeSecondsFromTheCommand) {
    m_actions.wait(5s);
    m_bit.begin(commandOf("REQUEST_COMPONENT_CBIT"));
    m_actions.wait(180999ms);
    m_bit.handleCommandedBIT();
    EXPECT_THAT(m_actions.take(), IsEmpty());
    m_actions.wait(1ms);
    m_bit.handleCommandedBIT();
    EXPECT_THAT(m_actions.take(),
                ElementsAre("event 3 ROVAN Commanded BIT Incomplete",
                            "respond FAIL to REQUEST_COMPONENT_CBIT", "queue 5001 mode 1"));
}

TEST_F(CommandedBitTest, AReportThatIsThereGoesBeforeTheLimit) {
    m_bit.begin(commandOf("REQUEST_COMPONENT_CBIT"));
    m_bit.onMessage8();
    report(false);
    m_actions.wait(1h);
    m_bit.handleCommandedBIT();
    EXPECT_THAT(m_actions.take(),
                ElementsAre("event 2 ROVAN Commanded BIT complete",
                            "respond PASS to REQUEST_COMPONENT_CBIT", "queue 5001 mode 1"));
}

TEST_F(CommandedBitTest, EveryPassThatJudgesForgetsTheDisconnectedBciCable) {
    startAndRestart();
    EXPECT_EQ(m_bciClearings, 0);
    runThrough(18);
    EXPECT_EQ(m_bciClearings, 1);
    runThrough(27);
    EXPECT_EQ(m_bciClearings, 10);
    m_bit.onMessage8();
    report(false);
    runThrough(28);
    EXPECT_EQ(m_bciClearings, 11);
}

TEST_F(CommandedBitTest, WithoutABitThereIsNothingToJudge) {
    m_actions.wait(1h);
    m_bit.handleCommandedBIT();
    EXPECT_THAT(m_actions.take(), IsEmpty());
    EXPECT_EQ(m_bciClearings, 0);
}

TEST_F(CommandedBitTest, AThreadWithoutABitDoesNothing) {
    m_bit.enterThread();
    EXPECT_THAT(runThrough(200), IsEmpty());
    EXPECT_TRUE(m_goesOn);
    EXPECT_EQ(m_bit.bitState(), CommandedBit::eNoStep);
}

TEST_F(CommandedBitTest, TheStepsFollowEachOther) {
    start();
    EXPECT_EQ(m_bit.bitState(), 1);
    runThrough(9);
    EXPECT_EQ(m_bit.bitState(), 1);
    runThrough(10);
    EXPECT_EQ(m_bit.bitState(), 2);
    runThrough(11);
    EXPECT_EQ(m_bit.bitState(), 3);
    runThrough(21);
    EXPECT_EQ(m_bit.bitState(), 3);
    runThrough(22);
    EXPECT_EQ(m_bit.bitState(), 4);
    runThrough(32);
    EXPECT_EQ(m_bit.bitState(), 4);
    runThrough(33);
    EXPECT_EQ(m_bit.bitState(), 5);
    runThrough(181);
    EXPECT_EQ(m_bit.bitState(), 5);
}

TEST_F(CommandedBitTest, IsInProgressFromTheCommandToTheAnswer) {
    EXPECT_FALSE(m_bit.isRunning());
    EXPECT_FALSE(m_bit.isDone());
    m_bit.begin(commandOf("REQUEST_COMPONENT_CBIT"));
    EXPECT_TRUE(m_bit.isRunning());
    m_bit.enterThread();
    for (int second = 0; second <= 180; ++second) {
        runThrough(second);
        ASSERT_TRUE(m_bit.isRunning()) << second;
        ASSERT_FALSE(m_bit.isDone()) << second;
    }
    runThrough(181);
    EXPECT_FALSE(m_bit.isRunning());
    EXPECT_TRUE(m_bit.isDone());
}

TEST_F(CommandedBitTest, TheThreadThatHasEndedItsBitDoesNothingForTheNext) {
    start();
    runThrough(181);
    m_bit.begin(commandOf("REQUEST_COMPONENT_CBIT"));
    EXPECT_FALSE(m_bit.step());
    m_actions.wait(1h);
    EXPECT_FALSE(m_bit.step());
    EXPECT_THAT(m_actions.take(), IsEmpty());
    EXPECT_TRUE(m_bit.isRunning());
}

TEST_F(CommandedBitTest, TheNextBitStartsFromTheBeginning) {
    startAndRestart();
    m_bit.onMessage8();
    report(false);
    runThrough(18);
    start("THE_SECOND");
    EXPECT_FALSE(m_bit.isDone());
    EXPECT_EQ(m_bit.bitState(), 1);
    EXPECT_THAT(
        runThrough(300),
        ElementsAre("10 s: respond ACK to THE_SECOND", "11 s: power off", "22 s: power on",
                    "33 s: queue 5001 mode 0", "181 s: event 3 ROVAN Commanded BIT Incomplete",
                    "181 s: respond FAIL to THE_SECOND", "181 s: queue 5001 mode 1"));
}

TEST_F(CommandedBitTest, EachThreadStartsAtTheFirstStepWithItsOwnTimeLimits) {
    start();
    runThrough(15);
    m_bit.enterThread();
    m_second = 0;
    EXPECT_THAT(runThrough(21),
                ElementsAre("10 s: respond ACK to REQUEST_COMPONENT_CBIT", "11 s: power off"));
    EXPECT_THAT(runThrough(22), ElementsAre("22 s: power on"));
}

TEST_F(CommandedBitTest, AFailedStepIsTriedAgainAtTheNextPass) {
    m_actions.failures = {"respond", "power off", "power on", "queue"};
    start();
    EXPECT_THAT(
        runThrough(40),
        ElementsAre("10 s: exception respond", "11 s: respond ACK to REQUEST_COMPONENT_CBIT",
                    "12 s: exception power off", "13 s: power off", "24 s: exception power on",
                    "25 s: power on", "36 s: exception queue", "37 s: queue 5001 mode 0"));
}

TEST_F(CommandedBitTest, AFailedStepLeavesTheStateAsItWas) {
    m_actions.failures = {"power off"};
    start();
    EXPECT_THAT(runThrough(11), ElementsAre("10 s: respond ACK to REQUEST_COMPONENT_CBIT",
                                            "11 s: exception power off"));
    EXPECT_EQ(m_bit.bitState(), 2);
    EXPECT_TRUE(m_bit.isRunning());
}

TEST_F(CommandedBitTest, AnAnswerThatFailsEndsTheBitAndItsThreadAllTheSame) {
    start();
    runThrough(180);
    m_actions.failures = {"respond"};
    EXPECT_THAT(runThrough(300), ElementsAre("181 s: exception respond",
                                             "181 s: event 3 ROVAN Commanded BIT Incomplete"));
    EXPECT_EQ(m_second, 183);
    EXPECT_FALSE(m_goesOn);
    EXPECT_FALSE(m_bit.isRunning());
}

}  // namespace

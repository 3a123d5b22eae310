// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/TimeDataTransfer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/RovanServer/RecordedActions.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char kIdleLine[] = " No work for thread   (TDTStatus)\n";
const char kCommandLine[] = "##  Command to Continuous  (TDTStatus)\n";

// A queue that something happens in while a message is put on it.
class EventfulQueue : public RecordedActions {
  public:
    using RecordedActions::queueMessage;
    void queueMessage(GssipMessagePtr message) override {
        whileQueueing();
        RecordedActions::queueMessage(std::move(message));
    }

    std::function<void()> whileQueueing = [] {};
};

class TimeDataTransferTest : public testing::Test {
  protected:
    /// What `what` prints, line ends and all.
    template <typename F>
    static std::string printedBy(F what) {
        testing::internal::CaptureStdout();
        what();
        return testing::internal::GetCapturedStdout();
    }
    std::string tick() {
        return printedBy([this] { m_transfer.tick(); });
    }
    void ticks(int count) {
        for (int i = 0; i < count; ++i) {
            tick();
        }
    }
    /// The receiver is in mode 4 and its transfer is over.
    void leaveInMode4() {
        report5040(4);
        report5042(true);
        report5042(false);
    }
    void report5040(int16_t opMode) {
        printedBy([&] { m_transfer.on5040(opMode); });
    }
    void report5042(bool isDtsCOM1) {
        printedBy([&] { m_transfer.on5042(isDtsCOM1); });
    }
    static std::string armedLine(int timer, int opMode, const std::string& isDtsCOM1) {
        return "In pThread2: Timer = " + std::to_string(timer) +
               ", OpMode = " + std::to_string(opMode) + ", DtsCOM1 = " + isDtsCOM1 +
               " , threadDoWork = true   (TDTStatus)\n";
    }

    EventfulQueue m_actions;
    TimeDataTransfer m_transfer{m_actions, true};
};

TEST_F(TimeDataTransferTest, AReportWithoutATransferNeverArms) {
    report5040(4);
    report5042(false);
    for (int second = 0; second < 12; ++second) {
        EXPECT_EQ(tick(), kIdleLine);
    }
    EXPECT_THAT(m_actions.take(), IsEmpty());
}

TEST_F(TimeDataTransferTest, NothingCountsWhileTheTransferRuns) {
    report5040(4);
    report5042(true);
    EXPECT_EQ(tick(),
              "In pThread2: Timer = 0, OpMode = 4, DtsCOM1 = 1 , threadDoWork = true"
              "   (TDTStatus)\n");
    for (int second = 1; second < 12; ++second) {
        EXPECT_EQ(tick(), armedLine(0, 4, "1"));
    }
    EXPECT_THAT(m_actions.take(), IsEmpty());
}

TEST_F(TimeDataTransferTest, TheCommandGoesOutOnTheFifthSecondAfterTheTransfer) {
    leaveInMode4();
    for (int counted = 0; counted < 4; ++counted) {
        EXPECT_EQ(tick(), armedLine(counted, 4, "0"));
        EXPECT_THAT(m_actions.take(), IsEmpty());
    }
    EXPECT_EQ(tick(), armedLine(4, 4, "0") + kCommandLine);
    EXPECT_THAT(m_actions.take(), ElementsAre("queue 5001 mode 1"));
    EXPECT_EQ(tick(), armedLine(0, 4, "0"));
}

TEST_F(TimeDataTransferTest, NobodyAsksWhatBecameOfTheCommand) {
    leaveInMode4();
    ticks(5);
    EXPECT_THAT(m_actions.callbacks, ElementsAre(testing::IsNull()));
}

TEST_F(TimeDataTransferTest, TheCommandIsRepeatedEveryFiveSecondsInMode4) {
    leaveInMode4();
    for (int repetition = 0; repetition < 3; ++repetition) {
        ticks(4);
        EXPECT_THAT(m_actions.take(), IsEmpty());
        ticks(1);
        EXPECT_THAT(m_actions.take(), ElementsAre("queue 5001 mode 1"));
    }
}

TEST_F(TimeDataTransferTest, Mode0WithoutATransferEndsTheWorkWithNoCommand) {
    report5040(0);
    report5042(true);
    report5042(false);
    EXPECT_EQ(tick(), armedLine(0, 0, "0"));
    EXPECT_EQ(tick(), kIdleLine);
    EXPECT_THAT(m_actions.take(), IsEmpty());
}

TEST_F(TimeDataTransferTest, Mode0WithATransferUnderWayDoesNot) {
    report5040(0);
    report5042(true);
    EXPECT_EQ(tick(), armedLine(0, 0, "1"));
    EXPECT_EQ(tick(), armedLine(0, 0, "1"));
    report5042(false);
    EXPECT_EQ(tick(), armedLine(0, 0, "0"));
    EXPECT_EQ(tick(), kIdleLine);
}

TEST_F(TimeDataTransferTest, AnyOtherModeHoldsTheSupervisionArmedAndSilent) {
    for (const int16_t mode : std::vector<int16_t>{1, 2, 3, 5, -1, -32768, 32767}) {
        report5040(mode);
        report5042(true);
        report5042(false);
        for (int second = 0; second < 12; ++second) {
            EXPECT_EQ(tick(), armedLine(0, mode, "0"));
        }
    }
    EXPECT_THAT(m_actions.take(), IsEmpty());
}

TEST_F(TimeDataTransferTest, CountedSecondsAreKeptOverOtherModes) {
    leaveInMode4();
    ticks(3);
    report5040(2);
    EXPECT_EQ(tick(), armedLine(3, 2, "0"));
    ticks(10);
    report5040(4);
    EXPECT_EQ(tick(), armedLine(3, 4, "0"));
    EXPECT_EQ(tick(), armedLine(4, 4, "0") + kCommandLine);
    EXPECT_THAT(m_actions.take(), ElementsAre("queue 5001 mode 1"));
}

TEST_F(TimeDataTransferTest, CountedSecondsAreKeptOverANewTransfer) {
    leaveInMode4();
    ticks(4);
    report5042(true);
    EXPECT_EQ(tick(), armedLine(4, 4, "1"));
    ticks(10);
    report5042(false);
    EXPECT_EQ(tick(), armedLine(4, 4, "0") + kCommandLine);
}

TEST_F(TimeDataTransferTest, TheEndOfTheWorkForgetsTheCountedSeconds) {
    leaveInMode4();
    ticks(3);
    report5040(0);
    ticks(1);
    EXPECT_EQ(tick(), kIdleLine);
    leaveInMode4();
    EXPECT_EQ(tick(), armedLine(0, 4, "0"));
}

TEST_F(TimeDataTransferTest, AModeThatChangesWhileTheCommandIsQueuedEndsTheWorkAtOnce) {
    leaveInMode4();
    m_actions.whileQueueing = [this] { m_transfer.on5040(0); };
    ticks(5);
    EXPECT_THAT(m_actions.take(), ElementsAre("queue 5001 mode 1"));
    EXPECT_EQ(tick(), kIdleLine);
}

TEST_F(TimeDataTransferTest, ACommandThatCouldNotBeQueuedIsTriedAgainAtTheNextTick) {
    leaveInMode4();
    ticks(4);
    m_actions.whileQueueing = [] { throw std::runtime_error("no link"); };
    EXPECT_EQ(printedBy([this] { EXPECT_THROW(m_transfer.tick(), std::runtime_error); }),
              armedLine(4, 4, "0") + kCommandLine);
    m_actions.whileQueueing = [] {};
    EXPECT_EQ(tick(), armedLine(5, 4, "0") + kCommandLine);
    EXPECT_THAT(m_actions.take(), ElementsAre("queue 5001 mode 1"));
    EXPECT_EQ(tick(), armedLine(0, 4, "0"));
}

TEST_F(TimeDataTransferTest, ReportsAreToldInDebug) {
    EXPECT_EQ(printedBy([this] { m_transfer.on5040(4); }), "process5040: OpMode = 4 (TDTStatus)\n");
    EXPECT_EQ(printedBy([this] { m_transfer.on5040(-2); }),
              "process5040: OpMode = -2 (TDTStatus)\n");
    EXPECT_EQ(printedBy([this] { m_transfer.on5042(false); }),
              "process5042: isDtsCOM1 = 0, threadDoWork = false   (TDTStatus)\n");
    EXPECT_EQ(printedBy([this] { m_transfer.on5042(true); }),
              "process5042: isDtsCOM1 = 1, threadDoWork = true   (TDTStatus)\n");
    EXPECT_EQ(printedBy([this] { m_transfer.on5042(false); }),
              "process5042: isDtsCOM1 = 0, threadDoWork = true   (TDTStatus)\n");
}

TEST_F(TimeDataTransferTest, WithoutDebugItDoesTheSameInSilence) {
    TimeDataTransfer quiet(m_actions, false);
    const std::string printed = printedBy([&] {
        quiet.tick();
        quiet.on5040(4);
        quiet.on5042(true);
        quiet.on5042(false);
        for (int second = 0; second < 10; ++second) {
            quiet.tick();
        }
    });
    EXPECT_EQ(printed, "");
    EXPECT_THAT(m_actions.take(), ElementsAre("queue 5001 mode 1", "queue 5001 mode 1"));
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
// The destroy sequence from its command to its answer, and what it leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "tests/RovanServer/DestroySequence.h"

using namespace std::chrono_literals;
using namespace zeroize_test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ZeroizeDestroySequenceTest : public testing::Test, protected Destroy {};

}  // namespace

TEST_F(ZeroizeDestroySequenceTest, TheWholeSequenceWithEveryEventPasses) {
    destroy();
    tick();
    report9225(true);
    report5404(Rovan_5404_Msg::e5404_IPZeroize_2);
    report5044();
    event(0);  // the pass of the event report itself
    tick();
    event(17);
    tick();
    event(34);
    tick();

    EXPECT_THAT(actions.take(),
                ElementsAre("queue connect 9225", "queue connect 5044", "queue connect 5404",
                            "queue connect 9225", "queue connect 5044", "queue connect 5404",
                            "queue 5001 mode 7", kEZeroSuccess, "queue 5402", kIpzSuccess, kPass));
}

TEST_F(ZeroizeDestroySequenceTest, AnotherStatusLeavesTheEmergencyZeroizeOutAndFails) {
    enterWaitOnConnects();
    report9225(true);
    report5404(Rovan_5404_Msg::e5404_IPZeroize_3);
    report5044();
    tick();
    tick();
    EXPECT_THAT(actions.take(), ElementsAre("queue 5402"));

    event(34);

    EXPECT_THAT(actions.take(), ElementsAre(kIpzSuccess));
    expectEnd(kFail);
}

TEST_F(ZeroizeDestroySequenceTest, ABadBootFlagSendsNothingAndFails) {
    enterWaitOnConnects();
    report9225(false);
    report5404(Rovan_5404_Msg::e5404_IPZeroize_2);
    report5044();
    expectGoesTo(eIPZ_WaitOnIPZero);

    actions.wait(600001ms);
    expectGoesTo(eIPZ_ReportFail);
    expectEnd(kFail);
}

TEST_F(ZeroizeDestroySequenceTest, ABadBootFlagPassesWhenBothEventsComeByThemselves) {
    enterWaitOnConnects();
    report9225(false);
    report5404(Rovan_5404_Msg::e5404_IPZeroize_2);
    report5044();
    tick();

    event(17);
    event(34);

    EXPECT_THAT(actions.take(), ElementsAre(kIpzSuccess));
    expectEnd(kPass);
}

TEST_F(ZeroizeDestroySequenceTest, WithASilentReceiverItFailsTenMinutesAfterTheIpZeroize) {
    destroy();
    tick();
    actions.wait(6001ms);
    tick();
    tick();
    ASSERT_EQ(procedure.getIPZstate(), eIPZ_WaitOnIPZero);
    actions.take();

    // In the rhythm of the thread: the limit is not counted in passes.
    for (int passes = 0; passes < 6000; ++passes) {
        actions.wait(100ms);
        tick();
    }
    EXPECT_THAT(actions.take(), IsEmpty());
    actions.wait(100ms);
    expectGoesTo(eIPZ_ReportFail);
    expectEnd(kFail);
}

TEST_F(ZeroizeDestroySequenceTest, TheEndLeavesTheClearStatus) {
    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_1);
    enterWaitOnIPZeroAfterEZero();
    event(34);
    actions.take();
    expectEnd(kPass);

    EXPECT_EQ(procedure.ipClearStatus(), 4);
}

TEST_F(ZeroizeDestroySequenceTest, TheSequenceIsResetBeforeTheAnswerGoesOut) {
    class LookingActions : public RecordedActions {
      public:
        std::function<void()> onRespond;
        void respondText(const CommandResponse& cmd, const std::string& text) override {
            RecordedActions::respondText(cmd, text);
            onRespond();
        }
    };
    LookingActions looking;
    ZeroizeProcedure watched(looking);
    bool answered = false;
    looking.onRespond = [&] {
        answered = true;
        EXPECT_FALSE(watched.isPending());
        EXPECT_EQ(watched.getIPZstate(), eIPZ_Idle);
    };
    watched.acceptDestroy(commandOf("ROVAN_DESTROY"));

    for (int passes = 0; watched.isPending() && passes < 20; ++passes) {
        looking.wait(601s);
        watched.handleZeroize(0);
    }

    EXPECT_TRUE(answered);
}

TEST_F(ZeroizeDestroySequenceTest, AfterTheAnswerTheNextCommandIsAccepted) {
    enterWaitOnIPZeroAfterEZero();
    event(34);
    actions.take();
    expectEnd(kPass);

    EXPECT_EQ(procedure.acceptCvZeroize(commandOf("ROVAN_CV_ZEROIZE")), Acceptance::accepted);
    procedure.handleZeroize(3);
    EXPECT_EQ(destroy(), Acceptance::accepted);
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ConnectMessages);
}

TEST_F(ZeroizeDestroySequenceTest, ResultsAndReportsOfOtherMessagesAreIgnored) {
    enterWaitOnEZero();

    for (const unsigned short id : std::vector<unsigned short>{0, 5000, 5002, 5331, 9405, 65535}) {
        rejected(id);
        procedure.onReportReceived(id);
    }

    expectStays(eIPZ_WaitOnEZero);
}

TEST_F(ZeroizeDestroySequenceTest, AResultNeverClearsAnEarlierOne) {
    enterWaitOnEZero();
    rejected(5001);
    procedure.gssipMessageCallback(5001, true, false, false);

    // Still held for rejected: the retry comes.
    expectGoesTo(eIPZ_CommandEZero);
}

TEST_F(ZeroizeDestroySequenceTest, EventsOfOtherIdsLatchNothing) {
    enterWaitOnEZero();

    for (unsigned short id = 0; id < 100; ++id) {
        if (id != 17 && id != 34) {
            event(id);
        }
    }

    expectStays(eIPZ_WaitOnEZero);
    actions.wait(10001ms);
    tick();
    tick();
    actions.take();
    expectStays(eIPZ_WaitOnIPZero);
}

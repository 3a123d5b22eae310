// SPDX-License-Identifier: Apache-2.0
// The states of the destroy sequence, one by one. Time limits are met at their edge: at the limit
// to the millisecond nothing happens, a millisecond later it does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/RovanServer/DestroySequence.h"

using namespace std::chrono_literals;
using namespace zeroize_test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ZeroizeDestroyTest : public testing::Test, protected Destroy {};

}  // namespace

TEST_F(ZeroizeDestroyTest, TheCommandStartsTheSequenceAndQueuesNothingItself) {
    EXPECT_EQ(destroy(), Acceptance::accepted);

    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_TRUE(procedure.isPending());
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ConnectMessages);
}

TEST_F(ZeroizeDestroyTest, FirstTheReceiverIsToReportTwice) {
    destroy();

    tick();

    EXPECT_THAT(actions.take(),
                ElementsAre("queue connect 9225", "queue connect 5044", "queue connect 5404",
                            "queue connect 9225", "queue connect 5044", "queue connect 5404"));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnConnects);
}

TEST_F(ZeroizeDestroyTest, AReportFromBeforeTheSequenceDoesNotCount) {
    report9225(true);
    report5404(Rovan_5404_Msg::e5404_IPZeroize_2);
    report5044();

    enterWaitOnConnects();
    actions.wait(6000ms);
    expectStays(eIPZ_WaitOnConnects);
    actions.wait(1ms);
    expectGoesTo(eIPZ_CommandIPZ);
}

TEST_F(ZeroizeDestroyTest, EveryMessageOfTheSequenceIsTracked) {
    enterWaitOnIPZero();

    // Six connects, 5001 and 5402: each result goes into the record of its message.
    ASSERT_EQ(actions.messages.size(), 8u);
    for (std::size_t i = 0; i < actions.messages.size(); ++i) {
        ASSERT_TRUE(actions.callbacks[i]) << actions.messages[i]->msgId();
    }
    // The link's callback of the 5402 is what brings its retry about.
    actions.callbacks[7](5402, false, false, true);
    actions.wait(15001ms);
    expectGoesTo(eIPZ_CommandIPZ);
}

// The decision after the connects.

TEST_F(ZeroizeDestroyTest, WithoutAllReportsItWaitsToTheLimit) {
    enterWaitOnConnects();
    report9225(true);
    report5404(Rovan_5404_Msg::e5404_IPZeroize_2);
    expectStays(eIPZ_WaitOnConnects);
    actions.wait(6000ms + 999us);
    expectStays(eIPZ_WaitOnConnects);
    actions.wait(1us);
    expectGoesTo(eIPZ_CommandEZero);
}

namespace {

// What the receiver reports after the connects, and where the sequence goes.
struct Reports {
    bool version;
    bool bootFlagNormal;
    bool status;
    Status value;
    bool events;
    eIPZ_State next;
};

// Every combination of the three reports, of the boot flag and of the four status values. A value
// without its report is one from before the sequence: it does not count.
std::vector<Reports> allReports() {
    std::vector<Reports> all;
    for (unsigned bits = 0; bits < 64; ++bits) {
        Reports reports{(bits & 1) != 0,  (bits & 2) != 0,
                        (bits & 4) != 0,  static_cast<Status>((bits >> 3) & 3),
                        (bits & 32) != 0, eIPZ_CommandEZero};
        const bool statusTwo = reports.value == Rovan_5404_Msg::e5404_IPZeroize_2;
        if (!reports.version) {
            reports.next = eIPZ_CommandIPZ;
        } else if (!reports.bootFlagNormal) {
            reports.next = eIPZ_WaitOnIPZero;
        } else if (reports.status && !statusTwo) {
            reports.next = eIPZ_CommandIPZ;
        }
        all.push_back(reports);
    }
    return all;
}

}  // namespace

TEST_F(ZeroizeDestroyTest, TheReportsDecideWhereItGoes) {
    const std::vector<Reports> matrix = allReports();
    ASSERT_EQ(matrix.size(), 64u);
    for (const Reports& reports : matrix) {
        SCOPED_TRACE("9225: " + std::to_string(reports.version) +
                     ", boot flag: " + std::to_string(reports.bootFlagNormal) + ", 5404: " +
                     std::to_string(reports.status) + ", status: " + std::to_string(reports.value) +
                     ", 5044: " + std::to_string(reports.events));
        Destroy sequence;
        sequence.enterWaitOnConnects();

        sequence.procedure.onIpZeroizeStatus(reports.value);
        if (reports.version) {
            sequence.report9225(reports.bootFlagNormal);
        }
        if (reports.status) {
            sequence.procedure.onReportReceived(5404);
        }
        if (reports.events) {
            sequence.report5044();
        }
        if (!reports.version || !reports.status || !reports.events) {
            sequence.actions.wait(6000ms);
            sequence.expectStays(eIPZ_WaitOnConnects);
            sequence.actions.wait(1ms);
        }

        sequence.expectGoesTo(reports.next);
    }
}

// The emergency zeroize.

TEST_F(ZeroizeDestroyTest, TheEmergencyZeroizeIsCommanded) {
    enterCommandEZero();

    tick();

    EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode 7"));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);
}

TEST_F(ZeroizeDestroyTest, ASuccessWhileItIsCommandedIsReportedAndCounts) {
    enterCommandEZero();

    procedure.handleZeroize(17);
    EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode 7", kEZeroSuccess));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);

    expectGoesTo(eIPZ_CommandIPZ);
}

TEST_F(ZeroizeDestroyTest, AFailureWhileItIsCommandedIsReported) {
    enterCommandEZero();

    event(18);

    EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode 7", kEZeroFailure));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);
}

TEST_F(ZeroizeDestroyTest, ASuccessWhileItWaitsIsReportedAndLeadsOn) {
    enterWaitOnEZero();

    procedure.handleZeroize(17);

    EXPECT_THAT(actions.take(), ElementsAre(kEZeroSuccess));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_CommandIPZ);
    // The pass itself has latched the success: the sequence can end well.
    tick();
    event(34);
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportSuccess);
}

TEST_F(ZeroizeDestroyTest, AFailureWhileItWaitsIsNotReported) {
    enterWaitOnEZero();

    event(18);
    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);

    actions.wait(10000ms);
    event(18);
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);
    actions.wait(1ms);
    event(18);
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_CommandIPZ);
    EXPECT_THAT(actions.take(), IsEmpty());
}

TEST_F(ZeroizeDestroyTest, AFailureTakesBackAnEarlierSuccess) {
    event(17);
    enterWaitOnEZero();

    event(18);

    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);
    expectStays(eIPZ_WaitOnEZero);
}

TEST_F(ZeroizeDestroyTest, ASuccessFromBeforeTheSequenceCounts) {
    event(17);

    enterWaitOnEZero();

    expectGoesTo(eIPZ_CommandIPZ);
}

TEST_F(ZeroizeDestroyTest, WithoutAnEventTheEmergencyZeroizeHasTenSeconds) {
    enterWaitOnEZero();
    actions.wait(10000ms + 999us);
    expectStays(eIPZ_WaitOnEZero);
    actions.wait(1us);
    expectGoesTo(eIPZ_CommandIPZ);
}

TEST_F(ZeroizeDestroyTest, ARejectedEmergencyZeroizeIsSentOnceMore) {
    enterWaitOnEZero();

    rejected(5001);
    expectGoesTo(eIPZ_CommandEZero);
    tick();
    EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode 7"));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);

    rejected(5001);
    expectStays(eIPZ_WaitOnEZero);
    actions.wait(10001ms);
    expectGoesTo(eIPZ_CommandIPZ);
}

TEST_F(ZeroizeDestroyTest, ALostEmergencyZeroizeIsNotSentAgain) {
    enterWaitOnEZero();

    procedure.gssipMessageCallback(5001, false, true, false);

    expectStays(eIPZ_WaitOnEZero);
}

TEST_F(ZeroizeDestroyTest, ARejectionThatMeetsTheTimeLimitGivesWayToIt) {
    enterWaitOnEZero();
    rejected(5001);
    actions.wait(10001ms);

    // Both transitions in one pass; the later one counts.
    expectGoesTo(eIPZ_CommandIPZ);
}

TEST_F(ZeroizeDestroyTest, ARejectionWithAFailureEventIsStillRetried) {
    enterWaitOnEZero();
    rejected(5001);

    event(18);

    EXPECT_EQ(procedure.getIPZstate(), eIPZ_CommandEZero);
}

TEST_F(ZeroizeDestroyTest, ARejectedEmergencyZeroizeIsRetriedInEachSequence) {
    for (int sequence = 0; sequence < 2; ++sequence) {
        enterWaitOnEZero();
        rejected(5001);
        expectGoesTo(eIPZ_CommandEZero);
        tick();
        event(17);
        tick();
        event(34);
        actions.take();
        expectEnd(kPass);
    }
}

// The IP zeroize.

TEST_F(ZeroizeDestroyTest, TheIpZeroizeIsCommanded) {
    enterCommandIPZ();

    tick();

    EXPECT_THAT(actions.take(), ElementsAre("queue 5402"));
    EXPECT_EQ(actions.messages.back()->data()[4], 0x0001);
    EXPECT_EQ(actions.messages.back()->data()[5], 0x0020);
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnIPZero);
}

TEST_F(ZeroizeDestroyTest, BothSuccessesPass) {
    enterWaitOnIPZeroAfterEZero();

    event(34);
    EXPECT_THAT(actions.take(), ElementsAre(kIpzSuccess));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportSuccess);

    expectEnd(kPass);
}

TEST_F(ZeroizeDestroyTest, AnIpZeroizeWithoutTheEmergencyZeroizeFails) {
    enterWaitOnIPZero();

    event(34);
    EXPECT_THAT(actions.take(), ElementsAre(kIpzSuccess));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportFail);

    expectEnd(kFail);
}

TEST_F(ZeroizeDestroyTest, AnEmergencyZeroizeThatComesLateStillCounts) {
    enterWaitOnIPZero();

    event(17);
    EXPECT_THAT(actions.take(), IsEmpty());
    event(34);

    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportSuccess);
}

TEST_F(ZeroizeDestroyTest, ALatchedIpZeroizeEndsItWithoutAnEvent) {
    enterWaitOnEZero();
    event(17);
    actions.take();
    // Too early to be reported, but not forgotten.
    event(34);
    EXPECT_THAT(actions.take(), ElementsAre("queue 5402"));

    expectGoesTo(eIPZ_ReportSuccess);
    expectEnd(kPass);
}

TEST_F(ZeroizeDestroyTest, AFailedIpZeroizeFails) {
    enterWaitOnIPZeroAfterEZero();

    event(35);
    EXPECT_THAT(actions.take(), ElementsAre(kIpzFailure));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportFail);

    expectEnd(kFail);
}

TEST_F(ZeroizeDestroyTest, AFailureEventOutweighsALatchedSuccess) {
    enterWaitOnEZero();
    event(17);
    event(34);
    actions.take();
    ASSERT_EQ(procedure.getIPZstate(), eIPZ_WaitOnIPZero);

    event(35);

    EXPECT_THAT(actions.take(), ElementsAre(kIpzFailure));
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportFail);
}

TEST_F(ZeroizeDestroyTest, TheIpZeroizeHasTenMinutes) {
    enterWaitOnIPZeroAfterEZero();
    actions.wait(600000ms + 999us);
    expectStays(eIPZ_WaitOnIPZero);
    actions.wait(1us);
    expectGoesTo(eIPZ_ReportFail);
    expectEnd(kFail);
}

TEST_F(ZeroizeDestroyTest, ARejectedIpZeroizeIsRetriedOnlyAfterFifteenSeconds) {
    enterWaitOnIPZero();
    rejected(5402);
    actions.wait(15000ms + 999us);
    expectStays(eIPZ_WaitOnIPZero);
    actions.wait(1us);
    expectGoesTo(eIPZ_CommandIPZ);
    tick();
    EXPECT_THAT(actions.take(), ElementsAre("queue 5402"));

    // Once.
    rejected(5402);
    actions.wait(599s);
    expectStays(eIPZ_WaitOnIPZero);
}

TEST_F(ZeroizeDestroyTest, TheTenMinutesStartAgainWithTheRetry) {
    enterWaitOnIPZero();
    rejected(5402);
    actions.wait(500s);
    tick();
    tick();
    ASSERT_THAT(actions.take(), ElementsAre("queue 5402"));

    actions.wait(600s);
    expectStays(eIPZ_WaitOnIPZero);
    actions.wait(1ms);
    expectGoesTo(eIPZ_ReportFail);
}

TEST_F(ZeroizeDestroyTest, ALostIpZeroizeIsNotSentAgain) {
    enterWaitOnIPZero();

    procedure.gssipMessageCallback(5402, false, true, false);

    actions.wait(599s);
    expectStays(eIPZ_WaitOnIPZero);
}

TEST_F(ZeroizeDestroyTest, ARetryThatMeetsTheEndGivesWayToIt) {
    enterWaitOnIPZeroAfterEZero();
    rejected(5402);
    actions.wait(16s);

    event(34);

    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ReportSuccess);
}

TEST_F(ZeroizeDestroyTest, ARetriedIpZeroizeIsNeverRetriedAgainInThisProcess) {
    enterWaitOnIPZero();
    rejected(5402);
    actions.wait(16s);
    expectGoesTo(eIPZ_CommandIPZ);
    tick();
    event(35);
    actions.take();
    expectEnd(kFail);

    enterWaitOnIPZero();
    rejected(5402);
    actions.wait(599s);
    expectStays(eIPZ_WaitOnIPZero);
}

TEST_F(ZeroizeDestroyTest, ARejectedIpZeroizeIsRememberedInTheNextSequence) {
    enterWaitOnIPZero();
    rejected(5402);
    event(35);
    actions.take();
    expectEnd(kFail);

    enterWaitOnIPZero();
    actions.wait(15001ms);
    expectGoesTo(eIPZ_CommandIPZ);
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RovanServer/ZeroizeProcedure.h"
#include "tests/RovanServer/RecordedActions.h"

namespace zeroize_test {

using Acceptance = ZeroizeProcedure::Acceptance;
using Status = Rovan_5404_Msg::e5404IPZeroizeStatus;

inline const char* const kEZeroSuccess = "event 2 Emergency Zeroize Success";
inline const char* const kEZeroFailure = "event 3 Failed to Emergency Zeroize";
inline const char* const kIpzSuccess = "event 2 IP Zeroize Success";
inline const char* const kIpzFailure = "event 3 Failed to IP Zeroize";
inline const char* const kPass = "respond COMPONENT_DESTROY_PASS to ROVAN_DESTROY";
inline const char* const kFail = "respond COMPONENT_DESTROY_FAIL to ROVAN_DESTROY";

// A receiver's destroy, with verbs for what happens to it.
struct Destroy {
    void tick() { procedure.handleZeroize(0); }

    /// An event of the receiver.
    void event(unsigned short id) { procedure.handleZeroize(id); }

    void report9225(bool bootFlagNormal) {
        procedure.onVersionRecord(bootFlagNormal, false, false);
    }
    void report5404(Status status) {
        procedure.onIpZeroizeStatus(status);
        procedure.onReportReceived(5404);
    }
    void report5044() { procedure.onReportReceived(5044); }

    /// The link's result for a message of the sequence.
    void rejected(unsigned short msgId) {
        procedure.gssipMessageCallback(msgId, false, false, true);
    }

    Acceptance destroy() { return procedure.acceptDestroy(commandOf("ROVAN_DESTROY")); }

    // Each of these leaves the sequence in the state of its name, just entered, with nothing
    // recorded.
    void enterWaitOnConnects() {
        ASSERT_EQ(destroy(), Acceptance::accepted);
        tick();
        arrived(eIPZ_WaitOnConnects);
    }
    void enterCommandEZero() {
        enterWaitOnConnects();
        report9225(true);
        report5404(Rovan_5404_Msg::e5404_IPZeroize_2);
        report5044();
        tick();
        arrived(eIPZ_CommandEZero);
    }
    void enterWaitOnEZero() {
        enterCommandEZero();
        tick();
        arrived(eIPZ_WaitOnEZero);
    }
    void enterCommandIPZ() {
        enterWaitOnEZero();
        actions.wait(std::chrono::milliseconds(10001));
        tick();
        arrived(eIPZ_CommandIPZ);
    }
    void enterWaitOnIPZero() {
        enterCommandIPZ();
        tick();
        arrived(eIPZ_WaitOnIPZero);
    }
    /// As above, with the emergency zeroize done.
    void enterWaitOnIPZeroAfterEZero() {
        enterWaitOnEZero();
        event(17);
        tick();
        arrived(eIPZ_WaitOnIPZero);
    }

    /// A pass without an event does no more than go to that state.
    void expectGoesTo(eIPZ_State state) {
        tick();
        EXPECT_EQ(procedure.getIPZstate(), state);
        EXPECT_THAT(actions.take(), testing::IsEmpty());
    }

    void expectStays(eIPZ_State state) { expectGoesTo(state); }

    /// The next pass ends the sequence with that answer.
    void expectEnd(const char* answer) {
        tick();
        EXPECT_THAT(actions.take(), testing::ElementsAre(answer));
        EXPECT_EQ(procedure.getIPZstate(), eIPZ_Idle);
        EXPECT_FALSE(procedure.isPending());
        actions.wait(std::chrono::seconds(1000));
        tick();
        EXPECT_THAT(actions.take(), testing::IsEmpty());
    }

    RecordedActions actions;
    ZeroizeProcedure procedure{actions};

  private:
    void arrived(eIPZ_State state) {
        ASSERT_EQ(procedure.getIPZstate(), state);
        actions.take();
    }
};

}  // namespace zeroize_test

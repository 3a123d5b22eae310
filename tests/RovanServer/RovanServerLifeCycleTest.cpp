// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/RovanServer/OpenServer.h"
#include "tests/RovanServer/TemporaryDirectory.h"

using FACE::RETURN_CODE_TYPE;
using FACE::LCM::Keldra::ReportedState;
using FACE::LCM::Keldra::RequestedState;
using testing::ElementsAre;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

RETURN_CODE_TYPE::Value request(RovanServer& server, unsigned requested) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    server.Request_State_Transition(static_cast<RequestedState::Value>(requested), rc);
    return rc;
}

}  // namespace

TEST(RovanServerLifeCycle, TheStatesAndRequestsHaveTheirNumbers) {
    EXPECT_EQ(RequestedState::START, 0u);
    EXPECT_EQ(RequestedState::STOP, 1u);
    EXPECT_EQ(ReportedState::RUNNING, 0u);
    EXPECT_EQ(ReportedState::STOPPED, 1u);
}

TEST(RovanServerLifeCycle, InitializeAndFinalizeHaveNothingToDo) {
    OpenServer server;
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    server.Initialize(rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ACTION);
    rc = RETURN_CODE_TYPE::NO_ERROR;
    server.Finalize(rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ACTION);
}

TEST(RovanServerLifeCycle, ANewServerIsStopped) {
    OpenServer server;
    auto state = ReportedState::RUNNING;
    auto rc = RETURN_CODE_TYPE::NO_ACTION;
    server.Query_State(state, rc);
    EXPECT_EQ(state, ReportedState::STOPPED);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ERROR);
}

TEST(RovanServerLifeCycle, WhatIsNoTransitionIsNotAvailable) {
    OpenServer server;
    EXPECT_EQ(request(server, RequestedState::STOP), RETURN_CODE_TYPE::NOT_AVAILABLE);
    EXPECT_EQ(request(server, 2), RETURN_CODE_TYPE::NOT_AVAILABLE);
    EXPECT_EQ(request(server, 0xFFFFFFFFu), RETURN_CODE_TYPE::NOT_AVAILABLE);
}

TEST(RovanServerLifeCycle, AServerThatIsNotConnectedDoesNotStart) {
    OpenServer server;
    EXPECT_EQ(request(server, RequestedState::START), RETURN_CODE_TYPE::NOT_AVAILABLE);
}

TEST(RovanServerLifeCycle, DisconnectingWhatWasNeverConnectedIsHarmless) {
    OpenServer server;
    auto rc = RETURN_CODE_TYPE::INVALID_MODE;
    server.Framework_Disconnect(rc);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ERROR);
}

TEST(RovanServerLifeCycle, CallbacksDoNothingBeforeTheStart) {
    OpenServer server;
    aspn2_msgs::idl::CommandResponse command;
    command.command_response("BITSERVER_PING");
    server.cbCmd(command);
    server.cbRsp(command);
    server.cbGssip(aspn2_msgs::idl::GSSIP());
}

TEST(RovanServerLifeCycle, PowerGoesOffByTheDiscreteFirstAndOnByTheSupplyFirst) {
    OpenServer server;
    std::vector<std::string> commands;
    server.m_system = [&](const char* command) {
        commands.push_back(command);
        return 256;  // the shell's exit status is not looked at
    };
    CaptureStdout();
    server.disableRovanPower();
    server.enableRovanPower();
    EXPECT_THAT(commands, ElementsAre("devmem 0x4000045C 32 1", "devmem 0x40000460 32 0",
                                      "devmem 0x40000460 32 1", "devmem 0x4000045C 32 0"));
    EXPECT_EQ(GetCapturedStdout(), "");
}

TEST(RovanServerLifeCycle, EachFailureToSwitchThePowerIsALineAndTheNextStepFollows) {
    OpenServer server;
    server.m_system = [](const char*) { return -1; };
    CaptureStdout();
    server.disableRovanPower();
    server.enableRovanPower();
    EXPECT_EQ(GetCapturedStdout(),
              "Error setting the Rovan Power_On discrete to off\n"
              "Error disabling the 3.3V power supply\n"
              "Error enabling the 3.3V power supply\n"
              "Error setting the Rovan Power_On discrete to on\n");
}

TEST(RovanServerLifeCycle, AWorkersExceptionIsALineAndTheWorkerGoesOn) {
    OpenServer server;
    const struct {
        const OpenServer::ExceptionTexts& texts;
        std::string known;
        std::string unknown;
    } workers[] = {
        {OpenServer::kPeriodicTexts, "Rovan: periodicThreadFunction() EXCEPTION: out of luck\n",
         "Rovan: periodicThreadFunction() EXCEPTION: <unknown>\n"},
        {OpenServer::kZeroizeTexts,
         "Rovan zeroizeThreadFunction() caught std::exception: out of luck\n",
         "Rovan zeroizeThreadFunction() caught <unknown> exception\n"},
        {OpenServer::kServerTexts,
         "Rovan serverThreadFunction() caught std::exception: out of luck\n",
         "Rovan serverThreadFunction() caught <unknown> exception\n"},
        {OpenServer::kTimeDataTexts,
         "Rovan: timeDataWorkerThreadFunction() EXCEPTION: out of luck\n",
         "Rovan: timeDataWorkerThreadFunction() EXCEPTION: <unknown>\n"},
    };
    for (const auto& worker : workers) {
        CaptureStdout();
        server.survive(worker.texts, [] { throw std::runtime_error("out of luck"); });
        EXPECT_EQ(GetCapturedStdout(), worker.known);
        CaptureStdout();
        server.survive(worker.texts, [] { throw 1; });
        EXPECT_EQ(GetCapturedStdout(), worker.unknown);
        CaptureStdout();
        server.survive(worker.texts, [] {});
        EXPECT_EQ(GetCapturedStdout(), "");
    }
}

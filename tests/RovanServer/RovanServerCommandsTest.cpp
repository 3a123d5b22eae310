// SPDX-License-Identifier: Apache-2.0
// What commands and responses lead to beyond the table of the commands: console, failures, and the
// answers of other servers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/RovanServer/BenchServer.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

using LinkResult = BenchServer::LinkResult;

constexpr int32_t kAccessory = 0x032F'0200;  // server 47
constexpr int32_t kSomebody = 0x0321'0200;   // server 33

class RovanServerCommands : public testing::Test {
  protected:
    RovanServerCommands() { m_server.run(); }

    void command(const std::string& text, int number = 3) {
        m_server.cbCmd(numberedCommand(number, text));
    }
    void response(int32_t device, const std::string& text, bool isResponse = true) {
        auto message = numberedCommand(8, text);
        message.header().device_id(device);
        message.command_response_type(isResponse ? aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1
                                                 : aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_0);
        m_server.cbRsp(message);
    }
    /// Whether the accessory's BIT counts as done: the ACK then comes with the fifth pass.
    bool accessoryIsDone() {
        for (int pass = 0; pass < 5; ++pass) {
            m_server.m_bit.step();
        }
        const auto answers = m_server.takeAnswers();
        if (answers.empty()) {
            return false;
        }
        EXPECT_THAT(answers, ElementsAre("REQUEST_COMPONENT_CBIT_ACK to 2"));
        return true;
    }
    void startBit() {
        m_server.m_bit.begin(numberedCommand(2, "REQUEST_COMPONENT_CBIT"));
        m_server.m_bit.enterThread();
    }
    /// Nothing more can be published on that connection.
    static void breakConnection(long long& connection) { connection = 123'456; }

    ServerBus m_bus;
    BenchServer m_server{m_bus, "SYSTEM_ENV_RERAD"};
};

}  // namespace

TEST_F(RovanServerCommands, InDebugACommandAndItsAnswerAreTold) {
    m_server.m_configuration.debug = true;
    auto ping = numberedCommand(3, "BITSERVER_PING");
    ping.commanded_device_id(0x0399'0000);
    CaptureStdout();
    m_server.cbCmd(ping);
    EXPECT_THAT(GetCapturedStdout(),
                MatchesRegex(".*RovanServerCommands\\.cpp \\([0-9]+\\) cbCmd : sourceId = 33, "
                             "commandedId = 153, command string = BITSERVER_PING\n"
                             "RovanServer::cbCmd\\(\\): TOVsec = 7, Rovan\n"));
}

TEST_F(RovanServerCommands, InDebugWhatIsSentLaterIsToldWithItsSender) {
    m_server.m_configuration.debug = true;
    command("ROVAN_SET_STANDBY");
    CaptureStdout();
    m_server.takeQueued(LinkResult::good);
    EXPECT_EQ(GetCapturedStdout(),
              "RovanServer::sendCommandResponse(): TOVsec = 7, ROVAN_SET_STANDBY_ACK\n");
    CaptureStdout();
    m_server.m_passthroughQuery->check();
    EXPECT_EQ(GetCapturedStdout(),
              "RovanServer::sendCommandResponse(): TOVsec = 7, QUERY_PASSTHROUGH_STATE\n");
}

TEST_F(RovanServerCommands, InDebugEvenAnUnknownCommandIsTold) {
    m_server.m_configuration.debug = true;
    CaptureStdout();
    command("NO_SUCH_COMMAND");
    EXPECT_THAT(GetCapturedStdout(), MatchesRegex(".* cbCmd : sourceId = 33, commandedId = 0, "
                                                  "command string = NO_SUCH_COMMAND\n"));
}

TEST_F(RovanServerCommands, InDebugTheEndOfTheFirstBuiltInTestIsToldAndReported) {
    m_server.m_configuration.debug = true;
    CaptureStdout();
    command("FIRST_BBIT_DONE");
    EXPECT_THAT(GetCapturedStdout(),
                testing::EndsWith("FIRST_BBIT_DONE\n"
                                  "RovanCBIT Cmded, Not RcvrFail8504, Not Fault9405\n"));
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 2 RovanCBIT Cmded, Not RcvrFail8504, Not Fault9405"));
    EXPECT_THAT(m_server.takeCommands(), IsEmpty());
}

TEST_F(RovanServerCommands, WithoutDebugNothingIsPrinted) {
    CaptureStdout();
    command("BITSERVER_PING");
    command("FIRST_BBIT_DONE");
    command("ROVAN_SET_STANDBY");
    m_server.takeQueued(LinkResult::bad);
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
}

TEST_F(RovanServerCommands, AnAnswerThatCannotBePublishedIsAnEventAndIsNotTriedAgain) {
    breakConnection(m_server.m_connections.response);
    command("BITSERVER_PING");
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 3 Rovan: Could not publish CommandResponse for TOV = 7, Rovan"));
    command("ROVAN_SET_CONT");
    m_server.takeQueued(LinkResult::bad);
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 3 Rovan: Could not publish CommandResponse for TOV = 7, "
                            "ROVAN_SET_CONT_NACK"));
    EXPECT_THAT(m_server.takeAnswers(), IsEmpty());
}

TEST_F(RovanServerCommands, AFinalAnswerThatCannotBePublishedIsAnEventAndTheNextCommandIsTaken) {
    command("ROVAN_ZEROIZE");
    breakConnection(m_server.m_connections.response);
    m_server.m_zeroize.handleZeroize(17);
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 3 Rovan: Could not publish CommandResponse for TOV = 7, "
                            "COMPONENT_ZEROIZE_PASS"));
    EXPECT_FALSE(m_server.m_zeroize.isPending());
    m_server.m_connections.response = m_bus.response;
    command("ROVAN_ZEROIZE", 4);
    m_server.m_zeroize.handleZeroize(17);
    EXPECT_THAT(m_server.takeAnswers(), ElementsAre("COMPONENT_ZEROIZE_PASS to 4"));
}

TEST_F(RovanServerCommands, AQueryThatCannotBePublishedIsAnEventAndTheReceiverIsToldAllTheSame) {
    breakConnection(m_server.m_connections.command);
    response(kSomebody, "PASSTHROUGH_ENABLED");
    EXPECT_FALSE(m_server.m_passthroughQuery->check());
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 3 Rovan: Could not publish CommandResponse for TOV = 7, "
                            "QUERY_PASSTHROUGH_STATE"));
    EXPECT_THAT(m_server.takeQueued(), ElementsAre("5001 mist 3", "5001 mode 1"));
}

TEST_F(RovanServerCommands, ACommandThatTheLinkFailsIsAnsweredNack) {
    const char* const texts[] = {"ROVAN_SET_STANDBY", "ROVAN_SET_CONT", "ROVAN_CV_ZEROIZE",
                                 "ROVAN_ZEROIZE"};
    for (const std::string text : texts) {
        command(text);
        m_server.takeQueued(LinkResult::bad);
        EXPECT_THAT(m_server.takeAnswers(), ElementsAre(text + "_NACK to 3"));
    }
    // The link's word is not the receiver's: the zeroize goes on.
    EXPECT_TRUE(m_server.m_zeroize.isPending());
}

TEST_F(RovanServerCommands, ACommandThatFindsTheQueueFullIsNeverAnswered) {
    constexpr int kQueued = 64;
    for (int number = 0; number < kQueued; ++number) {
        command("ROVAN_SET_STANDBY", number);
    }
    command("ROVAN_SET_CONT", 100);
    command("ROVAN_CV_ZEROIZE", 101);
    EXPECT_EQ(m_server.takeQueued(LinkResult::good).size(), std::size_t{kQueued});
    const auto answers = m_server.takeAnswers();
    ASSERT_EQ(answers.size(), std::size_t{kQueued});
    EXPECT_EQ(answers.back(), "ROVAN_SET_STANDBY_ACK to 63");
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
    // The zeroize is pending all the same, and is commanded again when its time has come.
    EXPECT_TRUE(m_server.m_zeroize.isPending());
    m_server.wait(std::chrono::seconds(11));
    m_server.m_zeroize.handleZeroize(0);
    EXPECT_THAT(m_server.takeQueued(), ElementsAre("5001 mode 8"));
}

TEST_F(RovanServerCommands, AServerThatStopsStartsNoBuiltInTest) {
    m_server.m_stopping = true;
    command("REQUEST_COMPONENT_CBIT");
    EXPECT_FALSE(m_server.m_bit.isRunning());
    EXPECT_FALSE(m_server.m_serverThread.joinable());
    EXPECT_THAT(m_server.takeAnswers(), IsEmpty());
}

TEST_F(RovanServerCommands, TheAccessorysBuiltInTestIsDoneWithEitherOutcome) {
    for (const char* text : {"REQUEST_COMPONENT_CBIT_PASS", "REQUEST_COMPONENT_CBIT_FAIL",
                             "ZELM,REQUEST_COMPONENT_CBIT_FAIL,12"}) {
        startBit();
        response(kAccessory, text);
        EXPECT_TRUE(accessoryIsDone()) << text;
        startBit();
        response(kAccessory, text, false);
        EXPECT_TRUE(accessoryIsDone()) << text << ", whatever the type";
    }
}

TEST_F(RovanServerCommands, OthersAndOtherTextsDoNotEndTheAccessorysBuiltInTest) {
    startBit();
    response(kSomebody, "REQUEST_COMPONENT_CBIT_PASS");
    response(kAccessory, "REQUEST_COMPONENT_CBIT_ACK");
    response(kAccessory, "request_component_cbit_pass");
    response(kAccessory, "");
    EXPECT_FALSE(accessoryIsDone());
}

TEST_F(RovanServerCommands, WhatTheAccessorySaidBeforeTheCommandDoesNotCount) {
    response(kAccessory, "REQUEST_COMPONENT_CBIT_PASS");
    startBit();
    EXPECT_FALSE(accessoryIsDone());
}

TEST_F(RovanServerCommands, OnlyAWholeResponseOfThatTextGrantsPassthrough) {
    response(kSomebody, "PASSTHROUGH_ENABLED_PASS");
    response(kSomebody, "PASSTHROUGH_ENABLED,1");
    response(kSomebody, "passthrough_enabled");
    response(kSomebody, " PASSTHROUGH_ENABLED");
    response(kSomebody, "PASSTHROUGH_ENABLED", false);
    EXPECT_TRUE(m_server.m_passthroughQuery->check());
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
}

TEST_F(RovanServerCommands, PassthroughIsGrantedByAnySender) {
    for (const int32_t device : {kSomebody, kAccessory, 0, -1}) {
        BenchServer server(m_bus, "SYSTEM_ENV_RERAD");
        server.run();
        auto granted = numberedCommand(8, "PASSTHROUGH_ENABLED");
        granted.header().device_id(device);
        granted.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
        server.cbRsp(granted);
        EXPECT_FALSE(server.m_passthroughQuery->check()) << device;
    }
}

TEST_F(RovanServerCommands, AResponseIsNeverAnsweredAndAServerAtRestDoesNotHearIt) {
    response(kSomebody, "BITSERVER_PING");
    response(kAccessory, "ROVAN_DESTROY");
    EXPECT_THAT(m_server.takeAnswers(), IsEmpty());
    EXPECT_FALSE(m_server.m_zeroize.isPending());

    m_server.m_state = FACE::LCM::Keldra::ReportedState::STOPPED;
    response(kSomebody, "PASSTHROUGH_ENABLED");
    response(kAccessory, "COMPONENT_ZEROIZE_PASS");
    EXPECT_TRUE(m_server.m_passthroughQuery->check());
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
}

// SPDX-License-Identifier: Apache-2.0
// Commands over the bus, and what the real server answers.
#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>

#include "gssip/GssipFrame.h"
#include "simulator/Frame.h"
#include "simulator/ReceiverMessages.h"
#include "tests/end_to_end/Steering.h"

using namespace Simulator;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Commands : public Steering {};

}  // namespace

TEST_F(Commands, ThoseThatNeedNoReceiverAreAnsweredAtOnce) {
    startAndPing();
    EXPECT_EQ(ask("BITSERVER_PING"), "Rovan");
    EXPECT_EQ(ask("ROVAN_DESTROY_STATUS"), "ROVAN_DESTROY_STATUS_FAIL");
    EXPECT_EQ(ask("REQUEST_ANTENNA_STATE"), "CURRENT_ANTENNA_STATE,CRPA,No");
    EXPECT_EQ(ask("QUERY_ROVAN_STATUS"), "CURRENT_ROVAN_STATUS,0");
    EXPECT_EQ(ask("PASSTHROUGH_ENABLED"), "PASSTHROUGH_ENABLED_PASS");
    EXPECT_EQ(ask("REQUEST_PARTNUMBERS"), "PARTNUMBERS");  // nothing known yet
    EXPECT_THAT(newlyHeard(), IsEmpty());
}

TEST_F(Commands, AnAnswerEchoesItsCommandAndIsSignedAndNumbered) {
    startAndPing();
    const auto first = bus().response.samples().back();
    auto command = makeCommand("BITSERVER_PING");
    command.commanded_device_id(0x0399'0000);  // anybody's: every command counts
    bus().command.publish(command);
    ASSERT_FALSE(waitForAnswers(command.command_identifier()).empty());
    const auto answer = bus().response.samples().back();
    EXPECT_EQ(answer.commanded_device_id(), command.header().device_id());
    EXPECT_EQ(answer.command_response_type(), 1u);
    EXPECT_EQ(answer.header().device_id() & 0x00FF'FF00, 0x0027'0200);
    EXPECT_EQ(answer.header().seq_num(), first.header().seq_num() + 1);
}

TEST_F(Commands, TheAnswerWithThePartNumbersHasTopicIdZero) {
    startAndPing();
    const int number = send("REQUEST_PARTNUMBERS");
    ASSERT_FALSE(waitForAnswers(number).empty());
    EXPECT_EQ(bus().response.samples().back().header().device_id() & 0xFF, 0);
}

TEST_F(Commands, TheModeOfTimeShowsInTheAnswerAlready) {
    startAndPing();
    EXPECT_EQ(ask("SYSTEM_MODE_SELECT_SIMULATION"), "SYSTEM_MODE_SELECT_SIMULATION_PASS");
    EXPECT_EQ(bus().response.samples().back().header().timestamp_valid().time_code(), 101u);
    // And in what the receiver's frames become.
    ASSERT_TRUE(waitFor([&] {
        receiver().send(frame8504(1));
        return bus().position.count() > 0;
    }));
    const auto position = bus().position.samples().back().header();
    EXPECT_EQ(position.timestamp_valid().time_code(), 101u);
    EXPECT_EQ(position.timestamp_arrival().time_code(), 101u);
    EXPECT_EQ(ask("SYSTEM_MODE_SELECT_LIVE"), "SYSTEM_MODE_SELECT_LIVE_PASS");
    EXPECT_EQ(bus().response.samples().back().header().timestamp_valid().time_code(), 100u);
}

TEST_F(Commands, WhatIsNoCommandIsNotAnswered) {
    startAndPing();
    const auto before = bus().response.count();
    for (const char* text : {"", "bitserver_ping", "BITSERVER_PING ", " BITSERVER_PING",
                             "BITSERVER_PING,1", "POSTCOMPLETE", "NO_SUCH_COMMAND"}) {
        send(text);
    }
    auto response = makeCommand("BITSERVER_PING");
    response.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    bus().command.publish(response);
    settle();
    EXPECT_EQ(bus().response.count(), before + 1);
    EXPECT_THAT(newlyHeard(), IsEmpty());
}

TEST_F(Commands, AModeCommandIsAnsweredWhenTheLinkKnows) {
    startAndPing();
    receiver().delayAck(std::chrono::milliseconds(100), 1, 5001);
    const int standby = send("ROVAN_SET_STANDBY");
    settle();
    EXPECT_THAT(answersTo(standby), IsEmpty());
    EXPECT_THAT(waitForAnswers(standby), ElementsAre("ROVAN_SET_STANDBY_ACK"));
    EXPECT_EQ(ask("ROVAN_SET_CONT"), "ROVAN_SET_CONT_ACK");
    EXPECT_THAT(newlyHeard(), ElementsAre("5001/9000 mode 5", "5001/9000 mode 1"));
    receiver().reject(1, 5001);
    EXPECT_EQ(ask("ROVAN_SET_STANDBY"), "ROVAN_SET_STANDBY_NACK");
}

TEST_F(Commands, WhoAskedForTheAntennaIsToldWhenItChanges) {
    // Without 9225: the many events that it brings leave no room in the reporter for others.
    m_deployment.setServer("PARAM_7", "9405");
    startAndPing();
    ASSERT_TRUE(waitForEvent("Rovan started successfully."));
    const int number = send("REQUEST_ANTENNA_STATE");
    EXPECT_THAT(waitForAnswers(number), ElementsAre("CURRENT_ANTENNA_STATE,CRPA,No"));
    receiver().changeReports(
        [](ReceiverReports& reports) { reports.connection.serialCableDisconnected = true; });
    EXPECT_THAT(waitForAnswers(number, 2),
                ElementsAre("CURRENT_ANTENNA_STATE,CRPA,No", "CURRENT_ANTENNA_STATE,CRPA,Yes"));
    receiver().changeReports(
        [](ReceiverReports& reports) { reports.connection.serialCableDisconnected = false; });
    EXPECT_EQ(waitForAnswers(number, 3).back(), "CURRENT_ANTENNA_STATE,CRPA,No");
    EXPECT_TRUE(waitForEvent("ZELM_SERIAL_CABLE_CONNECTED"));
    const auto maintenance = bus().maintenance.samples();
    ASSERT_FALSE(maintenance.empty());
    EXPECT_STREQ(maintenance.front().identity().data(), "AJ_Com_Fail");
    EXPECT_STREQ(maintenance.front().description().data(),
                 "Failed to get a BIT response from the AJ");
    EXPECT_EQ(maintenance.front().criticality_id(), 4);
    EXPECT_EQ(maintenance.front().outcome_id(), 3);
    EXPECT_EQ(maintenance.front().location_id(), 39);
    EXPECT_EQ(maintenance.front().category_id(), 7);
    EXPECT_TRUE(waitForEvent("Rovan[2456]:Failed to get a BIT response from the AJ"));
}

TEST_F(Commands, EachFaultOfAReportIsARecordAndAnEventInItsOrder) {
    startAndPing();
    ASSERT_TRUE(waitForEvent("Rovan started successfully."));
    const auto before = bus().eventTexts().size();
    ConnectionReport report;
    report.fpgaTurnOnFailed = true;
    report.clockTurnOnFailed = true;
    report.cableLost = true;
    report.invalidFpgaSignal = true;
    report.clockFailed = true;
    report.serialCableDisconnected = true;
    receiver().send(makeFrame(9405, Gssip::kFlagFrameMarker, message9405(report)));

    const struct {
        const char* identity;
        std::string description;
    } faults[] = {{"FPGA_POWER_FAIL", "FPGA failed to turn on"},
                  {"BCI_POWER_FAIL", "FPGA Failed to derive clock frequency from BCI input"},
                  {"ST_CABLE_LOSS", "The Cable Equalizer does not detect a valid signal"},
                  {"INVLD_FPGA_SIG", "FPGA is not receiving a valid signal"},
                  {"ST_BCI_CLK_FAIL", "Dorvel not operating on clock derived from BCI signal"},
                  {"AJ_Com_Fail", "Failed to get a BIT response from the AJ"}};
    ASSERT_TRUE(waitFor([&] { return bus().maintenance.count() >= std::size(faults); }));
    ASSERT_TRUE(waitForEvent("Rovan[2456]:" + faults[5].description));
    const auto records = bus().maintenance.samples();
    ASSERT_EQ(records.size(), std::size(faults));
    auto events = bus().eventTexts();
    events.erase(events.begin(), events.begin() + static_cast<std::ptrdiff_t>(before));
    ASSERT_EQ(events.size(), 3 + std::size(faults));
    EXPECT_EQ(events[0],
              "BCI Connection Failures: BCI_ST_FPGA_TURN_ON_FAIL BCI_ST_BCI_CLOCK_TRUN_FAIL "
              "BCI_ST_CABLE_LOSS BCI_ST_INVLD_FPGA_SIG BCI_ST_BCI_CLK_FAIL \n");
    EXPECT_THAT(events[1], testing::EndsWith("]:ZELM_BCI_CABLE_DISCONNECTED"));
    EXPECT_THAT(events[2], testing::EndsWith("]:ZELM_SERIAL_CABLE_DISCONNECTED"));
    const int sources[][2] = {{1, 4}, {2, 0}, {2, 16}, {1, 16}};  // unit, component
    for (std::size_t i = 0; i < std::size(faults); ++i) {
        SCOPED_TRACE(faults[i].identity);
        EXPECT_STREQ(records[i].identity().data(), faults[i].identity);
        EXPECT_EQ(records[i].description().data(), faults[i].description);
        EXPECT_EQ(records[i].repeat_in_seconds(), 0);
        for (std::size_t source = 0; source < std::size(sources); ++source) {
            EXPECT_EQ(records[i].fault_sources()[source].lru_id(), sources[source][0]);
            EXPECT_EQ(records[i].fault_sources()[source].component_id(), sources[source][1]);
        }
        EXPECT_EQ(events[3 + i], "Rovan[2456]:" + faults[i].description);
    }
}

TEST_F(Commands, TheReradModeIsThatOfTheReceiversReport) {
    startAndPing();
    ConnectionReport report;
    for (const bool rerad : {true, false}) {
        report.rerad = rerad;
        receiver().send(makeFrame(9405, Gssip::kFlagFrameMarker, message9405(report)));
        const std::string status = rerad ? "CURRENT_ROVAN_STATUS,1" : "CURRENT_ROVAN_STATUS,0";
        EXPECT_TRUE(waitFor([&] { return ask("QUERY_ROVAN_STATUS") == status; }));
        const std::string event = rerad ? "Rovan Rerad mode ENABLED" : "Rovan Rerad mode DISABLED";
        EXPECT_TRUE(waitFor([&] { return bus().eventTexts().back() == event; }));
    }
}

TEST_F(Commands, AfterTheFirstBuiltInTestAFaultyReceiverAsksForAnother) {
    m_deployment.setServer("Debug", "TRUE");
    startAndPing();
    send("FIRST_BBIT_DONE");
    settle();
    EXPECT_THAT(BusListener::texts(bus().command), testing::Not(Contains("REQUEST_CBIT")));
    EXPECT_TRUE(waitForEvent("RovanCBIT Cmded, Not RcvrFail8504, Not Fault9405"));

    ConnectionReport report;
    report.fpgaTurnOnFailed = true;
    receiver().send(makeFrame(9405, Gssip::kFlagFrameMarker, message9405(report)));
    ASSERT_TRUE(waitForEvent("Rovan[2456]:FPGA failed to turn on"));
    send("FIRST_BBIT_DONE");
    EXPECT_TRUE(waitFor([&] {
        const auto commands = BusListener::texts(bus().command);
        return std::find(commands.begin(), commands.end(), "REQUEST_CBIT") != commands.end();
    }));
    EXPECT_TRUE(waitForEvent("RovanCBIT Cmded, Not RcvrFail8504, Fault9405"));
    settle();  // publishing a command from within the listener of commands holds nothing up
}

TEST_F(Commands, ThePartNumbersAreThoseThatTheReceiverReported) {
    m_deployment.setServer("PARAM_6", "9225");
    startAndPing();
    std::string answer;
    EXPECT_TRUE(waitFor([&] {
        answer = ask("REQUEST_PARTNUMBERS");
        return answer.find("SIM-") != std::string::npos ||
               answer.find("100-1002-001") != std::string::npos;
    })) << answer;
}

TEST_F(Commands, WhateverIsPendingEachCommandIsAnsweredAsItShould) {
    // The receiver's events are not connected, so that a zeroize stays pending.
    startAndPing();
    const auto answers = [&](const std::string& text, const std::string& answer) {
        const int number = send(text);
        settle();
        if (answer.empty()) {
            EXPECT_THAT(answersTo(number), IsEmpty()) << text;
        } else {
            EXPECT_THAT(waitForAnswers(number), ElementsAre(answer)) << text;
        }
    };
    const auto answersOfTheOthers = [&](const std::string& builtInTest) {
        answers("SYSTEM_MODE_SELECT_SIMULATION", "SYSTEM_MODE_SELECT_SIMULATION_PASS");
        answers("SYSTEM_MODE_SELECT_LIVE", "SYSTEM_MODE_SELECT_LIVE_PASS");
        answers("ROVAN_DESTROY_STATUS", "ROVAN_DESTROY_STATUS_FAIL");
        answers("REQUEST_ANTENNA_STATE", "CURRENT_ANTENNA_STATE,CRPA,No");
        answers("QUERY_ROVAN_STATUS", "CURRENT_ROVAN_STATUS,0");
        answers("ROVAN_SET_STANDBY", "ROVAN_SET_STANDBY_ACK");
        answers("ROVAN_SET_CONT", "ROVAN_SET_CONT_ACK");
        answers("REQUEST_COMPONENT_CBIT", builtInTest);
        answers("REQUEST_PARTNUMBERS", "PARTNUMBERS");
        answers("PASSTHROUGH_ENABLED", "PASSTHROUGH_ENABLED_PASS");
        answers("POSTCOMPLETE", "");
        answers("FIRST_BBIT_DONE", "");
    };
    answers("ROVAN_CV_ZEROIZE", "ROVAN_CV_ZEROIZE_ACK");
    answers("ROVAN_CV_ZEROIZE", "");
    answersOfTheOthers("REQUEST_COMPONENT_CBIT_NACK");
    answers("ROVAN_ZEROIZE", "ROVAN_ZEROIZE_ACK");
    answers("ROVAN_CV_ZEROIZE", "");
    answers("ROVAN_ZEROIZE", "");
    answersOfTheOthers("REQUEST_COMPONENT_CBIT_NACK");
    answers("ROVAN_DESTROY", "");
    answers("ROVAN_DESTROY", "ROVAN_DESTROY_NACK");
    answers("ROVAN_CV_ZEROIZE", "");
    answers("ROVAN_ZEROIZE", "");
    EXPECT_TRUE(terminate().good());
}

TEST_F(Commands, DuringABuiltInTestTheOthersAreAnsweredAndASecondIsNot) {
    startAndPing();
    const auto begin = std::chrono::steady_clock::now();
    const int bit = send("REQUEST_COMPONENT_CBIT");
    settle();
    const int second = send("REQUEST_COMPONENT_CBIT");
    EXPECT_EQ(ask("ROVAN_SET_STANDBY"), "ROVAN_SET_STANDBY_ACK");
    EXPECT_EQ(ask("ROVAN_CV_ZEROIZE"), "ROVAN_CV_ZEROIZE_ACK");
    EXPECT_EQ(ask("ROVAN_ZEROIZE"), "ROVAN_ZEROIZE_ACK");
    // No word from the accessory: ten seconds, not four.
    EXPECT_THAT(answersTo(bit), IsEmpty());
    EXPECT_THAT(waitForAnswers(bit), ElementsAre("REQUEST_COMPONENT_CBIT_ACK"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_THAT(answersTo(second), IsEmpty());
    EXPECT_TRUE(terminate().good());
}

TEST_F(Commands, AFloodIsSurvivedAndPingsAreAnsweredAsBefore) {
    startAndPing();
    // More than the link and the bus's history can hold: 5000 commands in a second, and every now
    // and then a text without end.
    const std::string huge(10'000, 'A');
    const char* const texts[] = {"BITSERVER_PING",
                                 "ROVAN_SET_STANDBY",
                                 "QUERY_ROVAN_STATUS",
                                 "ROVAN_CV_ZEROIZE",
                                 "ROVAN_ZEROIZE",
                                 "REQUEST_PARTNUMBERS",
                                 "FIRST_BBIT_DONE",
                                 "ROVAN_DESTROY",
                                 "UNKNOWN",
                                 ""};
    constexpr int kBursts = 1000;
    auto due = std::chrono::steady_clock::now();
    for (int burst = 0; burst < kBursts; ++burst) {
        for (std::size_t i = 0; i < 50; ++i) {
            send(texts[i % std::size(texts)]);
        }
        send(huge);
        due += std::chrono::milliseconds(10);
        std::this_thread::sleep_until(due);
    }
    EXPECT_TRUE(waitFor([&] {
        return !waitForAnswers(send("BITSERVER_PING"), 1, std::chrono::seconds(1)).empty();
    }));
    // The link works off what it holds before it takes a new command.
    EXPECT_TRUE(waitFor([&] {
        const int number = send("ROVAN_SET_CONT");
        return !waitForAnswers(number, 1, std::chrono::seconds(1)).empty();
    }));
    EXPECT_TRUE(terminate().good());
}

TEST_F(Commands, AtARateThatTheBusHoldsEachCommandIsAnsweredOnce) {
    startAndPing();
    std::vector<int> numbers;
    for (int i = 0; i < 200; ++i) {
        numbers.push_back(send("BITSERVER_PING"));
        // One at a time, as its answer comes: what the bus keeps is never exceeded.
        ASSERT_EQ(waitForAnswers(numbers.back()).size(), 1u);
    }
    settle();
    for (const int number : numbers) {
        EXPECT_EQ(answersTo(number).size(), 1u);
    }
}

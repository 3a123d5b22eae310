// SPDX-License-Identifier: Apache-2.0
// The receiver's frames at the server's single switch point: which it takes, and what each does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/RovanServer/BenchServer.h"
#include "tests/RovanServer/RovanProcessorBus.h"

using processor_test::Frame;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const Frame& frame) {
    return frame.sample().data();
}

Bytes versions() {
    return bytesOf(Frame(9225, 416)
                       .word(298, 1)  // boot flag
                       .text(346, "B-PAP")
                       .text(362, "B-PSP")
                       .text(386, "FPGA-1")
                       .text(394, "HW-1")
                       .text(402, "BSL-1")
                       .text(410, "FCM-1"));
}
Bytes zeroizeStatus(unsigned status) {
    return bytesOf(Frame(5404, 60).word(5, status << 4));
}
/// The event's text is "HI"; two characters stand in a word, the first one high.
Bytes event(unsigned id) {
    return bytesOf(Frame(5044, 21).word(4, id).word(5, 'H' << 8 | 'I'));
}
Bytes serialCableDisconnected() {
    return bytesOf(Frame(9405, 104).word(27, 1));
}
Bytes navigation(bool receiverFails) {
    return bytesOf(Frame(8504, 200).word(48, receiverFails ? 0x0010 : 0));
}
Bytes operatingMode(unsigned mode) {
    return bytesOf(Frame(5040, 88).word(49, mode));
}
Bytes dataTransfer(bool underWay) {
    return bytesOf(Frame(5042, 100).word(48, underWay ? 2 : 0));
}

class RovanServerSupervision : public testing::Test {
  protected:
    RovanServerSupervision() { m_server.run(); }

    std::string ask(const std::string& text) {
        m_server.takeAnswers();
        m_server.cbCmd(numberedCommand(3, text));
        const auto answers = m_server.takeAnswers();
        return answers.empty() ? "no answer" : answers[0];
    }
    std::string partNumbers() { return ask("REQUEST_PARTNUMBERS"); }

    ServerBus m_bus;
    BenchServer m_server{m_bus};
};

const char* const kNoPartNumbers = "PARTNUMBERS to 3";
const char* const kPartNumbers =
    "PARTNUMBERS,SW1:BSL-1,FW1:FPGA-1,HWPN1:HW-1,HWSN1:FCM-1,OS1:B-PAP,OS2:B-PSP to 3";

// Frames that are taken as the first num_bytes of their sample's data, and how that shows.
struct Taken {
    const char* name;
    Bytes (*frame)();
    std::function<bool(BenchServer&)> isTaken;
};

const std::vector<Taken>& takenFrames() {
    static const std::vector<Taken> frames = {
        {"9225", versions,
         [](BenchServer& server) {
             return server.m_versionStatus.createMessage() != "PARTNUMBERS";
         }},
        {"9405", serialCableDisconnected,
         [](BenchServer& server) { return server.m_supervision.hasFault(); }},
        {"5404", [] { return zeroizeStatus(0); },
         [](BenchServer& server) { return server.m_zeroize.isIpDataClear(); }},
        {"5044", [] { return event(17); },
         [](BenchServer& server) { return !server.takeDone().empty(); }},
        {"8504", [] { return navigation(true); },
         [](BenchServer& server) { return server.m_rovanProcessor->getCurrentRcvrFail(); }},
        {"5040", [] { return operatingMode(4); },
         [](BenchServer& server) { return server.m_rovanProcessor->getOpMode() == 4; }},
        {"5042", [] { return dataTransfer(true); },
         [](BenchServer& server) { return server.m_rovanProcessor->getIsDtsCom1(); }},
    };
    return frames;
}

}  // namespace

TEST_F(RovanServerSupervision, AFrameIsWhatItsSampleSaysItHolds) {
    for (const Taken& taken : takenFrames()) {
        SCOPED_TRACE(taken.name);
        const auto size = static_cast<int32_t>(taken.frame().size());
        const struct {
            int32_t claimed;
            std::size_t held;
            bool isTaken;
        } samples[] = {
            {size, taken.frame().size(), true},
            // What stands behind the frame is not of it.
            {size, taken.frame().size() + 1, true},
            {size, taken.frame().size() + 2, true},
            {size, taken.frame().size() + 1000, true},
            // The frame's bytes are all there, but the sample says that it holds others.
            {size - 2, taken.frame().size(), false},
            {size + 2, taken.frame().size() + 2, false},
            {10, taken.frame().size(), false},
            {0, taken.frame().size(), false},
            {-1, taken.frame().size(), false},
            // It says more than it has.
            {size, taken.frame().size() - 2, false},
            {size + 1, taken.frame().size(), false},
            {0x7FFF'FFFF, taken.frame().size(), false},
        };
        for (const auto& made : samples) {
            BenchServer server(m_bus);
            server.run();
            Bytes bytes = taken.frame();
            bytes.resize(made.held);
            auto sample = BenchServer::sampleOf(bytes);
            sample.num_bytes(made.claimed);
            server.cbGssip(sample);
            EXPECT_EQ(taken.isTaken(server), made.isTaken)
                << made.claimed << " bytes claimed of " << made.held;
        }
    }
}

TEST_F(RovanServerSupervision, AServerAtRestTakesNoFrame) {
    for (const Taken& taken : takenFrames()) {
        BenchServer server(m_bus);
        server.receive(taken.frame());
        EXPECT_FALSE(taken.isTaken(server)) << taken.name;
    }
}

TEST_F(RovanServerSupervision, SamplesWithoutAMessageIdAndUnknownIdsAreDropped) {
    for (std::size_t size = 0; size < 4; ++size) {
        m_server.receive(Bytes(size, 0xFF));
    }
    for (unsigned id = 0; id <= 0xFFFF; ++id) {
        switch (id) {
            case 8:
            case 253:
            case 5040:
            case 5042:
            case 5044:
            case 5047:
            case 5048:
            case 5404:
            case 7270:
            case 8040:
            case 8080:
            case 8504:
            case 9225:
            case 9391:
            case 9405:
            case 9409:
            case 30409:
                continue;
            default:
                m_server.receive(
                    {0xFF, 0x81, static_cast<uint8_t>(id), static_cast<uint8_t>(id >> 8)});
        }
    }
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
    EXPECT_THAT(m_server.takeAnswers(), IsEmpty());
}

TEST_F(RovanServerSupervision, TheVersionRecordBecomesThePartNumbers) {
    EXPECT_EQ(partNumbers(), kNoPartNumbers);
    m_server.receive(versions());
    EXPECT_EQ(partNumbers(), kPartNumbers);
}

TEST_F(RovanServerSupervision, OfAVersionTheLastWordCounts) {
    m_server.receive(bytesOf(Frame(9225, 416).text(402, "REV A 12").text(410, "FCM 77")));
    // An empty field leaves the last word of its label.
    EXPECT_EQ(partNumbers(),
              "PARTNUMBERS,SW1:12,FW1:FPGA_HPN:,HWPN1:HW_Version:,HWSN1:77,OS1:PAP_Boot_HPN:,"
              "OS2:PSP_Boot_HPN: to 3");
}

TEST_F(RovanServerSupervision, TheZeroizeStatusIsToldInDebugAndRemembered) {
    const struct {
        unsigned status;
        const char* line;
        const char* answer;
    } reports[] = {
        {3, "5404, is IP Clear Complete: 0\n", "ROVAN_DESTROY_STATUS_FAIL to 3"},
        {2, "5404, is IP Clear Complete: 0\n", "ROVAN_DESTROY_STATUS_FAIL to 3"},
        {0, "5404, is IP Clear Complete: 2\n", "ROVAN_DESTROY_STATUS_PASS to 3"},
        {3, "5404, is IP Clear Complete: 2\n", "ROVAN_DESTROY_STATUS_PASS to 3"},
        {2, "5404, is IP Clear Complete: 2\n", "ROVAN_DESTROY_STATUS_PASS to 3"},
        {1, "5404, is IP Clear Complete: 4\n", "ROVAN_DESTROY_STATUS_FAIL to 3"},
        {3, "5404, is IP Clear Complete: 4\n", "ROVAN_DESTROY_STATUS_FAIL to 3"},
    };
    for (const auto& report : reports) {
        SCOPED_TRACE(report.status);
        m_server.m_configuration.debug = true;
        CaptureStdout();
        m_server.receive(zeroizeStatus(report.status));
        EXPECT_EQ(GetCapturedStdout(), report.line);
        m_server.m_configuration.debug = false;
        CaptureStdout();
        EXPECT_EQ(ask("ROVAN_DESTROY_STATUS"), report.answer);
        m_server.receive(zeroizeStatus(report.status));
        EXPECT_EQ(GetCapturedStdout(), "");
    }
}

TEST_F(RovanServerSupervision, AnEventIsReportedAndInDebugTold) {
    CaptureStdout();
    m_server.receive(event(99));
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_THAT(m_server.takeDone(), ElementsAre("event 2 5044,ID:,99,HI"));
    m_server.m_configuration.debug = true;
    CaptureStdout();
    m_server.receive(event(65535));
    EXPECT_EQ(GetCapturedStdout(), "5044,ID:,65535,HI\n");
    EXPECT_THAT(m_server.takeDone(), ElementsAre("event 2 5044,ID:,65535,HI"));
}

TEST_F(RovanServerSupervision, AnEventOfAnotherServersLinkIsNotOurs) {
    m_server.cbCmd(numberedCommand(3, "ROVAN_ZEROIZE"));
    auto sample = BenchServer::sampleOf(event(17));
    sample.header().device_id(0x0328'2E00);  // server 40
    m_server.cbGssip(sample);
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
    EXPECT_TRUE(m_server.m_zeroize.isPending());
    // Of the device id it is the server alone that counts.
    sample.header().device_id(static_cast<int32_t>(0xFF27'FFFF));
    m_server.cbGssip(sample);
    EXPECT_THAT(m_server.takeDone(), ElementsAre("event 2 5044,ID:,17,HI"));
    EXPECT_THAT(m_server.takeAnswers(), ElementsAre("COMPONENT_ZEROIZE_PASS to 3"));
}

TEST_F(RovanServerSupervision, ADestroyIsDrivenByTheFramesAlone) {
    m_server.cbCmd(numberedCommand(3, "ROVAN_DESTROY"));
    m_server.m_zeroize.handleZeroize(0);
    m_server.receive(versions());
    m_server.receive(zeroizeStatus(2));
    EXPECT_EQ(m_server.m_zeroize.getIPZstate(), eIPZ_WaitOnConnects);
    // Each event is a pass of its own.
    m_server.receive(event(1));
    EXPECT_EQ(m_server.m_zeroize.getIPZstate(), eIPZ_CommandEZero);
    m_server.m_zeroize.handleZeroize(0);
    m_server.receive(event(17));
    m_server.m_zeroize.handleZeroize(0);
    m_server.receive(event(34));
    EXPECT_EQ(m_server.m_zeroize.getIPZstate(), eIPZ_ReportSuccess);
    m_server.m_zeroize.handleZeroize(0);
    EXPECT_THAT(m_server.takeAnswers(), ElementsAre("COMPONENT_DESTROY_PASS to 3"));
    EXPECT_THAT(m_server.takeQueued(), ElementsAre("connect 9225, tracked", "connect 5044, tracked",
                                                   "connect 5404, tracked", "connect 9225, tracked",
                                                   "connect 5044, tracked", "connect 5404, tracked",
                                                   "5001 mode 7, tracked", "5402, tracked"));
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 2 5044,ID:,1,HI", "event 2 5044,ID:,17,HI",
                            "event 2 Emergency Zeroize Success", "event 2 5044,ID:,34,HI",
                            "event 2 IP Zeroize Success"));
}

TEST_F(RovanServerSupervision, ReportsThatCannotBeReadHaveComeAllTheSame) {
    m_server.cbCmd(numberedCommand(3, "ROVAN_DESTROY"));
    m_server.m_zeroize.handleZeroize(0);
    m_server.receive(versions());
    m_server.receive(bytesOf(Frame(5404, 59)));
    m_server.receive(bytesOf(Frame(5044, 20)));
    m_server.m_zeroize.handleZeroize(0);
    // Without the status that asks for it there is no emergency zeroize.
    EXPECT_EQ(m_server.m_zeroize.getIPZstate(), eIPZ_CommandIPZ);
}

TEST_F(RovanServerSupervision, AVersionRecordThatCannotBeReadHasNotCome) {
    m_server.cbCmd(numberedCommand(3, "ROVAN_DESTROY"));
    m_server.m_zeroize.handleZeroize(0);
    m_server.receive(bytesOf(Frame(9225, 415)));
    m_server.receive(zeroizeStatus(2));
    m_server.receive(event(1));
    m_server.m_zeroize.handleZeroize(0);
    EXPECT_EQ(m_server.m_zeroize.getIPZstate(), eIPZ_WaitOnConnects);
}

TEST_F(RovanServerSupervision, DuringABuiltInTestReportsFromBeforeTheRestartAreNotTaken) {
    m_server.m_bit.begin(numberedCommand(2, "REQUEST_COMPONENT_CBIT"));
    m_server.m_bit.enterThread();
    m_server.receive(navigation(true));
    EXPECT_FALSE(m_server.m_rovanProcessor->getCurrentRcvrFail());
    m_server.receive(bytesOf(Frame(8, 4)));
    m_server.receive(navigation(true));
    EXPECT_TRUE(m_server.m_rovanProcessor->getCurrentRcvrFail());
}

TEST_F(RovanServerSupervision, OnlyABuiltInTestForgetsALostBciCable) {
    const std::string latched = "event 3 ZELM_BCI_CABLE_DISCONNECTED";
    m_server.receive(bytesOf(Frame(9405, 104).word(26, 4)));
    EXPECT_THAT(m_server.takeDone(),
                ElementsAre("event 2 BCI Connection Failures: BCI_ST_CABLE_LOSS \n", latched,
                            "fault ST_CABLE_LOSS"));
    m_server.receive(bytesOf(Frame(9405, 104)));
    EXPECT_THAT(m_server.takeDone(), ElementsAre(latched));
    // Even one that is not over.
    m_server.m_bit.begin(numberedCommand(2, "REQUEST_COMPONENT_CBIT"));
    m_server.receive(bytesOf(Frame(9405, 104)));
    EXPECT_THAT(m_server.takeDone(), ElementsAre(latched));
    m_server.m_bit.handleCommandedBIT();
    m_server.receive(bytesOf(Frame(9405, 104)));
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
    EXPECT_TRUE(m_server.m_bit.isRunning());
}

TEST_F(RovanServerSupervision, DuringABuiltInTestTheReradModeIsNotTakenOver) {
    const Bytes rerad = bytesOf(Frame(9405, 104).word(86, 0x4000));
    m_server.m_bit.begin(numberedCommand(2, "REQUEST_COMPONENT_CBIT"));
    m_server.receive(rerad);
    EXPECT_EQ(ask("QUERY_ROVAN_STATUS"), "CURRENT_ROVAN_STATUS,0 to 3");
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
    m_server.wait(std::chrono::seconds(181));
    m_server.m_bit.handleCommandedBIT();
    m_server.takeDone();
    m_server.receive(rerad);
    EXPECT_EQ(ask("QUERY_ROVAN_STATUS"), "CURRENT_ROVAN_STATUS,1 to 3");
    EXPECT_THAT(m_server.takeDone(), ElementsAre("config event Rovan Rerad mode ENABLED"));
}

TEST_F(RovanServerSupervision, AFaultOfEitherReportAsksForABuiltInTestAfterTheFirst) {
    const struct {
        Bytes frame;
        bool asks;
    } reports[] = {{navigation(false), false},
                   {bytesOf(Frame(9405, 104)), false},
                   {navigation(true), true},
                   {serialCableDisconnected(), true}};
    for (const auto& report : reports) {
        BenchServer server(m_bus);
        server.run();
        server.receive(report.frame);
        server.cbCmd(numberedCommand(3, "FIRST_BBIT_DONE"));
        EXPECT_EQ(server.takeCommands() == std::vector<std::string>{"REQUEST_CBIT"}, report.asks);
    }
    // A fault of 9405 is remembered, one of 8504 is over with the next report.
    m_server.receive(navigation(true));
    m_server.receive(navigation(false));
    m_server.cbCmd(numberedCommand(3, "FIRST_BBIT_DONE"));
    EXPECT_THAT(m_server.takeCommands(), IsEmpty());
    m_server.receive(serialCableDisconnected());
    m_server.receive(bytesOf(Frame(9405, 104)));
    m_server.cbCmd(numberedCommand(3, "FIRST_BBIT_DONE"));
    EXPECT_THAT(m_server.takeCommands(), ElementsAre("REQUEST_CBIT"));
}

TEST_F(RovanServerSupervision, ReportsOfATransferBringTheReceiverBack) {
    const auto ticks = [this](int count) {
        for (int second = 0; second < count; ++second) {
            m_server.m_timeDataTransfer->tick();
        }
    };
    m_server.receive(operatingMode(4));
    m_server.receive(dataTransfer(false));
    ticks(6);
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
    m_server.receive(dataTransfer(true));
    ticks(6);
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
    m_server.receive(dataTransfer(false));
    ticks(4);
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
    ticks(1);
    EXPECT_THAT(m_server.takeQueued(), ElementsAre("5001 mode 1"));
    m_server.receive(operatingMode(0));
    ticks(11);
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
}

TEST_F(RovanServerSupervision, ForwardsListedFramesOfTheQueueOnlyWhileItRuns) {
    const auto forward = [](BenchServer& server, const Bytes& frame) {
        server.cbGssipPassthrough(BenchServer::sampleOf(frame));
        return server.takeQueued();
    };
    m_server.m_passthroughMessages = {6000};
    EXPECT_THAT(forward(m_server, bytesOf(Frame(6000, 3))), ElementsAre("6000"));
    EXPECT_THAT(forward(m_server, bytesOf(Frame(6001, 3))), IsEmpty());
    m_server.m_passthroughMessages = {};
    EXPECT_THAT(forward(m_server, bytesOf(Frame(6000, 3))), IsEmpty());
    BenchServer atRest(m_bus);
    atRest.m_passthroughMessages = {6000};
    EXPECT_THAT(forward(atRest, bytesOf(Frame(6000, 3))), IsEmpty());
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
}

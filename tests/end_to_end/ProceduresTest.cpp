// SPDX-License-Identifier: Apache-2.0
// The procedures of several steps, at real speed: what is seen on the wire, on the bus, at the
// power switches and on the console, and in which order.
#include <algorithm>
#include <filesystem>
#include <thread>

#include "gssip/GssipFrame.h"
#include "simulator/Frame.h"
#include "tests/end_to_end/Steering.h"

using namespace Simulator;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class Procedures : public Steering {
  protected:
    std::vector<std::string> devmemCalls() { return m_unit->devmem().calls(); }

    /// When the server sent that frame to the receiver.
    std::chrono::steady_clock::time_point timeHeard(uint16_t msgId, unsigned mode) {
        for (const HeardFrame& entry : heardFrames()) {
            if (entry.frame.msgId() == msgId && entry.frame.data(4) == mode) {
                return entry.at;
            }
        }
        ADD_FAILURE() << msgId << " mode " << mode << " was never sent";
        return {};
    }
};

const std::vector<std::string> kPowerOff{"0x4000045C 32 1", "0x40000460 32 0"};
const std::vector<std::string> kPowerOffAndOn{"0x4000045C 32 1", "0x40000460 32 0",
                                              "0x40000460 32 1", "0x4000045C 32 0"};

}  // namespace

TEST_F(Procedures, CvZeroizeAndZeroizeAreAcknowledgedAndThenAnsweredByTheReceiversEvent) {
    m_deployment.setServer("PARAM_7", "5044");
    startAndPing();
    const int cv = send("ROVAN_CV_ZEROIZE");
    EXPECT_THAT(waitForAnswers(cv, 2),
                ElementsAre("ROVAN_CV_ZEROIZE_ACK", "ROVAN_CV_ZEROIZE_PASS"));
    const int zeroize = send("ROVAN_ZEROIZE");
    EXPECT_THAT(waitForAnswers(zeroize, 2),
                ElementsAre("ROVAN_ZEROIZE_ACK", "COMPONENT_ZEROIZE_PASS"));
    EXPECT_THAT(newlyHeard(), ElementsAre("5001/9000 mode 8", "5001/9000 mode 7"));
    EXPECT_TRUE(waitForEvent("5044,ID:,3,CV ZEROIZE COMPLETE"));
    EXPECT_TRUE(waitForEvent("5044,ID:,17,EMERGENCY ZEROIZE COMPLETE"));
}

TEST_F(Procedures, AZeroizeThatNothingIsHeardOfIsCommandedAgainAfterElevenSeconds) {
    m_deployment.setServer("PARAM_7", "5044");
    startAndPing();
    const auto letCvZeroize = [this](ZeroizeOutcome outcome) {
        receiver().changeReports(
            [outcome](ReceiverReports& reports) { reports.cvZeroize = outcome; });
    };
    letCvZeroize(ZeroizeOutcome::Silence);
    const int cv = send("ROVAN_CV_ZEROIZE");
    EXPECT_THAT(waitForAnswers(cv), ElementsAre("ROVAN_CV_ZEROIZE_ACK"));
    letCvZeroize(ZeroizeOutcome::Success);
    // The second command is the server's own: the link's result is nobody's answer.
    EXPECT_THAT(waitForAnswers(cv, 2),
                ElementsAre("ROVAN_CV_ZEROIZE_ACK", "ROVAN_CV_ZEROIZE_PASS"));
    EXPECT_THAT(newlyHeard(), ElementsAre("5001/9000 mode 8", "5001/9000 mode 8"));
    std::vector<std::chrono::steady_clock::time_point> times;
    for (const HeardFrame& entry : heardFrames()) {
        if (entry.frame.msgId() == 5001 && entry.frame.data(4) == 8) {
            times.push_back(entry.at);
        }
    }
    ASSERT_EQ(times.size(), 2u);
    // Counted from the command, whose frame takes a moment to the receiver.
    EXPECT_GE(times[1] - times[0], std::chrono::milliseconds(10'500));
    EXPECT_LE(times[1] - times[0], std::chrono::seconds(14));
}

TEST_F(Procedures, AZeroizeFailsWhenTheReceiverSaysSoWithItsDataClear) {
    m_deployment.setServer("PARAM_7", "5044");
    startAndPing();
    receiver().changeReports([](ReceiverReports& reports) {
        reports.emergencyZeroize = ZeroizeOutcome::Failure;
        reports.ipZeroizeStatus = 0;
    });
    const int zeroize = send("ROVAN_ZEROIZE");
    // Each failure has the command sent again, as long as there may be data left.
    ASSERT_TRUE(waitFor([&] {
        const auto frames = heard();
        return std::count(frames.begin(), frames.end(), "5001/9000 mode 7") >= 3;
    }));
    EXPECT_THAT(answersTo(zeroize), ElementsAre("ROVAN_ZEROIZE_ACK"));
    receiver().sendReport(5404);
    EXPECT_THAT(waitForAnswers(zeroize, 2),
                ElementsAre("ROVAN_ZEROIZE_ACK", "COMPONENT_ZEROIZE_FAIL"));
    EXPECT_EQ(ask("ROVAN_DESTROY_STATUS"), "ROVAN_DESTROY_STATUS_PASS");
    EXPECT_EQ(ask("ROVAN_ZEROIZE"), "ROVAN_ZEROIZE_NACK");
    EXPECT_THAT(newlyHeard(), testing::Each("5001/9000 mode 7"));
}

TEST_F(Procedures, DestroyErasesEverythingAndSaysSo) {
    // The first 9225 fills the reporter with what the receiver is made of, and events that come on
    // top are lost: let it come, and go, before.
    m_deployment.setServer("PARAM_6", "9225");
    startAndPing();
    ASSERT_TRUE(waitForEvent("GPS FCM_ID: SIM00001"));
    const int destroy = send("ROVAN_DESTROY");
    // Nobody answers a destroy before it is done, and a second one is refused.
    EXPECT_EQ(ask("ROVAN_DESTROY"), "ROVAN_DESTROY_NACK");
    const int cv = send("ROVAN_CV_ZEROIZE");
    const int zeroize = send("ROVAN_ZEROIZE");
    EXPECT_EQ(ask("REQUEST_COMPONENT_CBIT"), "REQUEST_COMPONENT_CBIT_NACK");
    // The receiver reports an event only after it was asked for one.
    ASSERT_TRUE(waitForHeard("5404/9040"));
    receiver().sendEvent(1, "SOME EVENT");
    EXPECT_THAT(waitForAnswers(destroy), ElementsAre("COMPONENT_DESTROY_PASS"));
    EXPECT_THAT(newlyHeard(),
                ElementsAre("9225/9040", "5044/9040", "5404/9040", "9225/9040", "5044/9040",
                            "5404/9040", "5001/9000 mode 7", "5402/9000"));
    EXPECT_THAT(answersTo(cv), IsEmpty());
    EXPECT_THAT(answersTo(zeroize), IsEmpty());
    EXPECT_TRUE(waitForEvent("Emergency Zeroize Success"));
    EXPECT_TRUE(waitForEvent("IP Zeroize Success"));
    EXPECT_THAT(devmemCalls(), IsEmpty());
    // The receiver has reported that its data is clear.
    EXPECT_EQ(ask("ROVAN_DESTROY_STATUS"), "ROVAN_DESTROY_STATUS_PASS");
    EXPECT_EQ(ask("ROVAN_CV_ZEROIZE"), "ROVAN_CV_ZEROIZE_NACK");
}

TEST_F(Procedures, ADestroyWhoseIpZeroizeFailsSaysSoAndTheNextOneIsTaken) {
    m_deployment.setServer("PARAM_6", "9225");
    startAndPing();
    ASSERT_TRUE(waitForEvent("GPS FCM_ID: SIM00001"));
    receiver().changeReports(
        [](ReceiverReports& reports) { reports.ipZeroize = ZeroizeOutcome::Failure; });
    const int destroy = send("ROVAN_DESTROY");
    ASSERT_TRUE(waitForHeard("5404/9040"));
    receiver().sendEvent(1, "SOME EVENT");
    EXPECT_THAT(waitForAnswers(destroy), ElementsAre("COMPONENT_DESTROY_FAIL"));
    EXPECT_TRUE(waitFor([&] {
        const auto events = bus().eventTexts();
        return std::any_of(events.begin(), events.end(), [](const std::string& event) {
            return event.find("]:Failed to IP Zeroize") != std::string::npos;
        });
    }));
    EXPECT_EQ(ask("ROVAN_DESTROY_STATUS"), "ROVAN_DESTROY_STATUS_FAIL");
    newlyHeard();

    receiver().changeReports([](ReceiverReports& reports) {
        reports.ipZeroize = ZeroizeOutcome::Success;
        reports.ipZeroizeStatus = 2;  // with any other the emergency zeroize is left out
    });
    const int again = send("ROVAN_DESTROY");
    ASSERT_TRUE(waitForHeard("5404/9040"));
    receiver().sendEvent(1, "SOME EVENT");
    EXPECT_THAT(waitForAnswers(again), ElementsAre("COMPONENT_DESTROY_PASS"));
}

TEST_F(Procedures, ACommandedBuiltInTestSwitchesThePowerAndJudgesTheFirstReportAfterwards) {
    letReceiverReport();
    startAndPing();
    const auto begin = std::chrono::steady_clock::now();
    const int bit = send("REQUEST_COMPONENT_CBIT");
    settle();
    const int second = send("REQUEST_COMPONENT_CBIT");
    sendAsAccessory("REQUEST_COMPONENT_CBIT_PASS");
    EXPECT_THAT(waitForAnswers(bit), ElementsAre("REQUEST_COMPONENT_CBIT_ACK"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
    EXPECT_THAT(waitForAnswers(bit, 2),
                ElementsAre("REQUEST_COMPONENT_CBIT_ACK", "REQUEST_COMPONENT_CBIT_PASS"));
    ASSERT_TRUE(waitForHeard("5001/9000 mode 1"));
    EXPECT_THAT(newlyHeard(), ElementsAre("5001/9000 mode 0", "5001/9000 mode 1"));
    EXPECT_EQ(devmemCalls(), kPowerOffAndOn);
    EXPECT_THAT(answersTo(second), IsEmpty());
    EXPECT_TRUE(waitForEvent("ROVAN Commanded BIT complete"));

    // The power was off for eleven seconds, give or take a look at the register.
    const auto changes = m_unit->power().changes().entries();
    ASSERT_EQ(changes.size(), 4u);
    const auto off = changes[2].seen - changes[1].seen;
    EXPECT_GE(off, std::chrono::milliseconds(10'500));
    EXPECT_LE(off, std::chrono::milliseconds(13'000));
    EXPECT_LT(changes[3].seen, timeHeard(5001, 0));

    // Reports flow again, and the next command of the kind is taken.
    const auto count = bus().position.count();
    EXPECT_TRUE(waitFor([&] { return bus().position.count() > count; }));
    EXPECT_TRUE(terminate().good());
}

TEST_F(Procedures, AStopDuringTheBuiltInTestLeavesItUnansweredAndThePowerAsItIs) {
    startAndPing();
    const int bit = send("REQUEST_COMPONENT_CBIT");
    sendAsAccessory("REQUEST_COMPONENT_CBIT_FAIL");
    EXPECT_THAT(waitForAnswers(bit), ElementsAre("REQUEST_COMPONENT_CBIT_ACK"));
    ASSERT_TRUE(waitFor([&] { return devmemCalls().size() == 2; }));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(terminate().good());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kLongestStop);
    EXPECT_THAT(answersTo(bit), ElementsAre("REQUEST_COMPONENT_CBIT_ACK"));
    EXPECT_EQ(devmemCalls(), kPowerOff);
}

TEST_F(Procedures, AStopDuringADestroyLeavesItUnanswered) {
    startAndPing();
    const int destroy = send("ROVAN_DESTROY");
    ASSERT_TRUE(waitForHeard("5404/9040"));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(terminate().good());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kLongestStop);
    EXPECT_THAT(answersTo(destroy), IsEmpty());
}

class SanitizeOutcome : public Procedures, public testing::WithParamInterface<const char*> {};

TEST_P(SanitizeOutcome, ShutsTheServerDownWithThePowerOffFirst) {
    startAndPing();
    sendAsAccessory(GetParam());
    const ProcessEnd end = waitForEnd();
    EXPECT_TRUE(end.good()) << end.text();
    EXPECT_EQ(devmemCalls(), kPowerOff);
    EXPECT_FALSE(m_unit->power().receiverPowered());
    const auto lines = output();
    EXPECT_THAT(lines, Contains("ROVAN server shutting down after ZELM sanitize complete"));
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "!!!!!! " + serverProgram().string() + " has exited. Signal: 15");
}

INSTANTIATE_TEST_SUITE_P(Procedures, SanitizeOutcome,
                         testing::Values("COMPONENT_ZEROIZE_PASS", "COMPONENT_ZEROIZE_FAIL",
                                         "ZELM,COMPONENT_ZEROIZE_FAIL,7"),
                         [](const auto& outcome) { return std::to_string(outcome.index); });

// The process goes on for up to a second, and in that second the test would have ended the
// receiver's time without power.
TEST_F(Procedures, ASanitizeThatEndsWhileABuiltInTestHasThePowerOffLeavesItOff) {
    startAndPing();
    send("REQUEST_COMPONENT_CBIT");
    sendAsAccessory("REQUEST_COMPONENT_CBIT_PASS");
    ASSERT_TRUE(waitFor([&] { return m_unit->power().changes().entries().size() == 2; }));
    const auto off = m_unit->power().changes().entries()[1].seen;
    std::this_thread::sleep_until(off + std::chrono::milliseconds(10'700));
    sendAsAccessory("COMPONENT_ZEROIZE_PASS");
    const ProcessEnd end = waitForEnd();
    EXPECT_TRUE(end.good()) << end.text();
    const auto calls = devmemCalls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(std::vector(calls.begin(), calls.begin() + 2), kPowerOff);
    EXPECT_EQ(std::vector(calls.begin() + 2, calls.end()), kPowerOff);
    EXPECT_FALSE(m_unit->power().receiverPowered());
}

TEST_F(Procedures, AnotherServersSanitizingIsNoReasonToShutDown) {
    startAndPing();
    CommandResponse response = makeCommand("COMPONENT_ZEROIZE_PASS");
    response.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    bus().response.publish(response);
    settle();
    EXPECT_THAT(devmemCalls(), IsEmpty());
    EXPECT_TRUE(terminate().good());
}

TEST_F(Procedures, InARecoverySetupTheServerAsksForPassthroughUntilItIsGranted) {
    m_deployment.setSystem("Environment", "SYSTEM_ENV_RERAD");
    startAndPing();
    // This setup goes on behind the standby command, up to the second port of the pulse.
    ASSERT_TRUE(waitFor([&] { return heard().size() >= 5; }));
    newlyHeard();
    EXPECT_EQ(ask("QUERY_ROVAN_STATUS"), "CURRENT_ROVAN_STATUS,1");
    const auto queries = [&] {
        const auto texts = BusListener::texts(bus().command);
        return std::count(texts.begin(), texts.end(), "QUERY_PASSTHROUGH_STATE");
    };
    ASSERT_TRUE(waitFor([&] { return queries() >= 2; }));
    EXPECT_THAT(newlyHeard(), IsEmpty());
    CommandResponse granted = makeCommand("PASSTHROUGH_ENABLED");
    granted.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    bus().response.publish(granted);
    ASSERT_TRUE(waitForHeard("5001/9000 mode 1"));
    EXPECT_THAT(newlyHeard(), ElementsAre("5001/9000 mode 64", "5001/9000 mode 1"));
    const auto asked = queries();
    settle();
    EXPECT_EQ(queries(), asked);
}

TEST_F(Procedures, AfterABuiltInTestInARecoverySetupTheReceiverIsToldOfPassthroughAgain) {
    m_deployment.setSystem("Environment", "SYSTEM_ENV_RERAD");
    m_deployment.setServer("PARAM_7", "8504");
    startAndPing();
    EXPECT_EQ(ask("PASSTHROUGH_ENABLED"), "PASSTHROUGH_ENABLED_PASS");
    ASSERT_TRUE(waitForHeard("5001/9000 mode 1"));
    newlyHeard();
    const auto queries = [&] {
        const auto texts = BusListener::texts(bus().command);
        return std::count(texts.begin(), texts.end(), "QUERY_PASSTHROUGH_STATE");
    };
    const auto before = queries();

    const int bit = send("REQUEST_COMPONENT_CBIT");
    settle();
    sendAsAccessory("REQUEST_COMPONENT_CBIT_PASS");
    ASSERT_EQ(waitForAnswers(bit, 2).size(), 2u);
    EXPECT_EQ(answersTo(bit).back(), "REQUEST_COMPONENT_CBIT_PASS");
    ASSERT_TRUE(waitForHeard("5001/9000 mode 64"));
    std::vector<std::string> frames;
    ASSERT_TRUE(waitFor([&] {
        for (const std::string& frame : newlyHeard()) {
            frames.push_back(frame);
        }
        return frames.size() >= 4;
    }));
    // The end of the test and the thread that asks for passthrough do not wait for each other.
    EXPECT_EQ(frames.front(), "5001/9000 mode 0");
    EXPECT_THAT(frames, testing::UnorderedElementsAre("5001/9000 mode 0", "5001/9000 mode 1",
                                                      "5001/9000 mode 64", "5001/9000 mode 1"));
    EXPECT_EQ(queries(), before + 1);
}

TEST_F(Procedures, OutsideARecoverySetupNobodyIsAskedForPassthrough) {
    startAndPing();
    const auto threads = [&] {
        const std::filesystem::directory_iterator tasks("/proc/" + std::to_string(server().pid()) +
                                                        "/task");
        return std::distance(begin(tasks), end(tasks));
    };
    // The periodic thread ends after its first second; nothing else starts or ends here.
    const auto before = threads();
    waitFor([&] { return threads() < before; }, std::chrono::seconds(2));
    EXPECT_THAT(BusListener::texts(bus().command), Not(Contains("QUERY_PASSTHROUGH_STATE")));
}

TEST_F(Procedures, AFrameOnTheQueueGoesToTheReceiverIfItsIdIsListed) {
    m_deployment.setServer("PARAM_8", "5040,5313");
    startAndPing();
    Words words(10);
    words[3] = 0x1234;
    for (const uint16_t id : {uint16_t{5041}, uint16_t{5313}}) {
        EXPECT_TRUE(m_unit->queues().passThrough(makeFrame(id, Gssip::kFlagFrameMarker, words)));
    }
    ASSERT_TRUE(waitForHeard("5313/8000"));
    EXPECT_THAT(newlyHeard(), ElementsAre("5313/8000"));
}

TEST_F(Procedures, AFrameThatIsPassedThroughGoesOutAsItIsAndAgainWithoutItsAck) {
    m_deployment.setServer("PARAM_8", "5313");
    startAndPing();
    Words words(10);
    words[3] = 0x1234;
    words[9] = 0xFEDC;
    const Bytes frame = makeFrame(5313, Gssip::kFlagsTypedMessage, words);
    receiver().dropAck(1, 5313);
    EXPECT_TRUE(m_unit->queues().passThrough(frame));
    ASSERT_TRUE(waitFor([&] {
        const auto frames = heard();
        return std::count(frames.begin(), frames.end(), "5313/9000") >= 2;
    }));
    settle();
    EXPECT_THAT(newlyHeard(), ElementsAre("5313/9000", "5313/9000"));
    for (const HeardFrame& entry : heardFrames()) {
        if (entry.frame.msgId() == 5313) {
            EXPECT_EQ(entry.frame.bytes, frame);
        }
    }
}

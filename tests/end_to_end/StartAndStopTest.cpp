// SPDX-License-Identifier: Apache-2.0
// The server's life on the unit: what it sends to the receiver and to the bus when it starts, and
// how it ends.
#include <sched.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <set>

#include "gssip/GssipFrame.h"
#include "tests/end_to_end/EndToEnd.h"

using namespace Simulator;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

// The server's device ids: system TessalyPlus (3), server 39, message code, sub id 0.
constexpr int kEventLogDevice = 0x03270100;
constexpr int kCommandDevice = 0x03270200;

class StartAndStop : public EndToEnd {
  protected:
    std::string lastLine() { return output().empty() ? "" : output().back(); }

    static std::string lastLineFor(int signal) {
        return "!!!!!! " + serverProgram().string() +
               " has exited. Signal: " + std::to_string(signal);
    }
};

class EachSignal : public StartAndStop, public testing::WithParamInterface<int> {};

/// A line of /proc/<pid>/status, such as "SigCgt".
std::string statusLine(pid_t pid, const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name + ":", 0) == 0) {
            return line.substr(name.size() + 2);
        }
    }
    return {};
}

}  // namespace

TEST_F(StartAndStop, SendsTheReceiversSetupInItsOrder) {
    m_deployment.setServer("PARAM_6", "9225,abc,5404");
    m_deployment.setServer("PARAM_7", "8504,,253,0");
    startAndWait();
    // The line speed goes first, outside the link's protocol.
    EXPECT_THAT(heard(),
                ElementsAre("5331/9000 valid 49152 port 0", "0/9020", "5331/9000 valid 512 port 0",
                            "5331/9000 valid 512 port 15", "9225/9010", "5404/9010", "8504/9040",
                            "253/9040", "5001/9000 mode 1"));
}

TEST_F(StartAndStop, SetsUpARedundantPortFirst) {
    m_deployment.setServer("PARAM_5", "TRUE");
    startAndWait();
    EXPECT_EQ(heard().front(), "5331/9000 valid 128 port 2");
}

TEST_F(StartAndStop, InARecoverySetupTheReceiverStaysInStandby) {
    m_deployment.setSystem("Environment", "SYSTEM_ENV_RERAD");
    startAndWait();
    ASSERT_TRUE(waitFor([&] { return heard().size() >= 5; }));
    EXPECT_THAT(heard(), ElementsAre("5331/9000 valid 49152 port 0", "0/9020", "5001/9000 mode 5",
                                     "5331/9000 valid 512 port 0", "5331/9000 valid 512 port 15"));
    ASSERT_TRUE(waitFor([&] { return bus().events.count() >= 4; }));
    EXPECT_THAT(bus().eventTexts(), Contains("Rovan Rerad mode ENABLED"));
}

TEST_F(StartAndStop, KeepsOneFrameInFlightDuringTheSetup) {
    m_deployment.setServer("PARAM_7", "253,8504,9225,9391,9405");
    startUnit();
    receiver().delayAck(milliseconds(40), 100);
    ASSERT_TRUE(waitUntilStarted());

    const auto sent = heardFrames();
    const auto said = receiver().ledger().said().entries();
    ASSERT_EQ(sent.size(), 10u);
    // The first was sent before the link's protocol ran.
    for (std::size_t i = 2; i < sent.size(); ++i) {
        const HeardFrame& before = sent[i - 1];
        const auto answered = std::find_if(said.begin(), said.end(), [&](const SaidFrame& frame) {
            return frame.msgId() == before.frame.msgId() && frame.at > before.at &&
                   (frame.flags() & Gssip::kFlagAck) != 0;
        });
        ASSERT_NE(answered, said.end());
        EXPECT_LT(answered->at, sent[i].at) << heard()[i];
    }
}

TEST_F(StartAndStop, ReportsItsConfigurationAndThenItsStart) {
    startAndWait();
    ASSERT_TRUE(waitFor([&] { return bus().events.count() >= 4; }));
    EXPECT_THAT(bus().eventTexts(),
                ElementsAre("//aspn://Tessaly/Rovan:2024-09-18T13:48:46Z/",
                            StartsWith("Rovan HPN: 100-2000-300B  "), "Rovan Rerad mode DISABLED",
                            "Rovan started successfully."));
    for (const auto& event : bus().events.samples()) {
        EXPECT_EQ(event.event_log_type(), 2u);
        EXPECT_EQ(event.header().device_id(), kEventLogDevice);
    }
    EXPECT_THAT(output(), Contains(bus().eventTexts()[1]));
}

TEST_F(StartAndStop, SaysOnTheBusThatItHasStarted) {
    startAndWait();
    ASSERT_EQ(bus().command.count(), 1u);
    const auto command = bus().command.samples().front();
    EXPECT_EQ(command.command_response(), "SERVER_STARTED");
    EXPECT_EQ(command.command_response_type(), 0u);
    EXPECT_EQ(command.commanded_device_id(), 0);
    EXPECT_EQ(command.command_identifier(), 0);
    EXPECT_EQ(command.header().seq_num(), 0);
    EXPECT_EQ(command.header().device_id(), kCommandDevice);
}

TEST_F(StartAndStop, PowerIsNotSwitched) {
    startAndWait();
    EXPECT_TRUE(terminate().good());
    EXPECT_THAT(m_unit->power().changes().entries(), IsEmpty());
}

TEST_P(EachSignal, EndsTheServerInAnOrderlyWay) {
    startAndWait();
    ASSERT_TRUE(waitFor([&] { return bus().events.count() >= 4; }));
    const auto asked = steady_clock::now();
    const ProcessEnd end = terminate(GetParam());
    EXPECT_LT(steady_clock::now() - asked, kLongestStop);
    EXPECT_TRUE(end.good()) << end.text();
    EXPECT_EQ(lastLine(), lastLineFor(GetParam()));
    EXPECT_THAT(errors(), IsEmpty());
    // Of the stop the bus hears an event at most.
    EXPECT_EQ(bus().command.count(), 1u);
    EXPECT_EQ(bus().response.count(), 0u);
}

INSTANTIATE_TEST_SUITE_P(StartAndStop, EachSignal, testing::Values(SIGTERM, SIGINT, SIGFPE));

TEST_F(StartAndStop, CatchesNineSignalsAndNoOther) {
    startAndWait();
    std::uint64_t expected = 0;
    for (const int signal :
         {SIGQUIT, SIGILL, SIGABRT, SIGBUS, SIGTERM, SIGTRAP, SIGSYS, SIGFPE, SIGINT}) {
        expected |= std::uint64_t{1} << (signal - 1);
    }
    // What the sanitizers or the C library's threads catch for themselves is not ours.
    constexpr std::uint64_t kOurs = 0x7FFFFFFF & ~(std::uint64_t{1} << (SIGSEGV - 1));
    ASSERT_TRUE(waitFor([&] {
        const std::string caught = statusLine(server().pid(), "SigCgt");
        return !caught.empty() && (std::stoull(caught, nullptr, 16) & kOurs) == expected;
    })) << statusLine(server().pid(), "SigCgt");
}

TEST_F(StartAndStop, ASignalDuringTheBringUpKills) {
    startUnit();
    // The link's set-up takes seconds; its first frame is out.
    ASSERT_TRUE(waitFor([&] { return !heard().empty(); }));
    const ProcessEnd end = terminate();
    EXPECT_TRUE(end.bySignal);
    EXPECT_EQ(end.code, SIGTERM);
}

TEST_F(StartAndStop, RunsWithThePriorityAndOnTheProcessorOfItsConfiguration) {
    sched_param lowest{};
    lowest.sched_priority = 1;
    const bool mayBeRealtime = sched_setscheduler(0, SCHED_FIFO, &lowest) == 0;
    const sched_param ordinary{};
    ASSERT_EQ(sched_setscheduler(0, SCHED_OTHER, &ordinary), 0);
    if (mayBeRealtime) {
        m_deployment.setServer("PRI", "3");
    }
    m_deployment.setServer("CPU", "1");
    startAndWait();

    cpu_set_t processors;
    ASSERT_EQ(sched_getaffinity(server().pid(), sizeof(processors), &processors), 0);
    EXPECT_EQ(CPU_COUNT(&processors), 1);
    EXPECT_TRUE(CPU_ISSET(0, &processors));
    EXPECT_THAT(output(), Contains("Successfully set Rovan cpu affinity to 1"));
    if (mayBeRealtime) {
        sched_param inForce{};
        ASSERT_EQ(sched_getparam(server().pid(), &inForce), 0);
        EXPECT_EQ(sched_getscheduler(server().pid()), SCHED_FIFO);
        EXPECT_EQ(inForce.sched_priority, 3);
        EXPECT_THAT(output(), Contains("Successfully set Rovan realtime process priority to 3"));
    }
}

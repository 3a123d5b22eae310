// SPDX-License-Identifier: Apache-2.0
// What is wrong with the unit or its files ends the start with a line that says what, and with the
// exception that nobody catches.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include "simulator/PrivateDev.h"
#include "tests/end_to_end/EndToEnd.h"

using namespace Simulator;
namespace fs = std::filesystem;

namespace {

class FailedStart : public EndToEnd {
  protected:
    /// The unit's devices alone; the server is started by start().
    void makeUnit() {
        UnitOptions options;
        options.configFile = m_deployment.topLevelFile();
        m_unit = std::make_unique<SimulatedUnit>(options);
        m_unit->start();
    }

    /// Starts the server on the unit and expects its end by the uncaught exception, after `line`.
    void expectAbort(const std::string& line) {
        ServerProcess process(serverOptions());
        process.start();
        const auto end = process.waitFor(std::chrono::seconds(30));
        ASSERT_TRUE(end.has_value()) << "the server goes on";
        EXPECT_TRUE(end->bySignal && end->code == SIGABRT) << end->text();
        // The console is read by a thread of its own, which may lag behind the end.
        EXPECT_TRUE(process.console()
                        .waitFor(
                            [&](const ConsoleLine& entry) {
                                return entry.text.size() >= line.size() &&
                                       entry.text.compare(entry.text.size() - line.size(),
                                                          line.size(), line) == 0;
                            },
                            std::chrono::seconds(5))
                        .has_value())
            << "nothing printed ends with " << line;
    }

    ServerProcess::Options serverOptions() {
        ServerProcess::Options options;
        options.program = serverProgram();
        options.argument = m_deployment.topLevelFile().string();
        options.directory = m_deployment.topLevelFile().parent_path();
        return options;
    }
};

/// Runs a shell command and gives its standard output and, after it, its exit status.
std::string shell(const std::string& command) {
    std::FILE* pipe = popen((command + "; echo status $?").c_str(), "r");
    std::string text;
    std::array<char, 256> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), pipe) != nullptr) {
        text += buffer.data();
    }
    pclose(pipe);
    return text;
}

constexpr const char* kConnectFailed = "]:INVALID_CONFIG Framework_Connect() failed";

}  // namespace

TEST_F(FailedStart, AWrongArgumentCountPrintsTheUsage) {
    const std::string program = serverProgram().string();
    const std::string usage = "Usage: " + program + " <top-level-config-file> \nstatus 1\n";
    EXPECT_EQ(shell(program), usage);
    EXPECT_EQ(shell(program + " a b"), usage);
}

TEST_F(FailedStart, AMissingTopLevelFile) {
    makeUnit();
    fs::remove(m_deployment.topLevelFile());
    expectAbort("]:INVALID_CONFIG Configure() failed");
}

TEST_F(FailedStart, AMissingContainerInTheTopLevelFile) {
    makeUnit();
    m_deployment.removeContainer(m_deployment.topLevelFile(), "Keldra");
    expectAbort("]:INVALID_CONFIG Configure() failed");
}

TEST_F(FailedStart, AMissingConnectionsFile) {
    makeUnit();
    fs::remove(m_deployment.connectionsFile());
    expectAbort(kConnectFailed);
}

TEST_F(FailedStart, EachMissingTransportKey) {
    makeUnit();
    int keys = 0;
    for (const char* key : {"DomainId", "HistoryDepth", "UseBestEffort", "BackFillHistory",
                            "UseTransport", "TcpAddress", "TcpPort"}) {
        const KeyRemoved removed(m_deployment.connectionsFile(), "FastRtps", key);
        expectAbort(kConnectFailed);
        ++keys;
    }
    EXPECT_EQ(keys, 7);
}

TEST_F(FailedStart, EachMissingConnectionOfTheServer) {
    makeUnit();
    for (const char* name : {"Command", "Response", "EventLog"}) {
        const ContainerRemoved removed(m_deployment.connectionsFile(), name);
        expectAbort(kConnectFailed);
    }
    for (const char* key : {"TopicType", "PubSubType"}) {
        const KeyRemoved removed(m_deployment.connectionsFile(), "Command", key);
        expectAbort(kConnectFailed);
    }
}

TEST_F(FailedStart, AnUnknownMessageType) {
    makeUnit();
    m_deployment.set(m_deployment.connectionsFile(), "Command", "PubSubType", "NoPubSubType");
    expectAbort(kConnectFailed);
}

TEST_F(FailedStart, EachMissingConnectionOfTheProcessor) {
    makeUnit();
    const std::pair<const char*, const char*> topics[] = {{"UtcDownlink", "utcDownlink"},
                                                          {"PositionVelocity", "pv"},
                                                          {"ReceiverStatus", "rcvrStatus"},
                                                          {"ChannelStatus", "chanStatus"},
                                                          {"GPSTime", "gpsTime"},
                                                          {"UTCTime", "utcTime"},
                                                          {"ChallengedEnvironment", "challEnv"},
                                                          {"GPSCryptoStatus", "gpsCryptoStatus"},
                                                          {"GPSLineOfSight", "gpsLineOfSight"},
                                                          {"SVStatus", "svStatus"}};
    // The link's set-up before it takes a second and a half, so two of them stand for all here;
    // the processor's own tests go through each.
    for (const auto& [topic, label] : {topics[0], topics[9]}) {
        const ContainerRemoved removed(m_deployment.connectionsFile(), topic);
        expectAbort(std::string("]:INVALID_CONFIG RovanProcessor() ") + label + "_rcv");
    }
}

TEST_F(FailedStart, EachMissingKeyOfTheSerialLine) {
    makeUnit();
    for (const char* key : {"ChannelNum", "SerialMode", "Baudrate", "DataBits", "StopBits",
                            "Parity", "FlowControl"}) {
        const KeyRemoved removed(m_deployment.ioDevicesFile(), "Rovan", key);
        expectAbort("]:INVALID_CONFIG Unable to open I/O connection");
    }
}

TEST_F(FailedStart, EachMissingKeyOfTheMemoryBlocks) {
    makeUnit();
    const std::pair<const char*, const char*> blocks[] = {
        {"Processor_Interface", "processor interface"},
        {"Peripheral_Interface", "peripheral interface"},
        {"TimeStamp_Interface", "timestamp interface"},
        {"PpsSlave_Interface", "PPS Slave interface"},
        {"PtpClock_Interface", "PTP Clock interface"},
        {"Ptfe_Interface0", "PTFE 0 interface"},
        {"PulseGen_Interface0", "PulseGen 0 interface"}};
    for (const auto& [block, text] : blocks) {
        for (const char* key : {"BaseAddress", "Size"}) {
            const KeyRemoved removed(m_deployment.ioDevicesFile(), block, key);
            expectAbort(std::string("]:INVALID_CONFIG FpgaFace() FAILED to open ") + text);
        }
    }
}

TEST_F(FailedStart, EachMissingKeyOfTheQueueDevices) {
    makeUnit();
    for (const char* queue : {"ROVAN_KD", "KD_ROVAN"}) {
        const KeyRemoved removed(m_deployment.ioDevicesFile(), queue, "Port");
        expectAbort(kConnectFailed);
    }
}

TEST_F(FailedStart, NoSerialDevice) {
    makeUnit();
    m_unit->line().hangUp();
    expectAbort("]:NO_ACTION Unable to open I/O connection");
}

TEST_F(FailedStart, NoMemoryDevice) {
    makeUnit();
    ASSERT_TRUE(Simulator::PrivateDev::active());
    ASSERT_EQ(unlink("/dev/mem"), 0);
    expectAbort("]:INVALID_MODE FpgaFace() FAILED to read FPGA number of UARTs");
}

TEST_F(FailedStart, AWrongClockRate) {
    makeUnit();
    m_unit->fpga().setClockRate(58'982'401);
    expectAbort(
        "]:INVALID_MODE FpgaFace() FPGA clock rate mismatch, got 58982401, expected 58982400");
}

TEST_F(FailedStart, ACountOfPtfesThatTheFileDoesNotHave) {
    makeUnit();
    m_unit->fpga().setPtfeCount(0xFFFFFFFF);
    expectAbort("interface");
}

TEST_F(FailedStart, AnUnknownTransportEndsWithoutATraceOfHarm) {
    makeUnit();
    m_deployment.set(m_deployment.connectionsFile(), "FastRtps", "UseTransport", "udp");
    ServerProcess process(serverOptions());
    process.start();
    // What becomes of a participant without a transport is the library's: it comes up with nobody
    // to talk to, or the start fails. Either way there is an end in order.
    auto end = process.waitFor(std::chrono::seconds(8));
    if (!end) {
        process.signal(SIGTERM);
        end = process.waitFor(std::chrono::seconds(30));
        ASSERT_TRUE(end.has_value());
        EXPECT_TRUE(end->good()) << end->text();
    } else {
        EXPECT_TRUE(end->bySignal && end->code == SIGABRT) << end->text();
    }
}

TEST_F(FailedStart, AMissingQueueDeviceIsALineAndTheServerRuns) {
    makeUnit();
    ASSERT_TRUE(Simulator::PrivateDev::active());
    const std::string device = "/dev/mcs" + std::to_string(m_unit->deployment().kdRovanPort);
    ASSERT_EQ(unlink(device.c_str()), 0);
    m_bus = std::make_unique<BusListener>(m_deployment.backFilling(m_deployment.connectionsFile()));
    ServerProcess process(serverOptions());
    process.start();
    EXPECT_TRUE(waitFor([&] { return bus().command.count() == 1; }));
    EXPECT_TRUE(process.console()
                    .waitFor(
                        [&](const ConsoleLine& line) {
                            return line.error &&
                                   line.text == "Unable to open output pipe file: " + device;
                        },
                        std::chrono::seconds(5))
                    .has_value());
    process.signal(SIGTERM);
    const auto end = process.waitFor(std::chrono::seconds(30));
    ASSERT_TRUE(end.has_value());
    EXPECT_TRUE(end->good()) << end->text();
}

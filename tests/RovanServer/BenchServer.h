// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "RovanServer/PassthroughQuery.h"
#include "RovanServer/RovanIo.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/TimeDataTransfer.h"
#include "face/KD_SerialPort.h"
#include "ioss_mcsq/GssipMcsq.h"
#include "platform/FPGA.h"
#include "tests/RovanServer/OpenServer.h"
#include "tests/RovanServer/RecordedActions.h"
#include "tests/RovanServer/TemporaryDirectory.h"
#include "tests/face/TransportBus.h"
#include "tests/platform/FakeDevmem.h"
#include "tests/support/OwnBus.h"

// What servers of tests share, and what would take long to make for each: a bus with somebody who
// hears the commands and responses on it, a queue whose device is missing, and an FPGA of registers
// in memory. What a server publishes is heard before its publishing returns.
class ServerBus {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;
    using TypedTS = FACE::TSS::Details::KD_TypedTS<CommandResponse>;

    ServerBus() {
        auto rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        face->Set_Reference("TSS", tss, 0, rc);
        EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);
        command = connect("Command", m_commands, onCommand);
        response = connect("Response", m_responses, onResponse);
        m_devmem->registers["TimeStamp_Interface+0"] = 58'982'400;
        m_devmem->registers["TimeStamp_Interface+8"] = 4;              // UARTs
        m_devmem->registers["TimeStamp_Interface+24"] = 4;             // pulses
        m_devmem->registers["TimeStamp_Interface+128"] = 442'368'000;  // 7.5 s since the start
        FpgaFace::Instance().InitFpga(m_devmem);
        const std::string file = m_directory.write(
            "io.xml",
            "<KD_Configurations><QueuePort><Name>ROVAN_KD</Name><Parameters><Port>1</Port>"
            "</Parameters></QueuePort></KD_Configurations>");
        queue->Connect_IOWrite(
            file.c_str(), "ROVAN_KD", queueConnection, [](const auto&) {}, rc);
        EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);
    }
    ServerBus(const ServerBus&) = delete;
    ServerBus& operator=(const ServerBus&) = delete;
    ~ServerBus() { FpgaFace::Instance().DoneFpga(); }

    std::string connectionsFile() const { return m_file.path(); }

    // Called for each on the thread that delivers it; set them before anything is published.
    using Callback = std::function<void(const CommandResponse&)>;
    Callback onCommand;
    Callback onResponse;

    /// The commands, and the responses, since the last call.
    std::vector<CommandResponse> takeCommands() { return take(m_commands); }
    std::vector<CommandResponse> takeResponses() { return take(m_responses); }

  private:
    const test_support::OwnBus m_number;
    const TemporaryDirectory m_directory;
    const transport_test::ConnectionsFile m_file{
        {{"FastRtps", transport_test::busSettings(m_number.number())},
         {"Command", transport_test::carries("CommandResponse")},
         {"Response", transport_test::carries("CommandResponse")}}};
    const std::shared_ptr<FakeDevmem> m_devmem = std::make_shared<FakeDevmem>();
    std::mutex m_mutex;
    std::vector<CommandResponse> m_commands;
    std::vector<CommandResponse> m_responses;

  public:
    const std::shared_ptr<FACE::TSS::KD_TSS> tss = transport_test::join(m_file, "Rovan");
    const std::shared_ptr<TypedTS> face = std::make_shared<TypedTS>();
    long long command = -1;
    long long response = -1;
    const std::shared_ptr<GssipMcsq> queue = std::make_shared<GssipMcsq>(
        "Rovan", std::vector<unsigned short>{}, m_directory.path("mcs"));
    long long queueConnection = -1;

  private:
    long long connect(const char* name, std::vector<CommandResponse>& heard,
                      const Callback& callback) {
        const long long connection = transport_test::connect(*tss, name);
        auto rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        face->Register_Callback(
            connection,
            [this, &heard, &callback](long long, long long, const CommandResponse& message,
                                      const auto&, const auto&, auto&) {
                {
                    const std::lock_guard<std::mutex> lock(m_mutex);
                    heard.push_back(message);
                }
                if (callback) {
                    callback(message);
                }
            },
            rc);
        EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);
        face->Register_Sender(connection, rc);
        EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);
        return connection;
    }

    std::vector<CommandResponse> take(std::vector<CommandResponse>& from) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(from, {});
    }
};

// A server between bring-up and start, put together without its devices: it takes commands and
// frames when the test hands them to it. None of its threads runs but those that a command or the
// test starts, and these end with the object. The link is not started either, so that what is
// queued for the receiver stays where the test can take it. Its clock stands until the test moves
// it; events, faults and the power's shell commands are only written down.
class BenchServer : public OpenServer {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit BenchServer(ServerBus& bus, const std::string& environment = "SYSTEM_ENV_LIVE")
        : m_bus(bus) {
        m_deviceIdFactory.reset("TessalyPlus", m_serverId);
        m_cmdResponse.reset(m_deviceIdFactory);
        m_connections.command = bus.command;
        m_connections.response = bus.response;
        m_tss = bus.tss;
        m_commandResponseTS = bus.face;
        m_gssipMcsq = bus.queue;
        m_serialPort = std::make_shared<FACE::IOSS::KD_SerialPort>();
        ServerActions& actions = *this;
        m_passthroughQuery = std::make_unique<PassthroughQuery>(actions, environment);
        m_timeDataTransfer = std::make_unique<TimeDataTransfer>(actions, false);
        m_rovanIo =
            std::make_unique<RovanIo>(m_serverName, uint8_t{0}, uint8_t{0}, m_serialPort,
                                      m_gssipMcsq, bus.queueConnection, m_deviceIdFactory, false);
        m_rovanProcessor =
            std::make_unique<RovanProcessor>(m_serverName, m_tss, m_deviceIdFactory, false);
        m_system = [this](const char* command) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_done.push_back(command);
            return 0;
        };
    }
    ~BenchServer() override {
        for (Utility::WorkerThread* thread :
             {&m_serverThread, &m_zeroizeThread, &m_periodicThread, &m_timeDataThread}) {
            thread->requestStop();
        }
        for (Utility::WorkerThread* thread :
             {&m_serverThread, &m_zeroizeThread, &m_periodicThread, &m_timeDataThread}) {
            thread->stop();
        }
    }

    /// From now on it takes commands and frames.
    void run() { m_state = FACE::LCM::Keldra::ReportedState::RUNNING; }

    /// Lets time pass.
    void wait(std::chrono::nanoseconds time) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_now += time;
    }

    /// A frame of the receiver's, as the link delivers it. Nobody looks at its checksums here.
    void receive(const std::vector<uint8_t>& frame) { cbGssip(sampleOf(frame)); }
    static GSSIP sampleOf(const std::vector<uint8_t>& frame) {
        GSSIP sample;
        sample.header().device_id(0x0327'2E00);  // server 39
        sample.num_bytes(static_cast<int32_t>(frame.size()));
        sample.data(frame);
        return sample;
    }

    // What was done since the last call of each.

    /// The responses on the bus: "Rovan to 3", with the number of the command.
    std::vector<std::string> takeAnswers() {
        std::vector<std::string> lines;
        for (const CommandResponse& response : m_bus.takeResponses()) {
            lines.push_back(response.command_response() + " to " +
                            std::to_string(response.command_identifier()));
        }
        return lines;
    }
    /// The texts of its own commands.
    std::vector<std::string> takeCommands() {
        m_commandOutbox.sendPosted();
        std::vector<std::string> lines;
        for (const CommandResponse& command : m_bus.takeCommands()) {
            lines.push_back(command.command_response());
        }
        return lines;
    }
    /// What is queued for the receiver, as RecordedActions describes it; ", answers ..." where the
    /// link's result answers a command, ", tracked" where the zeroize hears of it. With
    /// `linkResult` the link tells its result.
    enum class LinkResult { untold, good, bad };
    std::vector<std::string> takeQueued(LinkResult linkResult = LinkResult::untold) {
        std::vector<std::string> lines;
        RovanIo::MessageQueueItem_t item;
        while (m_rovanIo->messageQueue.pop_front(item, std::chrono::nanoseconds(0))) {
            lines.push_back(RecordedActions::describe(*item.message));
            if (item.commandCallback) {
                lines.back() += ", answers " + item.response.command_response();
                if (linkResult != LinkResult::untold) {
                    item.commandCallback(item.response, linkResult == LinkResult::good);
                }
            }
            if (item.ackCallback) {
                lines.back() += ", tracked";
            }
        }
        return lines;
    }
    /// Events, faults and shell commands: "event 2 ...", "fault IDENTITY", "devmem ...".
    std::vector<std::string> takeDone() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_done, {});
    }
    void forgetAll() {
        takeAnswers();
        takeCommands();
        takeQueued();
        takeDone();
    }

  private:
    void note(const std::string& line) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_done.push_back(line);
    }
    void sendEvent(const char*, int, EventTypes::eEventType type,
                   const std::string& text) override {
        note("event " + std::to_string(static_cast<int>(type)) + " " + text);
    }
    uint32_t replaceConfigEvent(const std::string& text, uint32_t) override {
        note("config event " + text);
        return 1;
    }
    void reportFault(const std::string&, const std::string& identity) override {
        note("fault " + identity);
    }
    TimePoint now() const override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_now;
    }

    ServerBus& m_bus;
    mutable std::mutex m_mutex;
    TimePoint m_now = std::chrono::steady_clock::now();
    std::vector<std::string> m_done;
};

/// A command from server 33 with that number and text.
inline aspn2_msgs::idl::CommandResponse numberedCommand(int number, const std::string& text) {
    aspn2_msgs::idl::CommandResponse command;
    command.header().device_id(0x0321'0200);
    command.command_identifier(number);
    command.command_response(text);
    return command;
}

// SPDX-License-Identifier: Apache-2.0
// Commands and responses of others arrive while all of the server's own threads publish. The bus
// library holds a topic's reader while it calls back, and a topic's writer and then its readers
// while something is published: what a callback publishes, or waits for, can close a circle that
// never opens again.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/RovanServer/BenchServer.h"
#include "utility/ExitWatch.h"

using namespace std::chrono_literals;

namespace {

using CommandResponse = aspn2_msgs::idl::CommandResponse;

constexpr int kMessagesOfEach = 300;
// What takes a few seconds when nothing hangs.
constexpr auto kTimeForEverything = 100s;

// Every text that the server looks at, and one that it does not know. What a pending zeroize or
// test would change comes before those.
const char* const kCommands[] = {
    "FIRST_BBIT_DONE",      "SYSTEM_MODE_SELECT_LIVE", "SYSTEM_MODE_SELECT_SIMULATION",
    "ROVAN_DESTROY_STATUS", "BITSERVER_PING",          "REQUEST_ANTENNA_STATE",
    "QUERY_ROVAN_STATUS",   "ROVAN_SET_STANDBY",       "ROVAN_SET_CONT",
    "REQUEST_PARTNUMBERS",  "PASSTHROUGH_ENABLED",     "POSTCOMPLETE",
    "NO_SUCH_COMMAND",      "REQUEST_COMPONENT_CBIT",  "ROVAN_CV_ZEROIZE",
    "ROVAN_ZEROIZE",        "ROVAN_DESTROY",
};
const char* const kResponses[] = {"REQUEST_COMPONENT_CBIT_PASS", "REQUEST_COMPONENT_CBIT_FAIL",
                                  "PASSTHROUGH_ENABLED",         "COMPONENT_ZEROIZE_PASS",
                                  "COMPONENT_ZEROIZE_FAIL",      "NO_SUCH_RESPONSE"};

constexpr int kFromServer33 = 0x0321'0200;
constexpr int kFromServer47 = 0x032F'0200;

/// A 9405 with the serial cable in or out, in a rerad setup.
std::vector<uint8_t> statusReport(bool serialDisconnected) {
    std::vector<uint8_t> frame(2 * (5 + 104 + 1));
    frame[2] = 9405 & 0xFF;
    frame[3] = 9405 >> 8;
    frame[4] = 104;
    frame[2 * (5 + 27)] = serialDisconnected ? 1 : 0;
    frame[2 * (5 + 86) + 1] = 0x40;
    return frame;
}

// Another server on the bus.
class Other {
  public:
    explicit Other(const std::string& file) {
        auto rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        EXPECT_EQ(transport_test::initialize(*m_tss, file), rc);
        m_command = sender("Command");
        m_response = sender("Response");
    }

    void give(const std::string& text) { send(m_command, text, 0, kFromServer33); }
    void respond(const std::string& text) { send(m_response, text, 1, kFromServer47); }

  private:
    long long sender(const char* name) {
        const long long connection = transport_test::connect(*m_tss, name);
        EXPECT_EQ(m_face.registerSender(connection), FACE::RETURN_CODE_TYPE::NO_ERROR);
        return connection;
    }
    void send(long long connection, const std::string& text, int type, int device) {
        CommandResponse message;
        message.header().device_id(device);
        message.command_response_type(
            static_cast<aspn2_msgs::idl::command_response_type_enum>(type));
        message.command_response(text);
        EXPECT_EQ(m_face.send(connection, message), FACE::RETURN_CODE_TYPE::NO_ERROR);
    }

    const std::shared_ptr<FACE::TSS::KD_TSS> m_tss = std::make_shared<FACE::TSS::KD_TSS>("Other");
    transport_test::Face<CommandResponse> m_face{m_tss};
    long long m_command = -1;
    long long m_response = -1;
};

// How deep a thread is in callbacks. What a callback publishes comes back to its own thread: a
// command from inside any of them, or a response from inside that of a response, is half of a
// circle even where nothing hangs.
class Depth {
  public:
    explicit Depth(int& depth) : m_depth(depth) { ++m_depth; }
    ~Depth() { --m_depth; }

  private:
    int& m_depth;
};
thread_local int commandsDeep = 0;
thread_local int responsesDeep = 0;

// Runs each of some pieces of work over and over, on a thread of its own, until the end.
class Turmoil {
  public:
    ~Turmoil() {
        m_ended = true;
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }
    void add(std::function<void()> work) {
        m_threads.emplace_back([this, again = std::move(work)] {
            while (!m_ended) {
                again();
            }
        });
    }

  private:
    std::atomic<bool> m_ended{false};
    std::vector<std::thread> m_threads;
};

}  // namespace

TEST(BusDeadlock, NothingThatArrivesMeetsAThreadThatPublishesForEver) {
    const Utility::ExitWatch watchdog(kTimeForEverything, [] {
        std::fputs("the server hangs\n", stderr);
        std::_Exit(EXIT_FAILURE);
    });
    // A finished sanitize ends the process with it.
    std::signal(SIGTERM, SIG_IGN);
    testing::internal::CaptureStdout();
    ServerBus bus;
    BenchServer server(bus, "SYSTEM_ENV_RERAD");
    std::atomic<int> answers{0};
    std::atomic<int> nested{0};
    bus.onCommand = [&](const CommandResponse& message) {
        nested += commandsDeep + responsesDeep;
        const Depth depth(commandsDeep);
        server.cbCmd(message);
    };
    bus.onResponse = [&](const CommandResponse& message) {
        nested += responsesDeep;
        const Depth depth(responsesDeep);
        answers += message.command_response() == "Rovan" ? 1 : 0;
        server.cbRsp(message);
    };
    Other other(bus.connectionsFile());
    server.run();
    server.receive(statusReport(true));  // a known fault
    server.m_commandOutbox.start();

    {
        Turmoil turmoil;
        turmoil.add([&] { server.m_passthroughQuery->check(); });  // the periodic thread
        turmoil.add([&] { server.m_zeroize.handleZeroize(0); });   // the zeroize thread
        turmoil.add([&, turn = 0]() mutable {                      // the read thread
            server.receive(statusReport(++turn % 2 == 0));
        });
        turmoil.add([&] {  // the protocol thread
            server.ackMessageCallback(numberedCommand(1, "ROVAN_SET_STANDBY"), true);
        });
        turmoil.add([&] {  // the queues of what happened must not grow for ever
            server.takeDone();
            bus.takeCommands();
            bus.takeResponses();
            std::this_thread::sleep_for(1ms);
        });
        const auto isAnswered = [&] {
            const int before = answers;
            return transport_test::eventually([&] {
                other.give("BITSERVER_PING");
                return answers > before;
            });
        };
        ASSERT_TRUE(isAnswered());
        // Each on two threads: those that deliver what arrives are not always one and the same.
        const auto both = [](const std::function<void()>& work) {
            std::thread second(work);
            work();
            second.join();
        };
        for (const char* command : kCommands) {
            both([&] {
                for (int i = 0; i < kMessagesOfEach; ++i) {
                    other.give(command);
                    other.respond(kResponses[static_cast<size_t>(i) % std::size(kResponses)]);
                }
            });
        }
        EXPECT_TRUE(isAnswered());
    }
    server.m_commandOutbox.stop();
    EXPECT_EQ(nested, 0);
    testing::internal::GetCapturedStdout();
}

// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

#include "aspn2_msgs/CommandResponse.h"
#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/ScreenProgram.h"
#include "tests/tools/TestPublisher.h"
#include "tests/tools/WatchSamples.h"

// The live view of the real program.
namespace {

using namespace tools_test;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::chrono::seconds kSoon{30};
const std::string kUp = "\x1bOA";

class Watch : public ::testing::Test {
  protected:
    std::string connections() const {
        return m_directory.file("connections.xml", connectionsXml(m_domain.number(), "UDP"));
    }

    const test_support::OwnBus m_domain;
    TemporaryDirectory m_directory;
};

// A server that publishes again and again, until the end.
class BusyServer {
  public:
    explicit BusyServer(const std::string& file)
        : m_server(file, "Rovan"),
          m_positions(m_server.publisher<idl::PositionVelocity>("PositionVelocity")),
          m_receivers(m_server.publisher<idl::ReceiverStatus>("ReceiverStatus")),
          m_events(m_server.publisher<idl::EventLog>("EventLog")) {
        m_server.subscribe<idl::CommandResponse>("Command", [this](const auto& command) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_commands.push_back(command.command_response());
        });
        m_thread = std::thread([this] { run(); });
    }
    ~BusyServer() {
        m_stops = true;
        m_thread.join();
    }

    void fallSilent() { m_silent = true; }
    std::vector<std::string> commands() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_commands;
    }

  private:
    void run() {
        for (int64_t number = 0; !m_stops; ++number) {
            if (!m_silent) {
                auto place = position();
                place.header().seq_num(number);
                m_positions.publish(place);
                auto status = receiver();
                status.header().seq_num(number);
                m_receivers.publish(status);
                auto text = event("number " + std::to_string(number));
                text.header().seq_num(number);
                m_events.publish(text);
            }
            std::this_thread::sleep_for(milliseconds(100));
        }
    }

    TestServer m_server;
    TestServer::Publisher<idl::PositionVelocity> m_positions;
    TestServer::Publisher<idl::ReceiverStatus> m_receivers;
    TestServer::Publisher<idl::EventLog> m_events;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_commands;
    std::atomic<bool> m_stops{false};
    std::atomic<bool> m_silent{false};
    std::thread m_thread;
};

TEST_F(Watch, ShowsWhatIsOnTheBusOn80By24) {
    const std::string file = connections();
    const BusyServer server(file);
    ScreenProgram program({"watch", "-c", file}, 80, 24);

    EXPECT_TRUE(program.shows(" lat   0.785398163   45.0000000 deg")) << program.screen().text();
    EXPECT_TRUE(program.shows(" satellites used   8  available  11"));
    EXPECT_TRUE(program.shows("EVT error: number "));
    EXPECT_TRUE(program.shows("q quit"));
    EXPECT_THAT(program.screen().line(0),
                StartsWith("rovan-bus watch  UDP, domain " + std::to_string(m_domain.number())));
    EXPECT_THAT(program.screen().line(23), StartsWith("q quit  ? help  c command"));
    EXPECT_EQ(program.screen().unknown(), 0);
    EXPECT_FALSE(program.isRestored());

    program.type("?");
    EXPECT_TRUE(program.shows("any key closes this"));
    program.type(" 3");
    EXPECT_TRUE(program.shows("samples  missing  from")) << program.screen().text();
    program.type("q");
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(program.isRestored());
}

TEST_F(Watch, FollowsTheSizeOfTheTerminal) {
    const std::string file = connections();
    const BusyServer server(file);
    ScreenProgram program({"watch", "-c", file}, 132, 43);

    // The last line is the 43rd, and the clock stands at the right.
    EXPECT_TRUE(program.shows("samples  missing  from")) << program.screen().text();
    EXPECT_TRUE(program.shows("q quit"));
    EXPECT_THAT(program.screen().line(42), StartsWith("q quit"));
    EXPECT_EQ(program.screen().line(0).substr(128), " UTC");

    program.resize(80, 24);
    EXPECT_TRUE(program.shows("q quit  ? help")) << program.screen().text();
    EXPECT_TRUE(program.shows("LINK Hz, ! stale, # gaps")) << program.screen().text();
    EXPECT_TRUE(program.shows("q quit"));
    EXPECT_THAT(program.screen().line(23), StartsWith("q quit"));
    program.resize(30, 8);
    EXPECT_TRUE(program.shows("POSITION")) << program.screen().text();
    program.type("q");
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Watch, MarksWhatHasStopped) {
    const std::string file = connections();
    BusyServer server(file);
    ScreenProgram program({"watch", "-c", file}, 80, 24);
    ASSERT_TRUE(program.shows("45.0000000 deg"));
    EXPECT_THAT(program.screen().text(), Not(HasSubstr("STALE")));
    server.fallSilent();
    EXPECT_TRUE(program.shows("POSITION                   STALE ")) << program.screen().text();
}

TEST_F(Watch, SendsACommandOnceItIsConfirmed) {
    const std::string file = connections();
    const BusyServer server(file);
    ScreenProgram program({"watch", "-c", file}, 80, 24);
    ASSERT_TRUE(program.shows("45.0000000 deg"));

    program.type("c");
    ASSERT_TRUE(program.shows("BITSERVER_PING"));
    program.type("\r");
    ASSERT_TRUE(program.shows("Send BITSERVER_PING ?"));
    program.type("n");
    ASSERT_TRUE(program.shows("nothing was sent"));
    program.type("c\r");
    ASSERT_TRUE(program.shows("Send BITSERVER_PING ?"));
    EXPECT_THAT(server.commands(), IsEmpty());
    program.type("y");
    EXPECT_TRUE(waitUntil([&] { return !server.commands().empty(); }, kSoon));
    program.type("4");
    EXPECT_TRUE(program.shows("SND sent BITSERVER_PING, identifier ")) << program.screen().text();
    EXPECT_TRUE(program.shows("CMD rovan-bus: BITSERVER_PING (identifier "));
    EXPECT_TRUE(program.shows("SND every subscriber has confirmed it"));
    program.type("q");
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(server.commands(), ::testing::ElementsAre("BITSERVER_PING"));
}

TEST_F(Watch, SendsADangerousCommandOnlyForTheWord) {
    const std::string file = connections();
    const BusyServer server(file);
    ScreenProgram program({"watch", "-c", file}, 80, 24);
    ASSERT_TRUE(program.shows("45.0000000 deg"));

    // The last line is for any text, the one above it is the destroy.
    program.type("c");
    program.type("\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB\x1bOB");
    program.type("\x1bOB\x1bOB\x1bOB\x1bOB" + kUp + "\r");
    ASSERT_TRUE(program.shows("ROVAN_DESTROY cannot be undone.")) << program.screen().text();
    program.type("y\r");
    ASSERT_TRUE(program.shows("that was not the word, nothing was sent"));
    program.type("c\r");
    ASSERT_TRUE(program.shows("ROVAN_DESTROY cannot be undone."));
    EXPECT_THAT(server.commands(), IsEmpty());
    program.type("destroy\r");
    EXPECT_TRUE(waitUntil([&] { return !server.commands().empty(); }, kSoon));
    EXPECT_THAT(server.commands(), ::testing::ElementsAre("ROVAN_DESTROY"));
}

TEST_F(Watch, SaysWhenNobodyTakesTheCommand) {
    const std::string file = connections();
    for (const std::vector<std::string>& topics :
         {std::vector<std::string>{}, std::vector<std::string>{"EventLog"}}) {
        std::vector<std::string> arguments = {"watch", "-c", file};
        arguments.insert(arguments.end(), topics.begin(), topics.end());
        ScreenProgram program(arguments, 132, 43);
        ASSERT_TRUE(program.shows("no data"));
        program.type("c\r");
        ASSERT_TRUE(program.shows("Send BITSERVER_PING ?"));
        program.type("y");
        EXPECT_TRUE(program.shows("nobody subscribes to the topic Command; nothing was sent"))
            << program.screen().text();
    }
}

TEST_F(Watch, SendsAlsoWhenItDoesNotShowTheCommands) {
    const std::string file = connections();
    const BusyServer server(file);
    ScreenProgram program({"watch", "PositionVelocity", "-c", file}, 80, 24);
    ASSERT_TRUE(program.shows("45.0000000 deg"));
    program.type("c\r");
    ASSERT_TRUE(program.shows("Send BITSERVER_PING ?"));
    program.type("y");
    EXPECT_TRUE(waitUntil([&] { return !server.commands().empty(); }, kSoon));
}

TEST_F(Watch, EverySignalGivesTheTerminalBack) {
    const std::string file = connections();
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGABRT, SIGSEGV}) {
        ScreenProgram program({"watch", "-c", file}, 80, 24);
        ASSERT_TRUE(program.shows("no data")) << number;
        EXPECT_FALSE(program.isRestored()) << number;
        program.signal(number);
        const bool kills = number == SIGABRT || number == SIGSEGV;
        EXPECT_EQ(program.wait(), kills ? 128 + number : 0) << number;
        EXPECT_TRUE(program.isRestored()) << number;
        // Nothing of the terminal's description itself goes to the terminal.
        EXPECT_EQ(program.bytes().find("$<"), std::string::npos) << number;
    }
}

TEST_F(Watch, CtrlCQuitsAndTheAlternateScreenIsLeft) {
    ScreenProgram program({"watch", "-c", connections()}, 80, 24, "xterm");
    ASSERT_TRUE(waitUntil(
        [&] {
            program.shows("no data");
            return program.bytes().find("\x1b[?1049h") != std::string::npos;
        },
        kSoon));
    program.type("\x03");
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(program.isRestored());
    const size_t left = program.bytes().rfind("\x1b[?1049l");
    EXPECT_NE(left, std::string::npos);
}

TEST_F(Watch, ATerminalThatCannotIsRefused) {
    const std::string file = connections();
    ScreenProgram dumb({"watch", "-c", file}, 80, 24, "dumb");
    EXPECT_EQ(dumb.wait(), 2);
    EXPECT_THAT(dumb.bytes(), HasSubstr("cannot show a full screen"));
    EXPECT_TRUE(dumb.isRestored());
    ScreenProgram unknown({"watch", "-c", file}, 80, 24, "no-such-terminal");
    EXPECT_EQ(unknown.wait(), 2);
    EXPECT_THAT(unknown.bytes(), HasSubstr("cannot show a full screen"));
    Program none({"watch", "-c", file});
    EXPECT_EQ(none.wait(), 2);
    EXPECT_THAT(none.errors(), HasSubstr("watch needs a terminal"));
}

TEST_F(Watch, PrintsOneScreenAsText) {
    const std::string file = connections();
    const BusyServer server(file);
    Program program({"watch", "-c", file, "--once", "--size", "100x30", "-d", "4"});
    EXPECT_EQ(program.wait(), 0) << program.errors();
    EXPECT_EQ(std::count(program.output().begin(), program.output().end(), '\n'), 30);
    EXPECT_THAT(program.output(), HasSubstr(" lat   0.785398163   45.0000000 deg"));
    EXPECT_THAT(program.output(), HasSubstr("EVT error: number "));
    EXPECT_EQ(program.output().find('\x1b'), std::string::npos);
}

TEST_F(Watch, OneScreenWithoutSamplesSaysSo) {
    Program program({"watch", "-c", connections(), "--once", "-d", "0.2"});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_THAT(program.output(), HasSubstr("no data"));
    for (const char* size : {"80", "x", "80x", "x24", "80x24x1", "0x24", "80x100000", "nanx24"}) {
        Program wrong({"watch", "--once", "--size", size});
        EXPECT_EQ(wrong.wait(), 2) << size;
        EXPECT_THAT(wrong.errors(), HasSubstr("--size")) << size;
    }
}

}  // namespace

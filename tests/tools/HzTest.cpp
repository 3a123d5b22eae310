// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/aspn2_msgs/SampleMessages.h"
#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/TestPublisher.h"

namespace {

namespace idl = aspn2_msgs::idl;
using test_support::ownBus;
using ::testing::HasSubstr;
using tools_test::connectionsXml;
using tools_test::Program;
using tools_test::TestServer;
using Json = nlohmann::json;

// Publishes every 20 ms, at the soonest, for as long as it lives.
class Pulse {
  public:
    explicit Pulse(const std::string& file)
        : m_server(file, "TestServer"),
          m_publisher(m_server.publisher<idl::EventLog>("EventLog")),
          m_thread([this] {
              while (!m_stop) {
                  m_publisher.publish(samples::make<idl::EventLog>());
                  std::this_thread::sleep_for(std::chrono::milliseconds(20));
              }
          }) {}
    ~Pulse() {
        m_stop = true;
        m_thread.join();
    }

  private:
    const TestServer m_server;
    TestServer::Publisher<idl::EventLog> m_publisher;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

class Hz : public ::testing::Test {
  protected:
    std::string file(int domain) const {
        return m_directory.file("connections.xml", connectionsXml(domain, "UDP"));
    }

  private:
    tools_test::TemporaryDirectory m_directory;
};

TEST_F(Hz, GivesRateAndIntervalsAsJson) {
    const std::string path = file(ownBus());
    Program program({"hz", "-c", path, "--json", "-n", "50", "EventLog"});
    const Pulse pulse(path);

    ASSERT_EQ(program.wait(), 0);
    const std::string& output = program.output();
    const Json last = Json::parse(output.substr(output.rfind("{")));
    EXPECT_EQ(last["topic"], "EventLog");
    EXPECT_EQ(last["samples"], 50);
    // The pause is 20 ms at least; how much longer, and how many samples a late reader finds
    // together, depends on the machine.
    EXPECT_GT(last["rate_hz"].get<double>(), 1.0);
    EXPECT_LE(last["rate_hz"].get<double>(), 50.0 * 2);
    EXPECT_LE(last["min_interval_s"].get<double>(), 1 / last["rate_hz"].get<double>());
    EXPECT_GE(last["max_interval_s"].get<double>(), 1 / last["rate_hz"].get<double>());
    EXPECT_GE(last["max_interval_s"].get<double>(), 0.018);
    EXPECT_GE(last["age_s"].get<double>(), 0.0);
}

TEST_F(Hz, ReportsAgainAndAgainAsATable) {
    const std::string path = file(ownBus());
    Program program({"hz", "-c", path, "--every", "0.2", "EventLog"});
    const Pulse pulse(path);

    for (int reports = 0; reports < 3;) {
        const auto line = program.line();
        ASSERT_TRUE(line.has_value());
        reports += line->rfind("EventLog ", 0) == 0 ? 1 : 0;
    }
    program.signal(SIGINT);

    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.output(), HasSubstr("topic      samples    rate Hz     min ms     max ms"));
}

TEST_F(Hz, ShowsANamedTopicThatIsSilent) {
    Program program({"hz", "-c", file(ownBus()), "--json", "-d", "0.3", "Command"});

    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.output(),
              "{\"topic\":\"Command\",\"samples\":0,\"rate_hz\":null,\"min_interval_s\":null,"
              "\"max_interval_s\":null,\"age_s\":null}\n");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

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

class List : public ::testing::Test {
  protected:
    std::string file(int domain) const {
        return m_directory.file("connections.xml", connectionsXml(domain, "UDP"));
    }

    static std::map<std::string, Json> byTopic(const std::string& output) {
        std::map<std::string, Json> topics;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            const Json topic = Json::parse(line);
            topics[topic["topic"]] = topic;
        }
        return topics;
    }

  private:
    tools_test::TemporaryDirectory m_directory;
};

TEST_F(List, NamesTopicsTypesPublishersAndSubscribers) {
    const std::string path = file(ownBus());
    const TestServer first(path, "First");
    const TestServer second(path, "Second");
    const auto a = first.publisher<idl::CommandResponse>("Command");
    const auto b = second.publisher<idl::CommandResponse>("Command");
    first.subscribe<idl::CommandResponse>("Command");
    const auto c = second.publisher<idl::PositionVelocity>("PositionVelocity");

    Program program({"list", "-c", path, "--json", "-d", "6"});

    ASSERT_EQ(program.wait(), 0) << program.errors();
    auto topics = byTopic(program.output());
    EXPECT_EQ(topics.size(), 2u);
    EXPECT_EQ(topics["Command"]["type"], "aspn2_msgs::idl::CommandResponse");
    EXPECT_EQ(topics["Command"]["publishers"], Json({"First", "Second"}));
    EXPECT_EQ(topics["Command"]["subscribers"], Json({"First"}));
    EXPECT_EQ(topics["PositionVelocity"]["type"], "aspn2_msgs::idl::PositionVelocity");
    EXPECT_EQ(topics["PositionVelocity"]["publishers"], Json({"Second"}));
    EXPECT_EQ(topics["PositionVelocity"]["subscribers"], Json::array());
}

TEST_F(List, ShowsATableWithTheUnusedTopicsOnRequest) {
    const std::string path = file(ownBus());
    const TestServer server(path, "TestServer");
    const auto publisher = server.publisher<idl::EventLog>("EventLog");

    Program program({"list", "-c", path, "--all", "-d", "6"});

    ASSERT_EQ(program.wait(), 0);
    EXPECT_THAT(program.output(), HasSubstr("topic             type"));
    EXPECT_THAT(program.output(),
                HasSubstr("EventLog          aspn2_msgs::idl::EventLog          TestServer  -\n"));
    EXPECT_THAT(program.output(),
                HasSubstr("Response          aspn2_msgs::idl::CommandResponse   -           -\n"));
}

TEST_F(List, ForgetsAParticipantThatHasLeft) {
    const std::string path = file(ownBus());
    auto leaving = std::make_unique<TestServer>(path, "Leaving");
    std::unique_ptr<TestServer::Publisher<idl::EventLog>> publisher(
        new TestServer::Publisher<idl::EventLog>(leaving->publisher<idl::EventLog>("EventLog")));
    const TestServer staying(path, "Staying");
    auto stays = staying.publisher<idl::CommandResponse>("Command");
    Program watcher({"echo", "-c", path, "EventLog", "Command"});
    ASSERT_TRUE(publisher->waitForSubscriber());
    ASSERT_TRUE(stays.waitForSubscriber());
    Program program({"list", "-c", path, "--json", "-d", "6"});

    publisher.reset();
    leaving.reset();

    ASSERT_EQ(program.wait(), 0);
    auto topics = byTopic(program.output());
    EXPECT_EQ(topics["Command"]["publishers"], Json({"Staying"}));
    EXPECT_EQ(topics["EventLog"]["publishers"], Json::array());
    EXPECT_EQ(topics["EventLog"]["subscribers"], Json({"rovan-bus"}));
}

TEST_F(List, AnswersAtOnceWhenItIsStopped) {
    Program program({"list", "-c", file(ownBus()), "-d", "3600", "--all"});
    ASSERT_TRUE(tools_test::waitUntil([&program] { return program.catches(SIGTERM); },
                                      std::chrono::seconds(30)));

    program.signal(SIGTERM);

    EXPECT_EQ(program.wait(), 1);  // it was alone
    EXPECT_THAT(program.output(), HasSubstr("PositionVelocity"));
}

}  // namespace

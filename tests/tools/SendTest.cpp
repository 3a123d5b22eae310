// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <nlohmann/json.hpp>

#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/TestPublisher.h"

namespace {

using aspn2_msgs::idl::CommandResponse;
using test_support::ownBus;
using test_support::ownTcpPort;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;
using tools_test::connectionsXml;
using tools_test::Program;
using tools_test::TestServer;
using tools_test::waitUntil;
using Json = nlohmann::json;

constexpr std::chrono::seconds kSoon{10};

// What came on a topic, in order.
class Received {
  public:
    Received(const TestServer& server, const std::string& topic) {
        server.subscribe<CommandResponse>(topic, [this](const CommandResponse& message) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_messages.push_back(message);
        });
    }
    std::vector<CommandResponse> messages() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_messages;
    }
    /// The one message that came by now or comes soon; an empty one when it does not.
    CommandResponse one() const {
        EXPECT_TRUE(waitUntil([this] { return messages().size() == 1; }, kSoon));
        return messages().empty() ? CommandResponse() : messages().front();
    }

  private:
    mutable std::mutex m_mutex;
    std::vector<CommandResponse> m_messages;
};

class Send : public ::testing::Test {
  protected:
    std::string file(int domain, const std::string& transport = "UDP", int port = 0) const {
        return m_directory.file("connections.xml", connectionsXml(domain, transport, port));
    }

    tools_test::TemporaryDirectory m_directory;
};

CommandResponse answerTo(const CommandResponse& command, const std::string& text) {
    CommandResponse answer;
    answer.header().device_id(0x03270200);
    answer.commanded_device_id(command.header().device_id());
    answer.command_identifier(command.command_identifier());
    answer.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    answer.command_response(text);
    return answer;
}

// A server that answers each command at once with what `answers` makes of it.
class AnsweringServer {
  public:
    using Answers = std::function<std::vector<CommandResponse>(const CommandResponse&)>;

    AnsweringServer(const std::string& file, Answers answers)
        : m_server(file, "Rovan"), m_publisher(m_server.publisher<CommandResponse>("Response")) {
        m_server.subscribe<CommandResponse>("Command",
                                            [this, answers](const CommandResponse& command) {
                                                for (const auto& answer : answers(command)) {
                                                    m_publisher.publish(answer);
                                                }
                                            });
    }

  private:
    TestServer m_server;
    TestServer::Publisher<CommandResponse> m_publisher;
};

TEST_F(Send, PublishesACommandOfAPersonAtADesk) {
    const std::string path = file(ownBus());
    const TestServer server(path, "Rovan");
    const Received commands(server, "Command");
    const auto now = std::chrono::system_clock::now().time_since_epoch();

    Program program({"send", "-c", path, "BITSERVER_PING"});

    EXPECT_EQ(program.wait(), 0) << program.errors();
    EXPECT_THAT(program.output(), MatchesRegex("sent \"BITSERVER_PING\" to the topic Command, "
                                               "identifier [0-9]+, subscribers 1\n"));
    EXPECT_THAT(program.errors(), IsEmpty());
    const CommandResponse command = commands.one();
    EXPECT_EQ(command.command_response_type(), aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_0);
    EXPECT_EQ(command.command_response(), "BITSERVER_PING");
    EXPECT_EQ(command.commanded_device_id(), 0);
    EXPECT_GE(command.command_identifier(), 0);
    EXPECT_EQ(command.header().device_id(), 0x00FF0200);
    EXPECT_EQ(command.header().seq_num(), 0);
    const auto& valid = command.header().timestamp_valid();
    EXPECT_NEAR(static_cast<double>(valid.sec()), std::chrono::duration<double>(now).count(), 60);
    EXPECT_EQ(valid.time_code(), 100);
    EXPECT_TRUE(valid == command.header().timestamp_arrival());
}

TEST_F(Send, TakesTheIdentitiesThatItIsGiven) {
    const std::string path = file(ownBus());
    const TestServer server(path, "Rovan");
    const Received commands(server, "Command");

    Program program({"send", "-c", path, "A,1", "--device-id", "0x81270305", "--to", "-2",
                     "--identifier", "0xFFFFFFFF"});

    EXPECT_EQ(program.wait(), 0) << program.errors();
    const CommandResponse command = commands.one();
    EXPECT_EQ(command.command_response(), "A,1");
    EXPECT_EQ(static_cast<uint32_t>(command.header().device_id()), 0x81270305u);
    EXPECT_EQ(command.commanded_device_id(), -2);
    EXPECT_EQ(command.command_identifier(), -1);
}

TEST_F(Send, PlaysAnotherServerThatResponds) {
    const std::string path = file(ownBus());
    const TestServer server(path, "Rovan");
    const Received commands(server, "Command");
    const Received responses(server, "Response");

    Program program(
        {"send", "-c", path, "REQUEST_COMPONENT_CBIT_PASS", "--as-response", "--server", "47"});

    EXPECT_EQ(program.wait(), 0) << program.errors();
    const CommandResponse response = responses.one();
    EXPECT_EQ(response.command_response_type(), aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
    EXPECT_EQ(response.command_response(), "REQUEST_COMPONENT_CBIT_PASS");
    EXPECT_EQ(response.header().device_id(), 0x002F0200);
    EXPECT_THAT(commands.messages(), IsEmpty());
}

TEST_F(Send, GivesEachCommandANewIdentifier) {
    const std::string path = file(ownBus());
    const TestServer server(path, "Rovan");
    const Received commands(server, "Command");

    for (int i = 0; i < 2; ++i) {
        Program program({"send", "-c", path, "BITSERVER_PING"});
        ASSERT_EQ(program.wait(), 0) << program.errors();
    }

    ASSERT_TRUE(waitUntil([&] { return commands.messages().size() == 2; }, kSoon));
    const auto messages = commands.messages();
    EXPECT_NE(messages[0].command_identifier(), messages[1].command_identifier());
}

TEST_F(Send, SaysThatNobodyListens) {
    Program program({"send", "-c", file(ownBus()), "BITSERVER_PING", "--patience", "0.5"});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(),
              "rovan-bus: nobody subscribes to the topic Command; nothing was sent\n");
    EXPECT_THAT(program.output(), IsEmpty());
}

TEST_F(Send, SendsNothingWhenAnswersAreWantedAndNobodyCouldGiveThem) {
    const std::string path = file(ownBus());
    const TestServer server(path, "Rovan");
    const Received commands(server, "Command");

    Program program({"send", "-c", path, "ROVAN_DESTROY", "--wait", "--patience", "3"});

    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(),
              "rovan-bus: nobody publishes the topic Response; nothing was sent\n");
    EXPECT_THAT(commands.messages(), IsEmpty());
}

TEST_F(Send, ShowsTheAnswersThatBelongToItsCommandAndNoOthers) {
    const std::string path = file(ownBus());
    const AnsweringServer server(path, [](const CommandResponse& command) {
        CommandResponse ofAnotherCommand = answerTo(command, "WRONG_IDENTIFIER_PASS");
        ofAnotherCommand.command_identifier(command.command_identifier() + 1);
        CommandResponse ofAnotherSender = answerTo(command, "WRONG_DEVICE_PASS");
        ofAnotherSender.commanded_device_id(command.header().device_id() + 1);
        CommandResponse noResponse = answerTo(command, "WRONG_TYPE_PASS");
        noResponse.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_0);
        return std::vector<CommandResponse>{ofAnotherCommand,
                                            ofAnotherSender,
                                            noResponse,
                                            answerTo(command, "ROVAN_DESTROY_ACK"),
                                            answerTo(command, "line\nend"),
                                            answerTo(command, "COMPONENT_DESTROY_PASS")};
    });

    Program program({"send", "-c", path, "ROVAN_DESTROY", "--wait", "20", "-u", "_FAIL,_PASS"});

    EXPECT_EQ(program.wait(), 0) << program.errors();
    std::vector<std::string> answers;
    std::istringstream lines(program.output());
    for (std::string line; std::getline(lines, line);) {
        answers.push_back(line);
    }
    EXPECT_THAT(
        answers,
        ElementsAre(HasSubstr("sent \"ROVAN_DESTROY\""),
                    MatchesRegex(" +[0-9]+\\.[0-9][0-9][0-9] s  Rovan: \"ROVAN_DESTROY_ACK\""),
                    HasSubstr("\"line\\x0aend\""), HasSubstr("\"COMPONENT_DESTROY_PASS\"")));
}

TEST_F(Send, ShowsAnswersAsJson) {
    const std::string path = file(ownBus());
    const AnsweringServer server(path, [](const CommandResponse& command) {
        return std::vector<CommandResponse>(3, answerTo(command, "ROVAN_SET_STANDBY_ACK"));
    });

    Program program({"send", "-c", path, "ROVAN_SET_STANDBY", "--wait", "20", "-n", "2", "--json",
                     "--identifier", "77"});

    EXPECT_EQ(program.wait(), 0) << program.errors();
    std::istringstream lines(program.output());
    std::vector<Json> answers;
    for (std::string line; std::getline(lines, line);) {
        answers.push_back(Json::parse(line));
    }
    ASSERT_THAT(answers, SizeIs(2));
    EXPECT_EQ(answers[0]["topic"], "Response");
    EXPECT_EQ(answers[0]["publisher"], "Rovan");
    EXPECT_EQ(answers[0]["message"]["command_identifier"], 77);
    EXPECT_EQ(answers[0]["message"]["commanded_device_id"], 0x00FF0200);
    EXPECT_EQ(answers[0]["message"]["command_response"], "ROVAN_SET_STANDBY_ACK");
}

TEST_F(Send, ShowsAnAnswerAtOnceAndEndsCleanlyOnASignal) {
    const std::string path = file(ownBus());
    const AnsweringServer server(path, [](const CommandResponse& command) {
        return std::vector<CommandResponse>{answerTo(command, "ROVAN_DESTROY_ACK")};
    });
    Program program({"send", "-c", path, "ROVAN_DESTROY", "--wait", "600", "--json"});

    ASSERT_TRUE(program.line().has_value());
    program.signal(SIGINT);

    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.errors(), IsEmpty());
}

TEST_F(Send, EndsWithOneWithoutTheAnswerThatItWaitsFor) {
    const std::string path = file(ownBus());
    const AnsweringServer server(path, [](const CommandResponse& command) {
        return std::vector<CommandResponse>{answerTo(command, "PASS_THROUGH_ACK")};
    });

    Program program({"send", "-c", path, "A", "--wait", "0.5", "--until", "_PASS"});

    EXPECT_EQ(program.wait(), 1);
    EXPECT_THAT(program.output(), HasSubstr("PASS_THROUGH_ACK"));
    EXPECT_EQ(program.errors(), "rovan-bus: not the answer awaited in 0.5 s\n");
}

TEST_F(Send, EndsWithOneWithoutAnyAnswer) {
    const std::string path = file(ownBus());
    const AnsweringServer server(
        path, [](const CommandResponse&) { return std::vector<CommandResponse>(); });

    Program program({"send", "-c", path, "POSTCOMPLETE", "--wait=0.3"});

    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(), "rovan-bus: no answer in 0.3 s\n");
}

TEST_F(Send, SendsNothingWhenASignalComesFirst) {
    Program program({"send", "-c", file(ownBus()), "ROVAN_DESTROY", "--patience", "60"});
    ASSERT_TRUE(waitUntil([&] { return program.catches(SIGTERM); }, kSoon));
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(), "rovan-bus: interrupted, nothing was sent\n");
}

TEST_F(Send, ReachesAServerThatListensOnTcp) {
    const std::string path = file(ownBus(), "TCP_Server", ownTcpPort());
    const AnsweringServer server(path, [](const CommandResponse& command) {
        return std::vector<CommandResponse>{answerTo(command, "Rovan")};
    });

    Program program(
        {"send", "-c", path, "BITSERVER_PING", "--wait", "20", "-n", "1", "--patience", "30"});
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.output(), HasSubstr("Rovan: \"Rovan\"\n"));
}

TEST_F(Send, RefusesAFileWhoseCommandsAreOfAnotherType) {
    const std::string path = m_directory.file("other.xml", [] {
        std::string text = connectionsXml(ownBus(), "UDP");
        const std::string type = "aspn2_msgs::idl::CommandResponse";
        return text.replace(text.find(type), type.size(), "aspn2_msgs::idl::EventLog");
    }());
    Program program({"send", "-c", path, "A"});
    EXPECT_EQ(program.wait(), 2);
    EXPECT_THAT(program.errors(), HasSubstr("the topic Command has the type "
                                            "aspn2_msgs::idl::EventLog, not "
                                            "aspn2_msgs::idl::CommandResponse"));
}

}  // namespace

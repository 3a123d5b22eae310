// SPDX-License-Identifier: Apache-2.0
#include <fastrtps/Domain.h>
#include <fastrtps/publisher/Publisher.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include <nlohmann/json.hpp>

#include "face/KD_TSS_Attributes.h"
#include "tests/aspn2_msgs/SampleMessages.h"
#include "tests/support/OwnBus.h"
#include "tests/tools/Program.h"
#include "tests/tools/TestPublisher.h"

namespace {

namespace idl = aspn2_msgs::idl;
using test_support::ownBus;
using test_support::ownTcpPort;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using tools_test::connectionsXml;
using tools_test::Program;
using tools_test::TestServer;
using Json = nlohmann::json;

class Echo : public ::testing::Test {
  protected:
    std::string file(int domain, const std::string& transport, int port = 0) const {
        return m_directory.file("connections-" + transport + ".xml",
                                connectionsXml(domain, transport, port));
    }

  private:
    tools_test::TemporaryDirectory m_directory;
};

idl::EventLog event(const std::string& text) {
    idl::EventLog message;
    message.eventlog(text);
    return message;
}

// What one sample of each direction over a transport must look like.
void expectOneSample(const std::string& serverFile, const std::string& toolFile,
                     const std::vector<std::string>& moreArguments = {}) {
    const TestServer server(serverFile, "TestServer");
    auto publisher = server.publisher<idl::ReceiverStatus>("ReceiverStatus");
    std::vector<std::string> arguments = {"echo", "-c", toolFile,        "--json",
                                          "-n",   "1",  "ReceiverStatus"};
    arguments.insert(arguments.end(), moreArguments.begin(), moreArguments.end());
    Program program(arguments);
    ASSERT_TRUE(publisher.waitForSubscriber());

    publisher.publish(samples::make<idl::ReceiverStatus>());

    EXPECT_EQ(program.wait(), 0) << program.errors();
    const Json line = Json::parse(program.output());
    EXPECT_EQ(line["topic"], "ReceiverStatus");
    EXPECT_EQ(line["type"], "aspn2_msgs::idl::ReceiverStatus");
    EXPECT_EQ(line["publisher"], "TestServer");
    EXPECT_EQ(line["message"]["header"]["device_id"], 0x01270305);
    EXPECT_EQ(line["message"]["num_satellites_avail"], 11);
    EXPECT_EQ(line["message"]["tdop"], 0.875);
}

TEST_F(Echo, ShowsASampleOverUdp) {
    expectOneSample(file(ownBus(), "UDP"), file(ownBus(), "UDP"));
}

TEST_F(Echo, ShowsASampleOverSharedMemory) {
    expectOneSample(file(ownBus(), "SHM"), file(ownBus(), "SHM"));
}

TEST_F(Echo, ConnectsToAServerThatListensOnTcp) {
    const std::string path = file(ownBus(), "TCP_Server", ownTcpPort());
    expectOneSample(path, path);
}

TEST_F(Echo, ConnectsToWhereATcpClientConnectsTo) {
    expectOneSample(file(ownBus(), "TCP_Server", ownTcpPort()),
                    file(ownBus(), "TCP_Client", ownTcpPort()));
}

TEST_F(Echo, ListensForATcpClientWhenAskedTo) {
    const std::string path = file(ownBus(), "TCP_Client", ownTcpPort());
    expectOneSample(path, path, {"--listen"});
}

TEST_F(Echo, GivesEveryLineItsPlaceInThePublishersNumbering) {
    const std::string path = file(ownBus(), "UDP");
    const TestServer server(path, "TestServer");
    auto publisher = server.publisher<idl::EventLog>("EventLog");
    Program program({"echo", "-c", path, "--json", "--count", "3", "EventLog"});
    ASSERT_TRUE(publisher.waitForSubscriber());

    for (const char* text : {"one", "two", "three", "four"}) {
        publisher.publish(event(text));
    }

    ASSERT_EQ(program.wait(), 0);
    std::istringstream lines(program.output());
    std::vector<std::string> texts;
    int64_t sequence = 0;
    for (std::string text; std::getline(lines, text);) {
        const Json line = Json::parse(text);
        texts.push_back(line["message"]["eventlog"]);
        EXPECT_EQ(line["sequence"].get<int64_t>(), ++sequence);
        // Sent and received within the last minute, in that order give or take the clock's grain.
        const int64_t sent = line["sent_ns"];
        const int64_t received = line["received_ns"];
        EXPECT_LT(std::abs(received - sent), 60'000'000'000);
    }
    EXPECT_THAT(texts, ::testing::ElementsAre("one", "two", "three"));
}

TEST_F(Echo, ShowsTextWithoutColoursOnAPipe) {
    const std::string path = file(ownBus(), "UDP");
    const TestServer server(path, "TestServer");
    auto publisher = server.publisher<idl::EventLog>("EventLog");
    Program program({"echo", "-c", path, "-n", "1", "EventLog"});
    ASSERT_TRUE(publisher.waitForSubscriber());

    publisher.publish(samples::make<idl::EventLog>());

    ASSERT_EQ(program.wait(), 0);
    EXPECT_THAT(program.output(), HasSubstr("EventLog  #1 from TestServer at 2"));
    EXPECT_THAT(program.output(), HasSubstr("\n  event_log_type: 3\n"
                                            "  eventlog: \"Rovan[12]:text\"\n"));
    EXPECT_THAT(program.output(), Not(HasSubstr("\033")));
}

TEST_F(Echo, ShowsEverythingWhenNoTopicIsNamed) {
    const std::string path = file(ownBus(), "UDP");
    const TestServer server(path, "TestServer");
    auto commands = server.publisher<idl::CommandResponse>("Command");
    auto responses = server.publisher<idl::CommandResponse>("Response");
    Program program({"echo", "-c", path, "--json", "-n", "2"});
    ASSERT_TRUE(commands.waitForSubscriber());
    ASSERT_TRUE(responses.waitForSubscriber());

    commands.publish(samples::make<idl::CommandResponse>());
    const auto first = program.line();
    responses.publish(samples::make<idl::CommandResponse>());

    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(Json::parse(*first)["topic"], "Command");
    const auto second = program.line();
    ASSERT_TRUE(second.has_value());
    EXPECT_EQ(Json::parse(*second)["topic"], "Response");
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Echo, FindsTopicsThatTheFileDoesNotName) {
    tools_test::TemporaryDirectory directory;
    std::string text = connectionsXml(ownBus(), "UDP");
    text.insert(text.find("</KD_Configurations>"), tools_test::connection("Extra", "EventLog"));
    const TestServer server(directory.file("server.xml", text), "TestServer");
    auto publisher = server.publisher<idl::EventLog>("Extra");
    Program program({"echo", "-c", file(ownBus(), "UDP"), "--json", "-n", "1"});
    ASSERT_TRUE(publisher.waitForSubscriber());

    publisher.publish(event("found"));

    const auto line = program.line();
    ASSERT_TRUE(line.has_value());
    EXPECT_EQ(Json::parse(*line)["topic"], "Extra");
}

TEST_F(Echo, ShowsEachSampleAtOnceAndEndsCleanlyOnEitherSignal) {
    for (const int number : {SIGINT, SIGTERM}) {
        const std::string path = file(ownBus(), "UDP");
        const TestServer server(path, "TestServer");
        auto publisher = server.publisher<idl::EventLog>("EventLog");
        Program program({"echo", "-c", path, "--json", "--summary", "EventLog"});
        ASSERT_TRUE(publisher.waitForSubscriber());
        publisher.publish(event("seen"));
        ASSERT_TRUE(program.line().has_value());

        program.signal(number);

        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(program.errors(), "EventLog: 1 samples, 0 lost, 0 unreadable\n");
    }
}

TEST_F(Echo, EndsWithOneWhenFewerThanTheCountComeInTime) {
    const std::string path = file(ownBus(), "UDP");
    const TestServer server(path, "TestServer");
    auto publisher = server.publisher<idl::EventLog>("EventLog");
    Program program({"echo", "-c", path, "--json", "-n", "2", "-d", "3", "EventLog"});
    ASSERT_TRUE(publisher.waitForSubscriber());

    publisher.publish(event("alone"));

    EXPECT_EQ(program.wait(), 1);
    EXPECT_THAT(program.output(), HasSubstr("alone"));
}

TEST_F(Echo, EndsWhenNobodyReadsAnyMore) {
    const std::string path = file(ownBus(), "UDP");
    const TestServer server(path, "TestServer");
    auto publisher = server.publisher<idl::EventLog>("EventLog");
    Program program({"echo", "-c", path, "--json", "EventLog"});
    ASSERT_TRUE(publisher.waitForSubscriber());
    publisher.publish(event("read"));
    ASSERT_TRUE(program.line().has_value());

    program.closeOutput();
    publisher.publish(event("not read"));

    EXPECT_NE(program.wait(), -1) << "still running";
    EXPECT_THAT(program.errors(), IsEmpty());
}

// A type support that sends whatever it is given under another type's name.
class RawType : public eprosima::fastdds::dds::TopicDataType {
  public:
    using Payload = eprosima::fastrtps::rtps::SerializedPayload_t;
    using Bytes = std::vector<uint8_t>;

    RawType() {
        setName("aspn2_msgs::idl::ReceiverStatus");
        m_typeSize = 4096;
        m_isGetKeyDefined = false;
    }
    bool serialize(void* data, Payload* payload) override {
        const auto& bytes = *static_cast<Bytes*>(data);
        std::copy(bytes.begin(), bytes.end(), payload->data);
        payload->length = static_cast<uint32_t>(bytes.size());
        return true;
    }
    bool deserialize(Payload*, void*) override { return false; }
    std::function<uint32_t()> getSerializedSizeProvider(void* data) override {
        return [data] { return static_cast<uint32_t>(static_cast<Bytes*>(data)->size()); };
    }
    void* createData() override { return new Bytes; }
    void deleteData(void* data) override { delete static_cast<Bytes*>(data); }
    bool getKey(void*, eprosima::fastrtps::rtps::InstanceHandle_t*, bool) override { return false; }
};

RawType::Bytes receiverStatusBytes(uint8_t rcvrFail) {
    RawType::Bytes bytes(4 + 72);
    bytes[1] = 1;  // little endian
    bytes[4 + 44] = rcvrFail;
    return bytes;
}

TEST_F(Echo, ReportsSamplesThatCannotBeReadAndGoesOn) {
    using eprosima::fastrtps::Domain;
    const std::string path = file(ownBus(), "UDP");
    FACE::TSS::KD_TSS::Settings_t settings;
    settings.domainId = static_cast<uint32_t>(ownBus());
    settings.historyDepth = 64;
    settings.useTransport = "UDP";
    const FACE::TSS::KD_TSS::Connection_t connection(
        "ReceiverStatus", "aspn2_msgs::idl::ReceiverStatus", "ReceiverStatusPubSubType");
    auto* const participant =
        Domain::createParticipant(FACE::TSS::Attributes::participant(settings, "Damaged"), nullptr);
    ASSERT_NE(participant, nullptr);
    RawType type;
    ASSERT_TRUE(Domain::registerType(participant, &type));
    FACE::TSS::Listeners::PublisherListenerBase listener("Damaged");
    auto* const publisher = Domain::createPublisher(
        participant, FACE::TSS::Attributes::publisher(settings, connection), &listener);
    ASSERT_NE(publisher, nullptr);
    Program program({"echo", "-c", path, "--json", "-n", "1", "--summary", "ReceiverStatus"});
    ASSERT_TRUE(
        tools_test::waitUntil([&] { return listener.matched() > 0; }, std::chrono::seconds(30)));

    RawType::Bytes tooShort(10);
    RawType::Bytes noBool = receiverStatusBytes(2);
    RawType::Bytes good = receiverStatusBytes(1);
    for (RawType::Bytes* bytes : {&tooShort, &noBool, &good}) {
        EXPECT_TRUE(publisher->write(bytes));
    }

    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(Json::parse(program.output())["message"]["rcvr_fail"], true);
    EXPECT_THAT(program.errors(), HasSubstr("ReceiverStatus: a sample could not be read\n"));
    EXPECT_THAT(program.errors(), HasSubstr("1 samples, 0 lost, 2 unreadable\n"));
    Domain::removeParticipant(participant);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/ConnectionsFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/TestPublisher.h"

namespace {

using Bus::ConnectionsFile;
using Bus::UsageError;
using ::testing::HasSubstr;
using tools_test::connectionsXml;

class ConnectionsFileTest : public ::testing::Test {
  protected:
    std::string problemWith(const std::string& path) const {
        try {
            const ConnectionsFile file(path);
        } catch (const UsageError& problem) {
            return problem.what();
        }
        return "no problem";
    }
    std::string problemWithText(const std::string& text) const {
        return problemWith(m_directory.file("connections.xml", text));
    }

    tools_test::TemporaryDirectory m_directory;
};

TEST_F(ConnectionsFileTest, GivesTransportAndTopicsInTheOrderOfTheFile) {
    const ConnectionsFile file(m_directory.file("c.xml", connectionsXml(130, "UDP", 7410)));

    EXPECT_EQ(file.settings().domainId, 130u);
    EXPECT_EQ(file.settings().historyDepth, 64);
    EXPECT_EQ(file.settings().useTransport, "UDP");
    EXPECT_EQ(file.settings().tcpPort, 7410);
    std::vector<std::string> names;
    for (const Bus::Topic& topic : file.topics()) {
        names.push_back(topic.name);
    }
    EXPECT_THAT(names, ::testing::ElementsAre("Command", "Response", "EventLog", "ReceiverStatus",
                                              "PositionVelocity"));
    ASSERT_NE(file.find("Response"), nullptr);
    EXPECT_EQ(file.find("Response")->typeName, "aspn2_msgs::idl::CommandResponse");
    EXPECT_EQ(file.find("Response")->pubSubType, "CommandResponsePubSubType");
    EXPECT_EQ(file.find("Unheard"), nullptr);
}

TEST_F(ConnectionsFileTest, ReadsTheShippedDeployments) {
    const std::pair<const char*, const char*> kVariants[] = {
        {"udp", "UDP"}, {"shm", "SHM"}, {"tcp-server", "TCP_Server"}, {"tcp-client", "TCP_Client"}};
    for (const auto& [variant, transport] : kVariants) {
        const ConnectionsFile file(std::string(ROVAN_SOURCE_DIR "/config/") + variant +
                                   "/connections.xml");
        EXPECT_EQ(file.settings().useTransport, transport);
        EXPECT_EQ(file.topics().size(), 14u) << variant;
    }
}

TEST_F(ConnectionsFileTest, SaysWhatIsWrongWithAFile) {
    EXPECT_THAT(problemWith("/no/such/file.xml"), HasSubstr("no such file"));
    EXPECT_THAT(problemWith("/"), HasSubstr("not a file"));
    EXPECT_THAT(problemWithText("not XML"), HasSubstr("not a readable configuration file"));
    EXPECT_THAT(problemWithText("<Other/>"), HasSubstr("not a readable configuration file"));
    EXPECT_THAT(problemWithText("<KD_Configurations/>"), HasSubstr("no container \"FastRtps\""));
    EXPECT_THAT(problemWithText("<KD_Configurations><A><Name>FastRtps</Name><Parameters>"
                                "<DomainId>1</DomainId></Parameters></A></KD_Configurations>"),
                HasSubstr("a key of the container \"FastRtps\" is missing"));
}

TEST_F(ConnectionsFileTest, RefusesAConnectionWithoutItsClass) {
    std::string text = connectionsXml(130, "UDP");
    const std::string key = "<PubSubType>EventLogPubSubType</PubSubType>";
    text.erase(text.find(key), key.size());

    EXPECT_THAT(problemWithText(text), HasSubstr("\"EventLog\" is incomplete"));
}

TEST_F(ConnectionsFileTest, IsTheOtherEndOnTcpAndTheSameOtherwise) {
    const auto counterpart = [this](const std::string& transport, bool listen) {
        return ConnectionsFile(m_directory.file("c.xml", connectionsXml(130, transport)))
            .counterpart(listen)
            .useTransport;
    };
    EXPECT_EQ(counterpart("TCP_Server", false), "TCP_Client");
    EXPECT_EQ(counterpart("TCP_Client", false), "TCP_Client");
    EXPECT_EQ(counterpart("TCP_Client", true), "TCP_Server");
    EXPECT_EQ(counterpart("UDP", true), "UDP");
    EXPECT_EQ(counterpart("SHM", false), "SHM");
}

}  // namespace

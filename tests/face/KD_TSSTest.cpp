// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fastdds/rtps/transport/UDPv4TransportDescriptor.h>
#include <fastrtps/attributes/ParticipantAttributes.h>
#include <fastrtps/participant/Participant.h>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include <memory>
#include <stdexcept>
#include <string>

#include "aspn2_msgs/EventLog.h"
#include "face/KD_Topic_Helpers.h"
#include "tests/face/TransportBus.h"

namespace {

using namespace transport_test;
using aspn2_msgs::idl::EventLog;
using FACE::TSS::KD_TSS;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// A configuration that counts what is opened and closed, and fails on request.
class WatchedConfig : public FACE::KD_Config {
  public:
    void Initialize(const FACE::String& path, RC::Value& rc) override {
        KD_Config::Initialize(path, rc);
        if (initializeFailure != RC::NO_ERROR) {
            rc = initializeFailure;
        }
    }
    void Open(const FACE::String& name, int& handle, RC::Value& rc) override {
        if (openFailure != RC::NO_ERROR) {
            rc = openFailure;
            return;
        }
        KD_Config::Open(name, handle, rc);
        opened += rc == RC::NO_ERROR ? 1 : 0;
    }
    void Close(int handle, RC::Value& rc) override {
        KD_Config::Close(handle, rc);
        closed += rc == RC::NO_ERROR ? 1 : 0;
    }

    RC::Value initializeFailure = RC::NO_ERROR;
    RC::Value openFailure = RC::NO_ERROR;
    int opened = 0;
    int closed = 0;
};

struct Result {
    RC::Value rc = RC::NO_ERROR;
    long long id = 77;
    int size = 55;
};

Result createConnection(KD_TSS& transport, const char* name) {
    Result r;
    transport.Create_Connection(name, 0, r.id, r.size, r.rc);
    return r;
}

RC::Value setReference(KD_TSS& transport, const std::shared_ptr<FACE::Configuration>& config) {
    auto rc = RC::INVALID_MODE;
    transport.Set_Reference("Configuration", config, 0, rc);
    return rc;
}

RC::Value initializeAt(KD_TSS& transport, const std::string& path) {
    auto rc = RC::INVALID_MODE;
    transport.Initialize(path.c_str(), rc);
    return rc;
}

RC::Value unregisterSender(KD_TSS& transport, long long id) {
    auto rc = RC::INVALID_MODE;
    transport.Unregister_Sender(id, rc);
    return rc;
}

RC::Value unregisterCallback(KD_TSS& transport, long long id) {
    auto rc = RC::INVALID_MODE;
    transport.Unregister_Callback(id, rc);
    return rc;
}

TEST(KD_TSS, TakesOneConfigurationAndNoNullOne) {
    KD_TSS transport("Tester");

    EXPECT_EQ(setReference(transport, nullptr), RC::INVALID_PARAM);
    EXPECT_EQ(setReference(transport, std::make_shared<FACE::KD_Config>()), RC::NO_ERROR);
    EXPECT_EQ(setReference(transport, std::make_shared<FACE::KD_Config>()), RC::NOT_AVAILABLE);
    EXPECT_EQ(setReference(transport, nullptr), RC::NOT_AVAILABLE);
}

TEST(KD_TSS, DoesNothingBeforeInitialize) {
    KD_TSS transport("Tester");
    auto rc = RC::NO_ERROR;

    EXPECT_EQ(initializeAt(transport, "/nowhere"), RC::NOT_AVAILABLE);  // no configuration
    const Result created = createConnection(transport, "Events");
    EXPECT_EQ(created.rc, RC::NOT_AVAILABLE);
    EXPECT_EQ(created.id, -1);
    transport.Destroy_Connection(0, rc);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
    EXPECT_EQ(unregisterSender(transport, 0), RC::NOT_AVAILABLE);
    EXPECT_EQ(unregisterCallback(transport, -1), RC::NOT_AVAILABLE);
    EXPECT_FALSE(transport.isInitialised());
    EXPECT_EQ(transport.participant(), nullptr);
    EXPECT_EQ(transport.participantName(), "Tester");
}

TEST(KD_TSS, TellsOfAConfigurationThatCannotBeRead) {
    KD_TSS transport("Tester");
    setReference(transport, std::make_shared<FACE::KD_Config>());

    testing::internal::CaptureStdout();
    const auto rc = initializeAt(transport, "/nowhere/connections.xml");

    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "CFR:4 Configuration /nowhere/connections.xml was not available\n");
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
}

TEST(KD_TSS, TellsTheCodeThatTheConfigurationGave) {
    const ConnectionsFile file({{"FastRtps", busSettings(160)}});
    const auto config = std::make_shared<WatchedConfig>();
    KD_TSS transport("Tester");
    setReference(transport, config);

    testing::internal::CaptureStdout();
    config->initializeFailure = RC::TIMED_OUT;
    EXPECT_EQ(initializeAt(transport, file.path()), RC::NOT_AVAILABLE);
    config->initializeFailure = RC::NO_ERROR;
    config->openFailure = RC::INVALID_MODE;
    EXPECT_EQ(initializeAt(transport, file.path()), RC::NOT_AVAILABLE);

    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "CFR:6 Configuration " + file.path() + " was not available\n" +
                  "CFR:5 Domain FastRtps was not available\n");
    EXPECT_EQ(config->closed, 0);
}

TEST(KD_TSS, TellsOfAFileWithoutItsContainer) {
    const ConnectionsFile file({{"Events", carries("EventLog")}});
    KD_TSS transport("Tester");

    testing::internal::CaptureStdout();
    const auto rc = initialize(transport, file.path());

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "CFR:4 Domain FastRtps was not available\n");
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
}

TEST(KD_TSS, RequiresEachOfTheSevenKeys) {
    for (const auto& [key, value] : busSettings(160)) {
        Parameters incomplete = busSettings(160);
        incomplete.erase(key);
        const ConnectionsFile file({{"FastRtps", incomplete}});
        const auto config = std::make_shared<WatchedConfig>();
        KD_TSS transport("Tester");
        setReference(transport, config);

        testing::internal::CaptureStdout();
        EXPECT_EQ(initializeAt(transport, file.path()), RC::INVALID_CONFIG) << key;

        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "WARNING - Parameter " + key + " not found\n");
        EXPECT_FALSE(transport.isInitialised());
        EXPECT_EQ(config->opened, 1);
        EXPECT_EQ(config->closed, 1);
    }
    EXPECT_EQ(busSettings(160).size(), 7u);
}

TEST(KD_TSS, JoinsTheBusOnce) {
    const ConnectionsFile file(
        {{"FastRtps", busSettings(0, {{"DomainId", "0xA0"}, {"TcpAddress", "192.168.1.20"}})}});
    const auto config = std::make_shared<WatchedConfig>();
    KD_TSS transport("Rovan");
    setReference(transport, config);

    EXPECT_EQ(initializeAt(transport, file.path()), RC::NO_ERROR);
    EXPECT_TRUE(transport.isInitialised());
    EXPECT_EQ(config->opened, 1);
    EXPECT_EQ(config->closed, 1);
    const auto* participant = transport.participant();
    EXPECT_EQ(initializeAt(transport, file.path()), RC::NO_ACTION);
    EXPECT_EQ(transport.participant(), participant);

    const auto& attributes = participant->getAttributes();
    EXPECT_EQ(attributes.domainId, 160u);
    EXPECT_EQ(std::string(attributes.rtps.getName()), "Rovan");
    EXPECT_EQ(attributes.rtps.builtin.discovery_config.leaseDuration,
              eprosima::fastrtps::Duration_t(5, 0));
    EXPECT_FALSE(attributes.rtps.useBuiltinTransports);
    ASSERT_EQ(attributes.rtps.userTransports.size(), 1u);
    const auto udp = std::dynamic_pointer_cast<eprosima::fastdds::rtps::UDPv4TransportDescriptor>(
        attributes.rtps.userTransports[0]);
    ASSERT_NE(udp, nullptr);
    EXPECT_THAT(udp->interfaceWhiteList, ElementsAre("127.0.0.1"));
}

TEST(KD_TSS, ReportsAParticipantThatCannotBeMade) {
    const ConnectionsFile file({{"FastRtps", busSettings(161, {{"UseTransport", "udp"}})}});
    const auto config = std::make_shared<WatchedConfig>();
    KD_TSS transport("Rovan");
    setReference(transport, config);

    testing::internal::CaptureStderr();
    const auto rc = initializeAt(transport, file.path());

    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("Error creating participant Rovan\n"));
    EXPECT_EQ(rc, RC::INVALID_CONFIG);
    EXPECT_FALSE(transport.isInitialised());
    EXPECT_EQ(config->closed, 1);
    EXPECT_EQ(createConnection(transport, "Events").rc, RC::NOT_AVAILABLE);
}

TEST(KD_TSS, RefusesADomainThatHasNoPorts) {
    for (const char* domain : {"233", "4294967295", "-1"}) {
        const ConnectionsFile file({{"FastRtps", busSettings(0, {{"DomainId", domain}})}});
        KD_TSS transport("Rovan");

        testing::internal::CaptureStderr();
        EXPECT_EQ(initialize(transport, file.path()), RC::INVALID_CONFIG) << domain;

        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error creating participant Rovan\n");
    }
}

TEST(KD_TSS, SurvivesATcpAddressThatIsNone) {
    for (const char* role : {"TCP_Client", "TCP_Server"}) {
        const ConnectionsFile file(
            {{"FastRtps",
              busSettings(162, {{"UseTransport", role}, {"TcpAddress", "no address"}})}});
        KD_TSS transport("Tester");

        EXPECT_NE(initialize(transport, file.path()), RC::NO_ACTION) << role;
    }
}

TEST(KD_TSS, NumbersItsConnectionsAndKeepsThem) {
    const ConnectionsFile file({{"FastRtps", busSettings(163)},
                                {"Events", carries("EventLog")},
                                {"Command", carries("CommandResponse")},
                                {"Response", carries("CommandResponse")}});
    const auto config = std::make_shared<WatchedConfig>();
    KD_TSS transport("Tester");
    setReference(transport, config);
    ASSERT_EQ(initializeAt(transport, file.path()), RC::NO_ERROR);

    EXPECT_EQ(createConnection(transport, "Events").id, 0);
    EXPECT_EQ(createConnection(transport, "Command").id, 1);
    EXPECT_EQ(createConnection(transport, "Response").id, 2);
    EXPECT_EQ(config->opened, 4);
    EXPECT_EQ(config->closed, 4);

    const Result again = createConnection(transport, "Command");
    EXPECT_EQ(again.rc, RC::NO_ERROR);
    EXPECT_EQ(again.id, 1);
    EXPECT_EQ(again.size, 55);     // never written
    EXPECT_EQ(config->opened, 4);  // not read again

    const KD_TSS::Connection_t& command = transport.connectionMap_mutex_at(1);
    EXPECT_EQ(command.topicName, "Command");
    EXPECT_EQ(command.typeName, "aspn2_msgs::idl::CommandResponse");
    EXPECT_EQ(std::string(command.type->getName()), "aspn2_msgs::idl::CommandResponse");
    EXPECT_FALSE(command.isPublisher());
    EXPECT_FALSE(command.isSubscriber());
    EXPECT_TRUE(transport.isTopicRegistered("aspn2_msgs::idl::CommandResponse"));
    EXPECT_FALSE(transport.isTopicRegistered("aspn2_msgs::idl::GPSTime"));
}

TEST(KD_TSS, LeavesAConnectionWorkingWhenItIsDestroyed) {
    const ConnectionsFile file({{"FastRtps", busSettings(164)}, {"Events", carries("EventLog")}});
    const auto transport = join(file);
    const auto id = connect(*transport, "Events");
    Face<EventLog> face(transport);
    ASSERT_EQ(face.registerSender(id), RC::NO_ERROR);
    auto rc = RC::INVALID_MODE;

    transport->Destroy_Connection(id, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);
    transport->Destroy_Connection(4711, rc);
    EXPECT_EQ(rc, RC::NO_ERROR);

    EXPECT_EQ(face.send(id, EventLog()), RC::NO_ERROR);
    EXPECT_EQ(connect(*transport, "Events"), id);
}

TEST(KD_TSS, RefusesAConnectionThatIsNotConfigured) {
    const ConnectionsFile file({{"FastRtps", busSettings(165)},
                                {"NoTopicType", {{"PubSubType", "EventLogPubSubType"}}},
                                {"NoPubSubType", {{"TopicType", "aspn2_msgs::idl::EventLog"}}},
                                {"Events", carries("EventLog")}});
    const auto config = std::make_shared<WatchedConfig>();
    KD_TSS transport("Tester");
    setReference(transport, config);
    ASSERT_EQ(initializeAt(transport, file.path()), RC::NO_ERROR);

    for (const char* name : {"Nowhere", "NoTopicType", "NoPubSubType"}) {
        const Result result = createConnection(transport, name);
        EXPECT_EQ(result.rc, RC::INVALID_CONFIG) << name;
        EXPECT_EQ(result.id, -1) << name;
    }

    EXPECT_EQ(config->opened, config->closed);
    EXPECT_EQ(createConnection(transport, "Events").id, 0);  // failures used no number
}

TEST(KD_TSS, TellsOfATypeThatItDoesNotKnow) {
    const ConnectionsFile file(
        {{"FastRtps", busSettings(166)},
         {"Events", {{"TopicType", "aspn2_msgs::idl::EventLog"}, {"PubSubType", "EventLog"}}}});
    const auto config = std::make_shared<WatchedConfig>();
    KD_TSS transport("Rovan");
    setReference(transport, config);
    ASSERT_EQ(initializeAt(transport, file.path()), RC::NO_ERROR);

    testing::internal::CaptureStderr();
    const Result result = createConnection(transport, "Events");

    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "!!!!! Could NOT register topic 0 with participant Rovan\n");
    EXPECT_EQ(result.rc, RC::NO_ACTION);
    EXPECT_EQ(result.id, -1);
    EXPECT_EQ(config->opened, config->closed);
}

TEST(KD_TSS, RegistersATypeOnceForAllConnectionsThatCarryIt) {
    const ConnectionsFile file({{"FastRtps", busSettings(167)}});
    const auto transport = join(file);
    const auto first = FACE::TSS::Topics::GetPubSubType("EventLogPubSubType");
    const auto second = FACE::TSS::Topics::GetPubSubType("EventLogPubSubType");

    EXPECT_FALSE(transport->isTopicRegistered("aspn2_msgs::idl::EventLog"));
    EXPECT_TRUE(transport->okRegisterTopic(first.get()));
    EXPECT_TRUE(transport->isTopicRegistered("aspn2_msgs::idl::EventLog"));
    EXPECT_TRUE(transport->okRegisterTopic(second.get()));
    EXPECT_FALSE(transport->okRegisterTopic(nullptr));
}

TEST(KD_TSS, KnowsNoConnectionBeyondThoseItMade) {
    const ConnectionsFile file({{"FastRtps", busSettings(168)}, {"Events", carries("EventLog")}});
    const auto transport = join(file);
    ASSERT_EQ(connect(*transport, "Events"), 0);

    EXPECT_THROW(transport->connectionMap_mutex_at(1), std::out_of_range);
    EXPECT_THROW(transport->connectionMap_mutex_at(0xFFFFFFFFu), std::out_of_range);
    // Neither a negative id nor one that is 0 in its low half means the first connection.
    for (const long long id : {-1LL, 1LL, 0x100000000LL, -0x100000000LL}) {
        EXPECT_EQ(unregisterSender(*transport, id), RC::INVALID_PARAM) << id;
        EXPECT_EQ(unregisterCallback(*transport, id), RC::INVALID_PARAM) << id;
    }
}

TEST(KD_TSS, RemovesEndpointsAndMakesThemAgain) {
    const ConnectionsFile file({{"FastRtps", busSettings(169)}, {"Events", carries("EventLog")}});
    const auto transport = join(file);
    const auto id = connect(*transport, "Events");
    const KD_TSS::Connection_t& connection = transport->connectionMap_mutex_at(0);
    Face<EventLog> face(transport);
    Inbox<EventLog> before;
    Inbox<EventLog> after;
    ASSERT_EQ(face.registerSender(id), RC::NO_ERROR);
    ASSERT_EQ(face.registerCallback(id, before.callback()), RC::NO_ERROR);
    ASSERT_EQ(face.send(id, EventLog()), RC::NO_ERROR);
    ASSERT_TRUE(eventually([&] { return before.count() == 1; }));

    EXPECT_EQ(unregisterCallback(*transport, id), RC::NO_ERROR);
    EXPECT_FALSE(connection.isSubscriber());
    EXPECT_EQ(connection.subscriberListener, nullptr);
    EXPECT_TRUE(connection.isPublisher());
    EXPECT_EQ(unregisterSender(*transport, id), RC::NO_ERROR);
    EXPECT_FALSE(connection.isPublisher());
    EXPECT_EQ(connection.publisherListener, nullptr);
    EXPECT_EQ(face.send(id, EventLog()), RC::NOT_AVAILABLE);

    // Nothing there any more is no error either.
    EXPECT_EQ(unregisterCallback(*transport, id), RC::NO_ERROR);
    EXPECT_EQ(unregisterSender(*transport, id), RC::NO_ERROR);

    EXPECT_EQ(face.registerCallback(id, after.callback()), RC::NO_ERROR);
    EXPECT_EQ(face.registerSender(id), RC::NO_ERROR);
    EXPECT_EQ(face.send(id, EventLog()), RC::NO_ERROR);
    EXPECT_TRUE(eventually([&] { return after.count() == 1; }));
    EXPECT_EQ(before.count(), 1u);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TypedTS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fastrtps/attributes/PublisherAttributes.h>
#include <fastrtps/attributes/SubscriberAttributes.h>
#include <fastrtps/publisher/Publisher.h>
#include <fastrtps/subscriber/Subscriber.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "aspn2_msgs/ChallengedEnvironment.h"
#include "aspn2_msgs/ChannelStatus.h"
#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/EventLogPubSubTypes.h"
#include "aspn2_msgs/GPSCryptoStatus.h"
#include "aspn2_msgs/GPSLineOfSight.h"
#include "aspn2_msgs/GPSTime.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "aspn2_msgs/PositionVelocity.h"
#include "aspn2_msgs/ReceiverStatus.h"
#include "aspn2_msgs/SVStatus.h"
#include "aspn2_msgs/UTCTime.h"
#include "aspn2_msgs/UtcDownlink.h"
#include "tests/face/TransportBus.h"

namespace {

using namespace transport_test;
using namespace aspn2_msgs::idl;
using FACE::TSS::KD_TSS;
using FACE::TSS::Details::KD_TypedTS;
using testing::HasSubstr;

const FACE::TSS::Read_Callback<EventLog> kIgnore =
    [](long long, long long, const EventLog&, const FACE::TSS::HEADER_TYPE&,
       const FACE::Sequence<FACE::TSS::QoS_Element>&, RC::Value&) {};

// A transport that is no KD_TSS.
class ForeignTransport : public FACE::TSS::Base {
  public:
    void Initialize(const FACE::String&, RC::Value&) override {}
    void Create_Connection(const FACE::String&, long long, long long&, int&, RC::Value&) override {}
    void Destroy_Connection(long long, RC::Value&) override {}
    void Unregister_Sender(long long, RC::Value&) override {}
    void Unregister_Callback(long long, RC::Value&) override {}
};

TEST(KD_TypedTS, NeverReceivesByCall) {
    KD_TypedTS<EventLog> face;
    long long transaction = 0;
    EventLog message;
    FACE::TSS::HEADER_TYPE header;
    FACE::Sequence<FACE::TSS::QoS_Element> qos;
    auto rc = RC::NO_ERROR;

    for (const long long connection : {-1LL, 0LL, 1LL}) {
        try {
            face.Receive_Message(connection, 0, transaction, message, header, qos, rc);
            FAIL() << "it returned";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "KD_TypedTS::Receive_Message() is not supported.");
        }
    }
}

TEST(KD_TypedTS, TakesOneTransportOfTheRightClass) {
    KD_TypedTS<EventLog> face;
    const auto set = [&face](const std::shared_ptr<FACE::TSS::Base>& base) {
        auto rc = RC::INVALID_MODE;
        face.Set_Reference("TSS", base, 0, rc);
        return rc;
    };

    EXPECT_EQ(set(nullptr), RC::INVALID_PARAM);
    EXPECT_EQ(set(std::make_shared<ForeignTransport>()), RC::INVALID_PARAM);
    EXPECT_EQ(set(std::make_shared<KD_TSS>("Tester")), RC::NO_ERROR);
    EXPECT_EQ(set(std::make_shared<KD_TSS>("Tester")), RC::NOT_AVAILABLE);
    EXPECT_EQ(set(nullptr), RC::NOT_AVAILABLE);
}

TEST(KD_TypedTS, IsNotAvailableBeforeTheTransport) {
    Face<EventLog> face(std::make_shared<KD_TSS>("Tester"));
    EXPECT_EQ(face.send(0, EventLog()), RC::NOT_AVAILABLE);
    EXPECT_EQ(face.registerSender(0), RC::NOT_AVAILABLE);
    EXPECT_EQ(face.registerCallback(0, kIgnore), RC::NOT_AVAILABLE);

    KD_TypedTS<EventLog> loose;  // no transport at all
    auto rc = RC::NO_ERROR;
    long long transaction = 0;
    loose.Send_Message(0, 0, transaction, EventLog(), rc);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
    loose.Register_Sender(0, rc = RC::NO_ERROR);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
    loose.Register_Callback(0, kIgnore, rc = RC::NO_ERROR);
    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
}

TEST(KD_TypedTS, MakesOneEndpointOfEachKindForAConnection) {
    const ConnectionsFile file({{"FastRtps", busSettings(170)}, {"Events", carries("EventLog")}});
    const auto transport = join(file);
    const auto id = connect(*transport, "Events");
    const KD_TSS::Connection_t& connection = transport->connectionMap_mutex_at(0);
    Face<EventLog> face(transport);

    for (const long long unknown : {-1LL, 1LL, 0x100000000LL}) {
        EXPECT_EQ(face.send(unknown, EventLog()), RC::INVALID_PARAM) << unknown;
        EXPECT_EQ(face.registerSender(unknown), RC::INVALID_PARAM) << unknown;
        EXPECT_EQ(face.registerCallback(unknown, kIgnore), RC::INVALID_PARAM) << unknown;
    }

    EXPECT_EQ(face.send(id, EventLog()), RC::NOT_AVAILABLE);
    EXPECT_EQ(face.registerCallback(id, kIgnore), RC::NO_ERROR);
    EXPECT_EQ(face.send(id, EventLog()), RC::NOT_AVAILABLE);  // a subscriber is no publisher
    EXPECT_EQ(face.registerSender(id), RC::NO_ERROR);
    EXPECT_EQ(face.send(id, EventLog()), RC::NO_ERROR);

    const auto* publisher = connection.publisher.load();
    const auto* subscriber = connection.subscriber.load();
    EXPECT_EQ(face.registerSender(id), RC::NO_ACTION);
    EXPECT_EQ(face.registerCallback(id, kIgnore), RC::NO_ACTION);
    EXPECT_EQ(Face<EventLog>(transport).registerSender(id), RC::NO_ACTION);
    EXPECT_EQ(connection.publisher, publisher);
    EXPECT_EQ(connection.subscriber, subscriber);
}

TEST(KD_TypedTS, TellsOfEndpointsThatTheBusDoesNotMake) {
    const ConnectionsFile file(
        {{"FastRtps", busSettings(171)},
         {"Events", {{"TopicType", "Nobody::Knows"}, {"PubSubType", "EventLogPubSubType"}}}});
    const auto transport = join(file, "Rovan");
    const auto id = connect(*transport, "Events");
    const KD_TSS::Connection_t& connection = transport->connectionMap_mutex_at(0);
    Face<EventLog> face(transport);

    testing::internal::CaptureStderr();
    EXPECT_EQ(face.registerSender(id), RC::CONNECTION_CLOSED);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("Participant Rovan error creating publisher for topic: Events\n"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(face.registerCallback(id, kIgnore), RC::CONNECTION_CLOSED);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("Participant Rovan error creating subscriber for topic: Events\n"));

    EXPECT_FALSE(connection.isPublisher());
    EXPECT_FALSE(connection.isSubscriber());
    EXPECT_EQ(connection.publisherListener, nullptr);
    EXPECT_EQ(connection.subscriberListener, nullptr);
    EXPECT_EQ(face.send(id, EventLog()), RC::NOT_AVAILABLE);
}

TEST(KD_TypedTS, TellsOfAHistoryWithoutDepth) {
    for (const char* depth : {"0", "-1"}) {
        const ConnectionsFile file({{"FastRtps", busSettings(172, {{"HistoryDepth", depth}})},
                                    {"Events", carries("EventLog")}});
        const auto transport = join(file, "Rovan");
        const auto id = connect(*transport, "Events");
        Face<EventLog> face(transport);

        testing::internal::CaptureStderr();
        EXPECT_EQ(face.registerSender(id), RC::CONNECTION_CLOSED);
        EXPECT_EQ(face.registerCallback(id, kIgnore), RC::CONNECTION_CLOSED);

        const std::string lines = testing::internal::GetCapturedStderr();
        EXPECT_THAT(lines, HasSubstr("Participant Rovan invalid publisher QOS for topic: Events; "
                                     "see error log\n"));
        EXPECT_THAT(lines, HasSubstr("Participant Rovan invalid subscriber QOS for topic: Events; "
                                     "see error log\n"));
    }
}

// A type support whose serialization does what the test wants.
class BrokenEventLog : public EventLogPubSubType {
  public:
    enum What { kRefuse, kThrowException, kThrowNumber } what = kRefuse;

    bool serialize(void*, eprosima::fastrtps::rtps::SerializedPayload_t*) override {
        if (what == kThrowException) {
            throw std::runtime_error("broken in two");
        }
        if (what == kThrowNumber) {
            throw 42;
        }
        return false;
    }
};

TEST(KD_TypedTS, TurnsWhatGoesWrongInSendingIntoACode) {
    BrokenEventLog broken;  // outlives the transport that it is registered with
    const ConnectionsFile file({{"FastRtps", busSettings(173)}, {"Events", carries("EventLog")}});
    const auto transport = join(file);
    ASSERT_TRUE(transport->okRegisterTopic(&broken));  // before the real one
    const auto id = connect(*transport, "Events");
    Face<EventLog> face(transport);

    ASSERT_EQ(face.registerSender(id), RC::NO_ERROR);
    EXPECT_EQ(face.send(id, EventLog()), RC::DATA_OVERFLOW);

    broken.what = BrokenEventLog::kThrowException;
    testing::internal::CaptureStderr();
    EXPECT_EQ(face.send(id, EventLog()), RC::CONNECTION_CLOSED);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "broken in two\n");

    broken.what = BrokenEventLog::kThrowNumber;
    EXPECT_EQ(face.send(id, EventLog()), RC::NO_ACTION);
}

TEST(KD_TypedTS, RefusesAConnectionThatCarriesAnotherType) {
    const ConnectionsFile file({{"FastRtps", busSettings(174)},
                                {"Command", carries("CommandResponse")},
                                {"Time", carries("GPSTime")}});
    const auto transport = join(file, "Rovan");
    const auto id = connect(*transport, "Command");
    Face<EventLog> face(transport);

    testing::internal::CaptureStderr();
    EXPECT_EQ(face.registerSender(id), RC::CONNECTION_CLOSED);
    EXPECT_EQ(face.registerCallback(id, kIgnore), RC::CONNECTION_CLOSED);
    ASSERT_EQ(Face<CommandResponse>(transport).registerSender(id), RC::NO_ERROR);
    EXPECT_EQ(face.send(id, EventLog()), RC::CONNECTION_CLOSED);

    const std::string line =
        "Participant Rovan topic Command carries aspn2_msgs::idl::CommandResponse, not "
        "aspn2_msgs::idl::EventLog\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line + line);
}

TEST(KD_TypedTS, GivesItsEndpointsTheSettingsOfTheTransport) {
    const ConnectionsFile file(
        {{"FastRtps", busSettings(175, {{"HistoryDepth", "0x10"}, {"BackFillHistory", "TRUE"}})},
         {"Events", carries("EventLog")}});
    const auto transport = join(file);
    const auto id = connect(*transport, "Events");
    Face<EventLog> face(transport);
    ASSERT_EQ(face.registerSender(id), RC::NO_ERROR);
    ASSERT_EQ(face.registerCallback(id, kIgnore), RC::NO_ERROR);
    const KD_TSS::Connection_t& connection = transport->connectionMap_mutex_at(0);

    const auto& writer = connection.publisher.load()->getAttributes();
    const auto& reader = connection.subscriber.load()->getAttributes();

    EXPECT_EQ(writer.topic.topicName.to_string(), "Events");
    EXPECT_EQ(reader.topic.topicName.to_string(), "Events");
    EXPECT_EQ(writer.topic.topicDataType.to_string(), "aspn2_msgs::idl::EventLog");
    EXPECT_EQ(reader.topic.topicDataType.to_string(), "aspn2_msgs::idl::EventLog");
    EXPECT_EQ(writer.topic.historyQos.depth, 16);
    EXPECT_EQ(reader.topic.historyQos.depth, 16);
    EXPECT_EQ(writer.topic.resourceLimitsQos.max_samples, 16);
    EXPECT_EQ(reader.topic.resourceLimitsQos.max_samples, 16);
    using namespace eprosima::fastrtps;
    EXPECT_EQ(writer.qos.m_durability.kind, TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(reader.qos.m_durability.kind, TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(writer.qos.m_reliability.kind, RELIABLE_RELIABILITY_QOS);
    EXPECT_EQ(reader.qos.m_reliability.kind, RELIABLE_RELIABILITY_QOS);
}

TEST(KD_TypedTS, GivesItsEndpointsBestEffortAndNoBackFillWhenAsked) {
    const ConnectionsFile file(
        {{"FastRtps", busSettings(176, {{"UseBestEffort", "1"}, {"BackFillHistory", "no"}})},
         {"Events", carries("EventLog")}});
    const auto transport = join(file);
    const auto id = connect(*transport, "Events");
    Face<EventLog> face(transport);
    ASSERT_EQ(face.registerSender(id), RC::NO_ERROR);
    ASSERT_EQ(face.registerCallback(id, kIgnore), RC::NO_ERROR);
    const KD_TSS::Connection_t& connection = transport->connectionMap_mutex_at(0);

    const auto& writer = connection.publisher.load()->getAttributes();
    const auto& reader = connection.subscriber.load()->getAttributes();

    using namespace eprosima::fastrtps;
    EXPECT_EQ(writer.qos.m_durability.kind, TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(reader.qos.m_durability.kind, VOLATILE_DURABILITY_QOS);
    EXPECT_EQ(writer.qos.m_reliability.kind, BEST_EFFORT_RELIABILITY_QOS);
    EXPECT_EQ(reader.qos.m_reliability.kind, BEST_EFFORT_RELIABILITY_QOS);
}

template <typename T>
void expectARoundTrip(const std::shared_ptr<KD_TSS>& transport, const char* type) {
    const auto id = connect(*transport, type);
    Face<T> face(transport);
    Inbox<T> inbox;
    T message;
    message.header().seq_num(id + 1000);
    EXPECT_EQ(face.registerSender(id), RC::NO_ERROR) << type;
    EXPECT_EQ(face.registerCallback(id, inbox.callback()), RC::NO_ERROR) << type;

    // What is sent before the two have met is not for a reader without back-fill.
    EXPECT_TRUE(eventually([&] {
        EXPECT_EQ(face.send(id, message), RC::NO_ERROR) << type;
        return inbox.count() > 0;
    })) << type;
    auto rc = RC::NO_ERROR;
    transport->Unregister_Callback(id, rc);

    ASSERT_FALSE(inbox.messages().empty()) << type;
    EXPECT_EQ(inbox.messages().front().header().seq_num(), id + 1000) << type;
}

TEST(KD_TypedTS, CarriesEachMessageTypeOfThisServer) {
    const char* const types[] = {
        "EventLog",       "CommandResponse", "MaintenanceEvent",      "SVStatus",
        "GPSLineOfSight", "GPSCryptoStatus", "ChallengedEnvironment", "UTCTime",
        "GPSTime",        "ChannelStatus",   "ReceiverStatus",        "PositionVelocity",
        "UtcDownlink"};
    std::map<std::string, Parameters> containers{{"FastRtps", busSettings(177)}};
    for (const char* type : types) {
        containers[type] = carries(type);
    }
    const ConnectionsFile file(containers);
    const auto transport = join(file);

    expectARoundTrip<EventLog>(transport, "EventLog");
    expectARoundTrip<CommandResponse>(transport, "CommandResponse");
    expectARoundTrip<MaintenanceEvent>(transport, "MaintenanceEvent");
    expectARoundTrip<SVStatus>(transport, "SVStatus");
    expectARoundTrip<GPSLineOfSight>(transport, "GPSLineOfSight");
    expectARoundTrip<GPSCryptoStatus>(transport, "GPSCryptoStatus");
    expectARoundTrip<ChallengedEnvironment>(transport, "ChallengedEnvironment");
    expectARoundTrip<UTCTime>(transport, "UTCTime");
    expectARoundTrip<GPSTime>(transport, "GPSTime");
    expectARoundTrip<ChannelStatus>(transport, "ChannelStatus");
    expectARoundTrip<ReceiverStatus>(transport, "ReceiverStatus");
    expectARoundTrip<PositionVelocity>(transport, "PositionVelocity");
    expectARoundTrip<UtcDownlink>(transport, "UtcDownlink");
}

}  // namespace

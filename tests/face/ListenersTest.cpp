// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fastdds/rtps/RTPSDomain.h>
#include <fastdds/rtps/attributes/HistoryAttributes.h>
#include <fastdds/rtps/attributes/WriterAttributes.h>
#include <fastdds/rtps/common/CacheChange.h>
#include <fastdds/rtps/common/MatchingInfo.h>
#include <fastdds/rtps/history/WriterHistory.h>
#include <fastdds/rtps/participant/RTPSParticipant.h>
#include <fastdds/rtps/writer/RTPSWriter.h>
#include <fastdds/rtps/writer/WriterListener.h>
#include <fastrtps/attributes/TopicAttributes.h>
#include <fastrtps/publisher/Publisher.h>
#include <fastrtps/qos/WriterQos.h>
#include <fastrtps/subscriber/Subscriber.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/EventLogPubSubTypes.h"
#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Listeners.h"
#include "tests/face/TransportBus.h"

namespace {

using namespace eprosima::fastrtps;
using namespace transport_test;
using namespace FACE::TSS::Listeners;
using aspn2_msgs::idl::EventLog;
using FACE::TSS::HEADER_TYPE;
using FACE::TSS::KD_TSS;
using FACE::TSS::QoS_Element;
using testing::ElementsAre;
using testing::Pair;

std::pair<std::string, std::string> texts(const QoS_Element& element) {
    return {FACE::toStdString(element.name), FACE::toStdString(element.value)};
}

EventLog event(const std::string& text) {
    EventLog message;
    message.eventlog(text);
    return message;
}

TEST(Listeners, ReadTheEntityIdOfAGuidAsABigEndianNumber) {
    rtps::GUID_t guid;
    std::fill(std::begin(guid.guidPrefix.value), std::end(guid.guidPrefix.value), rtps::octet{9});
    const auto uid = [&guid](rtps::octet b12, rtps::octet b13, rtps::octet b14, rtps::octet b15) {
        const rtps::octet bytes[] = {b12, b13, b14, b15};
        std::copy(std::begin(bytes), std::end(bytes), std::begin(guid.entityId.value));
        return GuidToUid(guid);
    };

    EXPECT_EQ(uid(0x00, 0x00, 0x01, 0x03), 0x103);
    EXPECT_EQ(uid(0x12, 0x34, 0x56, 0x78), 0x12345678);
    EXPECT_EQ(uid(0xFF, 0xFF, 0xFF, 0xFE), 0xFFFFFFFELL);  // widened, not sign-extended
    EXPECT_EQ(uid(0, 0, 0, 0), 0);
}

TEST(Listeners, NameTheKindsOfDurability) {
    const auto element = [](int kind) {
        DurabilityQosPolicy policy;
        policy.kind = static_cast<DurabilityQosPolicyKind>(kind);
        return texts(DurabilityQosPolicyToElement(policy));
    };

    EXPECT_THAT(element(0), Pair("DurabilityQosPolicy", "VOLATILE_DURABILITY_QOS"));
    EXPECT_THAT(element(1), Pair("DurabilityQosPolicy", "TRANSIENT_LOCAL_DURABILITY_QOS"));
    EXPECT_THAT(element(2), Pair("DurabilityQosPolicy", "TRANSIENT_DURABILITY_QOS"));
    EXPECT_THAT(element(3), Pair("DurabilityQosPolicy", "PERSISTENT_DURABILITY_QOS"));
    EXPECT_THAT(element(4), Pair("DurabilityQosPolicy", "UNKNOWN_DURABILITY_QOS"));
    EXPECT_THAT(element(255), Pair("DurabilityQosPolicy", "UNKNOWN_DURABILITY_QOS"));
}

TEST(Listeners, NameTheKindsOfLiveliness) {
    const auto element = [](int kind) {
        LivelinessQosPolicy policy;
        policy.kind = static_cast<LivelinessQosPolicyKind>(kind);
        return texts(LivelinessQosPolicyToElement(policy));
    };

    EXPECT_THAT(element(0), Pair("LivelinessQosPolicy", "AUTOMATIC_LIVELINESS_QOS"));
    EXPECT_THAT(element(1), Pair("LivelinessQosPolicy", "MANUAL_BY_PARTICIPANT_LIVELINESS_QOS"));
    EXPECT_THAT(element(2), Pair("LivelinessQosPolicy", "MANUAL_BY_TOPIC_LIVELINESS_QOS"));
    EXPECT_THAT(element(3), Pair("LivelinessQosPolicy", "UNKNOWN_LIVELINESS_QOS"));
}

TEST(Listeners, NameTheKindsOfReliability) {
    const auto element = [](int kind) {
        ReliabilityQosPolicy policy;
        policy.kind = static_cast<ReliabilityQosPolicyKind>(kind);
        return texts(ReliabilityQosPolicyToElement(policy));
    };

    EXPECT_THAT(element(1), Pair("ReliabilityQosPolicy", "BEST_EFFORT_RELIABILITY_QOS"));
    EXPECT_THAT(element(2), Pair("ReliabilityQosPolicy", "RELIABLE_RELIABILITY_QOS"));
    EXPECT_THAT(element(0), Pair("ReliabilityQosPolicy", "UNKNOWN_RELIABILITY_QOS"));
    EXPECT_THAT(element(3), Pair("ReliabilityQosPolicy", "UNKNOWN_RELIABILITY_QOS"));
}

TEST(Listeners, CountWhoMatchesThem) {
    PublisherListenerBase publisher("Tester");
    SubscriberListenerBase subscriber("Tester");
    rtps::MatchingInfo found(rtps::MATCHED_MATCHING, rtps::GUID_t());
    rtps::MatchingInfo lost(rtps::REMOVED_MATCHING, rtps::GUID_t());

    publisher.onPublicationMatched(nullptr, found);
    publisher.onPublicationMatched(nullptr, found);
    subscriber.onSubscriptionMatched(nullptr, found);
    EXPECT_EQ(publisher.matched(), 2);
    EXPECT_EQ(subscriber.matched(), 1);

    publisher.onPublicationMatched(nullptr, lost);
    subscriber.onSubscriptionMatched(nullptr, lost);
    subscriber.onSubscriptionMatched(nullptr, lost);
    EXPECT_EQ(publisher.matched(), 1);
    EXPECT_EQ(subscriber.matched(), -1);
}

// A subscriber with samples that no listener has taken yet.
class WaitingSamples {
  public:
    WaitingSamples(int domain, const std::vector<std::string>& events)
        : m_file({{"FastRtps", busSettings(domain)}, {"Events", carries("EventLog")}}),
          m_transport(join(m_file)),
          m_connection(m_transport->connectionMap_mutex_at(
              KD_TSS::connectionKey(connect(*m_transport, "Events")))) {
        m_transport->registerSubscriber(m_connection,
                                        std::make_unique<SubscriberListenerBase>("Tester"));
        Face<EventLog> face(m_transport);
        EXPECT_EQ(face.registerSender(0), RC::NO_ERROR);
        for (const std::string& text : events) {
            EXPECT_EQ(face.send(0, event(text)), RC::NO_ERROR);
        }
        EXPECT_TRUE(eventually([&] { return subscriber()->get_unread_count() == events.size(); }));
    }
    Subscriber* subscriber() const { return m_connection.subscriber; }
    Publisher* publisher() const { return m_connection.publisher; }

  private:
    ConnectionsFile m_file;
    std::shared_ptr<KD_TSS> m_transport;
    KD_TSS::Connection_t& m_connection;
};

TEST(Listeners, TakeExactlyOneSampleForANotification) {
    const WaitingSamples waiting(178, {"first", "second", "third"});
    Inbox<EventLog> inbox;
    SubscriberListenerTyped<EventLog> listener("Tester", 5, inbox.callback());

    listener.onNewDataMessage(waiting.subscriber());
    EXPECT_EQ(waiting.subscriber()->get_unread_count(), 2u);
    ASSERT_EQ(inbox.count(), 1u);
    EXPECT_EQ(inbox.messages()[0].eventlog(), "first");

    listener.onNewDataMessage(waiting.subscriber());
    listener.onNewDataMessage(waiting.subscriber());
    listener.onNewDataMessage(waiting.subscriber());  // there is none left
    ASSERT_EQ(inbox.count(), 3u);
    EXPECT_EQ(inbox.messages()[1].eventlog(), "second");
    EXPECT_EQ(inbox.messages()[2].eventlog(), "third");
}

TEST(Listeners, TellWhereASampleComesFrom) {
    const auto now = [] {
        return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch())
            .count();
    };
    const auto before = now();
    const WaitingSamples waiting(179, {"first", "second"});
    struct Call {
        long long connection;
        long long transaction;
        HEADER_TYPE header;
        std::vector<std::pair<std::string, std::string>> qos;
    };
    std::vector<Call> calls;
    SubscriberListenerTyped<EventLog> listener(
        "Tester", 0x123456789ALL,
        [&calls](long long connection, long long transaction, const EventLog&,
                 const HEADER_TYPE& header, const FACE::Sequence<QoS_Element>& qos, RC::Value& rc) {
            Call call{connection, transaction, header, {}};
            for (uint32_t i = 0; i < qos.length(); ++i) {
                call.qos.push_back(texts(qos[i]));
            }
            calls.push_back(call);
            rc = RC::DATA_OVERFLOW;  // nobody looks
            EXPECT_TRUE(qos.is_managed());
            EXPECT_FALSE(qos.is_bounded());
        });

    listener.onNewDataMessage(waiting.subscriber());
    listener.onNewDataMessage(waiting.subscriber());

    ASSERT_EQ(calls.size(), 2u);
    for (const Call& call : calls) {
        EXPECT_EQ(call.connection, 0x123456789ALL);
        EXPECT_EQ(call.header.sourceUid, GuidToUid(waiting.publisher()->getGuid()));
        EXPECT_EQ(call.header.destinationUid, GuidToUid(waiting.subscriber()->getGuid()));
        EXPECT_GE(call.header.timestamp, before - 1000);  // the library counts in 2^-32 s
        EXPECT_LE(call.header.timestamp, now() + 1000);
        EXPECT_THAT(call.qos,
                    ElementsAre(Pair("DurabilityQosPolicy", "VOLATILE_DURABILITY_QOS"),
                                Pair("LivelinessQosPolicy", "AUTOMATIC_LIVELINESS_QOS"),
                                Pair("ReliabilityQosPolicy", "RELIABLE_RELIABILITY_QOS")));
    }
    EXPECT_EQ(calls[0].transaction, 1);  // the writer's sequence numbers
    EXPECT_EQ(calls[1].transaction, 2);
    EXPECT_NE(calls[0].header.sourceUid, calls[0].header.destinationUid);
    // The last byte of an entity id is its kind: user-defined writer, reader, without key.
    EXPECT_EQ(calls[0].header.sourceUid & 0xFF, 0x03);
    EXPECT_EQ(calls[0].header.destinationUid & 0xFF, 0x04);
}

TEST(Listeners, ThrowForASampleWithoutACallback) {
    const WaitingSamples waiting(180, {"only"});
    SubscriberListenerTyped<EventLog> listener("Tester", 0, nullptr);

    EXPECT_THROW(listener.onNewDataMessage(waiting.subscriber()), std::bad_function_call);
    EXPECT_NO_THROW(listener.onNewDataMessage(waiting.subscriber()));  // no sample, no call
}

// A writer below the typed interface, which can say that an instance was disposed of.
class BareWriter : private rtps::WriterListener {
  public:
    BareWriter(int domain, const char* topic, const char* type) : m_history(historyAttributes()) {
        KD_TSS::Settings_t settings;
        settings.domainId = static_cast<uint32_t>(domain);
        settings.useTransport = "UDP";
        m_participant = rtps::RTPSDomain::createParticipant(
            settings.domainId, FACE::TSS::Attributes::participant(settings, "Bare").rtps);
        rtps::WriterAttributes attributes;
        attributes.endpoint.reliabilityKind = rtps::RELIABLE;
        attributes.endpoint.durabilityKind = rtps::TRANSIENT_LOCAL;
        m_writer = rtps::RTPSDomain::createRTPSWriter(m_participant, attributes, &m_history, this);
        WriterQos qos;
        qos.m_durability.kind = TRANSIENT_LOCAL_DURABILITY_QOS;
        m_participant->registerWriter(m_writer, TopicAttributes(topic, type), qos);
    }
    ~BareWriter() override {
        rtps::RTPSDomain::removeRTPSWriter(m_writer);
        rtps::RTPSDomain::removeRTPSParticipant(m_participant);
    }

    bool hasReader() const { return m_matched; }

    void write(rtps::ChangeKind_t kind, EventLog message) {
        aspn2_msgs::idl::EventLogPubSubType type;
        rtps::CacheChange_t* change =
            m_writer->new_change(type.getSerializedSizeProvider(&message), kind);
        ASSERT_NE(change, nullptr);
        ASSERT_TRUE(type.serialize(&message, &change->serializedPayload));
        ASSERT_TRUE(m_history.add_change(change));
    }

  private:
    static rtps::HistoryAttributes historyAttributes() {
        return {rtps::PREALLOCATED_WITH_REALLOC_MEMORY_MODE, 1024, 8, 8};
    }

    void onWriterMatched(rtps::RTPSWriter*, rtps::MatchingInfo&) override { m_matched = true; }

    std::atomic<bool> m_matched{false};
    rtps::RTPSParticipant* m_participant = nullptr;
    rtps::WriterHistory m_history;
    rtps::RTPSWriter* m_writer = nullptr;
};

TEST(Listeners, KeepQuietAboutAnInstanceThatIsGone) {
    const ConnectionsFile file({{"FastRtps", busSettings(181)}, {"Events", carries("EventLog")}});
    const auto transport = join(file);
    const auto id = connect(*transport, "Events");
    Face<EventLog> face(transport);
    Inbox<EventLog> inbox;
    ASSERT_EQ(face.registerCallback(id, inbox.callback()), RC::NO_ERROR);
    const auto& connection = transport->connectionMap_mutex_at(0);
    BareWriter writer(181, "Events", "aspn2_msgs::idl::EventLog");
    ASSERT_TRUE(eventually(
        [&] { return writer.hasReader() && connection.subscriberListener->matched() == 1; }));

    writer.write(rtps::ALIVE, event("before"));
    writer.write(rtps::NOT_ALIVE_DISPOSED, event("disposed"));
    writer.write(rtps::NOT_ALIVE_UNREGISTERED, event("unregistered"));
    writer.write(rtps::NOT_ALIVE_DISPOSED_UNREGISTERED, event("both"));
    writer.write(rtps::ALIVE, event("after"));

    ASSERT_TRUE(eventually(
        [&] { return inbox.count() > 0 && inbox.messages().back().eventlog() == "after"; }));
    std::vector<std::string> received;
    for (const EventLog& message : inbox.messages()) {
        received.push_back(message.eventlog());
    }
    EXPECT_THAT(received, ElementsAre("before", "after"));
    EXPECT_EQ(connection.subscriber.load()->get_unread_count(), 0u);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Bus.h"

#include <fastrtps/Domain.h>
#include <fastrtps/participant/Participant.h>
#include <fastrtps/subscriber/SampleInfo.h>
#include <fastrtps/subscriber/Subscriber.h>
#include <fastrtps/subscriber/SubscriberListener.h>
#include <fmt/format.h>
#include <fastdds/dds/log/Log.hpp>
#include <fastdds/dds/log/StdoutErrConsumer.hpp>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Join.h"
#include "face/KD_TSS_Settings.h"

namespace Bus {
namespace {

using eprosima::fastrtps::Domain;
using eprosima::fastrtps::SampleInfo_t;
using eprosima::fastrtps::Subscriber;

constexpr const char* kTypePrefix = "aspn2_msgs::idl::";

// Standard output carries the samples; what the library has to say goes to standard error.
void logToStandardError() {
    using eprosima::fastdds::dds::Log;
    using eprosima::fastdds::dds::StdoutErrConsumer;
    auto consumer = std::make_unique<StdoutErrConsumer>();
    consumer->stderr_threshold(Log::Kind::Info);
    Log::ClearConsumers();
    Log::RegisterConsumer(std::move(consumer));
}

}  // namespace

// One topic: the server's kind of connection, and the listener that takes its samples.
class Bus::Subscription : public eprosima::fastrtps::SubscriberListener {
  public:
    Subscription(const Topic& topic, const Directory& directory, SampleHandler handler)
        : m_connection(topic.name, topic.typeName, topic.pubSubType),
          m_directory(directory),
          m_handler(std::move(handler)) {}

    FACE::TSS::KD_TSS::Connection_t& connection() { return m_connection; }

    // The library notifies once for each sample.
    void onNewDataMessage(Subscriber* subscriber) override {
        using std::chrono::nanoseconds;
        using std::chrono::system_clock;
        Sample sample;
        sample.arrival = std::chrono::steady_clock::now();
        sample.receivedNs = nanoseconds(system_clock::now().time_since_epoch()).count();
        sample.topic = m_connection.topicName;
        sample.typeName = m_connection.typeName;
        sample.message = makeMessage(sample.typeName);
        SampleInfo_t info;
        if (!subscriber->takeNextData(sample.message->data(), &info)) {
            sample.message.reset();
        } else if (info.sampleKind != eprosima::fastrtps::rtps::ALIVE) {
            return;
        } else {
            sample.writer = info.sample_identity.writer_guid();
            sample.publisher = m_directory.nameOf(sample.writer.guidPrefix);
            sample.sequence = info.sample_identity.sequence_number().to64long();
            sample.sentNs = info.sourceTimestamp.to_ns();
        }
        m_handler(std::move(sample));
    }

  private:
    FACE::TSS::KD_TSS::Connection_t m_connection;
    const Directory& m_directory;
    const SampleHandler m_handler;
};

Bus::Bus(const ConnectionsFile::Settings& settings, const std::string& name)
    : m_settings(settings) {
    logToStandardError();
    if (settings.domainId > FACE::TSS::kLastDomainId) {
        throw UsageError(fmt::format("no such domain: {}", settings.domainId));
    }
    if (FACE::TSS::Attributes::participant(settings, name).rtps.userTransports.empty()) {
        throw UsageError(fmt::format("unknown transport \"{}\"", settings.useTransport));
    }
    const FACE::TSS::Joined joined =
        FACE::TSS::joinBus(settings, name, {}, std::make_shared<Directory>);
    m_participant = joined.participant;
    m_directory = std::static_pointer_cast<Directory>(joined.others);
    if (m_participant == nullptr) {
        throw UsageError(fmt::format("cannot join the bus: domain {} over {}", settings.domainId,
                                     settings.useTransport));
    }
    m_directory->setOwnName(m_participant->getGuid().guidPrefix, name);
    m_connectionWatch = FACE::TSS::watchConnection(settings, name, joined);
}

Bus::~Bus() {
    m_connectionWatch.reset();
    Domain::removeParticipant(m_participant);
}

void Bus::subscribe(const Topic& topic, SampleHandler handler) {
    auto subscription = std::make_unique<Subscription>(topic, *m_directory, std::move(handler));
    auto& connection = subscription->connection();
    registerType(connection);
    const auto attributes = FACE::TSS::Attributes::subscriber(m_settings, connection);
    if (Domain::createSubscriber(m_participant, attributes, subscription.get()) == nullptr) {
        throw UsageError(
            fmt::format("cannot subscribe to the topic {} of type {}", topic.name, topic.typeName));
    }
    m_subscriptions.push_back(std::move(subscription));
}

Publisher& Bus::publish(const Topic& topic) {
    Publisher::Connection connection(topic.name, topic.typeName, topic.pubSubType);
    registerType(connection);
    m_publishers.push_back(
        std::make_unique<Publisher>(*m_participant, m_settings, std::move(connection)));
    return *m_publishers.back();
}

void Bus::registerType(const Publisher::Connection& connection) {
    if (connection.type == nullptr || makeMessage(connection.typeName) == nullptr) {
        throw UsageError(fmt::format("the topic {} has the unknown type {}", connection.topicName,
                                     connection.typeName));
    }
    eprosima::fastdds::dds::TopicDataType* registered = nullptr;
    if (!Domain::getRegisteredType(m_participant, connection.type->getName(), &registered) &&
        !Domain::registerType(m_participant, connection.type.get())) {
        throw UsageError(fmt::format("cannot use the type {} of the topic {}", connection.typeName,
                                     connection.topicName));
    }
}

Topic topicOf(const FoundTopic& found) {
    const std::string prefix = kTypePrefix;
    const bool isOurs = found.typeName.compare(0, prefix.size(), prefix) == 0;
    return {found.name, found.typeName,
            isOurs ? found.typeName.substr(prefix.size()) + "PubSubType" : ""};
}

}  // namespace Bus

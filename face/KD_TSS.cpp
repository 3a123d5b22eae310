// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS.h"

#include <fastrtps/Domain.h>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include <limits>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "face/KD_Config_Row.h"
#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Join.h"
#include "face/KD_TSS_Listeners.h"
#include "face/KD_TSS_Settings.h"
#include "face/KD_Topic_Helpers.h"
#include "utility/Console.h"

namespace FACE::TSS {
namespace {

using eprosima::fastdds::dds::TopicDataType;
using eprosima::fastrtps::Domain;
using RC = RETURN_CODE_TYPE;

const String kDomainName = kSettingsContainer;

void reportMissing(RC::Value code, const std::string& what) {
    Console::line("CFR:" + std::to_string(code) + ' ' + what + " was not available");
}

}  // namespace

KD_TSS::Connection_t::Connection_t(const std::string& topic, const std::string& busType,
                                   const std::string& pubSubType)
    : topicName(topic), typeName(busType), type(Topics::GetPubSubType(pubSubType)) {
}

KD_TSS::Connection_t::Connection_t(Connection_t&& other) noexcept
    : topicName(std::move(other.topicName)),
      typeName(std::move(other.typeName)),
      type(std::move(other.type)),
      publisherListener(std::move(other.publisherListener)),
      publisher(other.publisher.exchange(nullptr)),
      subscriberListener(std::move(other.subscriberListener)),
      subscriber(other.subscriber.exchange(nullptr)) {
}

KD_TSS::Connection_t::~Connection_t() = default;

void KD_TSS::Connection_t::setPublisher(std::unique_ptr<Listeners::PublisherListenerBase> listener,
                                        eprosima::fastrtps::Publisher* newPublisher) {
    publisherListener = std::move(listener);
    publisher = newPublisher;
}

void KD_TSS::Connection_t::setSubscriber(
    std::unique_ptr<Listeners::SubscriberListenerBase> listener,
    eprosima::fastrtps::Subscriber* newSubscriber) {
    subscriberListener = std::move(listener);
    subscriber = newSubscriber;
}

void KD_TSS::Connection_t::clearPublisher() {
    setPublisher(nullptr, nullptr);
}

void KD_TSS::Connection_t::clearSubscriber() {
    setSubscriber(nullptr, nullptr);
}

KD_TSS::KD_TSS(const std::string& participantName) : m_participantName(participantName) {
}

KD_TSS::~KD_TSS() {
    m_connectionWatch.reset();
    // Whoever still sends from a callback finds the service closed. Removing the participant ends
    // the endpoints, so that the connections can go with their listeners and types.
    if (m_initialised.exchange(false)) {
        Domain::removeParticipant(m_participant);
    }
}

void KD_TSS::Set_Reference(const String&, const std::shared_ptr<Configuration>& configuration,
                           long long, RC::Value& rc) {
    if (m_config) {
        rc = RC::NOT_AVAILABLE;
    } else if (!configuration) {
        rc = RC::INVALID_PARAM;
    } else {
        m_config = configuration;
        rc = RC::NO_ERROR;
    }
}

void KD_TSS::Initialize(const String& path, RC::Value& rc) {
    if (m_initialised) {
        rc = RC::NO_ACTION;
        return;
    }
    if (!m_config) {
        rc = RC::NOT_AVAILABLE;
        return;
    }
    RC::Value configCode = RC::NO_ERROR;
    m_config->Initialize(path, configCode);
    if (configCode != RC::NO_ERROR) {
        reportMissing(configCode, "Configuration " + toStdString(path));
        rc = RC::NOT_AVAILABLE;
        return;
    }
    KD_Config_Row row(*m_config, kDomainName);
    if (row.openCode() != RC::NO_ERROR) {
        reportMissing(row.openCode(), "Domain " + toStdString(kDomainName));
        rc = RC::NOT_AVAILABLE;
        return;
    }
    readSettings(row, m_settings);
    rc = row.code();
    if (rc != RC::NO_ERROR) {
        return;
    }
    try {
        join();
    } catch (const std::exception& problem) {
        Console::errorLine(problem.what());
        rc = RC::INVALID_CONFIG;
    }
}

void KD_TSS::join() {
    if (m_settings.domainId <= kLastDomainId) {
        const Joined joined = joinBus(m_settings, m_participantName);
        m_participant = joined.participant;
        m_others = joined.others;
        m_connectionWatch = watchConnection(m_settings, m_participantName, joined);
    }
    if (m_participant == nullptr) {
        throw std::runtime_error("Error creating participant " + m_participantName);
    }
    m_initialised = true;
}

void KD_TSS::Create_Connection(const String& name, long long, long long& id, int&, RC::Value& rc) {
    id = -1;
    if (!m_initialised || !m_config) {
        rc = RC::NOT_AVAILABLE;
        return;
    }
    const std::string topicName = toStdString(name);
    for (const auto& [key, connection] : m_connectionMap) {
        if (connection.topicName == topicName) {
            id = key;
            rc = RC::NO_ERROR;
            return;
        }
    }
    std::string typeName;
    std::string pubSubType;
    KD_Config_Row row(*m_config, name);
    readConnection(row, typeName, pubSubType);
    rc = row.code();
    if (rc != RC::NO_ERROR) {
        return;
    }
    Connection_t connection(topicName, typeName, pubSubType);
    if (!okRegisterTopic(connection.type.get())) {
        std::ostringstream text;
        text << "!!!!! Could NOT register topic " << connection.type.get() << " with participant "
             << m_participantName;
        Console::errorLine(text.str());
        rc = RC::NO_ACTION;
        return;
    }
    const std::lock_guard<std::mutex> lock(m_connectionMapMutex);
    const auto key = static_cast<uint32_t>(m_connectionMap.size());
    m_connectionMap.emplace(key, std::move(connection));
    id = key;
}

void KD_TSS::Destroy_Connection(long long, RC::Value& rc) {
    rc = m_initialised ? RC::NO_ERROR : RC::NOT_AVAILABLE;
}

template <typename Operation>
void KD_TSS::onConnection(long long id, RC::Value& rc, Operation operation) {
    if (!m_initialised) {
        rc = RC::NOT_AVAILABLE;
        return;
    }
    try {
        operation(connectionMap_mutex_at(connectionKey(id)));
        rc = RC::NO_ERROR;
    } catch (const std::out_of_range&) {
        rc = RC::INVALID_PARAM;
    } catch (...) {
        rc = RC::NO_ACTION;
    }
}

// The library's endpoint goes first: only then is its listener no longer used.

void KD_TSS::Unregister_Sender(long long id, RC::Value& rc) {
    onConnection(id, rc, [](Connection_t& connection) {
        if (connection.isPublisher()) {
            Domain::removePublisher(connection.publisher);
            connection.clearPublisher();
        }
    });
}

void KD_TSS::Unregister_Callback(long long id, RC::Value& rc) {
    onConnection(id, rc, [](Connection_t& connection) {
        if (connection.isSubscriber()) {
            Domain::removeSubscriber(connection.subscriber);
            connection.clearSubscriber();
        }
    });
}

uint32_t KD_TSS::connectionKey(long long id) {
    constexpr uint32_t kNoKey = std::numeric_limits<uint32_t>::max();
    return id < 0 || id > kNoKey ? kNoKey : static_cast<uint32_t>(id);
}

KD_TSS::Connection_t& KD_TSS::connectionMap_mutex_at(uint32_t id) {
    const std::lock_guard<std::mutex> lock(m_connectionMapMutex);
    return m_connectionMap.at(id);
}

bool KD_TSS::isTopicRegistered(const char* typeName) const {
    TopicDataType* type = nullptr;
    return Domain::getRegisteredType(m_participant, typeName, &type);
}

bool KD_TSS::okRegisterTopic(TopicDataType* type) {
    return type != nullptr &&
           (isTopicRegistered(type->getName()) || Domain::registerType(m_participant, type));
}

void KD_TSS::require(bool ok, const char* problem, const Connection_t& connection,
                     const char* hint) const {
    if (!ok) {
        throw std::runtime_error("Participant " + m_participantName + ' ' + problem +
                                 " for topic: " + connection.topicName + hint);
    }
}

void KD_TSS::registerPublisher(Connection_t& connection) {
    auto listener = std::make_unique<Listeners::PublisherListenerBase>(m_participantName);
    const auto attributes = Attributes::publisher(m_settings, connection);
    require(attributes.topic.checkQos() && attributes.qos.checkQos(), "invalid publisher QOS",
            connection, "; see error log");
    auto* publisher = Domain::createPublisher(m_participant, attributes, listener.get());
    require(publisher != nullptr, "error creating publisher", connection);
    connection.setPublisher(std::move(listener), publisher);
}

void KD_TSS::registerSubscriber(Connection_t& connection,
                                std::unique_ptr<Listeners::SubscriberListenerBase> listener) {
    const auto attributes = Attributes::subscriber(m_settings, connection);
    require(attributes.topic.checkQos() && attributes.qos.checkQos(), "invalid subscriber QOS",
            connection, "; see error log");
    auto* subscriber = Domain::createSubscriber(m_participant, attributes, listener.get());
    require(subscriber != nullptr, "error creating subscriber", connection);
    connection.setSubscriber(std::move(listener), subscriber);
}

}  // namespace FACE::TSS

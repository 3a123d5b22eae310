// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Directory.h"

#include <fastrtps/participant/Participant.h>

#include <algorithm>
#include <sstream>

namespace Bus {

using eprosima::fastrtps::Participant;
using eprosima::fastrtps::rtps::ParticipantDiscoveryInfo;
using eprosima::fastrtps::rtps::ReaderDiscoveryInfo;
using eprosima::fastrtps::rtps::WriterDiscoveryInfo;

std::vector<FoundTopic> Directory::topics() const {
    std::map<std::pair<std::string, std::string>, FoundTopic> found;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto& [guid, endpoint] : m_endpoints) {
            FoundTopic& topic = found[{endpoint.topic, endpoint.typeName}];
            (endpoint.publishes ? topic.publishers : topic.subscribers)
                .push_back(nameOfLocked(guid.guidPrefix));
        }
    }
    std::vector<FoundTopic> topics;
    for (auto& [key, topic] : found) {
        std::tie(topic.name, topic.typeName) = key;
        std::sort(topic.publishers.begin(), topic.publishers.end());
        std::sort(topic.subscribers.begin(), topic.subscribers.end());
        topics.push_back(std::move(topic));
    }
    return topics;
}

void Directory::setOwnName(const GuidPrefix& participant, const std::string& name) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_names[participant] = name;
}

std::string Directory::nameOf(const GuidPrefix& participant) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return nameOfLocked(participant);
}

std::string Directory::nameOfLocked(const GuidPrefix& participant) const {
    const auto found = m_names.find(participant);
    if (found != m_names.end() && !found->second.empty()) {
        return found->second;
    }
    std::ostringstream text;
    text << participant;
    return text.str();
}

uint64_t Directory::changes() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_changes;
}

void Directory::onParticipantDiscovery(Participant*, ParticipantDiscoveryInfo&& info) {
    count(info);
    const GuidPrefix& prefix = info.info.m_guid.guidPrefix;
    const bool gone = info.status == ParticipantDiscoveryInfo::REMOVED_PARTICIPANT ||
                      info.status == ParticipantDiscoveryInfo::DROPPED_PARTICIPANT;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!gone) {
        m_names[prefix] = info.info.m_participantName.to_string();
        return;
    }
    m_names.erase(prefix);
    for (auto i = m_endpoints.begin(); i != m_endpoints.end();) {
        if (i->first.guidPrefix == prefix) {
            i = m_endpoints.erase(i);
            ++m_changes;
        } else {
            ++i;
        }
    }
}

void Directory::onPublisherDiscovery(Participant* participant, WriterDiscoveryInfo&& info) {
    if (info.status == WriterDiscoveryInfo::REMOVED_WRITER) {
        remove(info.info.guid());
    } else {
        enter(*participant, info.info.guid(),
              {info.info.topicName().to_string(), info.info.typeName().to_string(), true});
    }
}

void Directory::onSubscriberDiscovery(Participant* participant, ReaderDiscoveryInfo&& info) {
    if (info.status == ReaderDiscoveryInfo::REMOVED_READER) {
        remove(info.info.guid());
    } else {
        enter(*participant, info.info.guid(),
              {info.info.topicName().to_string(), info.info.typeName().to_string(), false});
    }
}

void Directory::enter(const Participant& own, const Guid& guid, Endpoint endpoint) {
    if (guid.guidPrefix == own.getGuid().guidPrefix) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_endpoints[guid] = std::move(endpoint);
    ++m_changes;
}

void Directory::remove(const Guid& guid) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_changes += m_endpoints.erase(guid);
}

}  // namespace Bus

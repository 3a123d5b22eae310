// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS_Listeners.h"

#include <fastdds/rtps/common/MatchingInfo.h>

namespace FACE::TSS::Listeners {
namespace {

using namespace eprosima::fastrtps;

int step(const rtps::MatchingInfo& info) {
    return info.status == rtps::MATCHED_MATCHING ? 1 : -1;
}

const char* text(DurabilityQosPolicyKind kind) {
    switch (kind) {
        case VOLATILE_DURABILITY_QOS:
            return "VOLATILE_DURABILITY_QOS";
        case TRANSIENT_LOCAL_DURABILITY_QOS:
            return "TRANSIENT_LOCAL_DURABILITY_QOS";
        case TRANSIENT_DURABILITY_QOS:
            return "TRANSIENT_DURABILITY_QOS";
        case PERSISTENT_DURABILITY_QOS:
            return "PERSISTENT_DURABILITY_QOS";
    }
    return "UNKNOWN_DURABILITY_QOS";
}

const char* text(LivelinessQosPolicyKind kind) {
    switch (kind) {
        case AUTOMATIC_LIVELINESS_QOS:
            return "AUTOMATIC_LIVELINESS_QOS";
        case MANUAL_BY_PARTICIPANT_LIVELINESS_QOS:
            return "MANUAL_BY_PARTICIPANT_LIVELINESS_QOS";
        case MANUAL_BY_TOPIC_LIVELINESS_QOS:
            return "MANUAL_BY_TOPIC_LIVELINESS_QOS";
    }
    return "UNKNOWN_LIVELINESS_QOS";
}

const char* text(ReliabilityQosPolicyKind kind) {
    switch (kind) {
        case BEST_EFFORT_RELIABILITY_QOS:
            return "BEST_EFFORT_RELIABILITY_QOS";
        case RELIABLE_RELIABILITY_QOS:
            return "RELIABLE_RELIABILITY_QOS";
    }
    return "UNKNOWN_RELIABILITY_QOS";
}

}  // namespace

int64_t GuidToUid(const rtps::GUID_t& guid) {
    uint32_t uid = 0;
    for (const rtps::octet byte : guid.entityId.value) {
        uid = (uid << 8) | byte;
    }
    return uid;
}

QoS_Element DurabilityQosPolicyToElement(const DurabilityQosPolicy& policy) {
    return {"DurabilityQosPolicy", text(policy.kind)};
}

QoS_Element LivelinessQosPolicyToElement(const LivelinessQosPolicy& policy) {
    return {"LivelinessQosPolicy", text(policy.kind)};
}

QoS_Element ReliabilityQosPolicyToElement(const ReliabilityQosPolicy& policy) {
    return {"ReliabilityQosPolicy", text(policy.kind)};
}

PublisherListenerBase::PublisherListenerBase(std::string participantName)
    : m_participantName(std::move(participantName)) {
}

void PublisherListenerBase::onPublicationMatched(Publisher*, rtps::MatchingInfo& info) {
    m_matched += step(info);
}

SubscriberListenerBase::SubscriberListenerBase(std::string participantName)
    : m_participantName(std::move(participantName)) {
}

void SubscriberListenerBase::onSubscriptionMatched(Subscriber*, rtps::MatchingInfo& info) {
    m_matched += step(info);
}

bool SubscriberListenerBase::take(Subscriber& subscriber, void* message, long long& transaction,
                                  HEADER_TYPE& header) {
    SampleInfo_t info;
    if (!subscriber.takeNextData(message, &info) || info.sampleKind != rtps::ALIVE) {
        return false;
    }
    const rtps::SequenceNumber_t& number = info.sample_identity.sequence_number();
    transaction =
        static_cast<long long>((uint64_t{static_cast<uint32_t>(number.high)} << 32) | number.low);
    header.sourceUid = GuidToUid(info.sample_identity.writer_guid());
    header.destinationUid = GuidToUid(subscriber.getGuid());
    header.timestamp = info.sourceTimestamp.to_ns();
    return true;
}

Sequence<QoS_Element> SubscriberListenerBase::qosList(const Subscriber& subscriber) {
    const SubscriberAttributes& attributes = subscriber.getAttributes();
    Sequence<QoS_Element> list;
    // An element that finds no memory is left out: the sample matters more than its description.
    list.append(DurabilityQosPolicyToElement(attributes.qos.m_durability));
    list.append(LivelinessQosPolicyToElement(attributes.qos.m_liveliness));
    list.append(ReliabilityQosPolicyToElement(attributes.qos.m_reliability));
    return list;
}

}  // namespace FACE::TSS::Listeners

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastdds/rtps/common/Guid.h>
#include <fastrtps/attributes/SubscriberAttributes.h>
#include <fastrtps/publisher/PublisherListener.h>
#include <fastrtps/qos/QosPolicies.h>
#include <fastrtps/subscriber/SampleInfo.h>
#include <fastrtps/subscriber/Subscriber.h>
#include <fastrtps/subscriber/SubscriberListener.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "face/FACE_TSS.h"

// What the bus library calls back, on threads of its own. A listener must outlive its endpoint.
namespace FACE::TSS::Listeners {

/// The entity id of a GUID, its last four bytes, read as a big-endian number.
int64_t GuidToUid(const eprosima::fastrtps::rtps::GUID_t& guid);

// A policy as a pair of texts; a kind without a name gives a value that begins "UNKNOWN_".
QoS_Element DurabilityQosPolicyToElement(const eprosima::fastrtps::DurabilityQosPolicy& policy);
QoS_Element LivelinessQosPolicyToElement(const eprosima::fastrtps::LivelinessQosPolicy& policy);
QoS_Element ReliabilityQosPolicyToElement(const eprosima::fastrtps::ReliabilityQosPolicy& policy);

// Counts the subscribers that match its publisher.
class PublisherListenerBase : public eprosima::fastrtps::PublisherListener {
  public:
    explicit PublisherListenerBase(std::string participantName);
    ~PublisherListenerBase() override = default;
    void onPublicationMatched(eprosima::fastrtps::Publisher* publisher,
                              eprosima::fastrtps::rtps::MatchingInfo& info) override;
    int matched() const { return m_matched; }

  private:
    const std::string m_participantName;
    std::atomic<int> m_matched{0};
};

// Counts the publishers that match its subscriber.
class SubscriberListenerBase : public eprosima::fastrtps::SubscriberListener {
  public:
    explicit SubscriberListenerBase(std::string participantName);
    ~SubscriberListenerBase() override = default;
    void onSubscriptionMatched(eprosima::fastrtps::Subscriber* subscriber,
                               eprosima::fastrtps::rtps::MatchingInfo& info) override;
    int matched() const { return m_matched; }

  protected:
    /// Takes the next sample into `message`. False when there is none or it carries no data, as the
    /// news that an instance was disposed of.
    static bool take(eprosima::fastrtps::Subscriber& subscriber, void* message,
                     long long& transaction, HEADER_TYPE& header);
    /// Durability, liveliness and reliability of the subscriber, in that order.
    static Sequence<QoS_Element> qosList(const eprosima::fastrtps::Subscriber& subscriber);

  private:
    const std::string m_participantName;
    std::atomic<int> m_matched{0};
};

// Hands each sample of one message type to a callback. No lock of ours is held while it runs; an
// exception out of it leaves through the bus library.
template <typename T>
class SubscriberListenerTyped : public SubscriberListenerBase {
  public:
    SubscriberListenerTyped(std::string participantName, long long connection,
                            Read_Callback<T> callback)
        : SubscriberListenerBase(std::move(participantName)),
          m_connection(connection),
          m_callback(std::move(callback)) {}

    /// Takes exactly one sample: the library notifies once for each. Throws std::bad_function_call
    /// when a sample arrives and the callback is empty.
    void onNewDataMessage(eprosima::fastrtps::Subscriber* subscriber) override {
        T message;
        long long transaction = 0;
        HEADER_TYPE header;
        if (!take(*subscriber, &message, transaction, header)) {
            return;
        }
        RETURN_CODE_TYPE::Value ignored = RETURN_CODE_TYPE::NO_ERROR;
        m_callback(m_connection, transaction, message, header, qosList(*subscriber), ignored);
    }

  private:
    const long long m_connection;
    const Read_Callback<T> m_callback;
};

}  // namespace FACE::TSS::Listeners

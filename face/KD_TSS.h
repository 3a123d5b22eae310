// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "face/FACE_Configuration.h"
#include "face/FACE_TSS.h"

namespace eprosima::fastrtps {
class Participant;
class Publisher;
class Subscriber;
}  // namespace eprosima::fastrtps
namespace eprosima::fastdds::dds {
class TopicDataType;
}

namespace FACE::TSS {

class ConnectionWatch;
class OthersOnTheBus;
namespace Listeners {
class PublisherListenerBase;
class SubscriberListenerBase;
}  // namespace Listeners

// The process's one gateway to the publish-subscribe bus: one participant, a table of named
// connections, and the endpoints that the typed front ends (KD_TypedTS) ask for.
//
// Life cycle: construct, Set_Reference, Initialize; only then do the connection operations work.
// Those calls, and the registration and removal of endpoints, come from one thread during bring-up
// and tear-down; sending may happen on any thread in between. Whoever removes an endpoint has
// stopped the senders that use it. The destructor ends all endpoints, and with them all callbacks,
// before it frees anything. It must run before static destruction, since it needs the bus library's
// own statics, and not inside a callback.
//
// Own publications reach own subscribers synchronously, on the publishing thread.
class KD_TSS : public Base, public Configuration_Injectable::Injectable {
  public:
    // What the container "FastRtps" says. There are no defaults: every key is required.
    struct Settings_t {
        uint32_t domainId = 0;
        int historyDepth = 0;
        bool useBestEffort = false;
        bool backFillHistory = false;
        std::string useTransport;  // "SHM", "UDP", "TCP_Client" or "TCP_Server"
        std::string tcpAddress;    // dotted IPv4
        uint16_t tcpPort = 0;
    };

    // A named connection with up to two endpoints. The pointers to the endpoints belong to the bus
    // library and are atomic, since senders look at them on their own threads.
    struct Connection_t {
        /// `type` is null when `pubSubType` names no known type.
        Connection_t(const std::string& topicName, const std::string& typeName,
                     const std::string& pubSubType);
        Connection_t(Connection_t&& other) noexcept;
        Connection_t(const Connection_t&) = delete;
        Connection_t& operator=(const Connection_t&) = delete;
        ~Connection_t();

        bool isPublisher() const { return publisher != nullptr; }
        bool isSubscriber() const { return subscriber != nullptr; }
        /// Stores both; the former listener is destroyed.
        void setPublisher(std::unique_ptr<Listeners::PublisherListenerBase> listener,
                          eprosima::fastrtps::Publisher* newPublisher);
        void setSubscriber(std::unique_ptr<Listeners::SubscriberListenerBase> listener,
                           eprosima::fastrtps::Subscriber* newSubscriber);
        void clearPublisher();
        void clearSubscriber();

        std::string topicName;  // the connection's name is also its topic
        std::string typeName;   // as the bus knows the type
        std::unique_ptr<eprosima::fastdds::dds::TopicDataType> type;
        std::unique_ptr<Listeners::PublisherListenerBase> publisherListener;
        std::atomic<eprosima::fastrtps::Publisher*> publisher{nullptr};
        std::unique_ptr<Listeners::SubscriberListenerBase> subscriberListener;
        std::atomic<eprosima::fastrtps::Subscriber*> subscriber{nullptr};
    };

    explicit KD_TSS(const std::string& participantName);
    KD_TSS(const KD_TSS&) = delete;
    KD_TSS& operator=(const KD_TSS&) = delete;
    ~KD_TSS() override;

    /// NOT_AVAILABLE with a reference already held, INVALID_PARAM for a null one.
    void Set_Reference(const String& name, const std::shared_ptr<Configuration>& configuration,
                       long long id, RETURN_CODE_TYPE::Value& rc) override;

    /// Reads the container "FastRtps" of the file at `path` and joins the bus. NO_ACTION when done
    /// before, NOT_AVAILABLE without configuration, file or container, INVALID_CONFIG for a missing
    /// key or a participant that could not be made. After a failure it may be tried again.
    void Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) override;

    /// The id of the connection of that name, made on the first call: 0, 1, 2, ... `id` is -1 after
    /// a failure: NOT_AVAILABLE before Initialize, INVALID_CONFIG for a missing container or key,
    /// NO_ACTION for a type that cannot be registered. `timeout` and `maxMessageSize` are unused.
    void Create_Connection(const String& name, long long timeout, long long& id,
                           int& maxMessageSize, RETURN_CODE_TYPE::Value& rc) override;

    /// Does nothing: connections last as long as the service.
    void Destroy_Connection(long long id, RETURN_CODE_TYPE::Value& rc) override;

    /// Removes the publisher. NO_ERROR also without one, INVALID_PARAM for an unknown id.
    void Unregister_Sender(long long id, RETURN_CODE_TYPE::Value& rc) override;
    /// Removes the subscriber. When it returns, its callback is not running and never will again;
    /// it must not be called from inside that callback.
    void Unregister_Callback(long long id, RETURN_CODE_TYPE::Value& rc) override;

    // For the typed front ends.

    bool isInitialised() const { return m_initialised; }
    const std::string& participantName() const { return m_participantName; }
    /// Null before Initialize. The participant is owned by this object.
    const eprosima::fastrtps::Participant* participant() const { return m_participant; }
    /// The key of the connection table for an id of the interface. An id that is no key becomes the
    /// all-ones key, which is never present.
    static uint32_t connectionKey(long long id);
    /// Throws std::out_of_range for an unknown id. The reference stays valid for the life of the
    /// service: entries never move or leave.
    Connection_t& connectionMap_mutex_at(uint32_t id);
    bool isTopicRegistered(const char* typeName) const;
    /// True if a type of that name is registered, now or before; false for null.
    bool okRegisterTopic(eprosima::fastdds::dds::TopicDataType* type);
    /// Both throw std::runtime_error when the endpoint cannot be made.
    void registerPublisher(Connection_t& connection);
    void registerSubscriber(Connection_t& connection,
                            std::unique_ptr<Listeners::SubscriberListenerBase> listener);

  private:
    void join();
    /// Throws "Participant <name> <problem> for topic: <topic><hint>" unless `ok`.
    void require(bool ok, const char* problem, const Connection_t& connection,
                 const char* hint = "") const;
    template <typename Operation>
    void onConnection(long long id, RETURN_CODE_TYPE::Value& rc, Operation operation);

    std::atomic<bool> m_initialised{false};
    std::shared_ptr<Configuration> m_config;
    const std::string m_participantName;
    eprosima::fastrtps::Participant* m_participant = nullptr;
    std::shared_ptr<OthersOnTheBus> m_others;            // the participant's listener
    std::unique_ptr<ConnectionWatch> m_connectionWatch;  // of a TCP client
    Settings_t m_settings;
    std::map<uint32_t, Connection_t> m_connectionMap;
    std::mutex m_connectionMapMutex;  // guards the table, not the connections in it
};

}  // namespace FACE::TSS

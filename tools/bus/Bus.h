// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/Directory.h"
#include "tools/bus/Message.h"
#include "tools/bus/Publisher.h"

namespace eprosima::fastrtps {
class Participant;
}

namespace Bus {

// Under which the tools appear on the bus.
constexpr const char* kParticipantName = "rovan-bus";

// One sample as it came from the bus.
struct Sample {
    std::string topic;
    std::string typeName;
    std::string publisher;   // the participant's name
    Directory::Guid writer;  // tells the publishers of a topic apart
    uint64_t sequence = 0;   // the publisher's number of the sample, from 1
    int64_t sentNs = 0;      // Unix time, by the publisher's clock
    int64_t receivedNs = 0;  // Unix time, by this machine's clock
    std::chrono::steady_clock::time_point arrival;
    std::unique_ptr<Message> message;  // null for a sample that could not be read
};

/// Runs on a thread of the bus library, on which everything that arrives waits: it must be quick,
/// and must not throw.
using SampleHandler = std::function<void(Sample)>;

// A participant of the bus for the tools, with the transport and the quality of service of the
// server whose connections file it is made from. Where the server has one typed face for each type,
// this takes any topic and any type, and knows who is there.
//
// Belongs to one thread; only the handlers run on others. The destructor leaves the bus: when it
// returns no handler is running. It must run before static destruction.
class Bus {
  public:
    /// Joins. Throws UsageError when it cannot.
    Bus(const ConnectionsFile::Settings& settings, const std::string& name);
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;
    ~Bus();

    const Directory& directory() const { return *m_directory; }

    /// Hands every sample of the topic to `handler` from now on. Throws UsageError when the type is
    /// unknown or the library refuses.
    void subscribe(const Topic& topic, SampleHandler handler);

    /// Publishes the topic from now on. The publisher is valid as long as this object. Throws as
    /// subscribe().
    Publisher& publish(const Topic& topic);

  private:
    class Subscription;

    /// Throws UsageError for a type that is unknown or that the library refuses.
    void registerType(const Publisher::Connection& connection);

    const ConnectionsFile::Settings m_settings;
    std::shared_ptr<Directory> m_directory;
    eprosima::fastrtps::Participant* m_participant = nullptr;
    std::unique_ptr<FACE::TSS::ConnectionWatch> m_connectionWatch;  // of a TCP client
    std::vector<std::unique_ptr<Subscription>> m_subscriptions;
    std::vector<std::unique_ptr<Publisher>> m_publishers;
};

/// The topic under that name with the type that the bus has it with; the class that encodes it
/// follows from the type.
Topic topicOf(const FoundTopic& found);

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "face/KD_TSS_Join.h"

namespace Bus {

// A topic as it is found on the bus: two types under one name are two of these.
struct FoundTopic {
    std::string name;
    std::string typeName;
    std::vector<std::string> publishers;  // names of participants, one for each endpoint, sorted
    std::vector<std::string> subscribers;
};

// Who is on the bus and what they publish and subscribe, kept up to date by the bus library, which
// calls it on threads of its own. It must outlive the participant that it listens for. Any thread
// may ask. The participant's own endpoints do not appear.
class Directory : public FACE::TSS::OthersOnTheBus {
  public:
    using Guid = eprosima::fastrtps::rtps::GUID_t;
    using GuidPrefix = eprosima::fastrtps::rtps::GuidPrefix_t;

    /// In the order of names, then types.
    std::vector<FoundTopic> topics() const;

    /// Tells the name of the participant itself, which hears its own samples but is not announced
    /// to itself.
    void setOwnName(const GuidPrefix& participant, const std::string& name);

    /// A participant's name; its id in hexadecimal when it has none or is not known yet.
    std::string nameOf(const GuidPrefix& participant) const;

    /// A number that grows whenever an endpoint comes or goes.
    uint64_t changes() const;

    void onParticipantDiscovery(eprosima::fastrtps::Participant* participant,
                                eprosima::fastrtps::rtps::ParticipantDiscoveryInfo&& info) override;
    void onPublisherDiscovery(eprosima::fastrtps::Participant* participant,
                              eprosima::fastrtps::rtps::WriterDiscoveryInfo&& info) override;
    void onSubscriberDiscovery(eprosima::fastrtps::Participant* participant,
                               eprosima::fastrtps::rtps::ReaderDiscoveryInfo&& info) override;

  private:
    struct Endpoint {
        std::string topic;
        std::string typeName;
        bool publishes;
    };

    std::string nameOfLocked(const GuidPrefix& participant) const;
    void enter(const eprosima::fastrtps::Participant& own, const Guid& guid, Endpoint endpoint);
    void remove(const Guid& guid);

    mutable std::mutex m_mutex;  // guards all below; nothing foreign is called while it is held
    std::map<GuidPrefix, std::string> m_names;
    std::map<Guid, Endpoint> m_endpoints;
    uint64_t m_changes = 0;
};

}  // namespace Bus

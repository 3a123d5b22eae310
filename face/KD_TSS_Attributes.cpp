// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS_Attributes.h"

#include <fastdds/rtps/transport/TCPv4TransportDescriptor.h>
#include <fastdds/rtps/transport/UDPv4TransportDescriptor.h>
#include <fastdds/rtps/transport/shared_mem/SharedMemTransportDescriptor.h>
#include <fastrtps/utils/IPLocator.h>

#include <memory>
#include <sstream>

namespace FACE::TSS::Attributes {
namespace {

using namespace eprosima::fastrtps;
using eprosima::fastdds::rtps::SharedMemTransportDescriptor;
using eprosima::fastdds::rtps::TCPv4TransportDescriptor;
using eprosima::fastdds::rtps::UDPv4TransportDescriptor;

std::shared_ptr<UDPv4TransportDescriptor> udpOnLoopback() {
    auto descriptor = std::make_shared<UDPv4TransportDescriptor>();
    descriptor->interfaceWhiteList.push_back("127.0.0.1");
    descriptor->non_blocking_send = true;
    return descriptor;
}

// Four numbers separated by single characters; what cannot be read is 0.
std::shared_ptr<TCPv4TransportDescriptor> tcpServer(const KD_TSS::Settings_t& settings) {
    int numbers[4] = {};
    std::istringstream text(settings.tcpAddress);
    char separator = 0;
    text >> numbers[0] >> separator >> numbers[1] >> separator >> numbers[2] >> separator >>
        numbers[3];

    auto descriptor = std::make_shared<TCPv4TransportDescriptor>();
    for (int i = 0; i < 4; ++i) {
        descriptor->wan_addr[i] = static_cast<rtps::octet>(numbers[i]);
    }
    descriptor->listening_ports.push_back(settings.tcpPort);
    return descriptor;
}

rtps::Locator_t tcpPeer(const KD_TSS::Settings_t& settings) {
    rtps::Locator_t locator;
    locator.kind = LOCATOR_KIND_TCPv4;
    rtps::IPLocator::setIPv4(locator, settings.tcpAddress);
    locator.port = settings.tcpPort;
    return locator;
}

using Attributes_t = rtps::RTPSParticipantAttributes;

struct Transport {
    const char* name;
    void (*add)(const KD_TSS::Settings_t& settings, Attributes_t& attributes);
};

constexpr Transport kTransports[] = {
    {"SHM",
     [](const KD_TSS::Settings_t&, Attributes_t& attributes) {
         attributes.userTransports.push_back(std::make_shared<SharedMemTransportDescriptor>());
     }},
    {"UDP", [](const KD_TSS::Settings_t&,
               Attributes_t& attributes) { attributes.userTransports.push_back(udpOnLoopback()); }},
    {"TCP_Client",
     [](const KD_TSS::Settings_t& settings, Attributes_t& attributes) {
         attributes.userTransports.push_back(std::make_shared<TCPv4TransportDescriptor>());
         attributes.builtin.initialPeersList.push_back(tcpPeer(settings));
     }},
    {"TCP_Server",
     [](const KD_TSS::Settings_t& settings, Attributes_t& attributes) {
         attributes.userTransports.push_back(tcpServer(settings));
     }},
};

void addTransport(const KD_TSS::Settings_t& settings, Attributes_t& attributes) {
    for (const Transport& transport : kTransports) {
        if (settings.useTransport == transport.name) {
            transport.add(settings, attributes);
        }
    }
}

// What publishers and subscribers have in common.
template <typename EndpointAttributes>
EndpointAttributes endpoint(const KD_TSS::Settings_t& settings,
                            const KD_TSS::Connection_t& connection) {
    EndpointAttributes attributes;
    attributes.topic.topicKind = rtps::NO_KEY;
    attributes.topic.topicName = connection.topicName;
    attributes.topic.topicDataType = connection.typeName;
    attributes.topic.historyQos.kind = KEEP_LAST_HISTORY_QOS;
    attributes.topic.historyQos.depth = settings.historyDepth;
    attributes.topic.resourceLimitsQos.max_samples = settings.historyDepth;
    attributes.topic.resourceLimitsQos.max_instances = 1;
    attributes.topic.resourceLimitsQos.max_samples_per_instance = settings.historyDepth;
    attributes.topic.resourceLimitsQos.allocated_samples = settings.historyDepth;
    attributes.qos.m_reliability.kind =
        settings.useBestEffort ? BEST_EFFORT_RELIABILITY_QOS : RELIABLE_RELIABILITY_QOS;
    attributes.historyMemoryPolicy = rtps::PREALLOCATED_WITH_REALLOC_MEMORY_MODE;
    return attributes;
}

}  // namespace

std::vector<std::string> transportNames() {
    std::vector<std::string> names;
    for (const Transport& transport : kTransports) {
        names.emplace_back(transport.name);
    }
    return names;
}

ParticipantAttributes participant(const KD_TSS::Settings_t& settings, const std::string& name) {
    ParticipantAttributes attributes;
    attributes.domainId = settings.domainId;
    attributes.rtps.setName(name.c_str());
    attributes.rtps.builtin.discovery_config.leaseDuration = Duration_t(5, 0);
    attributes.rtps.useBuiltinTransports = false;
    addTransport(settings, attributes.rtps);
    return attributes;
}

PublisherAttributes publisher(const KD_TSS::Settings_t& settings,
                              const KD_TSS::Connection_t& connection) {
    auto attributes = endpoint<PublisherAttributes>(settings, connection);
    attributes.qos.m_durability.kind = TRANSIENT_LOCAL_DURABILITY_QOS;
    return attributes;
}

SubscriberAttributes subscriber(const KD_TSS::Settings_t& settings,
                                const KD_TSS::Connection_t& connection) {
    auto attributes = endpoint<SubscriberAttributes>(settings, connection);
    attributes.qos.m_durability.kind =
        settings.backFillHistory ? TRANSIENT_LOCAL_DURABILITY_QOS : VOLATILE_DURABILITY_QOS;
    return attributes;
}

}  // namespace FACE::TSS::Attributes

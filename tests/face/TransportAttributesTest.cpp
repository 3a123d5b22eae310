// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fastdds/rtps/transport/TCPv4TransportDescriptor.h>
#include <fastdds/rtps/transport/UDPv4TransportDescriptor.h>
#include <fastdds/rtps/transport/shared_mem/SharedMemTransportDescriptor.h>
#include <fastrtps/utils/IPLocator.h>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include <memory>
#include <string>

#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Listeners.h"

namespace {

using namespace eprosima::fastrtps;
using eprosima::fastdds::rtps::SharedMemTransportDescriptor;
using eprosima::fastdds::rtps::TCPv4TransportDescriptor;
using eprosima::fastdds::rtps::UDPv4TransportDescriptor;
using FACE::TSS::KD_TSS;
using testing::ElementsAre;
namespace Attributes = FACE::TSS::Attributes;

KD_TSS::Settings_t settings(const std::string& transport, const std::string& address = "10.1.2.3",
                            uint16_t port = 5100) {
    KD_TSS::Settings_t s;
    s.domainId = 7;
    s.historyDepth = 12;
    s.useTransport = transport;
    s.tcpAddress = address;
    s.tcpPort = port;
    return s;
}

/// The one transport of the participant as the descriptor that is expected; null if it is another.
template <typename Descriptor>
std::shared_ptr<Descriptor> onlyTransport(const ParticipantAttributes& attributes) {
    EXPECT_EQ(attributes.rtps.userTransports.size(), 1u);
    return std::dynamic_pointer_cast<Descriptor>(attributes.rtps.userTransports.at(0));
}

TEST(TransportAttributes, OfTheParticipantChooseDomainNameLeaseAndNoBuiltInTransports) {
    const auto attributes = Attributes::participant(settings("UDP"), "Rovan");

    EXPECT_EQ(attributes.domainId, 7u);
    EXPECT_EQ(std::string(attributes.rtps.getName()), "Rovan");
    EXPECT_EQ(attributes.rtps.builtin.discovery_config.leaseDuration, Duration_t(5, 0));
    EXPECT_FALSE(attributes.rtps.useBuiltinTransports);
    EXPECT_TRUE(attributes.rtps.builtin.initialPeersList.empty());
}

TEST(TransportAttributes, OfTheParticipantKeepTheDefaultsThatTheTimingRestsOn) {
    const auto attributes = Attributes::participant(settings("UDP"), "Rovan");
    const auto& builtin = attributes.rtps.builtin;
    const auto& discovery = builtin.discovery_config;

    EXPECT_EQ(discovery.discoveryProtocol, rtps::DiscoveryProtocol_t::SIMPLE);
    EXPECT_TRUE(discovery.use_SIMPLE_EndpointDiscoveryProtocol);
    EXPECT_FALSE(discovery.use_STATIC_EndpointDiscoveryProtocol);
    EXPECT_EQ(discovery.leaseDuration_announcementperiod, Duration_t(3, 0));
    EXPECT_EQ(discovery.initial_announcements.count, 5u);
    EXPECT_EQ(discovery.initial_announcements.period, Duration_t(0, 100'000'000u));
    EXPECT_EQ(discovery.discoveryServer_client_syncperiod, Duration_t(0, 450'000'000u));
    EXPECT_EQ(builtin.readerHistoryMemoryPolicy, rtps::PREALLOCATED_WITH_REALLOC_MEMORY_MODE);
    EXPECT_EQ(builtin.writerHistoryMemoryPolicy, rtps::PREALLOCATED_WITH_REALLOC_MEMORY_MODE);
    EXPECT_EQ(builtin.readerPayloadSize, 512u);
    EXPECT_EQ(builtin.writerPayloadSize, 512u);
    EXPECT_EQ(builtin.mutation_tries, 100u);
    EXPECT_TRUE(builtin.avoid_builtin_multicast);
    EXPECT_EQ(attributes.rtps.participantID, -1);
    EXPECT_EQ(attributes.rtps.sendSocketBufferSize, 0u);
    EXPECT_EQ(attributes.rtps.listenSocketBufferSize, 0u);
    const auto& port = attributes.rtps.port;
    EXPECT_EQ(port.portBase, 7400);
    EXPECT_EQ(port.domainIDGain, 250);
    EXPECT_EQ(port.participantIDGain, 2);
    EXPECT_EQ(port.offsetd0, 0);
    EXPECT_EQ(port.offsetd1, 10);
    EXPECT_EQ(port.offsetd2, 1);
    EXPECT_EQ(port.offsetd3, 11);
}

TEST(TransportAttributes, CutALongParticipantNameAt255Characters) {
    const auto attributes = Attributes::participant(settings("UDP"), std::string(300, 'n'));

    EXPECT_EQ(std::string(attributes.rtps.getName()), std::string(255, 'n'));
}

TEST(TransportAttributes, KeepUdpOnTheLoopbackInterfaceWhateverTheTcpAddressSays) {
    const auto udp = onlyTransport<UDPv4TransportDescriptor>(
        Attributes::participant(settings("UDP", "192.168.1.20"), "Rovan"));

    ASSERT_NE(udp, nullptr);
    EXPECT_THAT(udp->interfaceWhiteList, ElementsAre("127.0.0.1"));
    EXPECT_TRUE(udp->non_blocking_send);
}

TEST(TransportAttributes, TakeSharedMemoryWithTheLibrarysSettings) {
    const auto attributes = Attributes::participant(settings("SHM"), "Rovan");

    const auto shm = onlyTransport<SharedMemTransportDescriptor>(attributes);

    ASSERT_NE(shm, nullptr);
    EXPECT_TRUE(*shm == SharedMemTransportDescriptor());
    EXPECT_TRUE(attributes.rtps.builtin.initialPeersList.empty());
}

TEST(TransportAttributes, GiveATcpClientItsServerAsTheOnePeer) {
    const auto attributes = Attributes::participant(settings("TCP_Client"), "Rovan");

    const auto tcp = onlyTransport<TCPv4TransportDescriptor>(attributes);

    ASSERT_NE(tcp, nullptr);
    EXPECT_TRUE(*tcp == TCPv4TransportDescriptor());
    const auto& peers = attributes.rtps.builtin.initialPeersList;
    ASSERT_EQ(peers.size(), 1u);
    EXPECT_EQ(peers.begin()->kind, LOCATOR_KIND_TCPv4);
    EXPECT_EQ(rtps::IPLocator::toIPv4string(*peers.begin()), "10.1.2.3");
    EXPECT_EQ(peers.begin()->port, 5100u);
}

TEST(TransportAttributes, GiveATcpServerItsAddressAndItsPort) {
    const auto attributes =
        Attributes::participant(settings("TCP_Server", "192.168.1.20"), "Rovan");

    const auto tcp = onlyTransport<TCPv4TransportDescriptor>(attributes);

    ASSERT_NE(tcp, nullptr);
    EXPECT_THAT(tcp->wan_addr, ElementsAre(192, 168, 1, 20));
    EXPECT_THAT(tcp->listening_ports, ElementsAre(5100));
    EXPECT_TRUE(attributes.rtps.builtin.initialPeersList.empty());
}

TEST(TransportAttributes, ReadTheServersAddressAsFourNumbersBetweenSingleCharacters) {
    const auto address = [](const std::string& text) {
        const auto tcp = onlyTransport<TCPv4TransportDescriptor>(
            Attributes::participant(settings("TCP_Server", text), "Rovan"));
        return std::vector<int>(tcp->wan_addr, tcp->wan_addr + 4);
    };

    EXPECT_THAT(address("1-2/3:4"), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(address(" 1 . 2 . 3 . 4 "), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(address("256.257.511.-1"), ElementsAre(0, 1, 255, 255));  // cut to 8 bits
    EXPECT_THAT(address("10.20"), ElementsAre(10, 20, 0, 0));
    EXPECT_THAT(address("localhost"), ElementsAre(0, 0, 0, 0));
}

TEST(TransportAttributes, AddNoTransportForAnUnknownName) {
    for (const char* name : {"udp", "UDPv4", "shm", "TCP", "tcp_client", "TCP_SERVER", " UDP"}) {
        const auto attributes = Attributes::participant(settings(name), "Rovan");

        EXPECT_TRUE(attributes.rtps.userTransports.empty()) << name;
        EXPECT_TRUE(attributes.rtps.builtin.initialPeersList.empty()) << name;
        EXPECT_FALSE(attributes.rtps.useBuiltinTransports) << name;
    }
}

template <typename EndpointAttributes>
void expectWhatAllEndpointsShare(const EndpointAttributes& attributes) {
    EXPECT_EQ(attributes.topic.topicKind, rtps::NO_KEY);
    EXPECT_EQ(attributes.topic.topicName.to_string(), "Events");
    EXPECT_EQ(attributes.topic.topicDataType.to_string(), "aspn2_msgs::idl::EventLog");
    EXPECT_EQ(attributes.topic.historyQos.kind, KEEP_LAST_HISTORY_QOS);
    EXPECT_EQ(attributes.topic.historyQos.depth, 12);
    EXPECT_EQ(attributes.topic.resourceLimitsQos.max_samples, 12);
    EXPECT_EQ(attributes.topic.resourceLimitsQos.max_instances, 1);
    EXPECT_EQ(attributes.topic.resourceLimitsQos.max_samples_per_instance, 12);
    EXPECT_EQ(attributes.topic.resourceLimitsQos.allocated_samples, 12);
    EXPECT_EQ(attributes.topic.resourceLimitsQos.extra_samples, 1);
    EXPECT_EQ(attributes.historyMemoryPolicy, rtps::PREALLOCATED_WITH_REALLOC_MEMORY_MODE);
}

const KD_TSS::Connection_t kEvents("Events", "aspn2_msgs::idl::EventLog", "EventLogPubSubType");

TEST(TransportAttributes, OfAPublisherAlwaysKeepTheHistoryForLateJoiners) {
    for (const bool backFill : {false, true}) {
        auto s = settings("UDP");
        s.backFillHistory = backFill;

        const auto attributes = Attributes::publisher(s, kEvents);

        expectWhatAllEndpointsShare(attributes);
        EXPECT_EQ(attributes.qos.m_durability.kind, TRANSIENT_LOCAL_DURABILITY_QOS);
        EXPECT_EQ(attributes.times.initialHeartbeatDelay, Duration_t(0, 12'000'000u));
        EXPECT_EQ(attributes.times.heartbeatPeriod, Duration_t(3, 0));
        EXPECT_EQ(attributes.times.nackResponseDelay, Duration_t(0, 5'000'000u));
        EXPECT_EQ(attributes.times.nackSupressionDuration, Duration_t(0, 0));
    }
}

TEST(TransportAttributes, OfASubscriberAskForHistoryOnlyWithBackFill) {
    auto s = settings("UDP");
    s.backFillHistory = false;
    EXPECT_EQ(Attributes::subscriber(s, kEvents).qos.m_durability.kind, VOLATILE_DURABILITY_QOS);

    s.backFillHistory = true;
    const auto attributes = Attributes::subscriber(s, kEvents);

    expectWhatAllEndpointsShare(attributes);
    EXPECT_EQ(attributes.qos.m_durability.kind, TRANSIENT_LOCAL_DURABILITY_QOS);
    EXPECT_EQ(attributes.times.initialAcknackDelay, Duration_t(0, 70'000'000u));
    EXPECT_EQ(attributes.times.heartbeatResponseDelay, Duration_t(0, 5'000'000u));
}

TEST(TransportAttributes, OfBothEndpointsFollowUseBestEffort) {
    auto s = settings("UDP");
    s.useBestEffort = true;
    EXPECT_EQ(Attributes::publisher(s, kEvents).qos.m_reliability.kind,
              BEST_EFFORT_RELIABILITY_QOS);
    EXPECT_EQ(Attributes::subscriber(s, kEvents).qos.m_reliability.kind,
              BEST_EFFORT_RELIABILITY_QOS);

    s.useBestEffort = false;
    EXPECT_EQ(Attributes::publisher(s, kEvents).qos.m_reliability.kind, RELIABLE_RELIABILITY_QOS);
    EXPECT_EQ(Attributes::subscriber(s, kEvents).qos.m_reliability.kind, RELIABLE_RELIABILITY_QOS);
}

TEST(TransportAttributes, CutLongTopicAndTypeNamesAt255Characters) {
    const KD_TSS::Connection_t longNames(std::string(300, 't'), std::string(300, 'y'), "");

    const auto attributes = Attributes::publisher(settings("UDP"), longNames);

    EXPECT_EQ(attributes.topic.topicName.to_string(), std::string(255, 't'));
    EXPECT_EQ(attributes.topic.topicDataType.to_string(), std::string(255, 'y'));
}

}  // namespace

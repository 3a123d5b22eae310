// SPDX-License-Identifier: Apache-2.0
#include <arpa/inet.h>
#include <dirent.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fastrtps/Domain.h>
#include <fastrtps/participant/Participant.h>
#include <fastrtps/participant/ParticipantListener.h>
#include <fastrtps/publisher/Publisher.h>
#include <fastrtps/subscriber/Subscriber.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Listeners.h"
#include "tests/face/TransportBus.h"

// The transport on a real bus: between participants, with late joiners, and while endpoints go.

namespace {

using namespace transport_test;
using aspn2_msgs::idl::CommandResponse;
using aspn2_msgs::idl::EventLog;
using FACE::TSS::KD_TSS;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

EventLog event(const std::string& text) {
    EventLog message;
    message.eventlog(text);
    return message;
}

std::vector<std::string> texts(const Inbox<EventLog>& inbox) {
    std::vector<std::string> all;
    for (const EventLog& message : inbox.messages()) {
        all.push_back(message.eventlog());
    }
    return all;
}

// A transport with one connection, "Events".
struct Station {
    explicit Station(const Parameters& settings, const std::string& name = "Station")
        : file({{"FastRtps", settings}, {"Events", carries("EventLog")}}),
          transport(join(file, name)),
          id(connect(*transport, "Events")),
          connection(transport->connectionMap_mutex_at(KD_TSS::connectionKey(id))),
          face(transport) {}

    void publish() { EXPECT_EQ(face.registerSender(id), RC::NO_ERROR); }
    void subscribe() { EXPECT_EQ(face.registerCallback(id, inbox.callback()), RC::NO_ERROR); }
    RC::Value send(const std::string& text) { return face.send(id, event(text)); }

    Inbox<EventLog> inbox;  // outlives the transport that fills it
    ConnectionsFile file;
    std::shared_ptr<KD_TSS> transport;
    long long id;
    KD_TSS::Connection_t& connection;
    Face<EventLog> face;
};

/// Both ends know of each other, with that many ends on either side. Over TCP that takes several
/// rounds of announcements.
bool haveMet(const Station& publisher, int subscribers, const Station& subscriber,
             int publishers = 1) {
    return eventually(
        [&] {
            return publisher.connection.publisherListener->matched() == subscribers &&
                   subscriber.connection.subscriberListener->matched() == publishers;
        },
        std::chrono::seconds(30));
}

// Participants of one process take a short cut through its memory, past the transport. So the other
// end of a transport lives in a process of its own: this program again, started with a connections
// file in its environment. It answers every message that begins "ping" until its standard input
// ends.
constexpr const char* kPeerFile = "TRANSPORT_TEST_PEER_FILE";

class PeerEnvironment : public testing::Environment {
    void SetUp() override {
        if (const char* path = std::getenv(kPeerFile)) {
            answerUntilInputEnds(path);
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        }
    }

    static void answerUntilInputEnds(const char* path) {
        auto transport = std::make_shared<KD_TSS>("Peer");
        EXPECT_EQ(initialize(*transport, path), RC::NO_ERROR);
        const auto id = connect(*transport, "Events");
        Face<EventLog> face(transport);
        EXPECT_EQ(face.registerSender(id), RC::NO_ERROR);
        EXPECT_EQ(face.registerCallback(
                      id,
                      [&](long long, long long, const EventLog& message, const auto&, const auto&,
                          RC::Value&) {
                          if (message.eventlog().rfind("ping", 0) == 0) {
                              EXPECT_EQ(face.send(id, event("answer to " + message.eventlog())),
                                        RC::NO_ERROR);
                          }
                      }),
                  RC::NO_ERROR);
        while (std::getchar() != EOF) {}
    }
};
const auto* const kPeerEnvironment = testing::AddGlobalTestEnvironment(new PeerEnvironment);

class PeerProcess {
  public:
    explicit PeerProcess(const ConnectionsFile& file) {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        m_pid = fork();
        if (m_pid == 0) {
            dup2(ends[0], STDIN_FILENO);
            close(ends[0]);
            close(ends[1]);
            setenv(kPeerFile, file.path().c_str(), 1);
            execl("/proc/self/exe", "peer", "--gtest_filter=TransportBus.*", nullptr);
            _exit(127);
        }
        close(ends[0]);
        m_input = ends[1];
    }
    PeerProcess(const PeerProcess&) = delete;
    PeerProcess& operator=(const PeerProcess&) = delete;
    ~PeerProcess() {
        close(m_input);
        int status = -1;
        EXPECT_EQ(waitpid(m_pid, &status, 0), m_pid);
        EXPECT_EQ(status, 0);
    }

  private:
    pid_t m_pid = -1;
    int m_input = -1;
};

void expectAnswersFromAPeer(const Parameters& own, const Parameters& peers, int32_t locatorKind) {
    const std::string large = "ping " + std::string(100'000, 'x');  // more than one datagram takes
    const ConnectionsFile peerFile({{"FastRtps", peers}, {"Events", carries("EventLog")}});
    const PeerProcess peer(peerFile);
    Station station(own);
    station.publish();
    station.subscribe();
    ASSERT_TRUE(haveMet(station, 2, station, 2));  // itself and the peer

    EXPECT_EQ(station.send("ping"), RC::NO_ERROR);
    EXPECT_EQ(station.send(large), RC::NO_ERROR);

    ASSERT_TRUE(eventually([&] { return station.inbox.count() >= 4; }));
    EXPECT_THAT(texts(station.inbox),
                UnorderedElementsAre("ping", large, "answer to ping", "answer to " + large));
    eprosima::fastrtps::rtps::LocatorList_t locators;
    station.connection.subscriber.load()->get_listening_locators(locators);
    EXPECT_FALSE(locators.empty());
    for (const auto& locator : locators) {
        EXPECT_EQ(locator.kind, locatorKind);
    }
}

/// The addresses to which UDP sockets of this process are bound.
std::set<std::string> boundUdpAddresses() {
    std::set<std::string> addresses;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("/proc/self/fd"), closedir);
    while (const dirent* entry = readdir(directory.get())) {
        const int fd = std::atoi(entry->d_name);
        int type = 0;
        socklen_t size = sizeof type;
        sockaddr_in address{};
        socklen_t addressSize = sizeof address;
        if (getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_DGRAM &&
            getsockname(fd, reinterpret_cast<sockaddr*>(&address), &addressSize) == 0 &&
            address.sin_family == AF_INET && address.sin_port != 0) {
            addresses.insert(inet_ntoa(address.sin_addr));
        }
    }
    return addresses;
}

/// A TCP port that nobody listens on now.
std::string freePort() {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    close(fd);
    return std::to_string(ntohs(address.sin_port));
}

// With back-fill, since the peer may answer before it knows of the station's reader.
Parameters transportSettings(int domain, Parameters changes) {
    changes["BackFillHistory"] = "TRUE";
    return busSettings(domain, changes);
}

TEST(TransportBus, CarriesMessagesByUdp) {
    const Parameters settings = transportSettings(182, {{"UseTransport", "UDP"}});

    expectAnswersFromAPeer(settings, settings, LOCATOR_KIND_UDPv4);
}

TEST(TransportBus, CarriesMessagesBySharedMemory) {
    const Parameters settings = transportSettings(183, {{"UseTransport", "SHM"}});

    expectAnswersFromAPeer(settings, settings, LOCATOR_KIND_SHM);
}

// The peer is the server: a client finds only the first few participants of the server's process,
// and this process may have had many.
TEST(TransportBus, CarriesMessagesByTcpBetweenClientAndServer) {
    const std::string port = freePort();

    expectAnswersFromAPeer(
        transportSettings(184, {{"UseTransport", "TCP_Client"}, {"TcpPort", port}}),
        transportSettings(184, {{"UseTransport", "TCP_Server"}, {"TcpPort", port}}),
        LOCATOR_KIND_TCPv4);
}

TEST(TransportBus, StaysOnTheLoopbackInterfaceWithUdp) {
    Station station(busSettings(161, {{"TcpAddress", "192.168.1.20"}}));
    station.publish();
    station.subscribe();

    // 239.255.0.1 is the group of the discovery, joined on the loopback interface.
    EXPECT_THAT(boundUdpAddresses(), UnorderedElementsAre("127.0.0.1", "239.255.0.1"));
}

TEST(TransportBus, GivesALateJoinerOnlyWhatIsNewWithoutBackFill) {
    Station early(busSettings(185));
    early.publish();
    for (const char* text : {"old 1", "old 2", "old 3"}) {
        ASSERT_EQ(early.send(text), RC::NO_ERROR);
    }
    Station late(busSettings(185));
    late.subscribe();
    ASSERT_TRUE(haveMet(early, 1, late));

    ASSERT_EQ(early.send("new"), RC::NO_ERROR);

    // In the order of sending: the old would have come before the new.
    ASSERT_TRUE(eventually([&] { return late.inbox.count() > 0; }));
    EXPECT_THAT(texts(late.inbox), ElementsAre("new"));
}

TEST(TransportBus, GivesALateJoinerTheHistoryUpToItsDepthWithBackFill) {
    const Parameters settings = busSettings(186, {{"HistoryDepth", "3"}, {"BackFillHistory", "1"}});
    Station early(settings);
    early.publish();
    for (const char* text : {"1", "2", "3", "4", "5"}) {
        ASSERT_EQ(early.send(text), RC::NO_ERROR);
    }

    Station late(settings);
    late.subscribe();

    ASSERT_TRUE(eventually([&] { return late.inbox.count() >= 3; }));
    ASSERT_EQ(early.send("6"), RC::NO_ERROR);
    ASSERT_TRUE(eventually([&] { return late.inbox.count() >= 4; }));
    EXPECT_THAT(texts(late.inbox), ElementsAre("3", "4", "5", "6"));
}

TEST(TransportBus, DeliversOwnMessagesOnThePublishingThreadAlsoFromWithinACallback) {
    const ConnectionsFile file({{"FastRtps", busSettings(187)},
                                {"Command", carries("CommandResponse")},
                                {"Response", carries("CommandResponse")}});
    std::vector<std::string> heard;  // all on this thread
    const auto thisThread = std::this_thread::get_id();
    const auto transport = join(file);
    const auto command = connect(*transport, "Command");
    const auto response = connect(*transport, "Response");
    Face<CommandResponse> face(transport);
    const auto say = [&face](long long connection, const std::string& text) {
        CommandResponse message;
        message.command_response(text);
        EXPECT_EQ(face.send(connection, message), RC::NO_ERROR);
    };
    const FACE::TSS::Read_Callback<CommandResponse> answer =
        [&](long long connection, long long, const CommandResponse& message,
            const FACE::TSS::HEADER_TYPE&, const FACE::Sequence<FACE::TSS::QoS_Element>&,
            RC::Value&) {
            EXPECT_EQ(std::this_thread::get_id(), thisThread);
            heard.push_back(message.command_response());
            if (message.command_response() == "PING") {
                say(response, "PING_ACK");
                say(connection, "LAST");  // on the very topic whose callback is running
            }
        };
    for (const long long id : {command, response}) {
        ASSERT_EQ(face.registerSender(id), RC::NO_ERROR);
        ASSERT_EQ(face.registerCallback(id, answer), RC::NO_ERROR);
    }

    say(command, "PING");

    EXPECT_THAT(heard, ElementsAre("PING", "PING_ACK", "LAST"));
}

TEST(TransportBus, NeverCallsBackOnceEndpointOrTransportIsGone) {
    Station talker(busSettings(188));
    talker.publish();
    std::atomic<bool> quiet{false};
    std::vector<std::thread> senders;
    for (int i = 0; i < 2; ++i) {
        senders.emplace_back([&] {
            while (!quiet) {
                EXPECT_EQ(talker.send("tick"), RC::NO_ERROR);
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        });
    }

    for (int round = 0; round < 8; ++round) {
        auto called = std::make_unique<std::atomic<int>>(0);  // gone with the round
        auto station = std::make_unique<Station>(busSettings(188));
        const FACE::TSS::Read_Callback<EventLog> count =
            [&called](long long, long long, const EventLog&, const FACE::TSS::HEADER_TYPE&,
                      const FACE::Sequence<FACE::TSS::QoS_Element>&, RC::Value&) { ++*called; };
        ASSERT_EQ(station->face.registerCallback(station->id, count), RC::NO_ERROR);
        ASSERT_TRUE(eventually([&] { return *called > 10; }));
        if (round % 2 == 0) {
            auto rc = RC::INVALID_MODE;
            station->transport->Unregister_Callback(station->id, rc);
            EXPECT_EQ(rc, RC::NO_ERROR);
        } else {
            station.reset();
        }
        called.reset();
    }

    quiet = true;
    for (std::thread& sender : senders) {
        sender.join();
    }
}

// What any other participant of the bus learns about a transport.
class Onlooker : private eprosima::fastrtps::ParticipantListener {
  public:
    explicit Onlooker(uint32_t domain) {
        KD_TSS::Settings_t settings;
        settings.domainId = domain;
        settings.useTransport = "UDP";
        m_participant = eprosima::fastrtps::Domain::createParticipant(
            FACE::TSS::Attributes::participant(settings, "Onlooker"), this);
    }
    ~Onlooker() override { eprosima::fastrtps::Domain::removeParticipant(m_participant); }

    std::atomic<bool> sawParticipant{false};
    std::atomic<bool> sawWriter{false};
    std::atomic<bool> sawReader{false};

  private:
    void onParticipantDiscovery(
        eprosima::fastrtps::Participant*,
        eprosima::fastrtps::rtps::ParticipantDiscoveryInfo&& info) override {
        if (info.status ==
            eprosima::fastrtps::rtps::ParticipantDiscoveryInfo::DISCOVERED_PARTICIPANT) {
            EXPECT_EQ(info.info.m_participantName.to_string(), "Rovan");
            EXPECT_EQ(info.info.m_leaseDuration, eprosima::fastrtps::Duration_t(5, 0));
            sawParticipant = true;
        }
    }
    void onPublisherDiscovery(eprosima::fastrtps::Participant*,
                              eprosima::fastrtps::rtps::WriterDiscoveryInfo&& info) override {
        EXPECT_EQ(info.info.topicName().to_string(), "Events");
        EXPECT_EQ(info.info.typeName().to_string(), "aspn2_msgs::idl::EventLog");
        EXPECT_EQ(info.info.topicKind(), eprosima::fastrtps::rtps::NO_KEY);
        EXPECT_EQ(info.info.m_qos.m_reliability.kind, eprosima::fastrtps::RELIABLE_RELIABILITY_QOS);
        EXPECT_EQ(info.info.m_qos.m_durability.kind,
                  eprosima::fastrtps::TRANSIENT_LOCAL_DURABILITY_QOS);
        sawWriter = true;
    }
    void onSubscriberDiscovery(eprosima::fastrtps::Participant*,
                               eprosima::fastrtps::rtps::ReaderDiscoveryInfo&& info) override {
        EXPECT_EQ(info.info.topicName().to_string(), "Events");
        EXPECT_EQ(info.info.m_qos.m_reliability.kind, eprosima::fastrtps::RELIABLE_RELIABILITY_QOS);
        EXPECT_EQ(info.info.m_qos.m_durability.kind, eprosima::fastrtps::VOLATILE_DURABILITY_QOS);
        sawReader = true;
    }

    eprosima::fastrtps::Participant* m_participant;
};

TEST(TransportBus, ShowsItsNameLeaseAndQualityOfServiceToOthers) {
    Onlooker onlooker(189);
    Station station(busSettings(189), "Rovan");
    station.publish();
    station.subscribe();

    EXPECT_TRUE(eventually(
        [&] { return onlooker.sawParticipant && onlooker.sawWriter && onlooker.sawReader; }));
}

}  // namespace

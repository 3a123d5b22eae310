// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS_Join.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fastdds/rtps/builtin/data/ParticipantProxyData.h>
#include <fastdds/rtps/participant/ParticipantDiscoveryInfo.h>
#include <fastrtps/Domain.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/face/TransportBus.h"
#include "tests/support/OwnBus.h"

// Joining as a TCP client while the listening side answers late or not at all.

namespace {

using namespace std::chrono_literals;
using eprosima::fastrtps::Domain;
using FACE::TSS::ConnectionWatch;
using FACE::TSS::joinBus;
using FACE::TSS::Joined;
using FACE::TSS::JoinTimes;
using FACE::TSS::KD_TSS;
using FACE::TSS::OthersOnTheBus;
using FACE::TSS::watchConnection;
using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::IsEmpty;
using transport_test::eventually;

sockaddr_in loopback(uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

/// A socket that listens on a port of its own choice.
class Listening {
  public:
    Listening() : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof address;
        auto* plain = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(m_socket, plain, size), 0);
        EXPECT_EQ(getsockname(m_socket, plain, &size), 0);
        EXPECT_EQ(listen(m_socket, 8), 0);
        m_port = ntohs(address.sin_port);
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() { close(m_socket); }

    int socketNumber() const { return m_socket; }
    uint16_t port() const { return m_port; }

  private:
    const int m_socket;
    uint16_t m_port = 0;
};

/// A port that nobody listens on now.
uint16_t freePort() {
    return Listening().port();
}

/// Takes connections and answers none of the first `deafTo`; the later ones it passes on to a port.
class Doorman {
  public:
    explicit Doorman(int deafTo, uint16_t target = 0) : m_deafTo(deafTo), m_target(target) {
        m_thread = std::thread([this] { run(); });
    }
    Doorman(const Doorman&) = delete;
    Doorman& operator=(const Doorman&) = delete;
    ~Doorman() {
        m_stop = true;
        m_thread.join();
    }

    uint16_t port() const { return m_listening.port(); }
    int callers() const { return m_callers; }

  private:
    /// Bytes that come in on `from` go out on `to`, and are dropped where that is -1.
    struct Pipe {
        int from;
        int to;
    };

    void run() {
        while (!m_stop) {
            std::vector<pollfd> watched{{m_listening.socketNumber(), POLLIN, 0}};
            for (const Pipe& pipe : m_pipes) {
                watched.push_back({pipe.from, POLLIN, 0});
            }
            poll(watched.data(), watched.size(), 20);
            const bool someoneCalls = (watched.front().revents & POLLIN) != 0;
            auto pipe = m_pipes.begin();
            for (auto socket = watched.begin() + 1; socket != watched.end(); ++socket) {
                pipe = socket->revents == 0 || pass(*pipe) ? std::next(pipe) : m_pipes.erase(pipe);
            }
            if (someoneCalls) {
                accept();
            }
        }
        for (const int socket : m_sockets) {
            close(socket);
        }
    }

    void accept() {
        const int caller = ::accept(m_listening.socketNumber(), nullptr, nullptr);
        m_sockets.push_back(caller);
        if (++m_callers <= m_deafTo) {
            m_pipes.push_back({caller, -1});
            return;
        }
        const int onward = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        m_sockets.push_back(onward);
        const sockaddr_in address = loopback(m_target);
        EXPECT_EQ(connect(onward, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        m_pipes.push_back({caller, onward});
        m_pipes.push_back({onward, caller});
    }

    static bool pass(const Pipe& pipe) {
        std::array<char, 65536> bytes{};
        const ssize_t count = recv(pipe.from, bytes.data(), bytes.size(), 0);
        if (count <= 0) {
            return false;
        }
        return pipe.to < 0 ||
               send(pipe.to, bytes.data(), static_cast<size_t>(count), MSG_NOSIGNAL) == count;
    }

    const int m_deafTo;
    const uint16_t m_target;
    Listening m_listening;
    std::atomic<int> m_callers{0};
    std::atomic<bool> m_stop{false};
    std::list<Pipe> m_pipes;
    std::vector<int> m_sockets;
    std::thread m_thread;
};

KD_TSS::Settings_t settings(const char* transport, uint16_t port) {
    KD_TSS::Settings_t settings;
    settings.domainId = static_cast<uint32_t>(test_support::ownBus());
    settings.historyDepth = 8;
    settings.useTransport = transport;
    settings.tcpAddress = "127.0.0.1";
    settings.tcpPort = port;
    return settings;
}

/// The shipped times, but for the waiting on a connection that will never answer.
JoinTimes shortTimes() {
    JoinTimes times;
    times.hear = 500ms;
    times.allAttempts = 1500ms;
    return times;
}

/// A participant for as long as the object lives.
class Member {
  public:
    explicit Member(const KD_TSS::Settings_t& settings, const JoinTimes& times = {})
        : m_joined(joinBus(settings, "Tester", times)) {
        EXPECT_NE(m_joined.participant, nullptr);
    }
    Member(const Member&) = delete;
    Member& operator=(const Member&) = delete;
    ~Member() { Domain::removeParticipant(m_joined.participant); }

    const Joined& joined() const { return m_joined; }
    bool hearsOthers() const { return m_joined.others->heard(); }

  private:
    const Joined m_joined;
};

// Standard error goes to a file while the object lives. The lines of the library are left out.
class Told {
  public:
    Told() : m_file(std::tmpfile()), m_original(dup(STDERR_FILENO)) {
        EXPECT_GE(dup2(fileno(m_file), STDERR_FILENO), 0);
    }
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;
    ~Told() {
        dup2(m_original, STDERR_FILENO);
        close(m_original);
        std::fclose(m_file);
    }

    /// The lines since the last call.
    std::vector<std::string> lines() {
        std::vector<std::string> lines = all();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(m_seen));
        m_seen += lines.size();
        return lines;
    }
    bool some() { return all().size() > m_seen; }
    void forget() { lines(); }

  private:
    std::vector<std::string> all() {
        std::string text;
        char piece[4096];
        off_t at = 0;
        for (ssize_t count; (count = pread(fileno(m_file), piece, sizeof piece, at)) > 0;
             at += count) {
            text.append(piece, static_cast<size_t>(count));
        }
        std::vector<std::string> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            if (line.rfind("Tester: ", 0) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    std::FILE* const m_file;
    const int m_original;
    size_t m_seen = 0;
};

using DiscoveryInfo = eprosima::fastrtps::rtps::ParticipantDiscoveryInfo;

/// News of another participant.
DiscoveryInfo discovery(DiscoveryInfo::DISCOVERY_STATUS status) {
    static const eprosima::fastrtps::rtps::RTPSParticipantAllocationAttributes kAllocation;
    static const eprosima::fastrtps::rtps::ParticipantProxyData data(kAllocation);
    DiscoveryInfo info(data);
    info.status = status;
    return info;
}

std::string line(uint16_t port, const std::string& what) {
    return "Tester: TCP connection to 127.0.0.1:" + std::to_string(port) + ": " + what;
}

constexpr const char* kAnew = "no other participant is heard, joining anew";
constexpr const char* kNoFurther = "still no other participant is heard, joining no further";
constexpr const char* kDeaf =
    "it stands, but no other participant is heard on it; only a restart joins anew";
constexpr const char* kHeard = "another participant is heard";

}  // namespace

TEST(JoinBus, WaitsAsLongAsItSays) {
    const JoinTimes times;
    EXPECT_EQ(times.connect, 300ms);
    EXPECT_EQ(times.hear, 5s);
    EXPECT_EQ(times.allAttempts, 15s);
    EXPECT_EQ(times.close, 10s);
    EXPECT_EQ(times.deaf, 15s);
}

TEST(JoinBus, SaysNothingWhereNothingIsWrong) {
    Told told;
    const uint16_t port = freePort();
    const Member server(settings("TCP_Server", port));
    const Member client(settings("TCP_Client", port));

    EXPECT_TRUE(client.hearsOthers());
    EXPECT_FALSE(client.joined().complained);
    EXPECT_THAT(told.lines(), IsEmpty());
}

TEST(JoinBus, IsMadeAnewWhenTheFirstConnectionGetsNoAnswer) {
    Told told;
    const uint16_t port = freePort();
    const Member server(settings("TCP_Server", port));
    const Doorman doorman(1, port);
    JoinTimes times;
    times.hear = 1s;  // enough for a first attempt that cannot succeed
    times.allAttempts = 60s;

    const Member client(settings("TCP_Client", doorman.port()), times);

    EXPECT_TRUE(client.hearsOthers());
    EXPECT_FALSE(client.joined().complained);
    EXPECT_GE(doorman.callers(), 2);
    const auto lines = told.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.front(), line(doorman.port(), kAnew));
    EXPECT_EQ(lines.back(), line(doorman.port(), kHeard));
}

TEST(JoinBus, GoesOnWithTheLastOfTheParticipantsWhenItsTimeIsUp) {
    Told told;
    const Doorman doorman(1000);

    const auto start = steady_clock::now();
    const Member client(settings("TCP_Client", doorman.port()), shortTimes());

    EXPECT_GE(steady_clock::now() - start, 1500ms);
    EXPECT_FALSE(client.hearsOthers());
    EXPECT_TRUE(client.joined().complained);
    const auto lines = told.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_LE(lines.size(), 4u);
    EXPECT_EQ(lines.back(), line(doorman.port(), kNoFurther));
    for (size_t i = 0; i + 1 < lines.size(); ++i) {
        EXPECT_EQ(lines[i], line(doorman.port(), kAnew));
    }
}

TEST(JoinBus, DoesNotWaitForAServerThatIsNotThere) {
    Told told;
    JoinTimes times;
    times.hear = times.allAttempts = 60s;
    const auto start = steady_clock::now();
    const Member client(settings("TCP_Client", freePort()), times);

    EXPECT_LT(steady_clock::now() - start, 30s);
    EXPECT_FALSE(client.hearsOthers());
    EXPECT_THAT(told.lines(), IsEmpty());
}

TEST(JoinBus, DoesNotWaitOnOtherTransports) {
    JoinTimes times;
    times.connect = times.hear = times.allAttempts = 60s;
    const auto start = steady_clock::now();
    const Member client(settings("UDP", 0), times);

    EXPECT_LT(steady_clock::now() - start, 30s);
}

TEST(ConnectionWatch, WatchesTcpClientsOnly) {
    const Member other(settings("UDP", 0));
    EXPECT_EQ(watchConnection(settings("UDP", 0), "Tester", other.joined()), nullptr);
    EXPECT_EQ(watchConnection(settings("TCP_Client", freePort()), "Tester", Joined{}), nullptr);
    const KD_TSS::Settings_t client = settings("TCP_Client", freePort());
    const Member member(client);
    EXPECT_NE(watchConnection(client, "Tester", member.joined()), nullptr);
}

TEST(ConnectionWatch, TellsAConnectionThatStaysDeafOnceAndThatAnotherIsHeard) {
    Told told;
    const Doorman doorman(1000);
    const auto toDoorman = settings("TCP_Client", doorman.port());
    const Member client(toDoorman, shortTimes());
    ASSERT_TRUE(eventually([&] { return doorman.callers() > 0; }));
    Joined deaf = client.joined();
    deaf.others = std::make_shared<OthersOnTheBus>();  // none is ever heard by this one
    ConnectionWatch watch(toDoorman, "Tester", deaf);
    told.forget();

    const auto start = steady_clock::now();
    watch.look(start);
    watch.look(start + 14'999ms);
    EXPECT_THAT(told.lines(), IsEmpty());
    watch.look(start + 15'000ms);
    EXPECT_THAT(told.lines(), ElementsAre(line(doorman.port(), kDeaf)));
    watch.look(start + 1h);
    EXPECT_THAT(told.lines(), IsEmpty());

    deaf.others->onParticipantDiscovery(nullptr, discovery(DiscoveryInfo::DISCOVERED_PARTICIPANT));
    watch.look(start + 2h);
    EXPECT_THAT(told.lines(), ElementsAre(line(doorman.port(), kHeard)));
    watch.look(start + 3h);
    EXPECT_THAT(told.lines(), IsEmpty());

    // It goes, and from then on the time counts again.
    deaf.others->onParticipantDiscovery(nullptr, discovery(DiscoveryInfo::DROPPED_PARTICIPANT));
    watch.look(start + 4h);
    watch.look(start + 4h + 14'999ms);
    EXPECT_THAT(told.lines(), IsEmpty());
    watch.look(start + 4h + 15s);
    EXPECT_THAT(told.lines(), ElementsAre(line(doorman.port(), kDeaf)));
}

TEST(ConnectionWatch, SaysNothingOfAConnectionThatIsNotThere) {
    Told told;
    const auto nowhere = settings("TCP_Client", freePort());
    Joined alone;
    alone.others = std::make_shared<OthersOnTheBus>();
    ConnectionWatch watch(nowhere, "Tester", alone);
    const auto start = steady_clock::now();
    watch.look(start);
    watch.look(start + 1h);
    EXPECT_THAT(told.lines(), IsEmpty());
    // Whoever joined alone is told when it is alone no more.
    alone.others->onParticipantDiscovery(nullptr, discovery(DiscoveryInfo::DISCOVERED_PARTICIPANT));
    alone.others->onParticipantDiscovery(nullptr,
                                         discovery(DiscoveryInfo::CHANGED_QOS_PARTICIPANT));
    watch.look(start + 2h);
    EXPECT_THAT(told.lines(), ElementsAre(line(nowhere.tcpPort, kHeard)));
    alone.others->onParticipantDiscovery(nullptr, discovery(DiscoveryInfo::REMOVED_PARTICIPANT));
    EXPECT_FALSE(alone.others->heard());
}

TEST(ConnectionWatch, LooksForItself) {
    const uint16_t port = freePort();
    const Member client(settings("TCP_Client", port));
    Told told;
    {
        const auto watch = watchConnection(settings("TCP_Client", port), "Tester", client.joined());
        ASSERT_NE(watch, nullptr);
        const Member server(settings("TCP_Server", port));
        EXPECT_TRUE(eventually([&] { return told.some(); }));
    }
    EXPECT_THAT(told.lines(), ElementsAre(line(port, kHeard)));
}

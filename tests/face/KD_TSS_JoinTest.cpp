// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS_Join.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fastrtps/Domain.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <thread>
#include <vector>

// Joining as a TCP client while the listening side answers late or not at all.

namespace {

using namespace std::chrono_literals;
using eprosima::fastrtps::Domain;
using FACE::TSS::joinBus;
using FACE::TSS::KD_TSS;
using FACE::TSS::ParticipantHeard;
using std::chrono::steady_clock;

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
    settings.domainId = 192;
    settings.historyDepth = 8;
    settings.useTransport = transport;
    settings.tcpAddress = "127.0.0.1";
    settings.tcpPort = port;
    return settings;
}

/// A participant for as long as the object lives.
class Joined {
  public:
    explicit Joined(const KD_TSS::Settings_t& settings)
        : m_participant(joinBus(settings, "Tester", m_heard)) {
        EXPECT_NE(m_participant, nullptr);
    }
    Joined(const Joined&) = delete;
    Joined& operator=(const Joined&) = delete;
    ~Joined() { Domain::removeParticipant(m_participant); }

    bool heardSomeone() const { return m_heard.heard(); }

  private:
    ParticipantHeard m_heard;
    eprosima::fastrtps::Participant* m_participant;
};

TEST(JoinBus, IsMadeAnewWhenTheFirstConnectionGetsNoAnswer) {
    const uint16_t port = freePort();
    const Joined server(settings("TCP_Server", port));
    const Doorman doorman(1, port);

    const Joined client(settings("TCP_Client", doorman.port()));

    EXPECT_TRUE(client.heardSomeone());
    EXPECT_GE(doorman.callers(), 2);
}

TEST(JoinBus, GoesOnAfterThreeConnectionsOnWhichNobodyIsHeard) {
    const Doorman doorman(1000);

    const auto start = steady_clock::now();
    const Joined client(settings("TCP_Client", doorman.port()));

    EXPECT_GE(steady_clock::now() - start, 15s);
    EXPECT_FALSE(client.heardSomeone());
    EXPECT_EQ(doorman.callers(), 3);
}

TEST(JoinBus, DoesNotWaitForAServerThatIsNotThere) {
    const auto start = steady_clock::now();
    const Joined client(settings("TCP_Client", freePort()));

    EXPECT_LT(steady_clock::now() - start, 4s);
    EXPECT_FALSE(client.heardSomeone());
}

TEST(JoinBus, DoesNotWaitOnOtherTransports) {
    const auto start = steady_clock::now();
    const Joined client(settings("UDP", 0));

    EXPECT_LT(steady_clock::now() - start, 4s);
}

}  // namespace

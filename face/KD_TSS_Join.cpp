// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS_Join.h"

#include <arpa/inet.h>
#include <fastrtps/Domain.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include "face/KD_TSS_Attributes.h"
#include "utility/Console.h"
#include "utility/Sleep.h"

namespace FACE::TSS {
namespace {

using namespace std::chrono_literals;
using eprosima::fastrtps::Domain;
using eprosima::fastrtps::Participant;
using eprosima::fastrtps::rtps::ParticipantDiscoveryInfo;
using std::chrono::steady_clock;

constexpr auto kJoinPoll = 10ms;
constexpr auto kWatchPoll = 200ms;

bool isTcpClient(const KD_TSS::Settings_t& settings) {
    return settings.useTransport == "TCP_Client";
}

bool isConnectedTo(int descriptor, const in_addr& address, uint16_t port) {
    sockaddr_storage peer{};
    socklen_t length = sizeof peer;
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0 ||
        peer.ss_family != AF_INET) {
        return false;
    }
    const auto& itsAddress = reinterpret_cast<const sockaddr_in&>(peer);
    return itsAddress.sin_addr.s_addr == address.s_addr && itsAddress.sin_port == htons(port);
}

/// True while a socket of this process is connected to the participant that listens.
bool isConnected(const KD_TSS::Settings_t& settings) {
    in_addr address{};
    if (inet_pton(AF_INET, settings.tcpAddress.c_str(), &address) != 1) {
        return false;
    }
    std::error_code ignored;
    for (std::filesystem::directory_iterator i("/proc/self/fd", ignored), end; i != end;
         i.increment(ignored)) {
        const int descriptor = std::atoi(i->path().filename().c_str());
        if (isConnectedTo(descriptor, address, settings.tcpPort)) {
            return true;
        }
    }
    return false;
}

/// True with a connection on which no other participant is heard in time.
bool isConnectionLost(const KD_TSS::Settings_t& settings, const OthersOnTheBus& others,
                      const JoinTimes& times, steady_clock::time_point end) {
    const auto start = steady_clock::now();
    end = std::min(end, start + times.hear);
    while (!others.heard()) {
        const auto now = steady_clock::now();
        if (now - start >= times.connect && !isConnected(settings)) {
            return false;
        }
        if (now >= end) {
            return true;
        }
        Utility::sleepFor(kJoinPoll);
    }
    return false;
}

/// Closes the participant on a thread of its own, which is left alone when it does not end in time.
void close(Joined joined, std::chrono::milliseconds limit) {
    auto closed = std::make_shared<std::promise<void>>();
    auto isClosed = closed->get_future();
    std::thread([joined = std::move(joined), closed] {
        Domain::removeParticipant(joined.participant);
        closed->set_value();
    }).detach();
    isClosed.wait_for(limit);
}

void tell(const std::string& name, const KD_TSS::Settings_t& settings, const char* what) {
    Console::errorLine(name + ": TCP connection to " + settings.tcpAddress + ':' +
                       std::to_string(settings.tcpPort) + ": " + what);
}

constexpr const char* kHeard = "another participant is heard";

}  // namespace

void OthersOnTheBus::onParticipantDiscovery(Participant*, ParticipantDiscoveryInfo&& info) {
    count(info);
}

void OthersOnTheBus::count(const ParticipantDiscoveryInfo& info) {
    switch (info.status) {
        case ParticipantDiscoveryInfo::DISCOVERED_PARTICIPANT:
            ++m_count;
            break;
        case ParticipantDiscoveryInfo::REMOVED_PARTICIPANT:
        case ParticipantDiscoveryInfo::DROPPED_PARTICIPANT:
            --m_count;
            break;
        default:
            break;
    }
}

Joined joinBus(const KD_TSS::Settings_t& settings, const std::string& name, const JoinTimes& times,
               const std::function<std::shared_ptr<OthersOnTheBus>()>& makeListener) {
    const auto attributes = Attributes::participant(settings, name);
    const auto end = steady_clock::now() + times.allAttempts;
    bool complained = false;
    while (true) {
        Joined joined;
        joined.others = makeListener();
        joined.participant = Domain::createParticipant(attributes, joined.others.get());
        joined.complained = complained;
        if (joined.participant == nullptr || !isTcpClient(settings)) {
            return joined;
        }
        if (!isConnectionLost(settings, *joined.others, times, end)) {
            if (complained && joined.others->heard()) {
                tell(name, settings, kHeard);
                joined.complained = false;
            }
            return joined;
        }
        complained = true;
        if (steady_clock::now() >= end) {
            tell(name, settings, "still no other participant is heard, joining no further");
            joined.complained = true;
            return joined;
        }
        tell(name, settings, "no other participant is heard, joining anew");
        close(std::move(joined), times.close);
    }
}

ConnectionWatch::ConnectionWatch(const KD_TSS::Settings_t& settings, std::string name,
                                 const Joined& joined, const JoinTimes& times)
    : m_settings(settings),
      m_name(std::move(name)),
      m_others(joined.others),
      m_times(times),
      m_unheard(joined.complained || !joined.others->heard()) {
}

ConnectionWatch::~ConnectionWatch() {
    m_thread.stop();
}

void ConnectionWatch::start() {
    m_thread.start([this] {
        while (!m_thread.stopRequested()) {
            look(steady_clock::now());
            Utility::sleepFor(kWatchPoll);
        }
    });
}

std::unique_ptr<ConnectionWatch> watchConnection(const KD_TSS::Settings_t& settings,
                                                 const std::string& name, const Joined& joined) {
    if (joined.participant == nullptr || !isTcpClient(settings)) {
        return nullptr;
    }
    auto watch = std::make_unique<ConnectionWatch>(settings, name, joined);
    watch->start();
    return watch;
}

void ConnectionWatch::look(steady_clock::time_point now) {
    if (m_others->heard()) {
        if (std::exchange(m_unheard, false)) {
            tell(m_name, m_settings, kHeard);
        }
        m_standsDeaf = false;
        m_deafTold = false;
    } else if (!isConnected(m_settings)) {
        m_standsDeaf = false;
        m_deafTold = false;
    } else if (!std::exchange(m_standsDeaf, true)) {
        m_deafSince = now;
    } else if (!m_deafTold && now - m_deafSince >= m_times.deaf) {
        tell(m_name, m_settings,
             "it stands, but no other participant is heard on it; only a restart joins anew");
        m_deafTold = true;
        m_unheard = true;
    }
}

}  // namespace FACE::TSS

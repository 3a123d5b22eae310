// SPDX-License-Identifier: Apache-2.0
#include "face/KD_TSS_Join.h"

#include <arpa/inet.h>
#include <fastrtps/Domain.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "face/KD_TSS_Attributes.h"
#include "utility/Sleep.h"

namespace FACE::TSS {
namespace {

using namespace std::chrono_literals;
using eprosima::fastrtps::Domain;
using eprosima::fastrtps::Participant;
using eprosima::fastrtps::rtps::ParticipantDiscoveryInfo;
using std::chrono::steady_clock;

constexpr int kAttempts = 3;
constexpr auto kTimeToConnect = 300ms;
// Announcements that come too early for the connection are made again after 3 s.
constexpr auto kTimeToHear = 5s;
constexpr auto kPollInterval = 10ms;

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

/// True with a connection on which nobody is heard.
bool isConnectionLost(const KD_TSS::Settings_t& settings, const ParticipantHeard& listener) {
    const auto start = steady_clock::now();
    while (!listener.heard()) {
        const auto waited = steady_clock::now() - start;
        if (waited >= kTimeToHear) {
            return true;
        }
        if (waited >= kTimeToConnect && !isConnected(settings)) {
            return false;
        }
        Utility::sleepFor(kPollInterval);
    }
    return false;
}

}  // namespace

void ParticipantHeard::onParticipantDiscovery(Participant*, ParticipantDiscoveryInfo&&) {
    hear();
}

Participant* joinBus(const KD_TSS::Settings_t& settings, const std::string& name,
                     ParticipantHeard& listener) {
    const auto attributes = Attributes::participant(settings, name);
    for (int attempt = 1;; ++attempt) {
        Participant* participant = Domain::createParticipant(attributes, &listener);
        if (participant == nullptr || settings.useTransport != "TCP_Client" ||
            !isConnectionLost(settings, listener) || attempt == kAttempts) {
            return participant;
        }
        Domain::removeParticipant(participant);
    }
}

}  // namespace FACE::TSS

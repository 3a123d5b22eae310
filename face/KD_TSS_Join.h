// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastrtps/participant/Participant.h>
#include <fastrtps/participant/ParticipantListener.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "face/KD_TSS.h"
#include "utility/WorkerThread.h"

// How a process joins the bus and leaves it again: the one place that makes a participant.
//
// As a TCP client the bus library can lose a connection for good: it drops the other side's answer
// when that comes before it has noted what the connection is for, and asks no second time. The
// connection then stands, and no other participant is ever heard on it. Before anything hangs on
// the participant, it is made anew; later on the loss is told, so that a person can act.
namespace FACE::TSS {

/// Knows whether any other participant is heard now. The bus library calls it on its own threads.
class OthersOnTheBus : public eprosima::fastrtps::ParticipantListener {
  public:
    bool heard() const { return m_count > 0; }
    void onParticipantDiscovery(eprosima::fastrtps::Participant* participant,
                                eprosima::fastrtps::rtps::ParticipantDiscoveryInfo&& info) override;

  protected:
    void count(const eprosima::fastrtps::rtps::ParticipantDiscoveryInfo& info);

  private:
    std::atomic<int> m_count{0};
};

/// How long each step waits.
struct JoinTimes {
    /// For a connection; without one there is nothing to lose, and a later one is not lost.
    std::chrono::milliseconds connect{300};
    /// For another participant on a connection. Announcements that come too early for the
    /// connection are made again after 3 s.
    std::chrono::milliseconds hear{5'000};
    /// For all attempts together.
    std::chrono::milliseconds allAttempts{15'000};
    /// For a participant to close, which the library may never finish.
    std::chrono::milliseconds close{10'000};
    /// Until a connection on which no participant is heard is told.
    std::chrono::milliseconds deaf{15'000};
};

/// A participant with its listener, which outlives it.
struct Joined {
    eprosima::fastrtps::Participant* participant = nullptr;  // null when the library refused
    std::shared_ptr<OthersOnTheBus> others;
    bool complained = false;  // a line has told that no participant was heard
};

/// Makes the participant that the settings describe. As a TCP client it is made anew while a
/// connection stands on which no other participant is heard; one line on standard error tells each
/// renewal, giving up, and that a participant is heard after all.
///
/// Each participant gets a listener of its own from `makeListener`, as one that is still closing
/// may go on calling its own.
Joined joinBus(const KD_TSS::Settings_t& settings, const std::string& name,
               const JoinTimes& times = {},
               const std::function<std::shared_ptr<OthersOnTheBus>()>& makeListener =
                   std::make_shared<OthersOnTheBus>);

// Tells on standard error, once each time, that a TCP client's connection has stood for a while
// without another participant on it, and that one is heard again. It changes nothing. Once started
// it looks for itself, several times a second, until its end.
class ConnectionWatch {
  public:
    ConnectionWatch(const KD_TSS::Settings_t& settings, std::string name, const Joined& joined,
                    const JoinTimes& times = {});
    ConnectionWatch(const ConnectionWatch&) = delete;
    ConnectionWatch& operator=(const ConnectionWatch&) = delete;
    ~ConnectionWatch();

    void start();
    /// Compares what is there with what was there before.
    void look(std::chrono::steady_clock::time_point now);

  private:
    const KD_TSS::Settings_t m_settings;
    const std::string m_name;
    const std::shared_ptr<const OthersOnTheBus> m_others;
    const JoinTimes m_times;
    bool m_unheard;             // to be told when that changes
    bool m_standsDeaf = false;  // since the next
    bool m_deafTold = false;
    std::chrono::steady_clock::time_point m_deafSince;
    Utility::WorkerThread m_thread;
};

/// A watch at work for a participant that has joined as a TCP client, null for any other.
std::unique_ptr<ConnectionWatch> watchConnection(const KD_TSS::Settings_t& settings,
                                                 const std::string& name, const Joined& joined);

}  // namespace FACE::TSS

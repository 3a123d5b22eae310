// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fastrtps/participant/Participant.h>
#include <fastrtps/participant/ParticipantListener.h>

#include <atomic>
#include <string>

#include "face/KD_TSS.h"

// How a process joins the bus: the one place that makes a participant.
namespace FACE::TSS {

/// Remembers whether another participant has been heard. The bus library calls it on its own
/// threads.
class ParticipantHeard : public eprosima::fastrtps::ParticipantListener {
  public:
    bool heard() const { return m_heard; }
    void onParticipantDiscovery(eprosima::fastrtps::Participant* participant,
                                eprosima::fastrtps::rtps::ParticipantDiscoveryInfo&& info) override;

  protected:
    void hear() { m_heard = true; }

  private:
    std::atomic<bool> m_heard{false};
};

/// Makes the participant that the settings describe, null when the library refuses. `listener` must
/// outlive it.
///
/// As a TCP client the library can lose its first connection for good: it drops the other side's
/// answer when that comes before it has noted what the connection is for, and asks no second time.
/// So while a connection stands on which nobody is heard, the participant is made anew, up to three
/// times, 5 s each. With nobody listening that costs 0.3 s: a later connection is not lost.
eprosima::fastrtps::Participant* joinBus(const KD_TSS::Settings_t& settings,
                                         const std::string& name, ParticipantHeard& listener);

}  // namespace FACE::TSS

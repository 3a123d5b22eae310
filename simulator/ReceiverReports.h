// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulator/ReceiverMessages.h"
#include "simulator/Truth.h"

namespace Simulator {

/// What a zeroize command comes to: the event that says it is done, the one that says it failed, or
/// no event at all.
enum class ZeroizeOutcome { Success, Failure, Silence };

// What the receiver has to tell at a moment: the moving truth, and the states that a test may set.
// One thread at a time.
class ReceiverReports {
  public:
    explicit ReceiverReports(std::uint32_t seed) : truth(seed) {}

    /// The data words of each frame of a message at `time`: one frame, or a burst of them. Empty
    /// for a message that the receiver does not make.
    std::vector<Words> make(std::uint16_t msgId, GpsSeconds time) const;

    Truth truth;
    bool receiverFailure = false;
    bool noSolution = false;
    bool standby = false;          // there is no solution in standby
    unsigned ipZeroizeStatus = 2;  // of 5404
    unsigned operatingMode = 0;    // of 5040
    bool dataTransfer = false;     // of 5042
    ZeroizeOutcome cvZeroize = ZeroizeOutcome::Success;
    ZeroizeOutcome emergencyZeroize = ZeroizeOutcome::Success;
    ZeroizeOutcome ipZeroize = ZeroizeOutcome::Success;
    ConnectionReport connection;
    VersionReport versions;

  private:
    Words navigation(GpsSeconds time) const;
    Words satellites(GpsSeconds time, std::size_t half) const;
    std::vector<Words> measurements(GpsSeconds time) const;
};

}  // namespace Simulator

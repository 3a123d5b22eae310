// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

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
    explicit ReceiverReports(std::uint32_t seed) : m_truth(seed) {}

    /// The data words of a message at `time`; empty for a message that the receiver does not make.
    std::optional<Words> make(std::uint16_t msgId, GpsSeconds time) const;

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

    Truth m_truth;
};

}  // namespace Simulator

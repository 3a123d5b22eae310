// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "simulator/BusEar.h"
#include "simulator/LedgerMatch.h"
#include "simulator/SimulatedUnit.h"

namespace Simulator {

// What the receiver said against what came out on the bus.
struct LedgerBalance {
    LedgerTime begin;                   // of the unit
    std::optional<LedgerTime> started;  // when the server said so
    std::uint64_t intact = 0;           // frames of the receiver that reached the line's other end
    std::uint64_t damaged = 0;          // or noise
    std::uint64_t undelivered = 0;      // intact ones that did not reach it
    std::uint64_t unseen = 0;           // frames that went by before they were entered
    std::vector<TopicBalance> topics;

    // Without a verdict: their samples gather several frames.
    std::uint64_t measurementFrames = 0;
    std::uint64_t measurements = 0;
    std::uint64_t satelliteFrames = 0;  // of 5047 and 5048 together
    std::uint64_t satelliteSamples = 0;

    /// Some frame was due: without one there is nothing to tell.
    bool hasFrames() const;
    bool balances() const;
};

// Keeps the books of a unit and of the bus that its server is on. Make it before the unit starts,
// and destroy it before the unit. One thread.
class BusLedger {
  public:
    /// Joins the bus. Throws as BusEar does.
    explicit BusLedger(SimulatedUnit& unit);

    /// Enters what the receiver has said since the last call. To be called often enough that its
    /// own log holds all of it: every second will do.
    void collect();

    /// Silences the receiver, waits until what it said has come out, up to `patience`, and gives
    /// the balance.
    LedgerBalance close(std::chrono::milliseconds patience = std::chrono::seconds(5));

    LedgerBalance balance() const;

  private:
    struct Entry {
        LedgerTime at;
        std::uint16_t msgId;
        Words key;
    };
    bool isDue(const Entry& entry, bool pausesInTests) const;

    SimulatedUnit& m_unit;
    const LedgerTime m_begin = std::chrono::steady_clock::now();
    std::uint64_t m_next = 0;  // of the receiver's log
    LedgerBalance m_totals;
    std::vector<Entry> m_entries;
    BusEar m_ear;
};

}  // namespace Simulator

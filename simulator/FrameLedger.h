// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>

#include "simulator/BoundedLog.h"
#include "simulator/Frame.h"
#include "simulator/FrameScanner.h"

namespace Simulator {

/// What the receiver heard, a frame or stray bytes.
struct HeardFrame {
    std::chrono::steady_clock::time_point at;
    ScannedFrame frame;
};

/// What the receiver said, byte for byte as it went out; `at` is just before its last byte.
struct SaidFrame {
    std::chrono::steady_clock::time_point at;
    Bytes bytes;
    bool intact;     // one whole frame whose checksums hold
    bool delivered;  // every byte reached the line's other end

    std::uint16_t msgId() const { return frameWord(bytes, 1); }
    std::uint16_t flags() const { return frameWord(bytes, 3); }
};

// The books of the link, kept at the receiver's end. The logs hold the latest entries only; the
// counts go on for good. Any thread may call.
class FrameLedger {
  public:
    using Counts = std::map<std::uint16_t, std::uint64_t>;

    void addHeard(ScannedFrame frame);
    void addSaid(SaidFrame frame);

    const BoundedLog<HeardFrame>& heard() const { return m_heard; }
    const BoundedLog<SaidFrame>& said() const { return m_said; }

    /// Intact frames by message id, without the header-only answers.
    Counts heardById() const;
    Counts saidById() const;

    struct Totals {
        std::uint64_t heardIntact = 0;   // answers included
        std::uint64_t heardDamaged = 0;  // good header, bad data
        std::uint64_t strayBytes = 0;
        std::uint64_t saidIntact = 0;   // answers included
        std::uint64_t saidDamaged = 0;  // no intact frame, or not delivered
        std::uint64_t acksSaid = 0;
        std::uint64_t naksSaid = 0;
        std::uint64_t acksHeard = 0;
    };
    Totals totals() const;

    /// For each message id, how many intact frames asked for an ACK that the server has not sent.
    Counts unacknowledged() const;

  private:
    static constexpr std::size_t kKept = 20'000;

    BoundedLog<HeardFrame> m_heard{kKept};
    BoundedLog<SaidFrame> m_said{kKept};

    mutable std::mutex m_mutex;
    Counts m_heardById;
    Counts m_saidById;
    Counts m_acksWanted;
    Counts m_acksHeard;
    Totals m_totals;
};

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/Frame.h"

namespace Simulator {

using LedgerTime = std::chrono::steady_clock::time_point;

/// An intact frame that reached the server and should have become a sample of a topic.
struct LedgerFrame {
    LedgerTime at;
    /// What tells it from the frames around it and stands in its sample too; empty when nothing
    /// does.
    Words key;
    /// False when the server may as well have dropped it: it was starting, or testing the receiver.
    bool due;
};

/// A sample that came out on the bus.
struct LedgerSample {
    LedgerTime at;
    Words key;
    std::int64_t number = 0;  // the server's own, from 0
};

// The frames of one topic against its samples.
struct TopicBalance {
    std::string topic;
    std::size_t due = 0;
    std::size_t early = 0;     // not due
    std::size_t earlyOut = 0;  // not due, and out all the same
    std::size_t samples = 0;
    std::size_t gaps = 0;  // numbers that the server used and that did not come
    std::vector<LedgerTime> missing;
    std::vector<LedgerTime> surplus;

    bool balances() const { return missing.empty() && surplus.empty(); }
};

/// Every frame that is due has one sample, in order, and no sample is without a frame. Both lists
/// are in the order of their making. Frames and samples that have keys are told apart by them; of
/// the others the numbers are right, and the times are those that fit best.
TopicBalance match(const std::string& topic, const std::vector<LedgerFrame>& frames,
                   const std::vector<LedgerSample>& samples);

}  // namespace Simulator

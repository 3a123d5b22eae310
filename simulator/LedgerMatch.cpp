// SPDX-License-Identifier: Apache-2.0
#include "simulator/LedgerMatch.h"

#include <algorithm>
#include <map>

namespace Simulator {
namespace {

using Frames = std::vector<LedgerFrame>;
using Samples = std::vector<LedgerSample>;

// Pairs frames and samples from front to back. `surplus` gets the samples without a frame; gives
// for each frame whether it has a sample.
std::vector<bool> pairUp(const Frames& frames, const Samples& samples,
                         std::vector<LedgerTime>& surplus) {
    std::vector<bool> paired(frames.size(), false);
    std::size_t next = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const LedgerSample& sample = samples[i];
        std::size_t found = next;
        while (found < frames.size() && frames[found].key != sample.key) {
            ++found;
        }
        if (sample.key.empty()) {
            // Nobody can tell which one: as many are left out as there are too many, each where
            // the sample came only after a later frame.
            const std::size_t rest = samples.size() - i;
            while (found + 1 < frames.size() && frames.size() - found > rest &&
                   frames[found + 1].at <= sample.at) {
                ++found;
            }
        }
        if (found == frames.size()) {
            surplus.push_back(sample.at);
        } else {
            paired[found] = true;
            next = found + 1;
        }
    }
    return paired;
}

}  // namespace

TopicBalance match(const std::string& topic, const Frames& frames, const Samples& samples) {
    TopicBalance balance;
    balance.topic = topic;
    balance.samples = samples.size();
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const std::int64_t gap = samples[i].number - samples[i - 1].number - 1;
        balance.gaps += static_cast<std::size_t>(std::max<std::int64_t>(gap, 0));
    }
    const std::vector<bool> paired = pairUp(frames, samples, balance.surplus);
    // A sample that seems to be of an early frame may be of a later one that says the same.
    std::map<Words, std::size_t> spare;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        ++(frames[i].due ? balance.due : balance.early);
        if (!frames[i].due && paired[i]) {
            ++balance.earlyOut;
            ++spare[frames[i].key];
        }
    }
    for (std::size_t i = 0; i < frames.size(); ++i) {
        if (!frames[i].due || paired[i]) {
            continue;
        }
        const auto found = spare.find(frames[i].key);
        if (found != spare.end() && found->second > 0) {
            --found->second;
            --balance.earlyOut;
        } else {
            balance.missing.push_back(frames[i].at);
        }
    }
    return balance;
}

}  // namespace Simulator

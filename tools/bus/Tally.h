// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/bus/Bus.h"

namespace Bus {

// Counts the samples of each topic, and by the gaps in their publishers' numbering the ones that
// never came. What a publisher sent before its first sample here is not missed. One thread.
class Tally {
  public:
    void add(const Sample& sample);

    /// One line for each topic, each ended.
    std::string summary() const;
    /// Only the lines of topics that lost samples or could not be read; empty when all is well.
    std::string problems() const;
    bool hasUnreadable(const std::string& topic) const;

  private:
    struct Counts {
        uint64_t samples = 0;
        uint64_t lost = 0;
        uint64_t unreadable = 0;
    };

    static std::string line(const std::string& topic, const Counts& counts);

    std::map<std::string, Counts> m_topics;
    std::map<Directory::Guid, uint64_t> m_lastSequence;
};

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace GssipTool {

// When which byte of a stream came. Asked for ascending offsets only. One thread.
class Timeline {
  public:
    /// `count` more bytes came at that time.
    void add(size_t count, std::optional<int64_t> timeNs) {
        m_end += count;
        if (timeNs) {
            m_stretches.push_back({m_end, *timeNs});
        }
    }
    /// When the byte at `offset` came, if that is known.
    std::optional<int64_t> at(uint64_t offset) {
        while (!m_stretches.empty() && m_stretches.front().end <= offset) {
            m_stretches.pop_front();
        }
        return m_stretches.empty() ? std::nullopt : std::optional(m_stretches.front().timeNs);
    }

  private:
    struct Stretch {
        uint64_t end;
        int64_t timeNs;
    };
    uint64_t m_end = 0;
    std::deque<Stretch> m_stretches;
};

}  // namespace GssipTool

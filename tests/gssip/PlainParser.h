// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "tests/gssip/Frames.h"

/// What a parser called its handler for.
struct ParserEvent {
    size_t load;          // the LoadBytes call that it came out of
    Frames::Bytes frame;  // empty: a checksum error
    bool operator==(const ParserEvent& other) const {
        return load == other.load && frame == other.frame;
    }
};

// The plain state machine that defines the parser: byte after byte from a deque, a failed candidate
// rescanned from its second byte. It is slow on hostile streams; the real parser must give the same
// events and not be slow.
class PlainParser {
  public:
    void load(const unsigned char* bytes, size_t count) {
        m_queue.insert(m_queue.end(), bytes, bytes + count);
        while (m_queue.size() > m_index) {
            step(m_queue[m_index]);
        }
        ++m_load;
    }
    const std::vector<ParserEvent>& events() const { return m_events; }
    uint64_t steps() const { return m_steps; }

  private:
    void step(unsigned char b) {
        ++m_steps;
        m_sum = static_cast<uint16_t>(m_sum + (m_index % 2 == 0 ? b : b * 256));
        switch (m_state) {
            case 0:
                return b == 0xFF ? advance(1) : drop();
            case 1:
                return b == 0x81 ? advance(2) : drop();
            case 2:
                return m_index != 9 ? advance(2) : finishHeader();
            default:
                return m_index + 1 != m_expectedLength ? advance(4) : finishData();
        }
    }
    void finishHeader() {
        if (m_sum != 0) {
            m_events.push_back({m_load, {}});
            return drop();
        }
        m_expectedLength = (m_queue[4] + m_queue[5] * 256u + 6) * 2;
        return m_expectedLength == 12 ? post(10) : advance(4);
    }
    void finishData() {
        if (m_sum == 0) {
            return post(m_expectedLength);
        }
        m_events.push_back({m_load, {}});
        drop();
    }
    void advance(int state) {
        m_state = state;
        ++m_index;
    }
    void drop() {
        m_queue.pop_front();
        m_state = 0;
        m_index = 0;
        m_sum = 0;
    }
    void post(unsigned length) {
        const auto end = m_queue.begin() + static_cast<std::ptrdiff_t>(length);
        m_events.push_back({m_load, Frames::Bytes(m_queue.begin(), end)});
        m_queue.erase(m_queue.begin(), end);
        m_state = 0;
        m_index = 0;
        m_sum = 0;
    }

    std::deque<unsigned char> m_queue;
    int m_state = 0;
    size_t m_index = 0;
    unsigned m_expectedLength = 0;
    uint16_t m_sum = 0;
    size_t m_load = 0;
    std::vector<ParserEvent> m_events;
    uint64_t m_steps = 0;
};

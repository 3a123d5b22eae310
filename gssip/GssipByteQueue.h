// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The bytes that the parser has received and not yet consumed, in one contiguous piece, together
// with running sums that give the word sum of any stretch in constant time. Appending and dropping
// cost a bounded amount of work for each byte, however the stream is cut. The store grows to a
// small multiple of the most that was ever held at once, and then allocates no more.
class GssipByteQueue {
  public:
    GssipByteQueue();

    void append(const unsigned char* bytes, unsigned count);
    /// Removes `count` bytes, at most size(), from the front.
    void drop(unsigned count);
    void clear();

    unsigned size() const { return static_cast<unsigned>(m_tail - m_head); }
    /// The front byte and all that follow it, valid until the next append() or drop().
    const unsigned char* data() const { return m_bytes.data() + m_head; }
    /// The byte at position `i` behind the front.
    unsigned char operator[](unsigned i) const { return m_bytes[m_head + i]; }

    /// 16-bit sum of the first `count` bytes taken as words, low byte first. `count` is even.
    uint16_t wordSum(unsigned count) const;

  private:
    void makeRoom(unsigned count);

    std::vector<unsigned char> m_bytes;
    // Entry k + 1 is the sum of every other byte before position k of the store: those at k - 1,
    // k - 3 and so on. Only differences of entries are used, so that the sums need no origin.
    std::vector<uint16_t> m_sums;
    size_t m_head = 0;
    size_t m_tail = 0;
};

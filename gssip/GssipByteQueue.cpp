// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipByteQueue.h"

#include <cstring>

namespace {

constexpr size_t kFirstCapacity = 4096;

}  // namespace

GssipByteQueue::GssipByteQueue() : m_bytes(kFirstCapacity), m_sums(kFirstCapacity + 2) {
}

void GssipByteQueue::append(const unsigned char* bytes, unsigned count) {
    if (count == 0) {
        return;
    }
    makeRoom(count);
    std::memcpy(&m_bytes[m_tail], bytes, count);
    uint16_t* sums = &m_sums[m_tail];
    uint16_t older = sums[0];
    uint16_t newer = sums[1];
    for (unsigned i = 0; i < count; ++i) {
        const auto next = static_cast<uint16_t>(older + bytes[i]);
        sums[i + 2] = next;
        older = newer;
        newer = next;
    }
    m_tail += count;
}

void GssipByteQueue::drop(unsigned count) {
    m_head += count;
    if (m_head == m_tail) {
        clear();
    }
}

// Back to the start of the store: it stays in the cache, and as a rule nothing is ever moved.
void GssipByteQueue::clear() {
    m_head = 0;
    m_tail = 0;
}

uint16_t GssipByteQueue::wordSum(unsigned count) const {
    const uint16_t* sums = &m_sums[m_head];
    const int lowBytes = sums[count] - sums[0];
    const int highBytes = sums[count + 1] - sums[1];
    return static_cast<uint16_t>(lowBytes + 256 * highBytes);
}

// Moves what is held to the start only when at least as much was dropped before it, and doubles the
// store otherwise: either way the work is paid for by bytes that came in since.
void GssipByteQueue::makeRoom(unsigned count) {
    if (m_tail + count <= m_bytes.size()) {
        return;
    }
    const size_t held = m_tail - m_head;
    size_t capacity = m_bytes.size();
    while (capacity < 2 * (held + count)) {
        capacity *= 2;
    }
    m_sums.resize(capacity + 2);
    m_bytes.resize(capacity);
    std::memmove(&m_bytes[0], &m_bytes[m_head], held);
    std::memmove(&m_sums[0], &m_sums[m_head], (held + 2) * sizeof m_sums[0]);
    m_head = 0;
    m_tail = held;
}

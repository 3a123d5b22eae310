// SPDX-License-Identifier: Apache-2.0
#include "simulator/LineNoise.h"

#include <algorithm>

namespace Simulator {

void LineNoise::setBitErrors(double rate) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_rate = rate;
    drawNextError();
}

void LineNoise::setBursts(std::size_t bytes, std::chrono::nanoseconds every) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_burstBytes = bytes;
    m_burstEvery = every;
    m_nextBurst = Clock::now();
}

void LineNoise::damage(Bytes& bytes) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_rate > 0) {
        flipBits(bytes);
    }
    if (m_burstBytes > 0 && !bytes.empty()) {
        burst(bytes);
    }
}

void LineNoise::flipBits(Bytes& bytes) {
    const std::uint64_t bits = 8 * std::uint64_t{bytes.size()};
    std::uint64_t at = m_bitsToError;
    while (at < bits) {
        bytes[at / 8] = static_cast<std::uint8_t>(bytes[at / 8] ^ (1u << at % 8));
        drawNextError();
        at += 1 + m_bitsToError;
    }
    m_bitsToError = at - bits;
}

void LineNoise::burst(Bytes& bytes) {
    const Clock::time_point now = Clock::now();
    if (now < m_nextBurst) {
        return;
    }
    m_nextBurst = now + m_burstEvery;
    const std::size_t begin =
        std::uniform_int_distribution<std::size_t>(0, bytes.size() - 1)(m_random);
    const std::size_t end = std::min(bytes.size(), begin + m_burstBytes);
    // Never 0, which would leave a byte as it was.
    std::uniform_int_distribution<unsigned> change(1, 0xFF);
    for (std::size_t at = begin; at < end; ++at) {
        bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ change(m_random));
    }
}

void LineNoise::drawNextError() {
    m_bitsToError =
        m_rate > 0 && m_rate < 1 ? std::geometric_distribution<std::uint64_t>(m_rate)(m_random) : 0;
}

}  // namespace Simulator

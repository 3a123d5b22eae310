// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <random>

#include "simulator/Frame.h"

namespace Simulator {

// What a bad cable does to the bytes on it: single bits that flip by chance, and bursts of bytes
// that come out as others. Quiet at first. Any thread may call.
class LineNoise {
  public:
    using Clock = std::chrono::steady_clock;

    explicit LineNoise(std::uint32_t seed) : m_random(seed) {}

    /// Each bit flips with this probability, 0 to 1; 0 ends it.
    void setBitErrors(double rate);
    /// Once in `every`, so many bytes in a row are damaged, up to the end of what is on the line
    /// then: a burst is over before something else comes. 0 bytes end it.
    void setBursts(std::size_t bytes, std::chrono::nanoseconds every);

    /// Damages bytes that are on the line now.
    void damage(Bytes& bytes);

  private:
    void flipBits(Bytes& bytes);
    void burst(Bytes& bytes);
    void drawNextError();

    std::mutex m_mutex;  // guards all below
    std::mt19937 m_random;
    double m_rate = 0;
    std::uint64_t m_bitsToError = 0;  // good ones before the next bad one
    std::size_t m_burstBytes = 0;
    std::chrono::nanoseconds m_burstEvery{0};
    Clock::time_point m_nextBurst{};
};

}  // namespace Simulator

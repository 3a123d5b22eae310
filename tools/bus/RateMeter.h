// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

namespace Bus {

// How often something happens, looked at through a window that ends now: a stream that has stopped
// loses its rate. Memory is bounded by the samples of one window. One thread; times may not go
// back.
class RateMeter {
  public:
    using Clock = std::chrono::steady_clock;

    struct Rate {
        double hz;
        double minSeconds;  // between two neighbours
        double maxSeconds;
    };

    explicit RateMeter(Clock::duration window) : m_window(window) {}

    void add(Clock::time_point arrival);

    /// All samples ever.
    uint64_t count() const { return m_count; }
    /// Empty with fewer than two samples in the window.
    std::optional<Rate> rate(Clock::time_point now);
    /// Seconds since the last sample; empty before the first.
    std::optional<double> age(Clock::time_point now) const;

  private:
    const Clock::duration m_window;
    std::deque<Clock::time_point>
        m_arrivals;  // of the window, oldest first, and always the last one
    uint64_t m_count = 0;
};

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/RateMeter.h"

#include <algorithm>

namespace Bus {
namespace {

double secondsOf(RateMeter::Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

void RateMeter::add(Clock::time_point arrival) {
    while (!m_arrivals.empty() && m_arrivals.front() < arrival - m_window) {
        m_arrivals.pop_front();
    }
    m_arrivals.push_back(arrival);
    ++m_count;
}

std::optional<RateMeter::Rate> RateMeter::rate(Clock::time_point now) {
    while (m_arrivals.size() > 1 && m_arrivals.front() < now - m_window) {
        m_arrivals.pop_front();
    }
    if (m_arrivals.size() < 2) {
        return std::nullopt;
    }
    auto shortest = Clock::duration::max();
    auto longest = Clock::duration::zero();
    for (size_t i = 1; i < m_arrivals.size(); ++i) {
        shortest = std::min(shortest, m_arrivals[i] - m_arrivals[i - 1]);
        longest = std::max(longest, m_arrivals[i] - m_arrivals[i - 1]);
    }
    const double span = secondsOf(m_arrivals.back() - m_arrivals.front());
    if (span <= 0) {
        return std::nullopt;  // too close together to tell
    }
    return Rate{static_cast<double>(m_arrivals.size() - 1) / span, secondsOf(shortest),
                secondsOf(longest)};
}

std::optional<double> RateMeter::age(Clock::time_point now) const {
    if (m_arrivals.empty()) {
        return std::nullopt;
    }
    return std::max(0.0, secondsOf(now - m_arrivals.back()));
}

}  // namespace Bus

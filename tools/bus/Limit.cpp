// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Limit.h"

#include <algorithm>

#include "tools/common/StopSignals.h"

namespace Bus {
namespace {

Limit::Clock::time_point deadlineOf(double durationSeconds) {
    constexpr double kLongest = 1e9;  // a lifetime, and far from the end of the clock
    if (durationSeconds <= 0 || durationSeconds > kLongest) {
        return Limit::Clock::time_point::max();
    }
    return Limit::Clock::now() + std::chrono::duration_cast<Limit::Clock::duration>(
                                     std::chrono::duration<double>(durationSeconds));
}

}  // namespace

Limit::Limit(const Options& options)
    : m_wanted(options.count), m_deadline(deadlineOf(options.durationSeconds)) {
}

bool Limit::reached() const {
    return Tools::StopSignals::arrived() || (m_wanted != 0 && m_seen >= m_wanted) ||
           Clock::now() >= m_deadline;
}

Limit::Clock::duration Limit::patience() const {
    constexpr Clock::duration kLongest = std::chrono::milliseconds(50);
    return std::clamp(m_deadline - Clock::now(), Clock::duration::zero(), kLongest);
}

ExitStatus Limit::status() const {
    const uint64_t least = std::max<uint64_t>(m_wanted, 1);
    return m_seen >= least || Tools::StopSignals::arrived() ? kOk : kNothingSeen;
}

}  // namespace Bus

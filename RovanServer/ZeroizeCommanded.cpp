// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ZeroizeCommanded.h"

#include <utility>

ZeroizeCommanded::ZeroizeCommanded(Clock clock)
    : m_clock(std::move(clock)), m_startTime(m_clock()) {
}

bool ZeroizeCommanded::pending() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pending;
}

void ZeroizeCommanded::Pending(zeroizeType type, CommandResponse command, const Step& first) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (first) {
        first();
    }
    m_command = std::move(command);
    m_pending = false;
    m_startTime = m_clock();
    // Last, as it is read without the lock: who sees the type finds the rest in place.
    m_type = type;
}

ZeroizeCommanded::CommandResponse ZeroizeCommanded::Complete() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return completeLocked();
}

std::optional<ZeroizeCommanded::CommandResponse> ZeroizeCommanded::CompleteIf(zeroizeType handled,
                                                                              const Step& step) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_type != handled) {
        return std::nullopt;
    }
    CommandResponse command = completeLocked();
    step();
    return command;
}

bool ZeroizeCommanded::restart(zeroizeType handled) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_type != handled) {
        return false;
    }
    m_startTime = m_clock();
    return true;
}

std::chrono::seconds ZeroizeCommanded::elapsed() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::chrono::duration_cast<std::chrono::seconds>(m_clock() - m_startTime);
}

ZeroizeCommanded::CommandResponse ZeroizeCommanded::completeLocked() {
    m_type = zeroizeType::none;
    m_pending = false;
    return m_command;
}

// SPDX-License-Identifier: Apache-2.0
#include "utility/ExitWatch.h"

#include <system_error>
#include <utility>

#include "utility/Deadline.h"

namespace Utility {

ExitWatch::ExitWatch(std::chrono::nanoseconds limit, std::function<void()> giveUp) {
    const auto deadline = deadlineAfter(limit);
    try {
        m_thread = std::thread([this, deadline, call = std::move(giveUp)] {
            std::unique_lock<std::mutex> lock(m_mutex);
            if (!m_ended.wait_until(lock, deadline, [this] { return m_hasEnded; })) {
                lock.unlock();
                call();
            }
        });
    } catch (const std::system_error&) {}
}

ExitWatch::~ExitWatch() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_hasEnded = true;
    }
    m_ended.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

}  // namespace Utility

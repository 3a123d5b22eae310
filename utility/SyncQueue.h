// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <utility>

#include "utility/Deadline.h"

namespace Utility {

// A bounded queue for several producers and consumers. A full queue never makes a producer wait: it
// drops the new item and says so by the result.
template <typename T>
class SyncQueue {
  public:
    explicit SyncQueue(uint32_t capacity) : m_capacity(capacity) {}

    /// Appends the item and wakes one waiter. False, and the item is dropped, when the queue is
    /// full.
    bool push_back(const T& item) { return emplace_back(item); }
    bool push_back(T&& item) { return emplace_back(std::move(item)); }

    template <typename... Args>
    bool emplace_back(Args&&... args) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_items.size() >= m_capacity) {
                return false;
            }
            m_items.emplace_back(std::forward<Args>(args)...);
        }
        m_notEmpty.notify_one();
        return true;
    }

    /// Waits up to `timeout` (monotonic clock) for an item. False on time-out, with `item`
    /// untouched.
    bool pop_front(T& item, std::chrono::nanoseconds timeout) {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_notEmpty.wait_until(lock, deadlineAfter(timeout),
                                   [this] { return !m_items.empty(); })) {
            return false;
        }
        item = std::move(m_items.front());
        m_items.pop_front();
        return true;
    }

    void clear() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_items.clear();
    }

  private:
    const uint32_t m_capacity;
    std::mutex m_mutex;
    std::condition_variable m_notEmpty;
    std::deque<T> m_items;
};

}  // namespace Utility

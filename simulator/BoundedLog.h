// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace Simulator {

// What happened, in order, for whoever wants to look or to wait for it. Entries are numbered from
// 0; when the log is full the oldest go. Any thread may call.
template <typename T>
class BoundedLog {
  public:
    explicit BoundedLog(std::size_t capacity) : m_capacity(capacity) {}

    void add(T entry) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_entries.push_back(std::move(entry));
            ++m_count;
            if (m_entries.size() > m_capacity) {
                m_entries.pop_front();
            }
        }
        m_grown.notify_all();
    }

    /// The entries still kept, oldest first.
    std::vector<T> entries() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return {m_entries.begin(), m_entries.end()};
    }

    /// The entries from number `next` on that are still kept; `next` becomes the number behind
    /// them, so that what is gone shows in the difference.
    std::vector<T> entriesFrom(std::uint64_t& next) const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::uint64_t oldest = m_count - m_entries.size();
        const std::uint64_t skipped = next > oldest ? next - oldest : 0;
        next = m_count;
        return {m_entries.begin() + static_cast<std::ptrdiff_t>(skipped), m_entries.end()};
    }

    /// The entries ever added, which is the number of the next one.
    std::uint64_t count() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_count;
    }

    /// The first entry, from number `from` on, for which `matches` holds; waits for it up to
    /// `timeout`. `matches` is called with the log locked.
    template <typename Predicate>
    std::optional<T> waitFor(Predicate matches, std::chrono::milliseconds timeout,
                             std::uint64_t from = 0) const {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        std::unique_lock<std::mutex> lock(m_mutex);
        std::uint64_t next = from;
        for (;;) {
            const std::uint64_t oldest = m_count - m_entries.size();
            for (next = next < oldest ? oldest : next; next < m_count; ++next) {
                const T& entry = m_entries[static_cast<std::size_t>(next - oldest)];
                if (matches(entry)) {
                    return entry;
                }
            }
            if (!m_grown.wait_until(lock, deadline, [&] { return m_count > next; })) {
                return std::nullopt;
            }
        }
    }

  private:
    const std::size_t m_capacity;
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_grown;
    std::deque<T> m_entries;
    std::uint64_t m_count = 0;
};

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace ASPN2 {

// The bounded hand-over between any thread that reports an event and the one thread that publishes.
//
// Beside one-shot events it holds configuration events: once popped they wait aside and come back
// after a fixed period, for as long as the queue lives. Each is known by the hash of its text, the
// handle by which it is replaced wherever it is in its cycle.
//
// Any thread may push; one thread pops. Repeats are moved only by pop_front, so its time-out bounds
// how late they can be. There is no stop: the consumer polls with a time-out.
class EventQueue {
  public:
    EventQueue(unsigned maxSize, int configType, const std::chrono::nanoseconds& repeatPeriod);
    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// Appends a one-shot event. False, and the event is dropped, when `maxSize` events wait
    /// already; those waiting aside for their repeat do not count.
    bool push_back(int type, const std::string& text);

    /// Appends a configuration event and returns its handle. Never refused. The same text pushed
    /// twice gives two events with one handle.
    uint32_t push_back_config(const std::string& text);

    /// The same in the place of the event of `oldHash`: where that handle occurs, the first waiting
    /// event and the first repeat that have it are removed. An unknown handle is no error.
    uint32_t push_back_config(const std::string& text, uint32_t oldHash);

    /// Takes the front event, waiting up to `timeout` for one. False on time-out, with `type` and
    /// `text` untouched. A configuration event is due again one repeat period from now.
    bool pop_front(int& type, std::string& text, const std::chrono::nanoseconds& timeout);

    /// The events that wait and those due to repeat.
    std::size_t size() const;

  private:
    using Clock = std::chrono::steady_clock;

    struct EventItem {
        bool isConfig;
        int type;
        std::string text;
        uint32_t hash;  // 0 for a one-shot event
    };
    struct ConfigItem {
        std::string text;
        uint32_t hash;
        Clock::time_point due;
    };

    // With the mutex held.
    uint32_t appendConfig(const std::string& text);
    void eraseConfig(uint32_t hash);
    void repeatConfigs();

    const unsigned m_maxSize;
    const int m_configType;
    const std::chrono::nanoseconds m_repeatPeriod;
    mutable std::mutex m_mutex;
    std::condition_variable m_notEmpty;
    std::deque<EventItem> m_events;
    std::deque<ConfigItem> m_repeats;  // sorted by due time, since all wait the same period
};

}  // namespace ASPN2

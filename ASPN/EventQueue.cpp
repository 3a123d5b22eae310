// SPDX-License-Identifier: Apache-2.0
#include "ASPN/EventQueue.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "utility/Deadline.h"

namespace ASPN2 {
namespace {

uint32_t hashOf(const std::string& text) {
    return static_cast<uint32_t>(std::hash<std::string>{}(text));
}

template <typename QUEUE, typename PREDICATE>
void eraseFirst(QUEUE& queue, PREDICATE matches) {
    const auto found = std::find_if(queue.begin(), queue.end(), matches);
    if (found != queue.end()) {
        queue.erase(found);
    }
}

}  // namespace

EventQueue::EventQueue(unsigned maxSize, int configType,
                       const std::chrono::nanoseconds& repeatPeriod)
    : m_maxSize(maxSize), m_configType(configType), m_repeatPeriod(repeatPeriod) {
}

bool EventQueue::push_back(int type, const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_events.size() >= m_maxSize) {
        return false;
    }
    m_events.push_back({false, type, text, 0});
    m_notEmpty.notify_one();
    return true;
}

uint32_t EventQueue::push_back_config(const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return appendConfig(text);
}

uint32_t EventQueue::push_back_config(const std::string& text, uint32_t oldHash) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    eraseConfig(oldHash);
    return appendConfig(text);
}

bool EventQueue::pop_front(int& type, std::string& text, const std::chrono::nanoseconds& timeout) {
    std::unique_lock<std::mutex> lock(m_mutex);
    repeatConfigs();
    if (!m_notEmpty.wait_until(lock, Utility::deadlineAfter(timeout),
                               [this] { return !m_events.empty(); })) {
        return false;
    }
    EventItem& item = m_events.front();
    if (item.isConfig) {
        m_repeats.push_back({item.text, item.hash, Utility::deadlineAfter(m_repeatPeriod)});
    }
    type = item.type;
    text = std::move(item.text);
    m_events.pop_front();
    return true;
}

std::size_t EventQueue::size() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_events.size() + m_repeats.size();
}

uint32_t EventQueue::appendConfig(const std::string& text) {
    m_events.push_back({true, m_configType, text, hashOf(text)});
    m_notEmpty.notify_one();
    return m_events.back().hash;
}

void EventQueue::eraseConfig(uint32_t hash) {
    eraseFirst(m_events,
               [hash](const EventItem& item) { return item.isConfig && item.hash == hash; });
    eraseFirst(m_repeats, [hash](const ConfigItem& item) { return item.hash == hash; });
}

void EventQueue::repeatConfigs() {
    const Clock::time_point now = Clock::now();
    while (!m_repeats.empty() && m_repeats.front().due <= now) {
        ConfigItem& item = m_repeats.front();
        m_events.push_back({true, m_configType, std::move(item.text), item.hash});
        m_repeats.pop_front();
    }
}

}  // namespace ASPN2

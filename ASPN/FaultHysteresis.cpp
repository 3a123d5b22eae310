// SPDX-License-Identifier: Apache-2.0
#include "ASPN/FaultHysteresis.h"

#include <algorithm>
#include <cstdint>

FaultHysteresis& FaultHysteresis::Instance() {
    static FaultHysteresis instance;
    return instance;
}

bool FaultHysteresis::OkInitFaultHysteresis(int windowSeconds, int threshold, int maxEntries) {
    if (windowSeconds < 0 || threshold < 0 || maxEntries < 0) {
        return false;
    }
    m_windowSeconds = windowSeconds;
    m_threshold = threshold;
    m_maxEntries = maxEntries;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_faults.clear();
    return true;
}

std::string FaultHysteresis::Check(EventTypes::eEventType& type, const std::string& file, int line,
                                   const std::string& text) {
    if (m_threshold == 0 || m_maxEntries == 0) {
        return text;
    }
    if (type != EventTypes::eError && type != EventTypes::eFailure && type != EventTypes::eType5) {
        return text;
    }
    // npos + 1 is 0: a file without a directory stays whole.
    const std::string baseName = file.substr(file.find_last_of("/\\") + 1);
    const std::string lineText = std::to_string(line);
    std::string marked = baseName + '[' + lineText + "]:" + text;
    if (type == EventTypes::eError) {
        const std::string key = file + lineText;
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto now = std::chrono::steady_clock::now();
        service(now);
        // Read again under the lock, so that the record never outgrows a maximum just lowered.
        const auto maxEntries = static_cast<std::size_t>(m_maxEntries);
        while (!m_faults.empty() && m_faults.size() >= maxEntries) {
            m_faults.pop_front();
        }
        m_faults.push_back({key, now});
        type = hysteresis(type, key);
    }
    return marked;
}

std::deque<FaultHysteresis::fault_entry> FaultHysteresis::faults() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_faults;
}

void FaultHysteresis::service(std::chrono::steady_clock::time_point now) {
    using std::chrono::milliseconds;
    const int64_t windowMs = int64_t{1000} * m_windowSeconds;
    if (windowMs == 0) {
        return;
    }
    while (!m_faults.empty() &&
           std::chrono::duration_cast<milliseconds>(now - m_faults.front().time).count() >=
               windowMs) {
        m_faults.pop_front();
    }
}

EventTypes::eEventType FaultHysteresis::hysteresis(EventTypes::eEventType type,
                                                   const std::string& key) const {
    // The place where repeated faults of one position would be judged. None is: every report goes
    // out with the type that it came with.
    [[maybe_unused]] const auto sameFault =
        std::count_if(m_faults.begin(), m_faults.end(),
                      [&key](const fault_entry& entry) { return entry.key == key; });
    return type;
}

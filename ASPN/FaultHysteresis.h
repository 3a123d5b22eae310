// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>

#include "ASPN/EventTypes.h"

// Stands between a reported fault and the event log: marks the texts of errors and failures with
// their source position, and keeps a bounded record of the recent errors. It holds nothing back and
// changes no type: the record is kept for a filter that is not drawn on yet.
//
// One for the process, set up by both reporters. Any thread may call.
class FaultHysteresis {
  public:
    struct fault_entry {
        std::string key;  // file and line
        std::chrono::steady_clock::time_point time;
    };

    static FaultHysteresis& Instance();

    FaultHysteresis(const FaultHysteresis&) = delete;
    FaultHysteresis& operator=(const FaultHysteresis&) = delete;

    /// Sets up the record and empties it: errors leave it after `windowSeconds` (0 is never), and
    /// beyond `maxEntries` the oldest goes. False, with nothing changed, for a negative argument.
    bool OkInitFaultHysteresis(int windowSeconds, int threshold, int maxEntries);

    /// The text to log: "<base name of file>[<line>]:<text>" for the types 3, 4 and 5, else the
    /// text as it is. Before a set-up with a threshold and a maximum, every text stays as it is. An
    /// error (type 3) also enters the record.
    std::string Check(EventTypes::eEventType& type, const std::string& file, int line,
                      const std::string& text);

    /// A copy of the record, the oldest first.
    std::deque<fault_entry> faults() const;

  private:
    FaultHysteresis() = default;
    ~FaultHysteresis() = default;

    // With the mutex held.
    void service(std::chrono::steady_clock::time_point now);
    EventTypes::eEventType hysteresis(EventTypes::eEventType type, const std::string& key) const;

    std::deque<fault_entry> m_faults;
    mutable std::mutex m_mutex;  // guards the record
    std::atomic<int> m_windowSeconds{0};
    std::atomic<int> m_threshold{0};
    std::atomic<int> m_maxEntries{0};
};

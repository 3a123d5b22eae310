// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tools/bus/Recorded.h"

namespace Bus {

// What is in a recording.
struct RecordingContents {
    struct Topic {
        std::string typeName;
        uint64_t samples = 0;
        uint64_t bytes = 0;   // of the samples themselves
        int64_t firstNs = 0;  // since the start of the recording
        int64_t lastNs = 0;
    };

    std::map<std::string, Topic> topics;
    uint64_t samples = 0;
    int64_t firstReceivedNs = 0;  // Unix time of the first sample
    int64_t lastNs = 0;           // the latest, since the start

    /// Reads a whole recording and decodes every sample of a known type. Throws UsageError at the
    /// first damage; `contents` then has what stands before it. Takes memory for the topics only.
    static void read(const std::string& path, RecordingContents& contents);

  private:
    void add(const Recorded& sample);
};

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Bus {

// One sample as a recording holds it.
struct Recorded {
    int64_t sinceStartNs = 0;  // of the recording, by a clock that is never set; not negative
    int64_t sentNs = 0;        // Unix time, by the publisher's clock
    int64_t receivedNs = 0;    // Unix time, by the recorder's clock
    uint64_t sequence = 0;     // the publisher's number of the sample, from 1
    std::string topic;
    std::string typeName;        // on the bus
    std::string publisher;       // the participant's name
    std::vector<uint8_t> bytes;  // CDR with its encapsulation, as on the wire
};

}  // namespace Bus

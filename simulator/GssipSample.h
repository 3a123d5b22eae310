// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "simulator/Frame.h"

namespace Simulator {

// One sample on a queue device: a receiver frame with its header on the bus, in little-endian plain
// CDR with the 4 bytes of encapsulation in front. The 56 bytes before the frame lie at fixed
// offsets.
struct GssipSample {
    struct Time {
        std::int64_t sec = 0;
        std::int32_t nsec = 0;
        std::int32_t timeCode = 100;
    };

    static constexpr std::size_t kOverhead = 56;

    std::int64_t sequenceNumber = 0;
    Time arrival;
    Time valid;
    std::int32_t deviceId = 0;
    Bytes frame;

    Bytes encode() const;

    /// The sample at the front of `size` bytes, which takes kOverhead + frame.size() of them. Empty
    /// when the bytes end before it does. Throws std::runtime_error when they are no sample.
    static std::optional<GssipSample> decode(const std::uint8_t* bytes, std::size_t size);
};

}  // namespace Simulator

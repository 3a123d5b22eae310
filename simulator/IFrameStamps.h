// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

namespace Simulator {

/// Time stamps that a frame is to get, in ticks; the time base's own at that moment where empty.
struct FrameStamps {
    std::optional<std::uint64_t> uart;
    std::optional<std::uint64_t> pulse;
};

// What the unit's time base notes about the receiver. Called on the receiver's thread.
class IFrameStamps {
  public:
    virtual ~IFrameStamps() = default;

    /// The receiver's pulse, at the start of each epoch.
    virtual void onPulse() = 0;

    /// The last byte of a frame is about to go out: whoever has read the frame finds these stamps.
    virtual void onLastByte(const FrameStamps& stamps) = 0;
};

}  // namespace Simulator

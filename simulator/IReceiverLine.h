// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace Simulator {

// The receiver's end of its serial line.
class IReceiverLine {
  public:
    virtual ~IReceiverLine() = default;

    /// Sends bytes at `bitsPerSecond`; returns when the last is on the line. False when not all of
    /// them reached the other end.
    virtual bool say(const std::uint8_t* bytes, std::size_t count, int bitsPerSecond) = 0;

    /// The speed that the server's end is set to, in bits per second. When the receiver's own
    /// differs, neither understands the other.
    virtual int serverSpeed() const = 0;
};

}  // namespace Simulator

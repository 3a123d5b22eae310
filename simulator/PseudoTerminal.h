// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "simulator/FileDescriptor.h"

namespace Simulator {

// A raw pseudo-terminal pair whose far end stands in the private /dev under a device's name. The
// far end is also held open here, so that the server may close and open it without a hang-up;
// destroying the pair is the hang-up. One thread may read and another write.
class PseudoTerminal {
  public:
    /// Throws std::runtime_error outside the private /dev, std::system_error when `device` is there
    /// already or no pair is to be had.
    explicit PseudoTerminal(std::string device);
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal();

    /// Waits up to `timeout` for bytes from the far end; returns how many were read, 0 for none.
    std::size_t read(std::uint8_t* buffer, std::size_t size,
                     std::chrono::milliseconds timeout) const;

    /// Writes to the far end; waits for room up to `patience` each time there is none. Returns how
    /// many bytes went out.
    std::size_t write(const std::uint8_t* bytes, std::size_t count,
                      std::chrono::milliseconds patience) const;

    /// The line speed that the far end has set, in bits per second; 0 for one without a number.
    int farEndSpeed() const;

  private:
    std::string m_device;
    FileDescriptor m_nearEnd;
    FileDescriptor m_farEnd;
};

}  // namespace Simulator

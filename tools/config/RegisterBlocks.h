// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/FpgaRegisters.h"

namespace Config {

// The rows of registers that lie one behind the other leave room for so many channels.
constexpr unsigned kUarts =
    (FpgaRegisters::TimeStamp::kUartStamp.offset - FpgaRegisters::TimeStamp::kUartDelay.offset) /
    FpgaRegisters::TimeStamp::kUartDelay.stride;
constexpr unsigned kPulses =
    (FpgaRegisters::TimeStamp::kUartDelay.offset - FpgaRegisters::TimeStamp::kPulseStamp.offset) /
    FpgaRegisters::TimeStamp::kPulseStamp.stride;

// A block of the FPGA's registers: the memory connection that it is reached by, and what the
// server touches there.
struct RegisterBlock {
    std::string name;
    std::uint32_t bytes;      // to the end of the last register
    std::uint32_t alignment;  // the width of the widest register, in bytes
};

/// The blocks that every FPGA has, for time stamps of that UART and pulse input. A number that is
/// too large counts as 0.
std::vector<RegisterBlock> fixedBlocks(unsigned uart, unsigned pulse);

/// The two blocks of a PTFE, counted from 0.
std::vector<RegisterBlock> ptfeBlocks(unsigned ptfe);

}  // namespace Config

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

// The register map of the FPGA, block by block: byte offset into the block and access width in
// bits. Each block is one memory connection, opened by the name that stands with it.
namespace FpgaRegisters {

struct Register {
    uint32_t offset;
    uint8_t width;
};

// A row of equal registers, one for each channel.
struct RegisterBank {
    uint32_t offset;
    uint8_t width;
    uint32_t stride;

    constexpr Register operator[](uint32_t i) const { return {offset + stride * i, width}; }
};

/// Rate of the free-running counter behind all time stamps, in Hz.
constexpr uint32_t kTicksPerSecond = 58'982'400;

// 32-bit words of four ASCII characters, the first in the top byte, or of BCD digits, the most
// significant on top. Read only.
namespace Processor {
constexpr const char* kConnection = "Processor_Interface";
constexpr Register kFirmwareName1{0, 32};
constexpr Register kFirmwareName2{4, 32};
constexpr Register kBuildDate{8, 32};   // year (4 digits), month, day
constexpr Register kBuildTime{12, 32};  // low four digits: hours, minutes
constexpr Register kPartNumber1{16, 32};
constexpr Register kPartNumber2{20, 32};
constexpr Register kPartNumber3{24, 32};
constexpr Register kRevision{28, 32};
}  // namespace Processor

// Three blocks that are plain arrays of control registers.
constexpr RegisterBank kControl{0, 32, 4};

namespace Peripheral {
constexpr const char* kConnection = "Peripheral_Interface";
}  // namespace Peripheral

namespace PpsSlave {
constexpr const char* kConnection = "PpsSlave_Interface";
constexpr uint32_t kCount = 9;
}  // namespace PpsSlave

namespace PtpClock {
constexpr const char* kConnection = "PtpClock_Interface";
constexpr uint32_t kCount = 30;
}  // namespace PtpClock

namespace TimeStamp {
constexpr const char* kConnection = "TimeStamp_Interface";
constexpr Register kClockRate{0, 64};  // Hz
constexpr Register kNumUarts{8, 64};   // of this and the next three the low 32 bits count
constexpr Register kNumPtfes{16, 64};
constexpr Register kNumPulses{24, 64};
constexpr Register kNumPeriphs{32, 64};
constexpr Register kPtfeInit{64, 32};
constexpr uint32_t kPtfeInitValue = 1;
constexpr Register kSystemCount{128, 64};
constexpr RegisterBank kPulseStamp{136, 64, 8};
constexpr RegisterBank kUartDelay{384, 32, 8};  // ticks
constexpr RegisterBank kUartStamp{512, 64, 8};
}  // namespace TimeStamp

// One block for each PTFE (pulse time and frequency estimator); its number follows the name.
namespace Ptfe {
constexpr const char* kConnection = "Ptfe_Interface";
constexpr Register kFirmwareId{0, 64};
constexpr Register kFreqEstimate{16, 32};  // one less than the value reported
constexpr Register kStatus{24, 32};        // writing 0 clears it
constexpr Register kDfNcoRate{32, 64};
constexpr uint64_t kDfNcoRateMask = (uint64_t{1} << 44) - 1;
constexpr Register kDtNcoPhase{48, 64};
constexpr uint64_t kDtNcoPhaseMask = (uint64_t{1} << 40) - 1;
constexpr Register kDtCycles{56, 32};
constexpr Register kControl{128, 32};
constexpr uint32_t kSoftReset = 1;
constexpr Register kLimit1{144, 32};
constexpr Register kLimit2{152, 32};
constexpr Register kDefaultNcoRate{200, 64};
constexpr Register kInit{288, 32};
constexpr uint32_t kInitValue = 160;
}  // namespace Ptfe

// One block for each pulse generator; generator i goes with PTFE i.
namespace PulseGen {
constexpr const char* kConnection = "PulseGen_Interface";
constexpr Register kCycleLength{0, 32};  // ticks, minus one
constexpr Register kIntPhase{4, 32};
constexpr Register kExtPhase{8, 32};
}  // namespace PulseGen

}  // namespace FpgaRegisters

// SPDX-License-Identifier: Apache-2.0
#include "tools/config/RegisterBlocks.h"

#include <algorithm>
#include <initializer_list>

namespace Config {
namespace {

using namespace FpgaRegisters;

RegisterBlock block(std::string name, std::initializer_list<Register> registers) {
    RegisterBlock result{std::move(name), 0, 1};
    for (const Register& reg : registers) {
        const std::uint32_t width = reg.width / 8u;
        result.bytes = std::max(result.bytes, reg.offset + width);
        result.alignment = std::max(result.alignment, width);
    }
    return result;
}

}  // namespace

std::vector<RegisterBlock> fixedBlocks(unsigned uart, unsigned pulse) {
    uart = uart < kUarts ? uart : 0;
    pulse = pulse < kPulses ? pulse : 0;
    return {
        block(Processor::kConnection,
              {Processor::kFirmwareName1, Processor::kFirmwareName2, Processor::kBuildDate,
               Processor::kBuildTime, Processor::kPartNumber1, Processor::kPartNumber2,
               Processor::kPartNumber3, Processor::kRevision}),
        // How many there are only the FPGA knows.
        block(Peripheral::kConnection, {kControl[0]}),
        block(TimeStamp::kConnection,
              {TimeStamp::kClockRate, TimeStamp::kNumUarts, TimeStamp::kNumPtfes,
               TimeStamp::kNumPulses, TimeStamp::kNumPeriphs, TimeStamp::kPtfeInit,
               TimeStamp::kSystemCount, TimeStamp::kPulseStamp[pulse], TimeStamp::kUartDelay[uart],
               TimeStamp::kUartStamp[uart]}),
        block(PpsSlave::kConnection, {kControl[PpsSlave::kCount - 1]}),
        block(PtpClock::kConnection, {kControl[PtpClock::kCount - 1]}),
    };
}

std::vector<RegisterBlock> ptfeBlocks(unsigned ptfe) {
    const std::string number = std::to_string(ptfe);
    return {
        block(Ptfe::kConnection + number,
              {Ptfe::kFirmwareId, Ptfe::kFreqEstimate, Ptfe::kStatus, Ptfe::kDfNcoRate,
               Ptfe::kDtNcoPhase, Ptfe::kDtCycles, Ptfe::kControl, Ptfe::kLimit1, Ptfe::kLimit2,
               Ptfe::kDefaultNcoRate, Ptfe::kInit}),
        block(PulseGen::kConnection + number,
              {PulseGen::kCycleLength, PulseGen::kIntPhase, PulseGen::kExtPhase}),
    };
}

}  // namespace Config

// SPDX-License-Identifier: Apache-2.0
// The sizes that the check asks of a register block, against what the FPGA's own code touches.
#include "tools/config/RegisterBlocks.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "platform/FPGA.h"
#include "tests/platform/FakeDevmem.h"

namespace {

// The end of the furthest access to each connection, from entries such as "read64 Name+128".
std::map<std::string, std::uint32_t> ends(const std::vector<std::string>& trace) {
    std::map<std::string, std::uint32_t> result;
    for (const std::string& entry : trace) {
        const std::size_t blank = entry.find(' ');
        const std::size_t plus = entry.find('+');
        if (plus == std::string::npos) {
            continue;
        }
        const std::size_t digits = entry.find_first_of("0123456789");
        const unsigned long bits = std::stoul(entry.substr(digits, blank - digits));
        const std::string name = entry.substr(blank + 1, plus - blank - 1);
        const unsigned long end = std::stoul(entry.substr(plus + 1)) + bits / 8;
        result[name] = std::max(result[name], static_cast<std::uint32_t>(end));
    }
    return result;
}

TEST(RegisterBlockSizes, EndWithTheLastRegisterThatTheFpgaTouches) {
    const auto devmem = std::make_shared<FakeDevmem>();
    devmem->registers["TimeStamp_Interface+0"] = FpgaRegisters::kTicksPerSecond;
    devmem->registers["TimeStamp_Interface+8"] = 16;   // UARTs
    devmem->registers["TimeStamp_Interface+16"] = 2;   // PTFEs
    devmem->registers["TimeStamp_Interface+24"] = 31;  // pulse inputs
    devmem->registers["TimeStamp_Interface+32"] = 1;   // peripheral registers
    FpgaFace& fpga = FpgaFace::Instance();
    fpga.InitFpga(devmem);
    constexpr unsigned kUart = 5;
    constexpr int kPulse = 9;
    fpga.fpga_get_SystemCount();
    fpga.getUARTDataTimestampRaw(kUart);
    fpga.getPulseTimestampRaw(kPulse);
    fpga.setUartDelay(kUart, 1);
    fpga.getUartDelay(kUart);
    fpga.fpga_set_periph_control(0, 1);
    for (int i = 0; i < 40; ++i) {
        fpga.fpga_set_ppsSlave_control(i, 1);
        fpga.fpga_set_ptpClock_control(i, 1);
    }
    fpga.getFirmwareConfiguration();
    fpga.getFirmwareBuildStamp();
    for (unsigned ptfe = 0; ptfe < 2; ++ptfe) {
        fpga.fpga_ptfe_init(ptfe, 1, 2);
        fpga.fpga_ptfe_soft_reset(ptfe);
        fpga.getPtfeFirmwareId(ptfe);
        fpga.getAndClearPtfeStatus(ptfe);
        fpga.getDfNcoRate(ptfe);
        fpga.getDtNcoPhase(ptfe);
        fpga.getDtCycles(ptfe);
        fpga.getPtfeMeasuredFreqEstimate(ptfe);
        fpga.setPtfeDefaultNcoRate(ptfe, 1);
        fpga.fpga_pulsegen_adjust_Int_phase(ptfe, 1);
        fpga.fpga_pulsegen_adjust_Ext_phase(ptfe, 1);
    }
    const auto touched = ends(devmem->trace);
    fpga.DoneFpga();

    std::map<std::string, std::uint32_t> needed;
    for (const Config::RegisterBlock& block : Config::fixedBlocks(kUart, kPulse)) {
        needed[block.name] = block.bytes;
    }
    for (unsigned ptfe = 0; ptfe < 2; ++ptfe) {
        for (const Config::RegisterBlock& block : Config::ptfeBlocks(ptfe)) {
            needed[block.name] = block.bytes;
        }
    }
    EXPECT_EQ(needed, touched);
    EXPECT_EQ(needed.size(), 9u);
}

}  // namespace

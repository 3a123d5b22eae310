// SPDX-License-Identifier: Apache-2.0
#include "platform/FPGA.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/AllocationCounter.h"
#include "tests/platform/FakeDevmem.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Code = FACE::RETURN_CODE_TYPE;

constexpr unsigned kUarts = 4;
constexpr unsigned kPtfes = 2;
constexpr int kPulses = 3;
constexpr int kPeriphs = 5;

/// A unit with 4 UARTs, 2 PTFEs, 3 pulse inputs and 5 peripheral registers.
std::shared_ptr<FakeDevmem> makeUnit() {
    auto devmem = std::make_shared<FakeDevmem>();
    devmem->registers["TimeStamp_Interface+0"] = 58982400;
    devmem->registers["TimeStamp_Interface+8"] = 0xABCD'0000'0004;  // the low 32 bits count
    devmem->registers["TimeStamp_Interface+16"] = 0x1'0000'0002;
    devmem->registers["TimeStamp_Interface+24"] = 0xFFFF'FFFF'0000'0003;
    devmem->registers["TimeStamp_Interface+32"] = 5;
    return devmem;
}

/// What InitFpga throws; empty when it throws nothing.
std::string failureOfInit(const std::shared_ptr<FakeDevmem>& devmem) {
    testing::internal::CaptureStdout();
    std::string failure;
    try {
        FpgaFace::Instance().InitFpga(devmem);
    } catch (const std::runtime_error& error) {
        failure = error.what();
    }
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed, failure.empty() ? "" : failure + "\n");
    return failure;
}

class Fpga : public testing::Test {
  protected:
    Fpga() {
        fpga.InitFpga(devmem);
        devmem->trace.clear();
    }
    ~Fpga() override { EXPECT_TRUE(devmem->everyTimeoutUnlimited); }

    uint64_t& reg(const std::string& name) { return devmem->registers[name]; }
    const std::vector<std::string>& trace() const { return devmem->trace; }
    void failRead(const std::string& access) { devmem->failures[access] = Code::NO_ACTION; }

    std::shared_ptr<FakeDevmem> devmem = makeUnit();
    FpgaFace& fpga = FpgaFace::Instance();
};

// ---- Bring-up and tear-down -------------------------------------------------------------------

TEST(FpgaInit, OpensTheBlocksReadsTheCountsAndChecksTheClockLast) {
    const auto devmem = makeUnit();

    EXPECT_EQ(failureOfInit(devmem), "");

    EXPECT_THAT(devmem->trace,
                ElementsAre("open Processor_Interface", "open Peripheral_Interface",
                            "open TimeStamp_Interface", "open PpsSlave_Interface",
                            "open PtpClock_Interface", "read64 TimeStamp_Interface+8",
                            "read64 TimeStamp_Interface+16", "read64 TimeStamp_Interface+24",
                            "read64 TimeStamp_Interface+32", "open Ptfe_Interface0",
                            "open PulseGen_Interface0", "open Ptfe_Interface1",
                            "open PulseGen_Interface1", "read64 TimeStamp_Interface+0"));
    EXPECT_TRUE(devmem->everyTimeoutUnlimited);
}

TEST(FpgaInit, NumbersTheConnectionsOfManyPtfesInDecimal) {
    const auto devmem = makeUnit();
    devmem->registers["TimeStamp_Interface+16"] = 12;

    EXPECT_EQ(failureOfInit(devmem), "");

    EXPECT_THAT(devmem->trace, testing::Contains("open Ptfe_Interface11"));
    EXPECT_THAT(devmem->trace, testing::Contains("open PulseGen_Interface10"));
}

TEST(FpgaInit, NamesTheStepThatFailed) {
    const std::vector<std::pair<std::string, std::string>> steps = {
        {"open Processor_Interface", "FpgaFace() FAILED to open processor interface"},
        {"open Peripheral_Interface", "FpgaFace() FAILED to open peripheral interface"},
        {"open TimeStamp_Interface", "FpgaFace() FAILED to open timestamp interface"},
        {"open PpsSlave_Interface", "FpgaFace() FAILED to open PPS Slave interface"},
        {"open PtpClock_Interface", "FpgaFace() FAILED to open PTP Clock interface"},
        {"read64 TimeStamp_Interface+8", "FpgaFace() FAILED to read FPGA number of UARTs"},
        {"read64 TimeStamp_Interface+16", "FpgaFace() FAILED to read FPGA number of PTFEs"},
        {"read64 TimeStamp_Interface+24", "FpgaFace() FAILED to read FPGA number of Pulses"},
        {"read64 TimeStamp_Interface+32", "FpgaFace() FAILED to read FPGA number of Periphs"},
        {"open Ptfe_Interface0", "FpgaFace() FAILED to open PTFE 0 interface"},
        {"open PulseGen_Interface0", "FpgaFace() FAILED to open PulseGen 0 interface"},
        {"open Ptfe_Interface1", "FpgaFace() FAILED to open PTFE 1 interface"},
        {"open PulseGen_Interface1", "FpgaFace() FAILED to open PulseGen 1 interface"},
        {"read64 TimeStamp_Interface+0", "FpgaFace() FAILED to read FPGA clock rate"},
    };
    for (const auto& [step, text] : steps) {
        const auto devmem = makeUnit();
        devmem->failures[step] = Code::INVALID_CONFIG;

        const std::string failure = failureOfInit(devmem);

        EXPECT_THAT(failure, testing::EndsWith("]:INVALID_CONFIG " + text));
        EXPECT_EQ(devmem->trace.back(), step) << "goes on after a failure";
    }
}

TEST(FpgaInit, LetsNoActionPassAtNoStep) {
    const auto devmem = makeUnit();
    devmem->failures["open PtpClock_Interface"] = Code::NO_ACTION;

    EXPECT_THAT(failureOfInit(devmem), HasSubstr("NO_ACTION FpgaFace() FAILED to open PTP Clock"));
}

TEST(FpgaInit, RefusesAnotherClockRate) {
    const auto devmem = makeUnit();
    devmem->registers["TimeStamp_Interface+0"] = 58982401;

    EXPECT_THAT(
        failureOfInit(devmem),
        testing::EndsWith("]:INVALID_MODE FpgaFace() FPGA clock rate mismatch, got 58982401, "
                          "expected 58982400"));
}

TEST(FpgaInit, ComparesAll64BitsOfTheClockRate) {
    const auto devmem = makeUnit();
    devmem->registers["TimeStamp_Interface+0"] = 0x1'0000'0000 + 58982400;

    EXPECT_THAT(failureOfInit(devmem), HasSubstr("got 4353949696, expected 58982400"));
}

TEST(FpgaInit, EndsASillyPtfeCountAtTheFirstMissingConnection) {
    const auto devmem = makeUnit();
    devmem->registers["TimeStamp_Interface+16"] = 0xFFFF'FFFF;
    devmem->failures["open Ptfe_Interface3"] = Code::INVALID_CONFIG;

    EXPECT_THAT(failureOfInit(devmem), HasSubstr("FAILED to open PTFE 3 interface"));
}

TEST(FpgaInit, LeavesSafeIndicesBehindWhenItFailedHalfway) {
    const auto devmem = makeUnit();
    devmem->failures["open PulseGen_Interface1"] = Code::INVALID_CONFIG;
    EXPECT_NE(failureOfInit(devmem), "");
    devmem->trace.clear();

    EXPECT_EQ(FpgaFace::Instance().getPtfeStatus(0), 0u);
    EXPECT_EQ(FpgaFace::Instance().fpga_pulsegen_adjust_Int_phase(1, 5), 0u);

    EXPECT_THAT(devmem->trace, ElementsAre("read32 Ptfe_Interface0+24"));
}

TEST(FpgaInit, IsRepeatable) {
    EXPECT_EQ(failureOfInit(makeUnit()), "");
    const auto smaller = makeUnit();
    smaller->registers["TimeStamp_Interface+16"] = 1;
    EXPECT_EQ(failureOfInit(smaller), "");
    smaller->trace.clear();

    EXPECT_EQ(FpgaFace::Instance().getDtCycles(1), 0u);

    EXPECT_THAT(smaller->trace, IsEmpty());
}

TEST(FpgaInit, RefusesToStartWithoutAMemoryService) {
    EXPECT_THAT(failureOfInit(nullptr), HasSubstr("FAILED to open processor interface"));
}

TEST_F(Fpga, IsOneObject) {
    EXPECT_EQ(&FpgaFace::Instance(), &fpga);
}

TEST_F(Fpga, ClosesItsBlocksInTheOrderOfOpening) {
    fpga.DoneFpga();

    EXPECT_THAT(trace(), ElementsAre("close Processor_Interface", "close Peripheral_Interface",
                                     "close TimeStamp_Interface", "close PpsSlave_Interface",
                                     "close PtpClock_Interface", "close Ptfe_Interface0",
                                     "close PulseGen_Interface0", "close Ptfe_Interface1",
                                     "close PulseGen_Interface1"));
}

TEST_F(Fpga, StillAsksTheServiceAfterItIsDone) {
    fpga.DoneFpga();
    devmem->trace.clear();
    devmem->failures["read64 TimeStamp_Interface+128"] = Code::CONNECTION_CLOSED;
    reg("TimeStamp_Interface+128") = 77;

    EXPECT_EQ(fpga.fpga_get_SystemCount(), 0u);
    EXPECT_THAT(trace(), ElementsAre("read64 TimeStamp_Interface+128"));
}

// Every operation, with valid indices but without a memory service.
TEST_F(Fpga, ToleratesHavingNoMemoryService) {
    EXPECT_NE(failureOfInit(nullptr), "");

    EXPECT_EQ(fpga.fpga_get_SystemCount(), 0u);
    EXPECT_EQ(fpga.getUARTDataTimestampRaw(0), 0u);
    EXPECT_EQ(fpga.getPulseTimestampRaw(0), 0u);
    fpga.setUartDelay(0, 5);
    fpga.setUartDelay(0, 9600, 10, 10);
    EXPECT_EQ(fpga.getUartDelay(0), 0u);
    fpga.fpga_set_periph_control(0, 1);
    EXPECT_EQ(fpga.fpga_get_periph_control(0), 0u);
    EXPECT_EQ(fpga.fpga_reset_periph_control(0), 0u);
    fpga.fpga_set_ppsSlave_control(0, 1);
    EXPECT_EQ(fpga.fpga_get_ppsSlave_control(0), 0u);
    fpga.fpga_set_ptpClock_control(0, 1);
    EXPECT_EQ(fpga.fpga_get_ptpClock_control(0), 0u);
    fpga.fpga_ptfe_init(0, 1, 2);
    fpga.fpga_ptfe_soft_reset(0);
    EXPECT_EQ(fpga.getPtfeFirmwareId(0), 0u);
    EXPECT_EQ(fpga.getPtfeStatus(0), 0u);
    EXPECT_EQ(fpga.getAndClearPtfeStatus(0), 0u);
    EXPECT_EQ(fpga.getDfNcoRate(0), 0u);
    EXPECT_EQ(fpga.getDtNcoPhase(0), 0u);
    EXPECT_EQ(fpga.getDtCycles(0), 0u);
    EXPECT_EQ(fpga.getPtfeMeasuredFreqEstimate(0), 1u);
    fpga.setPtfeDefaultNcoRate(0, 1);
    fpga.fpga_pulsegen_set_Int_phase(0, 1);
    EXPECT_EQ(fpga.fpga_pulsegen_get_Int_phase(0), 0u);
    fpga.fpga_pulsegen_set_Ext_phase(0, 1);
    EXPECT_EQ(fpga.fpga_pulsegen_get_Ext_phase(0), 0u);
    EXPECT_EQ(fpga.getFirmwareBuildStamp(), "0000-00-00T00:00:00");
    fpga.DoneFpga();

    EXPECT_THAT(trace(), IsEmpty());
}

TEST_F(Fpga, GivesZeroForARegisterThatCannotBeRead) {
    reg("TimeStamp_Interface+520") = 0x1234;
    failRead("read64 TimeStamp_Interface+520");
    reg("Ptfe_Interface1+16") = 41;
    failRead("read32 Ptfe_Interface1+16");

    EXPECT_EQ(fpga.getUARTDataTimestampRaw(1), 0u);
    EXPECT_EQ(fpga.getPtfeMeasuredFreqEstimate(1), 1u);
}

// ---- Time stamps ------------------------------------------------------------------------------

TEST_F(Fpga, ReadsTheSystemCount) {
    reg("TimeStamp_Interface+128") = 0xFEDC'BA98'7654'3210;

    EXPECT_EQ(fpga.fpga_get_SystemCount(), 0xFEDC'BA98'7654'3210u);
    EXPECT_THAT(trace(), ElementsAre("read64 TimeStamp_Interface+128"));
    EXPECT_EQ(fpga.fpga_timestamp_get_ticks_per_sec(), 58982400u);
}

TEST_F(Fpga, ReadsTheTimeStampOfEachUart) {
    reg("TimeStamp_Interface+512") = 0x8000'0000'0000'0001;
    reg("TimeStamp_Interface+536") = 7;

    EXPECT_EQ(fpga.getUARTDataTimestampRaw(0), 0x8000'0000'0000'0001u);
    EXPECT_EQ(fpga.getUARTDataTimestampRaw(3), 7u);
    EXPECT_THAT(trace(),
                ElementsAre("read64 TimeStamp_Interface+512", "read64 TimeStamp_Interface+536"));
}

TEST_F(Fpga, ReadsTheTimeStampOfEachPulse) {
    reg("TimeStamp_Interface+136") = 0x1122'3344'5566'7788;
    reg("TimeStamp_Interface+152") = 9;

    EXPECT_EQ(fpga.getPulseTimestampRaw(0), 0x1122'3344'5566'7788u);
    EXPECT_EQ(fpga.getPulseTimestampRaw(2), 9u);
    EXPECT_THAT(trace(),
                ElementsAre("read64 TimeStamp_Interface+136", "read64 TimeStamp_Interface+152"));
}

TEST_F(Fpga, ReadsNothingForATimeStampOutOfRange) {
    EXPECT_EQ(fpga.getUARTDataTimestampRaw(kUarts), 0u);
    EXPECT_EQ(fpga.getUARTDataTimestampRaw(UINT_MAX), 0u);
    EXPECT_EQ(fpga.getPulseTimestampRaw(kPulses), 0u);
    EXPECT_EQ(fpga.getPulseTimestampRaw(-1), 0u);
    EXPECT_EQ(fpga.getPulseTimestampRaw(INT_MIN), 0u);
    EXPECT_THAT(trace(), IsEmpty());
}

TEST(FpgaHotPath, CostsOneReadAndNoAllocation) {
    struct Counter : FakeDevmem {
        unsigned reads = 0;
        void Read(long long, long long, FACE::IOSS::Devmem::READ_PAYLOAD_TYPE& payload,
                  Code& rc) override {
            ++reads;
            // Serves the bring-up as well: 2 of everything, and the rate at its offset.
            payload.data = payload.offset == 0 ? 58982400 : 2;
            rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        }
    };
    const auto devmem = std::make_shared<Counter>();
    FpgaFace::Instance().InitFpga(devmem);
    devmem->reads = 0;
    const long before = allocationCount();

    const uint64_t uart = FpgaFace::Instance().getUARTDataTimestampRaw(1);
    const uint64_t pulse = FpgaFace::Instance().getPulseTimestampRaw(1);
    const long allocations = allocationCount() - before;

    EXPECT_EQ(uart + pulse, 4u);
    EXPECT_EQ(devmem->reads, 2u);
    EXPECT_EQ(allocations, 0);
    EXPECT_EQ(before > 0, kAllocationsAreCounted) << "the counter does not count";
}

// ---- UART delay -------------------------------------------------------------------------------

TEST_F(Fpga, WritesAndReadsTheDelayOfAUart) {
    fpga.setUartDelay(2, 0xFFFF'FFFF);
    EXPECT_EQ(fpga.getUartDelay(2), 0xFFFF'FFFFu);

    EXPECT_THAT(trace(), ElementsAre("write32 TimeStamp_Interface+400=4294967295",
                                     "read32 TimeStamp_Interface+400"));
}

TEST_F(Fpga, ComputesTheDelayFromTheLineSpeed) {
    fpga.setUartDelay(0, 115200, 10, 10);  // 58982400 / 115200 = 512
    fpga.setUartDelay(0, 115200, 10, 11);
    fpga.setUartDelay(1, 9600, 10, 10);    // 6144
    fpga.setUartDelay(1, 300, 10, 11);     // 196608
    fpga.setUartDelay(3, 921600, 1, 1);    // 64
    fpga.setUartDelay(3, 460800, 0, 10);   // no time at all
    fpga.setUartDelay(3, 1000000, 10, 1);  // 589.824, truncated
    fpga.setUartDelay(3, 1000000, 1, 1);   // 58.9824

    EXPECT_THAT(
        trace(),
        ElementsAre(
            "write32 TimeStamp_Interface+384=51200", "write32 TimeStamp_Interface+384=56320",
            "write32 TimeStamp_Interface+392=614400", "write32 TimeStamp_Interface+392=21626880",
            "write32 TimeStamp_Interface+408=64", "write32 TimeStamp_Interface+408=0",
            "write32 TimeStamp_Interface+408=589", "write32 TimeStamp_Interface+408=58"));
}

TEST_F(Fpga, WritesNoDelayForALineThatHasNoSpeed) {
    fpga.setUartDelay(0, 0, 10, 10);

    EXPECT_THAT(trace(), IsEmpty());
}

TEST_F(Fpga, WritesTheLongestDelayForOneThatDoesNotFit) {
    fpga.setUartDelay(0, 1, 10, 10);  // 5,898,240,000 ticks
    fpga.setUartDelay(0, 1, UINT_MAX, UINT_MAX);

    EXPECT_THAT(trace(), ElementsAre("write32 TimeStamp_Interface+384=4294967295",
                                     "write32 TimeStamp_Interface+384=4294967295"));
}

TEST_F(Fpga, TouchesNoDelayOutOfRange) {
    fpga.setUartDelay(kUarts, 1);
    fpga.setUartDelay(kUarts, 9600, 10, 10);
    EXPECT_EQ(fpga.getUartDelay(kUarts), 0u);

    EXPECT_THAT(trace(), IsEmpty());
}

// ---- Control registers ------------------------------------------------------------------------

TEST_F(Fpga, ReadsWritesAndResetsPeripheralRegisters) {
    fpga.fpga_set_periph_control(4, 0xDEADBEEF);
    EXPECT_EQ(fpga.fpga_get_periph_control(4), 0xDEADBEEFu);
    EXPECT_EQ(fpga.fpga_reset_periph_control(4), 0xDEADBEEFu);
    EXPECT_EQ(fpga.fpga_get_periph_control(4), 0u);

    EXPECT_THAT(trace(),
                ElementsAre("write32 Peripheral_Interface+16=3735928559",
                            "read32 Peripheral_Interface+16", "read32 Peripheral_Interface+16",
                            "write32 Peripheral_Interface+16=0", "read32 Peripheral_Interface+16"));
}

TEST_F(Fpga, HasNinePpsSlaveRegisters) {
    fpga.fpga_set_ppsSlave_control(0, 1);
    fpga.fpga_set_ppsSlave_control(8, 3);
    EXPECT_EQ(fpga.fpga_get_ppsSlave_control(8), 3u);
    EXPECT_EQ(fpga.fpga_get_ppsSlave_control(9), 0u);

    EXPECT_THAT(trace(),
                ElementsAre("write32 PpsSlave_Interface+0=1", "write32 PpsSlave_Interface+32=3",
                            "read32 PpsSlave_Interface+32"));
}

TEST_F(Fpga, HasThirtyPtpClockRegisters) {
    fpga.fpga_set_ptpClock_control(1, 2);
    fpga.fpga_set_ptpClock_control(29, 5);
    EXPECT_EQ(fpga.fpga_get_ptpClock_control(29), 5u);
    EXPECT_EQ(fpga.fpga_get_ptpClock_control(30), 0u);

    EXPECT_THAT(trace(),
                ElementsAre("write32 PtpClock_Interface+4=2", "write32 PtpClock_Interface+116=5",
                            "read32 PtpClock_Interface+116"));
}

TEST_F(Fpga, TouchesNoControlRegisterOutOfRange) {
    for (const int i : {-1, INT_MIN, INT_MAX}) {
        fpga.fpga_set_periph_control(i, 1);
        EXPECT_EQ(fpga.fpga_get_periph_control(i), 0u);
        EXPECT_EQ(fpga.fpga_reset_periph_control(i), 0u);
        fpga.fpga_set_ppsSlave_control(i, 1);
        EXPECT_EQ(fpga.fpga_get_ppsSlave_control(i), 0u);
        fpga.fpga_set_ptpClock_control(i, 1);
        EXPECT_EQ(fpga.fpga_get_ptpClock_control(i), 0u);
    }
    fpga.fpga_set_periph_control(kPeriphs, 1);
    EXPECT_EQ(fpga.fpga_get_periph_control(kPeriphs), 0u);
    EXPECT_EQ(fpga.fpga_reset_periph_control(kPeriphs), 0u);
    fpga.fpga_set_ppsSlave_control(9, 1);
    fpga.fpga_set_ptpClock_control(30, 1);

    EXPECT_THAT(trace(), IsEmpty());
}

// ---- PTFE -------------------------------------------------------------------------------------

TEST_F(Fpga, InitialisesAPtfeWithFiveWritesInOrder) {
    fpga.fpga_ptfe_init(1, 777, 58982400);

    EXPECT_THAT(trace(),
                ElementsAre("write32 PulseGen_Interface1+0=58982399",
                            "write32 TimeStamp_Interface+64=1", "write32 Ptfe_Interface1+144=777",
                            "write32 Ptfe_Interface1+152=777", "write32 Ptfe_Interface1+288=160"));
}

TEST_F(Fpga, WrapsACycleLengthOfZero) {
    fpga.fpga_ptfe_init(0, 1, 0);

    EXPECT_EQ(trace().at(0), "write32 PulseGen_Interface0+0=4294967295");
}

TEST_F(Fpga, SetsAndClearsTheResetBitOfAPtfe) {
    reg("Ptfe_Interface0+128") = 0x8000'0010;

    fpga.fpga_ptfe_soft_reset(0);

    EXPECT_THAT(trace(),
                ElementsAre("read32 Ptfe_Interface0+128", "write32 Ptfe_Interface0+128=2147483665",
                            "write32 Ptfe_Interface0+128=2147483664"));
}

// The gap between the two writes, without what the service itself takes: a lean one, so that only
// the sleep can make it long.
TEST(FpgaReset, HoldsTheResetBitForAMicrosecond) {
    using Clock = std::chrono::steady_clock;
    struct Stopwatch : FakeDevmem {
        Clock::time_point firstLeft{};
        Clock::time_point lastEntered{};
        unsigned writes = 0;
        void Read(long long, long long, FACE::IOSS::Devmem::READ_PAYLOAD_TYPE& payload,
                  Code& rc) override {
            payload.data = payload.offset == 0 ? 58982400 : 1;
            rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        }
        void Write(long long, long long, const FACE::IOSS::Devmem::WRITE_PAYLOAD_TYPE&,
                   Code& rc) override {
            lastEntered = Clock::now();
            rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
            if (++writes == 1) {
                firstLeft = Clock::now();
            }
        }
    };
    const auto devmem = std::make_shared<Stopwatch>();
    FpgaFace::Instance().InitFpga(devmem);

    FpgaFace::Instance().fpga_ptfe_soft_reset(0);

    EXPECT_EQ(devmem->writes, 2u);
    EXPECT_GE(devmem->lastEntered - devmem->firstLeft, std::chrono::nanoseconds(1000));
}

TEST_F(Fpga, ClearsAResetBitThatWasSetBefore) {
    reg("Ptfe_Interface0+128") = 0x11;

    fpga.fpga_ptfe_soft_reset(0);

    EXPECT_EQ(reg("Ptfe_Interface0+128"), 0x10u);
}

TEST_F(Fpga, ReadsThePtfeRegisters) {
    reg("Ptfe_Interface1+0") = 0x0102'0304'0506'0708;
    reg("Ptfe_Interface1+24") = 0xF000'000F;
    reg("Ptfe_Interface1+56") = 0xFFFF'FFFE;
    reg("Ptfe_Interface1+16") = 58982399;

    EXPECT_EQ(fpga.getPtfeFirmwareId(1), 0x0102'0304'0506'0708u);
    EXPECT_EQ(fpga.getPtfeStatus(1), 0xF000'000Fu);
    EXPECT_EQ(fpga.getDtCycles(1), 0xFFFF'FFFEu);
    EXPECT_EQ(fpga.getPtfeMeasuredFreqEstimate(1), 58982400u);

    EXPECT_THAT(trace(), ElementsAre("read64 Ptfe_Interface1+0", "read32 Ptfe_Interface1+24",
                                     "read32 Ptfe_Interface1+56", "read32 Ptfe_Interface1+16"));
}

TEST_F(Fpga, ClearsTheStatusItReads) {
    reg("Ptfe_Interface0+24") = 6;

    EXPECT_EQ(fpga.getAndClearPtfeStatus(0), 6u);
    EXPECT_EQ(fpga.getPtfeStatus(0), 0u);

    EXPECT_THAT(trace(), ElementsAre("read32 Ptfe_Interface0+24", "write32 Ptfe_Interface0+24=0",
                                     "read32 Ptfe_Interface0+24"));
}

TEST_F(Fpga, KeepsTheSignificantBitsOfTheNcoValues) {
    reg("Ptfe_Interface0+32") = 0xFFFF'FFFF'FFFF'FFFF;
    reg("Ptfe_Interface0+48") = 0xFFFF'FFFF'FFFF'FFFF;

    EXPECT_EQ(fpga.getDfNcoRate(0), 0x0000'0FFF'FFFF'FFFFu);   // 44 bits
    EXPECT_EQ(fpga.getDtNcoPhase(0), 0x0000'00FF'FFFF'FFFFu);  // 40 bits

    EXPECT_THAT(trace(), ElementsAre("read64 Ptfe_Interface0+32", "read64 Ptfe_Interface0+48"));
}

TEST_F(Fpga, WritesAll64BitsOfTheDefaultNcoRate) {
    fpga.setPtfeDefaultNcoRate(1, 0xFFFF'FFFF'FFFF'FFFE);

    EXPECT_THAT(trace(), ElementsAre("write64 Ptfe_Interface1+200=18446744073709551614"));
}

TEST_F(Fpga, EstimatesOneForAFrequencyItCannotRead) {
    EXPECT_EQ(fpga.getPtfeMeasuredFreqEstimate(kPtfes), 1u);
    EXPECT_EQ(fpga.getPtfeMeasuredFreqEstimate(UINT_MAX), 1u);

    EXPECT_THAT(trace(), IsEmpty());
}

TEST_F(Fpga, TouchesNoPtfeOutOfRange) {
    for (const unsigned ptfe : {kPtfes, UINT_MAX}) {
        fpga.fpga_ptfe_init(ptfe, 1, 2);
        fpga.fpga_ptfe_soft_reset(ptfe);
        fpga.setPtfeDefaultNcoRate(ptfe, 1);
        fpga.fpga_pulsegen_set_Int_phase(ptfe, 1);
        fpga.fpga_pulsegen_set_Ext_phase(ptfe, 1);
        EXPECT_EQ(fpga.getPtfeFirmwareId(ptfe), 0u);
        EXPECT_EQ(fpga.getPtfeStatus(ptfe), 0u);
        EXPECT_EQ(fpga.getAndClearPtfeStatus(ptfe), 0u);
        EXPECT_EQ(fpga.getDfNcoRate(ptfe), 0u);
        EXPECT_EQ(fpga.getDtNcoPhase(ptfe), 0u);
        EXPECT_EQ(fpga.getDtCycles(ptfe), 0u);
        EXPECT_EQ(fpga.fpga_pulsegen_get_Int_phase(ptfe), 0u);
        EXPECT_EQ(fpga.fpga_pulsegen_get_Ext_phase(ptfe), 0u);
        EXPECT_EQ(fpga.fpga_pulsegen_adjust_Int_phase(ptfe, 3), 0u);
        EXPECT_EQ(fpga.fpga_pulsegen_adjust_Ext_phase(ptfe, 3), 0u);
    }

    EXPECT_THAT(trace(), IsEmpty());
}

// ---- Pulse generators -------------------------------------------------------------------------

TEST_F(Fpga, WritesAndReadsBothPhases) {
    fpga.fpga_pulsegen_set_Int_phase(1, 11);
    fpga.fpga_pulsegen_set_Ext_phase(1, 12);
    EXPECT_EQ(fpga.fpga_pulsegen_get_Int_phase(1), 11u);
    EXPECT_EQ(fpga.fpga_pulsegen_get_Ext_phase(1), 12u);

    EXPECT_THAT(trace(),
                ElementsAre("write32 PulseGen_Interface1+4=11", "write32 PulseGen_Interface1+8=12",
                            "read32 PulseGen_Interface1+4", "read32 PulseGen_Interface1+8"));
}

// A generator of 100 cycles, adjusted once: what is written is also what is returned.
class FpgaPhase : public Fpga {
  protected:
    FpgaPhase() {
        fpga.fpga_ptfe_init(1, 0, 100);
        devmem->trace.clear();
    }
    unsigned adjusted(uint32_t phase, int delta) {
        reg("PulseGen_Interface1+4") = phase;
        reg("PulseGen_Interface1+8") = phase;
        const unsigned result = fpga.fpga_pulsegen_adjust_Int_phase(1, delta);
        EXPECT_EQ(reg("PulseGen_Interface1+4"), result);
        EXPECT_EQ(fpga.fpga_pulsegen_adjust_Ext_phase(1, delta), result);
        EXPECT_EQ(reg("PulseGen_Interface1+8"), result);
        return result;
    }
};

TEST_F(FpgaPhase, MovesWithinTheCycle) {
    EXPECT_EQ(adjusted(50, 10), 60u);
    EXPECT_EQ(adjusted(50, -50), 0u);
    EXPECT_EQ(adjusted(50, 49), 99u);
    EXPECT_EQ(adjusted(0, 0), 0u);
    EXPECT_EQ(trace().at(0), "read32 PulseGen_Interface1+4");
    EXPECT_EQ(trace().at(1), "write32 PulseGen_Interface1+4=60");
    EXPECT_EQ(trace().at(2), "read32 PulseGen_Interface1+8");
    EXPECT_EQ(trace().at(3), "write32 PulseGen_Interface1+8=60");
}

TEST_F(FpgaPhase, WrapsAtTheEndOfTheCycle) {
    EXPECT_EQ(adjusted(95, 10), 5u);
    EXPECT_EQ(adjusted(95, 5), 0u);
}

TEST_F(FpgaPhase, WrapsAtTheStartOfTheCycle) {
    EXPECT_EQ(adjusted(95, -100), 95u);
    EXPECT_EQ(adjusted(5, -10), 95u);
    EXPECT_EQ(adjusted(0, -1), 99u);
}

TEST_F(FpgaPhase, WrapsOnlyOnce) {
    EXPECT_EQ(adjusted(50, 250), 200u);
    EXPECT_EQ(adjusted(50, -250), 0xFFFF'FF9Cu);  // -200 + 100
}

TEST_F(FpgaPhase, WrapsASumThatLeavesTheSignedRange) {
    EXPECT_EQ(adjusted(0x7FFF'FFFF, 1), 0x8000'0064u);   // reads as negative: 100 is added
    EXPECT_EQ(adjusted(0x8000'0000, -1), 0x7FFF'FF9Bu);  // a large sum: 100 is taken off
    EXPECT_EQ(adjusted(0, INT_MIN), 0x8000'0064u);
}

TEST_F(FpgaPhase, KeepsTheCycleLengthOfEachGenerator) {
    fpga.fpga_ptfe_init(0, 0, 10);
    reg("PulseGen_Interface0+4") = 9;

    EXPECT_EQ(fpga.fpga_pulsegen_adjust_Int_phase(0, 2), 1u);
    EXPECT_EQ(adjusted(9, 2), 11u);
}

TEST_F(FpgaPhase, ForgetsTheCycleLengthWithANewBringUp) {
    fpga.InitFpga(devmem);

    EXPECT_EQ(adjusted(95, 10), 105u);  // 105 - 0
    EXPECT_EQ(adjusted(5, -10), 0xFFFF'FFFBu);
}

// ---- Firmware texts ---------------------------------------------------------------------------

class FpgaFirmware : public Fpga {
  protected:
    FpgaFirmware() {
        reg("Processor_Interface+0") = 0x4E415643;  // "NAVC"
        reg("Processor_Interface+4") = 0x4F524531;  // "ORE1"
        reg("Processor_Interface+8") = 0x20220630;
        reg("Processor_Interface+12") = 0x98761405;  // only the low four digits count
        reg("Processor_Interface+16") = 0x31323334;  // "1234"
        reg("Processor_Interface+20") = 0x35363738;  // "5678"
        reg("Processor_Interface+24") = 0x394142;    // "\0" "9AB"
        reg("Processor_Interface+28") = 0x412E3031;  // "A.01"
    }
};

TEST_F(FpgaFirmware, TellsWhenItWasBuilt) {
    EXPECT_EQ(fpga.getFirmwareBuildStamp(), "2022-06-30T14:05:00");
    EXPECT_THAT(trace(),
                ElementsAre("read32 Processor_Interface+8", "read32 Processor_Interface+12"));
}

TEST_F(FpgaFirmware, DescribesItselfInOneText) {
    const std::string expected =
        std::string("Tessaly FPGA Firmware:, NAVCORE1,Date YMD:,2022-06-30,Time  HHMM:,14:05,") +
        "HPN:,1234-5678-" + '\0' + "9ABRev:A.01";

    EXPECT_EQ(fpga.getFirmwareConfiguration(), expected);
    EXPECT_THAT(trace(),
                ElementsAre("read32 Processor_Interface+0", "read32 Processor_Interface+4",
                            "read32 Processor_Interface+8", "read32 Processor_Interface+12",
                            "read32 Processor_Interface+16", "read32 Processor_Interface+20",
                            "read32 Processor_Interface+24", "read32 Processor_Interface+28"));
}

TEST_F(FpgaFirmware, PrintsTwoDigitsForANibbleAboveNine) {
    reg("Processor_Interface+8") = 0xA0220F30;

    EXPECT_EQ(fpga.getFirmwareBuildStamp(), "10022-015-30T14:05:00");
}

TEST_F(FpgaFirmware, CountsAWordThatCannotBeReadAsZero) {
    failRead("read32 Processor_Interface+12");
    failRead("read32 Processor_Interface+28");

    EXPECT_EQ(fpga.getFirmwareBuildStamp(), "2022-06-30T00:00:00");
    EXPECT_THAT(fpga.getFirmwareConfiguration(),
                testing::EndsWith(std::string("Rev:") + std::string(4, '\0')));
}

}  // namespace

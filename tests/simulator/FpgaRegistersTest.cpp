// SPDX-License-Identifier: Apache-2.0
#include "simulator/FpgaRegisters.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::Deployment;
using Simulator::FpgaRegisters;
using Simulator::MemoryRegion;
using Simulator::PhysicalMemory;
using SimulatorTest::eventually;

// The registers are looked at through a mapping of their own, at the physical addresses.
class FpgaRegistersTest : public testing::Test {
  protected:
    const Deployment m_deployment = Deployment::read(ROVAN_SOURCE_DIR "/config/udp/rovan.xml");
    const PhysicalMemory m_memory;
    FpgaRegisters m_fpga{m_memory, m_deployment.memory};
    MemoryRegion m_timeStamp = m_memory.map(0x40030000, 0x400);
};

TEST_F(FpgaRegistersTest, ShowsAHealthyFpgaAtFirst) {
    EXPECT_EQ(m_timeStamp.read64(0), 58'982'400u);
    EXPECT_EQ(m_timeStamp.read64(8), 4u);
    EXPECT_EQ(m_timeStamp.read64(16), 2u);
    EXPECT_EQ(m_timeStamp.read64(24), 4u);
    EXPECT_EQ(m_timeStamp.read64(32), 16u);
    EXPECT_NE(m_timeStamp.read64(128), 0u);
    EXPECT_NE(m_timeStamp.read64(136), 0u);
    EXPECT_NE(m_timeStamp.read64(512), 0u);
}

TEST_F(FpgaRegistersTest, TellsNameDateAndPartNumber) {
    const MemoryRegion processor = m_memory.map(0x40010000, 0x20);
    EXPECT_EQ(processor.read32(0), 0x53494D55u);  // "SIMU", first character on top
    EXPECT_EQ(processor.read32(8), 0x20240918u);
    EXPECT_EQ(processor.read32(12), 0x1348u);
}

TEST_F(FpgaRegistersTest, TheSystemCountRunsAtItsRate) {
    m_fpga.start();
    const auto begin = std::chrono::steady_clock::now();
    const std::uint64_t first = m_fpga.systemCount();
    ASSERT_TRUE(eventually([&] { return m_timeStamp.read64(128) > first + 58'982'400 / 10; }));
    const std::uint64_t last = m_fpga.systemCount();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    m_fpga.stop();
    // A tenth of a second has passed at least, and no more ticks than time.
    EXPECT_GE(took.count(), 0.099);
    EXPECT_LE(static_cast<double>(last - first), took.count() * 58'982'400 + 1);
}

TEST_F(FpgaRegistersTest, TheSystemCountCanBeSetHeldAndMoved) {
    m_fpga.start();
    m_fpga.setSystemCount(1'000'000);
    EXPECT_EQ(m_timeStamp.read64(128), 1'000'000u);
    m_fpga.jump(-400'000);
    EXPECT_EQ(m_timeStamp.read64(128), 600'000u);
    m_fpga.jump(500);
    EXPECT_EQ(m_timeStamp.read64(128), 600'500u);
    EXPECT_EQ(m_fpga.systemCount(), 600'500u);
    m_fpga.run();
    EXPECT_TRUE(eventually([&] { return m_timeStamp.read64(128) > 600'500; }));
    m_fpga.freeze();
    const std::uint64_t frozen = m_timeStamp.read64(128);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(m_timeStamp.read64(128), frozen);
    EXPECT_EQ(m_fpga.systemCount(), frozen);
}

TEST_F(FpgaRegistersTest, StampsOfUartsAndPulsesAreThisMomentOrAChosenValue) {
    m_fpga.setSystemCount(777);
    m_fpga.stampUart(2);
    m_fpga.stampPulse(3);
    EXPECT_EQ(m_timeStamp.read64(512 + 16), 777u);
    EXPECT_EQ(m_timeStamp.read64(136 + 24), 777u);
    m_fpga.setUartStamp(0, 0x123456789ABC);
    m_fpga.setPulseStamp(1, 42);
    EXPECT_EQ(m_timeStamp.read64(512), 0x123456789ABCu);
    EXPECT_EQ(m_timeStamp.read64(136 + 8), 42u);
}

TEST_F(FpgaRegistersTest, RateAndCountsCanBeWrong) {
    m_fpga.setClockRate(58'982'401);
    m_fpga.setUartCount(1);
    m_fpga.setPtfeCount(7);
    m_fpga.setPulseCount(0);
    m_fpga.setPeripheralCount(3);
    EXPECT_EQ(m_timeStamp.read64(0), 58'982'401u);
    EXPECT_EQ(m_timeStamp.read64(8), 1u);
    EXPECT_EQ(m_timeStamp.read64(16), 7u);
    EXPECT_EQ(m_timeStamp.read64(24), 0u);
    EXPECT_EQ(m_timeStamp.read64(32), 3u);
}

TEST_F(FpgaRegistersTest, ReadsTheDelayThatTheServerWrote) {
    m_timeStamp.write32(384 + 8, 51'200);
    EXPECT_EQ(m_fpga.uartDelay(1), 51'200u);
}

TEST_F(FpgaRegistersTest, EveryBlockOfTheDeploymentIsAtHand) {
    m_fpga.block("PulseGen_Interface1").write32(8, 5);
    EXPECT_EQ(m_memory.map(0x40071000, 16).read32(8), 5u);
    EXPECT_THROW(m_fpga.block("Ptfe_Interface9"), std::out_of_range);
}

TEST_F(FpgaRegistersTest, RefusesADeploymentWithoutATimeBase) {
    auto blocks = m_deployment.memory;
    blocks.erase("TimeStamp_Interface");
    EXPECT_THROW(FpgaRegisters(m_memory, blocks), std::runtime_error);
}

}  // namespace

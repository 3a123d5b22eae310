// SPDX-License-Identifier: Apache-2.0
#include "simulator/PowerSwitch.h"

#include <gtest/gtest.h>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::BoundedLog;
using Simulator::MemoryRegion;
using Simulator::PhysicalMemory;
using Simulator::PowerChange;
using Simulator::PowerSwitch;
using SimulatorTest::kSoon;
using Switch = PowerChange::Switch;

class PowerSwitchTest : public testing::Test {
  protected:
    void powerOn(std::uint32_t value) { m_registers.write32(0x5C, value); }
    void supply(std::uint32_t value) { m_registers.write32(0x60, value); }
    PowerChange change(std::uint64_t number) {
        const auto found =
            m_power.changes().waitFor([](const PowerChange&) { return true; }, kSoon, number);
        return found.value_or(PowerChange{});
    }
    // Empty when the receiver's power has not changed so often.
    std::optional<bool> receiverPower(std::uint64_t number) {
        return m_told.waitFor([](bool) { return true; }, kSoon, number);
    }

    const PhysicalMemory m_memory;
    MemoryRegion m_registers = m_memory.map(0x40000400, 0x100);
    BoundedLog<bool> m_told{100};
    PowerSwitch m_power{m_memory, [this](bool on) { m_told.add(on); }};
};

TEST_F(PowerSwitchTest, FindsTheReceiverPowered) {
    EXPECT_EQ(m_registers.read32(0x5C), 0u);
    EXPECT_EQ(m_registers.read32(0x60), 1u);
    EXPECT_TRUE(m_power.receiverPowered());
    EXPECT_EQ(m_power.changes().count(), 0u);
}

TEST_F(PowerSwitchTest, NotesTheSwitchesInTheOrderInWhichTheyMoved) {
    m_power.start();
    powerOn(1);
    EXPECT_EQ(change(0).which, Switch::PowerOn);
    supply(0);
    EXPECT_EQ(change(1).which, Switch::Supply);
    supply(1);
    change(2);
    powerOn(0);
    change(3);
    const auto changes = m_power.changes().entries();
    ASSERT_EQ(changes.size(), 4u);
    EXPECT_FALSE(changes[0].on);
    EXPECT_FALSE(changes[1].on);
    EXPECT_EQ(changes[2].which, Switch::Supply);
    EXPECT_TRUE(changes[2].on);
    EXPECT_EQ(changes[3].which, Switch::PowerOn);
    EXPECT_TRUE(changes[3].on);
    for (const PowerChange& entry : changes) {
        EXPECT_TRUE(entry.orderKnown);
    }
    EXPECT_LE(changes[0].seen, changes[1].seen);
}

TEST_F(PowerSwitchTest, TheReceiverHasPowerOnlyWhileBothAreOn) {
    m_power.start();
    powerOn(1);
    EXPECT_EQ(receiverPower(0), false);
    supply(0);
    change(1);
    powerOn(0);
    change(2);
    EXPECT_EQ(m_told.count(), 1u);
    EXPECT_FALSE(m_power.receiverPowered());
    supply(1);
    EXPECT_EQ(receiverPower(1), true);
    EXPECT_TRUE(m_power.receiverPowered());
}

TEST_F(PowerSwitchTest, SaysWhenItCannotKnowTheOrder) {
    powerOn(1);
    supply(0);
    m_power.start();
    EXPECT_FALSE(change(0).orderKnown);
    EXPECT_FALSE(change(1).orderKnown);
    EXPECT_EQ(receiverPower(0), false);
}

}  // namespace

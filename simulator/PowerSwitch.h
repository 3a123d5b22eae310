// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "simulator/BoundedLog.h"
#include "simulator/MemoryRegion.h"
#include "simulator/PhysicalMemory.h"
#include "utility/WorkerThread.h"

namespace Simulator {

/// One of the two switches of the receiver's power moved.
struct PowerChange {
    enum class Switch { PowerOn, Supply };
    Switch which;
    bool on;
    std::chrono::steady_clock::time_point seen;
    /// False when the other switch moved within the same few milliseconds, so that their order is
    /// not known from here; the log of the `devmem` command knows it.
    bool orderKnown;
};

// The two registers that switch the receiver's power: the Power_On discrete, which is active low,
// and the 3.3 V supply. The receiver has power while both are on. A thread looks at them every 2
// ms, notes each change and tells when the receiver's power goes off or on.
class PowerSwitch {
  public:
    static constexpr std::uint32_t kPowerOnAddress = 0x4000045C;  // 0 is on
    static constexpr std::uint32_t kSupplyAddress = 0x40000460;   // 1 is on

    /// Both switches start on, as the server expects to find them. `onPower` is called on this
    /// object's thread with the receiver's new power.
    PowerSwitch(const PhysicalMemory& memory, std::function<void(bool)> onPower);
    ~PowerSwitch() { stop(); }

    void start();
    void stop();

    /// Whether the receiver has power by the registers at this moment.
    bool receiverPowered() const { return powerOn() && supply(); }
    const BoundedLog<PowerChange>& changes() const { return m_changes; }

  private:
    void look();
    bool powerOn() const { return m_registers.read32(0) == 0; }
    bool supply() const { return m_registers.read32(kSupplyAddress - kPowerOnAddress) == 1; }

    MemoryRegion m_registers;
    std::function<void(bool)> m_onPower;
    BoundedLog<PowerChange> m_changes;
    bool m_lastPowerOn = true;
    bool m_lastSupply = true;
    Utility::WorkerThread m_thread;
};

}  // namespace Simulator

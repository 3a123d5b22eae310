// SPDX-License-Identifier: Apache-2.0
#include "simulator/PowerSwitch.h"

#include <utility>

#include "utility/Sleep.h"

namespace Simulator {
namespace {

constexpr std::chrono::milliseconds kRhythm{2};
constexpr std::size_t kChangesKept = 1000;

}  // namespace

PowerSwitch::PowerSwitch(const PhysicalMemory& memory, std::function<void(bool)> onPower)
    : m_registers(memory.map(kPowerOnAddress, kSupplyAddress + 4 - kPowerOnAddress)),
      m_onPower(std::move(onPower)),
      m_changes(kChangesKept) {
    m_registers.write32(0, 0);
    m_registers.write32(kSupplyAddress - kPowerOnAddress, 1);
}

void PowerSwitch::start() {
    m_thread.start([this] {
        while (!m_thread.stopRequested()) {
            look();
            Utility::sleepFor(kRhythm);
        }
    });
}

void PowerSwitch::stop() {
    m_thread.stop();
}

void PowerSwitch::look() {
    const bool nowPowerOn = powerOn();
    const bool nowSupply = supply();
    const bool powerOnMoved = nowPowerOn != m_lastPowerOn;
    const bool supplyMoved = nowSupply != m_lastSupply;
    const bool hadPower = m_lastPowerOn && m_lastSupply;
    m_lastPowerOn = nowPowerOn;
    m_lastSupply = nowSupply;

    const auto now = std::chrono::steady_clock::now();
    const bool orderKnown = !(powerOnMoved && supplyMoved);
    if (powerOnMoved) {
        m_changes.add({PowerChange::Switch::PowerOn, nowPowerOn, now, orderKnown});
    }
    if (supplyMoved) {
        m_changes.add({PowerChange::Switch::Supply, nowSupply, now, orderKnown});
    }
    const bool hasPower = nowPowerOn && nowSupply;
    if (hasPower != hadPower && m_onPower) {
        m_onPower(hasPower);
    }
}

}  // namespace Simulator

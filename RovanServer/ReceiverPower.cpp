// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverPower.h"

#include <utility>

#include "utility/Console.h"

ReceiverPower::ReceiverPower(System system) : m_system(std::move(system)) {
}

void ReceiverPower::off() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    switchOff();
}

void ReceiverPower::on() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_offForGood) {
        return;
    }
    if (m_system("devmem 0x40000460 32 1") < 0) {
        Console::line("Error enabling the 3.3V power supply");
    }
    if (m_system("devmem 0x4000045C 32 0") < 0) {
        Console::line("Error setting the Rovan Power_On discrete to on");
    }
}

void ReceiverPower::offForGood() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_offForGood = true;
    switchOff();
}

void ReceiverPower::switchOff() {
    if (m_system("devmem 0x4000045C 32 1") < 0) {
        Console::line("Error setting the Rovan Power_On discrete to off");
    }
    if (m_system("devmem 0x40000460 32 0") < 0) {
        Console::line("Error disabling the 3.3V power supply");
    }
}

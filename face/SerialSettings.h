// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "face/ConnectionSettings.h"

namespace FACE::IOSS {

// The settings of a serial line, as configured; any value can stand here, also one that no line can
// have.
struct SerialSettings {
    uint8_t channelNum = 0;    // number of the device
    int16_t serialMode = 0;    // stored and reported, without effect on the line
    int32_t baudrate = 0;      // bits per second
    int16_t dataBits = 0;      // 5 to 8
    int16_t stopBits = 0;      // 1 or 2
    uint16_t parity = 0;       // 0 none, 1 odd, 2 even, 3 mark, 4 space
    uint16_t flowControl = 0;  // 0 none, 1 software, 2 hardware

    /// In the order of the members, which is that of the parameter ids from 0.
    static const Setting<SerialSettings> kTable[7];
};

}  // namespace FACE::IOSS

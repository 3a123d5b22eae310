// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "face/FACE_Common.h"

// What the top-level configuration file says, and how it is read: once, for the server and for the
// tools that look at its files. A ROW is called with a key and the variable that it goes to, as
// FACE::KD_Config_Row is.
namespace ASPN2 {

/// The container of the settings of the whole system; the server's own has the server's name.
constexpr const char* kSystemContainer = "Keldra";

struct ServerSettings {
    FACE::String systemName;
    FACE::String configurationName;
    FACE::String environment;
    FACE::String connectionsFile;
    FACE::String ioDevicesFile;
    bool debug = false;
    int32_t baud = 115200;
    uint16_t parity = 0;
    uint8_t uartIndex = 0;
    uint8_t pulseIndex = 0;
    bool setupRedundantPort = false;
    FACE::String requestMessageList;
    FACE::String connectMessageList;
    FACE::String passthroughMessageList;
    FACE::String mcsqTopicList;
};

// What the server's own container holds beside: used once and not kept.
struct ServerScheduling {
    uint16_t priority = 0;  // 0: leave the process as it is
    uint16_t cpu = 0;       // counted from 1; 0: leave the affinity as it is
};

/// Reads all keys from a row of the container kSystemContainer.
template <typename ROW>
void readSystemSettings(ROW& row, ServerSettings& s) {
    row("System", s.systemName)("Configuration", s.configurationName)("Environment", s.environment);
}

/// Reads all keys from a row of the container that has the server's name.
template <typename ROW>
void readServerSettings(ROW& row, ServerSettings& s, ServerScheduling& scheduling) {
    row("Connections", s.connectionsFile)("IODevices", s.ioDevicesFile)("Debug", s.debug);
    row("PRI", scheduling.priority)("CPU", scheduling.cpu);
    row("PARAM_1", s.baud)("PARAM_2", s.parity)("PARAM_3", s.uartIndex);
    row("PARAM_4", s.pulseIndex)("PARAM_5", s.setupRedundantPort);
    row("PARAM_6", s.requestMessageList)("PARAM_7", s.connectMessageList);
    row("PARAM_8", s.passthroughMessageList)("PARAM_9", s.mcsqTopicList);
}

}  // namespace ASPN2

// SPDX-License-Identifier: Apache-2.0
// The reading of the top-level configuration file.
#include <string>

#include "RovanServer/ProcessScheduling.h"
#include "RovanServer/RovanServer.h"
#include "face/KD_Config.h"
#include "face/KD_Config_Row.h"
#include "utility/Console.h"

using FACE::RETURN_CODE_TYPE;

const char* const SYST_NAME = "Keldra";

namespace {

// What the server's own container holds beside the configuration: used once and not kept.
struct Scheduling {
    uint16_t priority = 0;  // 0: leave the process as it is
    uint16_t cpu = 0;       // counted from 1; 0: leave the affinity as it is
};

bool okSetPriority(const std::string& name, uint16_t priority) {
    const bool ok = okSetRealtimeProcessPriority(priority & 0xFF);
    Console::line((ok ? "Successfully set " : "FAILED to set ") + name +
                  " realtime process priority to " + std::to_string(priority));
    return ok;
}

bool okSetAffinity(const std::string& name, uint16_t cpu) {
    const bool ok = okSetCpuAffinity(cpu & 0xFF);
    Console::line((ok ? "Successfully set " : "FAILED to set ") + name + " cpu affinity to " +
                  std::to_string(cpu));
    return ok;
}

}  // namespace

void RovanServer::Configure(const FACE::String& configFile, RETURN_CODE_TYPE::Value& rc) {
    FACE::KD_Config file;
    file.Initialize(configFile, rc);
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
        return;
    }

    Configuration& c = m_configuration;
    {
        FACE::KD_Config_Row row(file, SYST_NAME);
        row("System", c.systemName)("Configuration", c.configurationName)("Environment",
                                                                          c.environment);
        rc = row.code();
    }
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        return;
    }

    Scheduling scheduling;
    {
        FACE::KD_Config_Row row(file, m_serverName.c_str());
        row("Connections", c.connectionsFile)("IODevices", c.ioDevicesFile)("Debug", c.debug);
        row("PRI", scheduling.priority)("CPU", scheduling.cpu);
        row("PARAM_1", c.baud)("PARAM_2", c.parity)("PARAM_3", c.uartIndex);
        row("PARAM_4", c.pulseIndex)("PARAM_5", c.setupRedundantPort);
        row("PARAM_6", c.requestMessageList)("PARAM_7", c.connectMessageList);
        row("PARAM_8", c.passthroughMessageList)("PARAM_9", c.mcsqTopicList);
        rc = row.code();
    }
    // A missing key does not keep these two from being set, and neither keeps the other from it.
    if (scheduling.priority != 0 && !okSetPriority(m_serverName, scheduling.priority)) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    }
    if (scheduling.cpu != 0 && !okSetAffinity(m_serverName, scheduling.cpu)) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    }
}

// SPDX-License-Identifier: Apache-2.0
// The reading of the top-level configuration file.
#include <string>

#include "ASPN/ServerSettings.h"
#include "RovanServer/ProcessScheduling.h"
#include "RovanServer/RovanServer.h"
#include "face/KD_Config.h"
#include "face/KD_Config_Row.h"
#include "utility/Console.h"

using FACE::RETURN_CODE_TYPE;

const char* const SYST_NAME = ASPN2::kSystemContainer;

namespace {

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

    {
        FACE::KD_Config_Row row(file, SYST_NAME);
        ASPN2::readSystemSettings(row, m_configuration);
        rc = row.code();
    }
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        return;
    }

    ASPN2::ServerScheduling scheduling;
    {
        FACE::KD_Config_Row row(file, m_serverName.c_str());
        ASPN2::readServerSettings(row, m_configuration, scheduling);
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

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ASPN/ServerSettings.h"
#include "tools/config/ConfigFile.h"
#include "tools/config/Finding.h"

namespace Config {

/// The blocks of the FPGA's registers: large enough, in reach and apart.
void checkMemory(ConfigFile& file, const ASPN2::ServerSettings& settings, Findings& findings);

}  // namespace Config

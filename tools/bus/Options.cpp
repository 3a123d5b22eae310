// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Options.h"

#include <cstdlib>
#include <filesystem>

namespace Bus {

std::string defaultConnections() {
    constexpr const char* kHere = "connections.xml";
    constexpr const char* kInstalled = "/etc/rovan/connections.xml";
    const char* const named = std::getenv("ROVAN_CONNECTIONS");
    if (named != nullptr && *named != '\0') {
        return named;
    }
    std::error_code error;
    return std::filesystem::exists(kHere, error) ? kHere : kInstalled;
}

}  // namespace Bus

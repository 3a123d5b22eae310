// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchCommands.h"

#include <algorithm>
#include <cctype>

#include "ASPN/CommandStrings.h"

namespace Bus::WatchCommands {

const std::vector<std::string>& texts() {
    using namespace Sys;
    static const std::vector<std::string> all = {
        CommandString::BitServerPing,
        CommandString::QueryRovanStatus,
        CommandString::RequestPartNumbers,
        "REQUEST_ANTENNA_STATE",
        CommandString::RequestRovanDestroyStatus,
        CommandString::SystemModeLive,
        CommandString::SystemModeSim,
        CommandString::RovanSetStandby,
        CommandString::RovanSetContinuous,
        CommandString::RequestComponentCBit,
        ResponseString::PassthroughEnabled,
        "FIRST_BBIT_DONE",
        "POSTCOMPLETE",
        CommandString::RovanCVZeroize,
        CommandString::RovanZeroize,
        CommandString::RovanDestroy,
    };
    return all;
}

std::string wordFor(const std::string& text) {
    std::string upper = text;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (upper == Sys::CommandString::RequestRovanDestroyStatus) {
        return "";
    }
    if (upper.find("DESTROY") != std::string::npos) {
        return "destroy";
    }
    return upper.find("ZEROIZE") != std::string::npos ? "zeroize" : "";
}

}  // namespace Bus::WatchCommands

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "face/KD_Config_Row.h"
#include "face/KD_TSS.h"

// How the transport's settings are read: once, for the transport and for the tools that join its
// bus.
namespace FACE::TSS {

// The container with the settings.
constexpr const char* kSettingsContainer = "FastRtps";

// Beyond this the ports of a domain are no ports any more, and the library ends the process.
constexpr uint32_t kLastDomainId = 232;

/// Reads all keys from a row of that container; row.code() says whether they were all there.
inline void readSettings(KD_Config_Row& row, KD_TSS::Settings_t& s) {
    row("DomainId", s.domainId)("HistoryDepth", s.historyDepth)("UseBestEffort", s.useBestEffort)(
        "BackFillHistory", s.backFillHistory)("UseTransport", s.useTransport)(
        "TcpAddress", s.tcpAddress)("TcpPort", s.tcpPort);
}

}  // namespace FACE::TSS

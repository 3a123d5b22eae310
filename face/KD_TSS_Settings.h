// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "face/KD_TSS.h"

// How the transport's settings are read: once, for the transport and for the tools that join its
// bus or look at its files. A ROW is called with a key and the variable that it goes to, as
// KD_Config_Row is.
namespace FACE::TSS {

// The container with the settings.
constexpr const char* kSettingsContainer = "FastRtps";

// Beyond this the ports of a domain are no ports any more, and the library ends the process.
constexpr uint32_t kLastDomainId = 232;

/// Reads all keys from a row of that container.
template <typename ROW>
void readSettings(ROW& row, KD_TSS::Settings_t& s) {
    row("DomainId", s.domainId)("HistoryDepth", s.historyDepth)("UseBestEffort", s.useBestEffort)(
        "BackFillHistory", s.backFillHistory)("UseTransport", s.useTransport)(
        "TcpAddress", s.tcpAddress)("TcpPort", s.tcpPort);
}

/// Reads all keys of a connection from a row of the container with its name: the type on the bus,
/// and the class that encodes it.
template <typename ROW>
void readConnection(ROW& row, std::string& typeName, std::string& pubSubType) {
    row("TopicType", typeName)("PubSubType", pubSubType);
}

}  // namespace FACE::TSS

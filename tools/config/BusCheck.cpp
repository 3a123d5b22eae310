// SPDX-License-Identifier: Apache-2.0
#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <fastdds/dds/topic/TopicDataType.hpp>

#include "ASPN/ServerConnections.h"
#include "face/KD_TSS_Attributes.h"
#include "face/KD_TSS_Settings.h"
#include "face/KD_Topic_Helpers.h"
#include "tools/config/CheckedRow.h"
#include "tools/config/Checks.h"
#include "tools/config/Suggestion.h"

namespace Config {
namespace {

namespace TSS = FACE::TSS;
using ASPN2::ServerConnections::BusConnection;

// The name on the bus of the type that a class encodes; empty for an unknown class.
std::string busType(const std::string& pubSubType) {
    const auto type = TSS::Topics::GetPubSubType(pubSubType);
    return type != nullptr ? type->getName() : "";
}

std::string classOf(const std::string& type) {
    return type + "PubSubType";
}

void checkTcp(CheckedRow& row, const TSS::KD_TSS::Settings_t& settings) {
    in_addr address{};
    const bool isAddress = inet_pton(AF_INET, settings.tcpAddress.c_str(), &address) == 1;
    if (!isAddress) {
        row.error("TcpAddress", "is no IPv4 address", "four numbers from 0 to 255 with dots");
    } else if (address.s_addr == 0 && settings.useTransport == "TCP_Client") {
        row.error("TcpAddress", "is nobody's address", "the address of the process that listens");
    }
    if (settings.tcpPort == 0) {
        row.error("TcpPort", "is no TCP port", "1 to 65535, the same on both sides");
    }
}

void checkTransport(ConfigFile& file, Findings& findings) {
    CheckedRow row(file, TSS::kSettingsContainer, findings);
    TSS::KD_TSS::Settings_t settings;
    TSS::readSettings(row, settings);
    if (settings.domainId > TSS::kLastDomainId) {
        row.error("DomainId", "is no domain", fmt::format("0 to {}", TSS::kLastDomainId));
    }
    if (settings.historyDepth < 1) {
        row.error("HistoryDepth", "keeps no sample", "1 or more");
    }
    const std::vector<std::string> names = TSS::Attributes::transportNames();
    if (std::find(names.begin(), names.end(), settings.useTransport) == names.end()) {
        row.error("UseTransport", "is no transport",
                  fmt::format("one of {}", fmt::join(names, ", ")),
                  suggestion(settings.useTransport, names));
    } else if (settings.useTransport.compare(0, 3, "TCP") == 0) {
        checkTcp(row, settings);
    }
}

// A connection that the server sends and takes this type on.
void checkConnection(ConfigFile& file, const BusConnection& connection, Findings& findings) {
    CheckedRow row(file, connection.name, findings);
    std::string typeName;
    std::string pubSubType;
    TSS::readConnection(row, typeName, pubSubType);
    const std::string expectedClass = classOf(connection.type);
    const std::string expectedType = busType(expectedClass);
    if (busType(pubSubType).empty()) {
        row.error("PubSubType", "is no known class", expectedClass, expectedClass);
    } else if (pubSubType != expectedClass) {
        row.error("PubSubType", "is the class of another type than the server has here",
                  expectedClass, expectedClass);
    }
    if (typeName != expectedType) {
        row.error("TopicType", "is another type than the server has here", expectedType,
                  expectedType);
    }
}

// A connection for others than the server.
void checkOther(ConfigFile& file, const std::string& name, Findings& findings) {
    CheckedRow row(file, name, findings);
    std::string typeName;
    std::string pubSubType;
    TSS::readConnection(row, typeName, pubSubType);
    const std::string type = busType(pubSubType);
    if (type.empty()) {
        row.warning("PubSubType", "is no known class",
                    "the type without its namespace, with \"PubSubType\" behind it",
                    suggestion(pubSubType, TSS::Topics::pubSubTypeKeys()));
    } else if (typeName != type) {
        row.warning("TopicType", "is another type than that of " + pubSubType, type, type);
    }
}

}  // namespace

void checkBus(ConfigFile& file, Findings& findings) {
    checkTransport(file, findings);
    for (const BusConnection& connection : ASPN2::ServerConnections::kBus) {
        checkConnection(file, connection, findings);
    }
    for (ConfigFile::Container& container : file.containers()) {
        const bool isConnection =
            file.has(container, "TopicType") || file.has(container, "PubSubType");
        if (isConnection && !container.name.empty() && container.openedAs.empty() &&
            file.find(container.name) == &container) {
            checkOther(file, container.name, findings);
        }
    }
}

}  // namespace Config

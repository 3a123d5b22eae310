// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <unistd.h>

#include "ASPN/CommandStrings.h"
#include "ASPN/ServerIds.h"
#include "ASPN/SystemIds.h"
#include "MSID_messages/RovancomPortSetup.h"
#include "face/TermiosLine.h"
#include "tools/config/CheckedRow.h"
#include "tools/config/Checks.h"
#include "tools/config/RegisterBlocks.h"
#include "tools/config/Suggestion.h"

namespace Config {
namespace {

namespace TermiosLine = FACE::IOSS::TermiosLine;

// Messages that one bring-up has room for beside those that it always sends.
constexpr std::size_t kSetupRoom = 59;

constexpr unsigned kHighestPriority = 99;
constexpr unsigned kHighestCpu = 255;  // of the number, the low 8 bits are used

bool lineHas(std::int32_t speed) {
    FACE::IOSS::SerialSettings settings;
    settings.baudrate = speed;
    settings.dataBits = 8;
    settings.stopBits = 1;
    termios line{};
    return TermiosLine::configure(settings, line).empty();
}

bool receiverHas(std::int32_t speed) {
    return RovancomPortSetup::baudCode(speed) != RovancomPortSetup::e5331_Baud_Other;
}

// The speeds that both ends of the line can have.
std::string speeds() {
    constexpr std::int32_t kStep = 50;
    constexpr std::int32_t kFastest = 4'000'000;
    std::string list;
    for (std::int32_t speed = kStep; speed <= kFastest; speed += kStep) {
        if (receiverHas(speed) && lineHas(speed)) {
            list += fmt::format("{}{}", list.empty() ? "" : ", ", speed);
        }
    }
    return "one of " + list;
}

void checkSystem(ConfigFile& file, ASPN2::ServerSettings& settings, Findings& findings) {
    CheckedRow row(file, ASPN2::kSystemContainer, findings);
    ASPN2::readSystemSettings(row, settings);
    const std::vector<std::string> systems = ASPN2::SystemIds::names();
    if (ASPN2::SystemIds::from_string(row.text("System").c_str()) == 0) {
        row.warning("System", "is no known system, so that the system id in all device ids is 0",
                    fmt::format("one of {}", fmt::join(systems, ", ")),
                    suggestion(row.text("System"), systems));
    }
    // Every other environment is ordinary operation; a slip of the pen would make it that.
    const std::string& rerad = Sys::CommandString::SystemEnvRerad;
    const std::string& live = Sys::CommandString::SystemEnvLive;
    const std::string environment = row.text("Environment");
    if (environment != live && suggestion(environment, {rerad, live}) == rerad) {
        row.warning("Environment", "is ordinary operation", rerad + " for a rerad setup", rerad);
    }
}

void checkScheduling(CheckedRow& row, const ASPN2::ServerScheduling& scheduling) {
    if (scheduling.priority > kHighestPriority) {
        row.error("PRI", "is no real-time priority",
                  fmt::format("1 to {}, or 0 to leave the priority as it is", kHighestPriority));
    }
    const long processors = sysconf(_SC_NPROCESSORS_CONF);
    if (scheduling.cpu > kHighestCpu) {
        row.error("CPU", "is no processor",
                  fmt::format("1 to {}, or 0 to leave the affinity as it is", kHighestCpu));
    } else if (processors > 0 && scheduling.cpu > processors) {
        row.warning("CPU", "is a processor that this machine does not have",
                    fmt::format("1 to {} here, or 0 to leave the affinity as it is", processors));
    }
}

void checkLine(CheckedRow& row, TopLevel& topLevel) {
    const ASPN2::ServerSettings& settings = topLevel.settings;
    const bool hasCode = receiverHas(settings.baud);
    if (!hasCode) {
        row.error("PARAM_1", "is a line speed without a code for the receiver", speeds());
    } else if (!lineHas(settings.baud)) {
        row.error("PARAM_1", "is a speed that the serial line does not have", speeds());
    }
    if (settings.parity > RovancomPortSetup::e5331_Parity_2) {
        row.error("PARAM_2", "counts as 0", "0 none, 1 odd or 2 even");
    }
    if (settings.uartIndex >= kUarts) {
        row.error("PARAM_3", "is a UART without a time stamp", fmt::format("0 to {}", kUarts - 1));
    }
    if (settings.pulseIndex >= kPulses) {
        row.error("PARAM_4", "is a pulse input without a time stamp",
                  fmt::format("0 to {}", kPulses - 1));
    }
    topLevel.hasSpeed = row.isGood("PARAM_1") && hasCode && lineHas(settings.baud);
    topLevel.hasParity =
        row.isGood("PARAM_2") && settings.parity <= RovancomPortSetup::e5331_Parity_2;
}

void checkLists(CheckedRow& row) {
    const std::size_t requested = checkMessageList(row, "PARAM_6").size();
    const std::size_t connected = checkMessageList(row, "PARAM_7").size();
    checkMessageList(row, "PARAM_8");
    checkMessageList(row, "PARAM_9");
    if (requested + connected > kSetupRoom) {
        row.error(requested > connected ? "PARAM_6" : "PARAM_7",
                  fmt::format("makes {} messages together with {}, and the last are lost",
                              requested + connected, requested > connected ? "PARAM_7" : "PARAM_6"),
                  fmt::format("at most {} in both lists", kSetupRoom));
    }
}

// The file that a key names, or null. That it is not there is said where it is named.
ConfigFile* follow(CheckedRow& row, const char* key, FileSet& files, Findings& findings) {
    if (!row.isGood(key)) {
        return nullptr;
    }
    Findings problems;
    ConfigFile& file = files.load(row.text(key), problems);
    if (!file.isReadable()) {
        const std::string problem = problems.empty() ? "cannot be read" : problems.front().problem;
        row.error(key, fmt::format("{}: {}", file.path(), problem), "a configuration file");
        return nullptr;
    }
    findings.insert(findings.end(), problems.begin(), problems.end());
    return file.isGood() ? &file : nullptr;
}

}  // namespace

TopLevel checkTopLevel(ConfigFile& file, FileSet& files, Findings& findings) {
    TopLevel result;
    checkSystem(file, result.settings, findings);
    ASPN2::ServerScheduling scheduling;
    CheckedRow row(file, ASPN2::ServerIds::to_string(ASPN2::ServerIds::kRovan), findings);
    ASPN2::readServerSettings(row, result.settings, scheduling);
    checkScheduling(row, scheduling);
    checkLine(row, result);
    checkLists(row);
    result.connections = follow(row, "Connections", files, findings);
    result.devices = follow(row, "IODevices", files, findings);
    return result;
}

}  // namespace Config

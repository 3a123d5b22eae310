// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <string>

#include "ASPN/ServerConnections.h"
#include "face/SerialSettings.h"
#include "face/TermiosLine.h"
#include "ioss_mcsq/KD_MCSQ_Settings.h"
#include "tools/config/CheckedRow.h"
#include "tools/config/Checks.h"
#include "tools/config/MemoryCheck.h"
#include "tools/config/SettingsTable.h"

namespace Config {
namespace {

using FACE::IOSS::SerialSettings;
namespace ServerConnections = ASPN2::ServerConnections;

constexpr std::int16_t kDataBitsOfFrames = 8;
constexpr std::uint16_t kSoftwareFlow = 1;

// A line that can be had, and with one setting of another.
template <typename T>
bool isPossible(T SerialSettings::*member, const SerialSettings& settings) {
    SerialSettings probe;
    probe.baudrate = 115200;
    probe.dataBits = 8;
    probe.stopBits = 1;
    probe.*member = settings.*member;
    termios line{};
    return FACE::IOSS::TermiosLine::configure(probe, line).empty();
}

void checkSerialLine(ConfigFile& file, const TopLevel& topLevel, Findings& findings) {
    CheckedRow row(file, ServerConnections::kReceiverLine, findings);
    SerialSettings settings;
    readSettings(row, settings);
    const auto expect = [&](auto member, const char* key, const char* expected) {
        const bool possible = isPossible(member, settings);
        if (!possible) {
            row.error(key, "is nothing that a serial line can have", expected);
        }
        return possible && row.isGood(key);
    };
    const bool hasSpeed = expect(&SerialSettings::baudrate, "Baudrate",
                                 "a line speed of termios(3), 115200 for example");
    const bool hasParity =
        expect(&SerialSettings::parity, "Parity", "0 none, 1 odd, 2 even, 3 mark or 4 space");
    expect(&SerialSettings::stopBits, "StopBits", "1 or 2");
    if (expect(&SerialSettings::dataBits, "DataBits", "8") &&
        settings.dataBits != kDataBitsOfFrames) {
        row.warning("DataBits", "cuts the bytes of the receiver's frames", "8");
    }
    if (expect(&SerialSettings::flowControl, "FlowControl", "0 none or 2 hardware") &&
        settings.flowControl == kSoftwareFlow) {
        row.warning("FlowControl", "takes bytes out of the receiver's frames",
                    "0 none or 2 hardware");
    }
    if (hasSpeed && topLevel.hasSpeed && settings.baudrate != topLevel.settings.baud) {
        row.warning("Baudrate",
                    "is not the speed that the receiver is set to; it is not heard after it was "
                    "without power",
                    fmt::format("{}, as PARAM_1", topLevel.settings.baud));
    }
    if (hasParity && topLevel.hasParity && settings.parity != topLevel.settings.parity) {
        row.warning("Parity", "is not the parity that the receiver is set to",
                    fmt::format("{}, as PARAM_2", topLevel.settings.parity));
    }
}

void checkQueues(ConfigFile& file, Findings& findings) {
    std::uint16_t fromReceiver = 0;
    CheckedRow out(file, ServerConnections::kFromReceiver, findings);
    FACE::IOSS::readQueueSettings(out, fromReceiver);
    std::uint16_t toReceiver = 0;
    CheckedRow in(file, ServerConnections::kToReceiver, findings);
    FACE::IOSS::readQueueSettings(in, toReceiver);
    if (out.isGood("Port") && in.isGood("Port") && fromReceiver == toReceiver) {
        in.error("Port", "is the device that the receiver's frames go to",
                 fmt::format("another device than {} has", ServerConnections::kFromReceiver));
    }
}

}  // namespace

void checkDevices(ConfigFile& file, const TopLevel& topLevel, Findings& findings) {
    checkSerialLine(file, topLevel, findings);
    checkQueues(file, findings);
    checkMemory(file, topLevel.settings, findings);
}

}  // namespace Config

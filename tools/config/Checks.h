// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "ASPN/ServerSettings.h"
#include "tools/config/FileSet.h"
#include "tools/config/Finding.h"

// The parts of a check, in the order in which the server comes to them.
namespace Config {

class CheckedRow;

// What the files further down the chain are looked at with. A file is null when the top-level file
// does not name one that can be loaded.
struct TopLevel {
    ASPN2::ServerSettings settings;
    bool hasSpeed = false;   // the line speed is good
    bool hasParity = false;  // and so is the parity
    ConfigFile* connections = nullptr;
    ConfigFile* devices = nullptr;
};

/// The top-level file itself, and the files that it names.
TopLevel checkTopLevel(ConfigFile& file, FileSet& files, Findings& findings);

/// A comma list of message numbers: the good ones, the others noted at the key.
std::vector<unsigned> checkMessageList(CheckedRow& row, const std::string& key);

/// The transport and the connections on the bus.
void checkBus(ConfigFile& file, Findings& findings);

/// Serial line, queue devices and register blocks.
void checkDevices(ConfigFile& file, const TopLevel& topLevel, Findings& findings);

/// What nobody reads, what stands twice, what hides something else. Comes last, when it is known
/// what was read.
void checkUnread(const ConfigFile& file, Findings& findings);

}  // namespace Config

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

// The commands that the live view offers.
namespace Bus::WatchCommands {

/// The texts that the server acts upon, the harmless ones first.
const std::vector<std::string>& texts();

/// The word that must be typed before such a command is sent: it destroys what no other command
/// brings back. Empty for the others.
std::string wordFor(const std::string& text);

}  // namespace Bus::WatchCommands

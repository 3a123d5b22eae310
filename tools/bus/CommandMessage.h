// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "aspn2_msgs/CommandResponse.h"
#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/Options.h"

namespace Bus {

namespace idl = aspn2_msgs::idl;

/// The topic of that name of the file. Throws UsageError when it is missing or does not carry
/// commands and responses.
const Topic& topicOfCommands(const ConnectionsFile& file, const char* name);

/// The command or response that the options describe, stamped now.
idl::CommandResponse messageOf(const SendOptions& options);

/// An answer repeats the command's identifier, and names the device that the command came from.
bool isAnswer(const idl::CommandResponse& response, const idl::CommandResponse& command);

}  // namespace Bus

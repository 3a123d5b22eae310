// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/gssip/Options.h"

// The commands of gssip. Each works until its input or limit ends or a stop signal comes, and
// throws std::runtime_error for what the person at the keyboard can put right.
namespace GssipTool {

/// Shows what a stream of bytes says.
ExitStatus decode(const Options& options);

/// Turns JSON lines of decode into bytes again.
ExitStatus encode(const Options& options);

/// Writes a live line to a file, with times.
ExitStatus record(const Options& options);

/// Plays a file on a line.
ExitStatus play(const Options& options);

/// Lists the messages, or the fields of some.
ExitStatus messages(const Options& options);

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "simulator/FileDescriptor.h"

// Serial lines and pseudo-terminals. None ever becomes the controlling terminal. All functions
// throw std::runtime_error that names the path and what the system says.
namespace GssipTool {

using Simulator::FileDescriptor;

[[noreturn]] void throwErrno(const std::string& what);

/// Puts a terminal into raw mode, with that speed in bits per second; without one its speed stays.
void makeRaw(int fd, std::optional<unsigned> baud, const std::string& path);

/// Opens a serial line or a pseudo-terminal's far end for reading and writing, raw and without
/// blocking. What is no terminal is refused.
FileDescriptor openLine(const std::string& path, std::optional<unsigned> baud);

/// A new raw pseudo-terminal: its near end, without blocking, and the path of its far end.
struct PseudoTerminal {
    FileDescriptor nearEnd;
    std::string farEnd;
};
PseudoTerminal makePseudoTerminal();

/// Whether somebody has the far end open.
bool isFarEndOpen(const PseudoTerminal& terminal);

/// Bytes that nobody has read at the far end yet.
int unread(const PseudoTerminal& terminal);

}  // namespace GssipTool

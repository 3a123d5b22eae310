// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <termios.h>

#include <string>
#include <vector>

#include "face/SerialSettings.h"

// From settings and time-outs to the terminal attributes that stand for them (termios(3)). Nothing
// here touches a device.
namespace FACE::IOSS::TermiosLine {

/// Makes `line` a raw line of these settings that returns from each read at once. A setting that no
/// line can have is left as it is, data bits as 5. Returns a text for each of them, such as
/// "Invalid parity parameter 9".
std::vector<std::string> configure(const SerialSettings& settings, termios& line);

/// Sets how long a read waits, in nanoseconds: 0 not at all, -1 without limit, anything else
/// rounded up to tenths of a second, and 25.5 s at most.
void setReadTimeout(long long timeoutNs, termios& line);

}  // namespace FACE::IOSS::TermiosLine

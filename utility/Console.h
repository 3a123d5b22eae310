// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

// The one way to print a line. Each call writes the whole line with a single write and flushes it,
// so that lines of different threads never interleave and none is lost when the process dies right
// after it. Any thread may call.
namespace Console {

/// Writes `text` and a line end to standard output.
void line(const std::string& text);

/// Writes `text` and a line end to standard error.
void errorLine(const std::string& text);

}  // namespace Console

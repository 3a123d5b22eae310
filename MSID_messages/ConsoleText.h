// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Writes `text` to standard output with one write and a flush, so that nothing comes between its
/// lines and none of it is lost. Any thread may call.
void printConsoleText(const std::string& text);

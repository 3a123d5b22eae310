// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/ConsoleText.h"

#include <cstdio>

void printConsoleText(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

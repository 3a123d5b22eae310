// SPDX-License-Identifier: Apache-2.0
#include "tools/common/Output.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace Tools {

Output::Output() : m_inColour(isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr) {
}

void Output::write(const std::string& text) {
    m_good = m_good && std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

void Output::flush() {
    m_good = m_good && std::fflush(stdout) == 0;
}

std::string Output::coloured(const char* code, const std::string& text) const {
    return m_inColour ? std::string("\033[") + code + 'm' + text + "\033[0m" : text;
}

}  // namespace Tools

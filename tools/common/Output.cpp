// SPDX-License-Identifier: Apache-2.0
#include "tools/common/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Tools {

Output::Output() : m_inColour(isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr) {
}

void Output::write(const std::string& text) {
    if (good() && std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        m_problem = errno;
    }
}

void Output::flush() {
    if (good() && std::fflush(stdout) != 0) {
        m_problem = errno;
    }
}

std::string Output::problem() const {
    return std::strerror(m_problem);
}

bool Output::isReaderGone() const {
    return m_problem == EPIPE;
}

std::string Output::coloured(const char* code, const std::string& text) const {
    return m_inColour ? std::string("\033[") + code + 'm' + text + "\033[0m" : text;
}

}  // namespace Tools

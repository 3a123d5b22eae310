// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Progress.h"

#include <unistd.h>

#include <cstdio>

namespace Bus {
namespace {

constexpr std::chrono::milliseconds kEvery{200};
constexpr int kWidth = 78;

}  // namespace

Progress::Progress() : m_isTerminal(isatty(STDERR_FILENO) == 1) {
}

Progress::~Progress() {
    if (m_isShown) {
        std::fprintf(stderr, "\r%*s\r", kWidth, "");
    }
}

bool Progress::isDue() const {
    return m_isTerminal && std::chrono::steady_clock::now() >= m_next;
}

void Progress::show(const std::string& text) {
    std::fprintf(stderr, "\r%-*.*s", kWidth, kWidth, text.c_str());
    std::fflush(stderr);
    m_isShown = true;
    m_next = std::chrono::steady_clock::now() + kEvery;
}

}  // namespace Bus

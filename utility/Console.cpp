// SPDX-License-Identifier: Apache-2.0
#include "utility/Console.h"

#include <cstdio>

namespace Console {
namespace {

void write(std::FILE* stream, const std::string& text) {
    const std::string whole = text + '\n';
    std::fwrite(whole.data(), 1, whole.size(), stream);
    std::fflush(stream);
}

}  // namespace

void line(const std::string& text) {
    write(stdout, text);
}

void errorLine(const std::string& text) {
    write(stderr, text);
}

}  // namespace Console

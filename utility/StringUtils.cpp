// SPDX-License-Identifier: Apache-2.0
#include "utility/StringUtils.h"

#include <cstring>
#include <sstream>

namespace StringUtils {
namespace {

constexpr const char* WHITESPACE = " \n\r\t\f\v";

}  // namespace

std::string ltrim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(WHITESPACE);
    return first == std::string::npos ? std::string() : text.substr(first);
}

std::string rtrim(const std::string& text) {
    const std::size_t last = text.find_last_not_of(WHITESPACE);
    return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

std::string trim(const std::string& text) {
    return ltrim(rtrim(text));
}

void cstr_replace(char* text, const char* set, char replacement) {
    if (text == nullptr || set == nullptr) {
        return;
    }
    for (; *set != '\0'; ++set) {
        if (*set == replacement) {
            continue;  // a search from the same place would find it for ever
        }
        for (char* found = std::strchr(text, *set); found != nullptr;
             found = std::strchr(found, *set)) {
            *found = replacement;
        }
    }
}

char* strncpy_prot(char* dst, const char* src, unsigned size) {
    if (dst != nullptr && size != 0) {
        std::strncpy(dst, src != nullptr ? src : "", size);
        dst[size - 1] = '\0';
    }
    return dst;
}

void splitToChunks(const std::string& text, unsigned size, std::vector<std::string>& out) {
    if (size == 0) {
        return;
    }
    for (std::size_t begin = 0; begin < text.size(); begin += size) {
        out.push_back(text.substr(begin, size));
    }
}

std::vector<std::string> splitToChunks(const std::string& text, unsigned size) {
    std::vector<std::string> chunks;
    splitToChunks(text, size, chunks);
    return chunks;
}

std::string join(const std::vector<std::string>& items, char delimiter) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i != 0) {
            text += delimiter;
        }
        text += items[i];
    }
    return text;
}

std::vector<std::string> split(const std::string& text, char delimiter) {
    std::vector<std::string> pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, delimiter);) {
        pieces.push_back(piece);
    }
    return pieces;
}

}  // namespace StringUtils

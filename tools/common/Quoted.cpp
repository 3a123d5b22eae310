// SPDX-License-Identifier: Apache-2.0
#include "tools/common/Quoted.h"

#include <fmt/format.h>

namespace Tools {

std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (byte < 0x20 || byte >= 0x7F) {
            result += fmt::format("\\x{:02x}", byte);
        } else {
            result += c;
        }
    }
    return result + '"';
}

}  // namespace Tools

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Text.h"

#include "ASPN/ServerIds.h"

namespace Bus {

std::string hexLines(const std::vector<uint8_t>& bytes, size_t indent) {
    constexpr size_t kBytesPerLine = 16;
    std::string text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        text += i % kBytesPerLine == 0 ? std::string(indent, ' ') : " ";
        text += fmt::format("{:02x}", bytes[i]);
        if (i % kBytesPerLine == kBytesPerLine - 1 || i + 1 == bytes.size()) {
            text += '\n';
        }
    }
    return text;
}

std::string wrapped(const std::string& start, const std::vector<std::string>& items,
                    const std::string& end) {
    constexpr size_t kWidth = 100;
    std::string text = start;
    size_t column = start.size();
    for (size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            const bool fits = column + items[i].size() + 3 <= kWidth;
            text += fits ? ", " : ",\n" + std::string(start.size(), ' ');
            column = fits ? column + 2 : start.size();
        }
        text += items[i];
        column += items[i].size();
    }
    return text + end;
}

std::string describeDeviceId(int32_t deviceId) {
    const auto id = static_cast<uint32_t>(deviceId);
    const auto server = static_cast<unsigned char>(id >> 16);
    return fmt::format("(0x{:08X}: system {}, server {} {}, code {}, sub id {})", id, id >> 24,
                       server, ASPN2::ServerIds::to_string(server), id >> 8 & 0xFF, id & 0xFF);
}

}  // namespace Bus

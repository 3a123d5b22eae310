// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "MSID_messages/MessageTable.h"
#include "tools/common/Quoted.h"
#include "tools/config/CheckedRow.h"
#include "tools/config/Checks.h"
#include "utility/StringUtils.h"

namespace Config {
namespace {

constexpr const char* kExpected =
    "message numbers from 1 to 65535 separated by commas, or 0 for an empty list";

// Two short reports that have no class of their own, and all that have.
std::vector<std::string> knownMessages() {
    std::vector<std::string> known = {"8", "253"};
    for (const Msid::MessageSize& row : Msid::kMessageSizes) {
        known.push_back(std::to_string(row.msgId));
    }
    return known;
}

bool isDecimal(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

std::vector<unsigned> checkMessageList(CheckedRow& row, const std::string& key) {
    const std::vector<std::string> known = knownMessages();
    std::vector<unsigned> ids;
    const std::vector<std::string> entries = StringUtils::split(row.text(key), ',');
    for (const std::string& raw : entries) {
        const std::string entry = StringUtils::trim(raw);
        if (entry == "0" && entries.size() == 1) {
            continue;
        }
        // Five digits hold every message number.
        const unsigned long number =
            isDecimal(entry) && entry.size() <= 5 ? std::stoul(entry) : UINT32_MAX;
        if (number == 0 || number > UINT16_MAX) {
            row.error(
                key,
                fmt::format("has the entry {}, which names no message", Tools::inQuotes(entry)),
                kExpected);
            continue;
        }
        const auto id = static_cast<unsigned>(number);
        if (std::find(ids.begin(), ids.end(), id) != ids.end()) {
            row.warning(key, fmt::format("has {} twice", id), "each message once");
        } else if (std::find(known.begin(), known.end(), std::to_string(id)) == known.end()) {
            row.warning(key, fmt::format("has {}, a message that the server does not know", id),
                        fmt::format("some of {}", fmt::join(known, ", ")));
        }
        ids.push_back(id);
    }
    return ids;
}

}  // namespace Config

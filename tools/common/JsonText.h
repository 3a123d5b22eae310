// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace Tools {

/// Objects keep their fields in the order in which they were set.
using Json = nlohmann::ordered_json;

/// One line, not ended. Bytes of a text that are no UTF-8 are replaced.
inline std::string toLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace Tools

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace Tools {

/// The text in quotes, with what could steer a terminal escaped.
std::string inQuotes(std::string_view text);

}  // namespace Tools

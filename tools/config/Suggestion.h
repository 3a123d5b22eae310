// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace Config {

/// How many letters must be put in, left out or replaced, or neighbours swapped, to make one text
/// the other; upper and lower case count as half a letter apart, rounded up. Texts of more than 100
/// bytes are as far apart as the longer one is long.
std::size_t distance(const std::string& a, const std::string& b);

/// The candidate that is closest to `text`, when a slip of the pen could have made the one the
/// other; else empty. A candidate that equals the text is none.
std::string suggestion(const std::string& text, const std::vector<std::string>& candidates);

}  // namespace Config

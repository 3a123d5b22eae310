// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tools/bus/Canvas.h"
#include "tools/bus/WatchModel.h"

// How the panes write what they show.
namespace Bus::WatchText {

/// With that many digits behind the point, as wide as `width`; "--" for a number that is not
/// known, and for one that is too long for its place: half a number is a wrong one.
std::string number(const Number& value, int digits, size_t width);
/// Hours, minutes, seconds and nanoseconds of a day, or "--".
std::string timeOfDay(const std::optional<int64_t>& ns);
/// Seconds and nanoseconds of a week, or "--".
std::string seconds(const std::optional<int64_t>& ns);
/// The time of day of a Unix time, to the second.
std::string clock(int64_t unixNs);

/// The text cut to a width, and filled up with blanks to it.
std::string fitted(const std::string& text, size_t width);

/// A pane's title line. The style of what stands below it.
uint8_t title(Area& area, const std::string& text, const WatchModel::Freshness& freshness);

}  // namespace Bus::WatchText

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace Bus::WatchText {
namespace {

constexpr int64_t kNsPerSec = 1'000'000'000;
constexpr const char* kUnknown = "--";

}  // namespace

std::string number(const Number& value, int digits, size_t width) {
    std::string text = value ? fmt::format("{:.{}f}", *value, digits) : kUnknown;
    if (text.size() > width) {
        text = kUnknown;
    }
    return fmt::format("{:>{}}", text, width);
}

std::string timeOfDay(const std::optional<int64_t>& ns) {
    if (!ns) {
        return kUnknown;
    }
    const int64_t sec = *ns / kNsPerSec;
    return fmt::format("{:02}:{:02}:{:02}.{:09}", sec / 3600, sec / 60 % 60, sec % 60,
                       *ns % kNsPerSec);
}

std::string seconds(const std::optional<int64_t>& ns) {
    return ns ? fmt::format("{}.{:09}", *ns / kNsPerSec, *ns % kNsPerSec) : kUnknown;
}

std::string clock(int64_t unixNs) {
    constexpr int64_t kDay = 86'400;
    const int64_t sec = (unixNs / kNsPerSec % kDay + kDay) % kDay;
    return fmt::format("{:02}:{:02}:{:02}", sec / 3600, sec / 60 % 60, sec % 60);
}

std::string fitted(const std::string& text, size_t width) {
    return fmt::format("{:<{}}", text.substr(0, width), width);
}

uint8_t title(Area& area, const std::string& text, const WatchModel::Freshness& freshness) {
    const auto width = static_cast<size_t>(std::max(area.width(), 0));
    area.put(0, 0, fitted(text, width), kBold);
    std::string age = "no data";
    if (freshness.ageSeconds) {
        age = fmt::format("{}{:.{}f} s", freshness.isStale ? "STALE " : "", *freshness.ageSeconds,
                          *freshness.ageSeconds < 100 ? 1 : 0);
    }
    const bool isBad = freshness.isStale || !freshness.ageSeconds;
    area.put(static_cast<int>(width) - static_cast<int>(age.size()), 0, age,
             freshness.isStale ? kAlarm | kReverse : kDim);
    return isBad ? kDim : kPlain;
}

}  // namespace Bus::WatchText

// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Numbers.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "tools/common/Quoted.h"

namespace GssipTool {

void refuse(const std::string& why) {
    throw std::invalid_argument(why);
}

Tools::Json numberToJson(double value) {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0 ? "Infinity" : "-Infinity";
    }
    return value;
}

Tools::Json numberToJson(float value) {
    return std::isfinite(value) ? Tools::Json(std::stod(fmt::format("{}", value)))
                                : numberToJson(double{value});
}

double numberFromJson(const Tools::Json& value) {
    if (value.is_number()) {
        return value.get<double>();
    }
    if (value == "NaN") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (value == "Infinity" || value == "-Infinity") {
        return value == "Infinity" ? HUGE_VAL : -HUGE_VAL;
    }
    refuse("wants a number");
}

void requireHeld(double wanted, double held) {
    constexpr double kTolerance = 1e-6;
    if (!std::isfinite(wanted) || !(std::abs(held - wanted) <= kTolerance * std::abs(wanted))) {
        refuse(fmt::format("{} does not fit the number format", wanted));
    }
}

float singleFromJson(const Tools::Json& value) {
    const double number = numberFromJson(value);
    if (std::isfinite(number) && std::abs(number) > double{std::numeric_limits<float>::max()}) {
        refuse(fmt::format("{} does not fit the number format", number));
    }
    return static_cast<float>(number);
}

int64_t integerFromText(const std::string& text) {
    const bool isHex = text.rfind("0x", 0) == 0;
    const char* const first = text.data() + (isHex ? 2 : 0);
    const char* const end = text.data() + text.size();
    int64_t value = 0;
    const auto [stop, error] = std::from_chars(first, end, value, isHex ? 16 : 10);
    if (error != std::errc() || stop != end || (isHex && *first == '-')) {
        refuse(fmt::format("wants a number, not {}", Tools::inQuotes(text)));
    }
    return value;
}

}  // namespace GssipTool

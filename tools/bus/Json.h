// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cmath>
#include <string>
#include <type_traits>

#include "tools/bus/Fields.h"
#include "tools/common/JsonText.h"

// Messages as JSON: records as objects with their fields in the order of the wire, enumerations as
// numbers, character arrays as the text up to the terminator. JSON has no word for what is no
// number: infinities and NaN become the strings "Infinity", "-Infinity" and "NaN".
namespace Bus {

using Tools::Json;
using Tools::toLine;

inline Json numberToJson(double value) {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0 ? "Infinity" : "-Infinity";
    }
    return value;
}

template <size_t N>
std::string textOf(const std::array<char, N>& characters) {
    return std::string(characters.data(), std::find(characters.begin(), characters.end(), '\0'));
}

template <typename T>
Json toJson(const T& value);

template <size_t N>
Json toJson(const std::array<char, N>& value) {
    return textOf(value);
}

template <typename T>
Json toJson(const T& value) {
    if constexpr (isRecord<T>) {
        Json object = Json::object();
        Fields<T>::each(value, [&object](const char* name, const auto& field) {
            object[name] = toJson(field);
        });
        return object;
    } else if constexpr (std::is_enum_v<T>) {
        return static_cast<std::underlying_type_t<T>>(value);
    } else if constexpr (std::is_floating_point_v<T>) {
        return numberToJson(value);
    } else if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
        return value;
    } else {
        Json list = Json::array();
        for (const auto& element : value) {
            list.push_back(toJson(element));
        }
        return list;
    }
}

}  // namespace Bus

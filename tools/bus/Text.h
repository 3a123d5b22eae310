// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fmt/format.h>

#include <array>
#include <string>
#include <type_traits>
#include <vector>

#include "tools/bus/Fields.h"
#include "tools/bus/Json.h"
#include "tools/common/Quoted.h"

// Messages for the eye: one field a line, records that hold only plain values and lists of plain
// values on one line, bytes in hexadecimal. Every field is shown.
namespace Bus {

using Tools::inQuotes;

/// Lines of 16 bytes, indented.
std::string hexLines(const std::vector<uint8_t>& bytes, size_t indent);

/// The items with commas between them, behind `start` and before `end`, on as many lines as it
/// takes; further lines begin where the first item stands.
std::string wrapped(const std::string& start, const std::vector<std::string>& items,
                    const std::string& end);

/// What the parts of a device id are, with the server's name.
std::string describeDeviceId(int32_t deviceId);

namespace Details {

template <typename T>
constexpr bool isPlain =
    std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_same_v<T, std::string>;
template <size_t N>
constexpr bool isPlain<std::array<char, N>> = true;

template <typename T>
constexpr bool isPlainList = false;
template <typename T, size_t N>
constexpr bool isPlainList<std::array<T, N>> = isPlain<T> && !isPlain<std::array<T, N>>;

template <typename T>
std::string plain(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return fmt::format("{}", static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        return fmt::format("{}", value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return inQuotes(value);
    } else {
        return inQuotes(textOf(value));
    }
}

template <typename T>
std::string plainList(const T& list) {
    std::string text;
    for (const auto& element : list) {
        text += text.empty() ? "" : ", ";
        text += plain(element);
    }
    return '[' + text + ']';
}

// True when no field of the record needs a line of its own.
template <typename T>
bool isShort() {
    bool result = true;
    const T record;
    Fields<T>::each(record, [&result](const char*, const auto& field) {
        using Field = std::decay_t<decltype(field)>;
        result = result && (isPlain<Field> || isPlainList<Field>);
    });
    return result;
}

// "name: value" for each field of a short record.
template <typename T>
std::vector<std::string> shortFields(const T& record) {
    std::vector<std::string> texts;
    Fields<T>::each(record, [&texts](const char* name, const auto& field) {
        using Field = std::decay_t<decltype(field)>;
        if constexpr (isPlain<Field>) {
            texts.push_back(fmt::format("{}: {}", name, plain(field)));
        } else if constexpr (isPlainList<Field>) {
            texts.push_back(fmt::format("{}: {}", name, plainList(field)));
        }
    });
    return texts;
}

}  // namespace Details

/// Lines for all fields of the record, each indented by `indent` and ended.
template <typename T>
std::string toText(const T& record, size_t indent);

/// The lines of one field: its name and its value.
template <typename T>
std::string fieldToText(const std::string& name, const T& value, size_t indent) {
    const std::string start = std::string(indent, ' ') + name + ':';
    if constexpr (Details::isPlain<T>) {
        const bool isId = name == "device_id" || name == "commanded_device_id";
        std::string note;
        if constexpr (std::is_same_v<T, int32_t>) {
            note = isId ? "  " + describeDeviceId(value) : "";
        }
        return fmt::format("{} {}{}\n", start, Details::plain(value), note);
    } else if constexpr (Details::isPlainList<T>) {
        return fmt::format("{} {}\n", start, Details::plainList(value));
    } else if constexpr (isRecord<T>) {
        return Details::isShort<T>() ? wrapped(start + " {", Details::shortFields(value), "}\n")
                                     : start + '\n' + toText(value, indent + 2);
    } else if constexpr (std::is_same_v<T, std::vector<uint8_t>>) {
        return fmt::format("{} {} bytes\n{}", start, value.size(), hexLines(value, indent + 2));
    } else {
        std::string text = fmt::format("{} {} elements\n", start, value.size());
        for (size_t i = 0; i < value.size(); ++i) {
            text += fieldToText(fmt::format("[{}]", i), value[i], indent + 2);
        }
        return text;
    }
}

template <typename T>
std::string toText(const T& record, size_t indent) {
    std::string text;
    Fields<T>::each(record, [&text, indent](const char* name, const auto& field) {
        text += fieldToText(name, field, indent);
    });
    return text;
}

}  // namespace Bus

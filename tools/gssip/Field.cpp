// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Field.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "MSID_messages/DataWords.h"
#include "tools/common/Quoted.h"
#include "tools/gssip/FieldText.h"
#include "tools/gssip/Numbers.h"

namespace GssipTool {
namespace {

int64_t signExtended(unsigned value, unsigned width) {
    const unsigned sign = 1u << (width - 1);
    return static_cast<int64_t>(value ^ sign) - static_cast<int64_t>(sign);
}

unsigned widthOf(const Field& field) {
    return field.high - field.low + 1;
}

int64_t countOf(const Field& field, const DataWords& words) {
    if (field.form == Form::kInt32) {
        return words.littleEndian<int32_t>(field.word);
    }
    const unsigned bits = words.bits(field.word, field.high, field.low);
    return field.form == Form::kSigned ? signExtended(bits, widthOf(field)) : int64_t{bits};
}

// A unit below one divides, which gives the number that stands for so many tenths.
double scaled(const Field& field, int64_t count) {
    const auto number = static_cast<double>(count);
    return field.unit < 1 ? number / std::round(1 / field.unit) : number * field.unit;
}

struct Range {
    int64_t least, most;
};

Range rangeOf(const Field& field) {
    const int64_t size = int64_t{1} << (field.form == Form::kInt32 ? 32 : widthOf(field));
    return field.form == Form::kUnsigned ? Range{0, size - 1} : Range{-size / 2, size / 2 - 1};
}

int64_t countFromJson(const Field& field, const Json& value) {
    const Range range = rangeOf(field);
    double count = 0;
    if (value.is_string()) {
        count = static_cast<double>(integerFromText(value.get<std::string>())) / field.unit;
    } else if (value.is_number()) {
        count = value.get<double>() / field.unit;
    } else {
        refuse("wants a number");
    }
    if (field.unit == 1 && count != std::floor(count)) {
        refuse(fmt::format("wants a whole number, not {}", count));
    }
    const double rounded = std::round(count);
    if (!(rounded >= static_cast<double>(range.least) &&
          rounded <= static_cast<double>(range.most))) {
        refuse(fmt::format(
            "is out of range: {} to {}{}{}", static_cast<double>(range.least) * field.unit,
            static_cast<double>(range.most) * field.unit, *field.of ? " " : "", field.of));
    }
    return static_cast<int64_t>(rounded);
}

void setCount(const Field& field, uint16_t* words, int64_t count) {
    const FieldWriter writer(words);
    if (field.form == Form::kInt32) {
        writer.raw(field.word, static_cast<int32_t>(count));
    } else {
        writer.bits(field.word, field.high, field.low, static_cast<uint64_t>(count) & 0xFFFF);
    }
}

void setChoice(const Field& field, uint16_t* words, const Json& value) {
    const double wanted = numberFromJson(value);
    const auto found = std::find(field.choices.begin(), field.choices.end(), wanted);
    if (found == field.choices.end()) {
        refuse(fmt::format("{} is none of {}", wanted, fmt::join(field.choices, ", ")));
    }
    FieldWriter(words).bits(field.word, field.high, field.low, found - field.choices.begin());
}

std::string remarkOf(const Field& field, const uint16_t* words) {
    if (field.names.empty() || field.form == Form::kFlags) {
        return "";
    }
    const unsigned value = DataWords(words).bits(field.word, field.high, field.low);
    for (const Name& name : field.names) {
        if (name.number == value) {
            return fmt::format("  ({})", name.text);
        }
    }
    return "";
}

}  // namespace

uint16_t wordOf(const Json& value) {
    const Field word{"", Form::kUnsigned, 0};
    return static_cast<uint16_t>(countFromJson(word, value));
}

Json flagsToJson(const std::vector<Name>& names, unsigned word) {
    Json list = Json::array();
    for (const Name& name : names) {
        if ((word & name.number) != 0) {
            list.push_back(name.text);
        }
        word &= ~name.number;
    }
    if (word != 0) {
        list.push_back(fmt::format("0x{:04X}", word));
    }
    return list;
}

uint16_t flagsFromJson(const std::vector<Name>& names, const Json& list) {
    if (!list.is_array()) {
        return wordOf(list);
    }
    unsigned word = 0;
    for (const Json& item : list) {
        const auto found = std::find_if(names.begin(), names.end(),
                                        [&](const Name& name) { return item == name.text; });
        word |= found != names.end() ? found->number : wordOf(item);
    }
    return static_cast<uint16_t>(word);
}

Json valueOf(const Field& field, const uint16_t* words) {
    const DataWords data(words);
    switch (field.form) {
        case Form::kUnsigned:
        case Form::kSigned:
        case Form::kInt32: {
            const int64_t count = countOf(field, data);
            return field.unit == 1 ? Json(count) : Json(scaled(field, count));
        }
        case Form::kFlag:
            return data.bit(field.word, field.low);
        case Form::kFlags:
            return flagsToJson(field.names, data.word(field.word));
        case Form::kChoice:
            return field.choices.at(data.bits(field.word, field.high, field.low));
        case Form::kPdpSingle:
            return numberToJson(data.pdpSingle(field.word));
        case Form::kPdpDouble:
            return numberToJson(data.pdpDouble(field.word));
        case Form::kVeskSingle:
            return numberToJson(data.veskSingle(field.word));
        case Form::kVeskExtended:
            return numberToJson(data.veskExtended(field.word));
        case Form::kIeeeSingle:
            return numberToJson(data.littleEndian<float>(field.word));
        case Form::kIeeeDouble:
            return numberToJson(data.littleEndian<double>(field.word));
        case Form::kText:
        case Form::kSwappedText:
            return textToJson(bytesOfText(field, words));
    }
    return nullptr;
}

void setValue(const Field& field, uint16_t* words, const Json& value) {
    const FieldWriter writer(words);
    const DataWords data(words);
    const unsigned i = field.word;
    switch (field.form) {
        case Form::kUnsigned:
        case Form::kSigned:
        case Form::kInt32:
            return setCount(field, words, countFromJson(field, value));
        case Form::kFlag:
            if (!value.is_boolean()) {
                refuse("wants true or false");
            }
            return writer.bits(i, field.low, field.low, value.get<bool>());
        case Form::kFlags:
            return writer.word(i, flagsFromJson(field.names, value));
        case Form::kChoice:
            return setChoice(field, words, value);
        case Form::kPdpSingle:
            writer.pdpSingle(i, singleFromJson(value));
            return requireHeld(numberFromJson(value), data.pdpSingle(i));
        case Form::kPdpDouble:
            writer.pdpDouble(i, numberFromJson(value));
            return requireHeld(numberFromJson(value), data.pdpDouble(i));
        case Form::kVeskSingle:
            writer.veskSingle(i, singleFromJson(value));
            return requireHeld(numberFromJson(value), data.veskSingle(i));
        case Form::kVeskExtended:
            writer.veskExtended(i, numberFromJson(value));
            return requireHeld(numberFromJson(value), data.veskExtended(i));
        case Form::kIeeeSingle:
            return writer.raw(i, singleFromJson(value));
        case Form::kIeeeDouble:
            return writer.raw(i, numberFromJson(value));
        case Form::kText:
        case Form::kSwappedText:
            return setText(field, words, value);
    }
}

bool isSame(const Json& one, const Json& other) {
    if (one.is_number_float() && other.is_number_float()) {
        const auto a = one.get<double>();
        const auto b = other.get<double>();
        return a == b && std::signbit(a) == std::signbit(b);
    }
    return one == other;
}

std::string textOf(const Field& field, const uint16_t* words) {
    if (field.form == Form::kText || field.form == Form::kSwappedText) {
        return Tools::inQuotes(bytesOfText(field, words));
    }
    const Json value = valueOf(field, words);
    std::string text;
    if (field.form == Form::kFlags) {
        for (const Json& name : value) {
            text += (text.empty() ? "" : " ") + name.get<std::string>();
        }
        return text.empty() ? "none" : text;
    }
    text = value.is_boolean()  ? (value.get<bool>() ? "yes" : "no")
           : value.is_string() ? value.get<std::string>()
                               : value.dump();
    return text + (*field.of ? std::string(" ") + field.of : "") + remarkOf(field, words);
}

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/FieldText.h"

#include <fmt/format.h>

#include "tools/gssip/Numbers.h"

namespace GssipTool {
namespace {

// Of each word of a swapped text the other byte comes first.
size_t place(const Field& field, size_t i) {
    return field.form == Form::kSwappedText ? i ^ 1 : i;
}

std::string textFromJson(const Json& value) {
    if (!value.is_string()) {
        refuse("wants a text");
    }
    const auto& utf8 = value.get_ref<const std::string&>();
    std::string bytes;
    for (size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead >= 0xC4) {  // JSON texts are good UTF-8: a character above U+00FF
            refuse("has a character that is no byte");
        }
        if (lead == 0) {
            refuse("has a zero character, which ends a text");
        }
        if (lead >= 0xC0) {
            ++i;
            bytes += static_cast<char>(lead << 6 | (utf8[i] & 0x3F));
        } else {
            bytes += utf8[i];
        }
    }
    return bytes;
}

}  // namespace

std::string bytesOfText(const Field& field, const uint16_t* words) {
    const auto* const bytes = reinterpret_cast<const char*>(words + field.word);
    std::string text;
    for (size_t i = 0; i < 2 * field.words && bytes[place(field, i)] != '\0'; ++i) {
        text += bytes[place(field, i)];
    }
    return text;
}

Json textToJson(const std::string& bytes) {
    std::string utf8;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) {
            utf8 += static_cast<char>(0xC0 | byte >> 6);
            utf8 += static_cast<char>(0x80 | (byte & 0x3F));
        } else {
            utf8 += c;
        }
    }
    return utf8;
}

void setText(const Field& field, uint16_t* words, const Json& value) {
    const std::string text = textFromJson(value);
    if (text.size() > 2 * field.words) {
        refuse(fmt::format("is longer than {} characters", 2 * field.words));
    }
    auto* const bytes = reinterpret_cast<char*>(words + field.word);
    for (size_t i = 0; i < 2 * field.words; ++i) {
        bytes[place(field, i)] = i < text.size() ? text[i] : '\0';
    }
}

}  // namespace GssipTool

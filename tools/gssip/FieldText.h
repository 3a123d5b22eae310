// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "tools/gssip/Field.h"

// Fields of the forms kText and kSwappedText.
namespace GssipTool {

/// The bytes up to the first zero byte, or all of the field's.
std::string bytesOfText(const Field& field, const uint16_t* words);

/// Bytes as a JSON text, those above 0x7F as the Unicode characters of the same number.
Json textToJson(const std::string& bytes);

/// Writes a JSON text into the field, with zero bytes behind it. Throws std::invalid_argument for
/// one that is none, is too long, or has a character that is no byte or would end it.
void setText(const Field& field, uint16_t* words, const Json& value);

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/common/JsonText.h"

namespace GssipTool {

using Tools::Json;

// How a field stands in the data words.
enum class Form {
    kUnsigned,      // bits of one word
    kSigned,        // bits of one word, two's complement
    kFlag,          // one bit
    kFlags,         // bits of one word, each with a name
    kChoice,        // bits of one word that number a value of a list
    kInt32,         // two words, low one first
    kPdpSingle,     // 2 words
    kPdpDouble,     // 4 words
    kVeskSingle,    // 2 words
    kVeskExtended,  // 3 words
    kIeeeSingle,    // 2 words, little-endian
    kIeeeDouble,    // 4 words, little-endian
    kText,          // characters up to the first zero byte, the first in the low byte
    kSwappedText,   // the same with the first in the high byte
};

// What a number stands for: of kFlags a mask and its name, of others a value and a remark.
struct Name {
    unsigned number;
    const char* text;
};

// One field of a message: what stands where. `word` counts from the first data word, or from the
// start of the record that the field belongs to. Whole-number forms in words have bits 15 to 0.
struct Field {
    std::string name;
    Form form;
    unsigned word;
    unsigned high = 15;
    unsigned low = 0;
    double unit = 1;      // of kUnsigned, kSigned and kInt32: what a count of one stands for
    const char* of = "";  // the unit of the value: "m", "s", ...
    unsigned words = 1;   // how many data words the field lies in
    std::vector<Name> names = {};
    std::vector<double> choices = {};
};

/// The value of a field in `words`, which hold at least all its words: a number, a boolean, a text,
/// or the list of the names of the flags that are set, with "0x..." for those without a name. What
/// is no finite number is "NaN", "Infinity" or "-Infinity". The characters of a text are bytes:
/// those above 0x7F are the Unicode characters of the same number.
Json valueOf(const Field& field, const uint16_t* words);

/// Puts a value, as valueOf() gives it, into the field's bits. Whole numbers may also be texts like
/// "0x1F". Throws std::invalid_argument, saying why, for a value that the field cannot hold.
void setValue(const Field& field, uint16_t* words, const Json& value);

/// Whether two values of a field are the same; a zero with a sign differs from one without.
bool isSame(const Json& one, const Json& other);

/// The value for the eye, with its unit and what it stands for.
std::string textOf(const Field& field, const uint16_t* words);

/// A number that fits a word, from a JSON number or a text like "0x1F". Throws
/// std::invalid_argument for anything else.
uint16_t wordOf(const Json& value);

/// A set of flags as a list of names, and back.
Json flagsToJson(const std::vector<Name>& names, unsigned word);
uint16_t flagsFromJson(const std::vector<Name>& names, const Json& list);

}  // namespace GssipTool

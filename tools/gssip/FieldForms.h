// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/gssip/Field.h"

// One short word for each form of a field, for the tables of the messages. `word` is the field's
// first data word, `of` the unit of its value, `unit` what a count of one stands for.
namespace GssipTool::Forms {

inline Field bits(std::string name, unsigned word, unsigned high, unsigned low,
                  const char* of = "") {
    return {std::move(name), Form::kUnsigned, word, high, low, 1, of};
}
inline Field named(Field field, std::vector<Name> names) {
    field.names = std::move(names);
    return field;
}
inline Field word(std::string name, unsigned word, const char* of = "") {
    return bits(std::move(name), word, 15, 0, of);
}
inline Field counted(std::string name, unsigned word, unsigned high, unsigned low, double unit,
                     const char* of = "") {
    return {std::move(name), Form::kUnsigned, word, high, low, unit, of};
}
inline Field signedBits(std::string name, unsigned word, unsigned high, unsigned low,
                        double unit = 1, const char* of = "") {
    return {std::move(name), Form::kSigned, word, high, low, unit, of};
}
inline Field signedWord(std::string name, unsigned word, double unit = 1, const char* of = "") {
    return signedBits(std::move(name), word, 15, 0, unit, of);
}
inline Field flag(std::string name, unsigned word, unsigned bit) {
    return {std::move(name), Form::kFlag, word, bit, bit};
}
inline Field flags(std::string name, unsigned word, std::vector<Name> names) {
    return named({std::move(name), Form::kFlags, word}, std::move(names));
}
inline Field wide(Form form, unsigned words, std::string name, unsigned word, const char* of,
                  double unit = 1) {
    return {std::move(name), form, word, 15, 0, unit, of, words};
}
inline Field int32(std::string name, unsigned word, double unit = 1, const char* of = "") {
    return wide(Form::kInt32, 2, std::move(name), word, of, unit);
}
inline Field pdpSingle(std::string name, unsigned word, const char* of = "") {
    return wide(Form::kPdpSingle, 2, std::move(name), word, of);
}
inline Field pdpDouble(std::string name, unsigned word, const char* of = "") {
    return wide(Form::kPdpDouble, 4, std::move(name), word, of);
}
inline Field veskSingle(std::string name, unsigned word, const char* of = "") {
    return wide(Form::kVeskSingle, 2, std::move(name), word, of);
}
inline Field veskExtended(std::string name, unsigned word, const char* of = "") {
    return wide(Form::kVeskExtended, 3, std::move(name), word, of);
}
inline Field ieeeSingle(std::string name, unsigned word, const char* of = "") {
    return wide(Form::kIeeeSingle, 2, std::move(name), word, of);
}
inline Field ieeeDouble(std::string name, unsigned word, const char* of = "") {
    return wide(Form::kIeeeDouble, 4, std::move(name), word, of);
}
inline Field text(std::string name, unsigned word, unsigned bytes, Form form = Form::kText) {
    return wide(form, bytes / 2, std::move(name), word, "");
}
inline Field time() {
    return pdpDouble("time", 0, "s");
}

}  // namespace GssipTool::Forms

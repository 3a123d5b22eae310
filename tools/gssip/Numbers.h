// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "tools/common/JsonText.h"

// Numbers as JSON and back. JSON has no word for what is no finite number: the texts "NaN",
// "Infinity" and
// "-Infinity" stand for that. What cannot be taken is refused with std::invalid_argument, which
// says why.
namespace GssipTool {

[[noreturn]] void refuse(const std::string& why);

Tools::Json numberToJson(double value);
/// The shortest decimal number that is this float, not the longer one of the double.
Tools::Json numberToJson(float value);

double numberFromJson(const Tools::Json& value);
float singleFromJson(const Tools::Json& value);

/// For the receiver's own formats, which have a small range and know only finite numbers: refuses
/// the wanted number unless the held one is the same but for the bits that the format does not
/// have.
void requireHeld(double wanted, double held);

/// A whole number from "31" or "0x1F".
int64_t integerFromText(const std::string& text);

}  // namespace GssipTool

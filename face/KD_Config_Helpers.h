// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "face/FACE_Configuration.h"

// Typed reads and writes of the parameters of an open container. None of them sets `rc` on success:
// the caller sets it to NO_ERROR once, reads a row of parameters and tests it once at the end. A
// missing or empty parameter sets INVALID_CONFIG, leaves `value` untouched and prints a warning.
namespace FACE::KD_Config_Helpers {

namespace Details {

/// The text of the parameter; empty, with a warning line, when there is none.
std::string Read_Config(Configuration& config, int handle, const String& name);

/// True when the whole text was written.
bool Write_Config(Configuration& config, int handle, const String& name, std::string value);

// The number at the start of the text in decimal, hexadecimal (0x) or octal (0): 0 when there is
// none.
int64_t toSigned(const std::string& text);
uint64_t toUnsigned(const std::string& text);

}  // namespace Details

void Get_String_Parameter(Configuration& config, int handle, const String& name, String& value,
                          RETURN_CODE_TYPE::Value& rc);

/// "true" and "false" in any case; any other text is read as a number, and not zero is true.
void Get_Boolean_Parameter(Configuration& config, int handle, const String& name, bool& value,
                           RETURN_CODE_TYPE::Value& rc);

/// A number in decimal, hexadecimal (0x) or octal (0), cut to the width of T. What follows the
/// digits is ignored; a text without any is 0.
template <typename T>
void Get_Number_Parameter(Configuration& config, int handle, const String& name, T& value,
                          RETURN_CODE_TYPE::Value& rc) {
    static_assert(std::is_integral_v<T> && !std::is_same_v<T, bool>, "a number is wanted");
    const std::string text = Details::Read_Config(config, handle, name);
    if (text.empty()) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    } else if constexpr (std::is_signed_v<T>) {
        value = static_cast<T>(Details::toSigned(text));
    } else {
        value = static_cast<T>(Details::toUnsigned(text));
    }
}

// One name for a parameter of any type.
void Get_Parameter(Configuration& config, int handle, const String& name, std::string& value,
                   RETURN_CODE_TYPE::Value& rc);
inline void Get_Parameter(Configuration& config, int handle, const String& name, String& value,
                          RETURN_CODE_TYPE::Value& rc) {
    Get_String_Parameter(config, handle, name, value, rc);
}
inline void Get_Parameter(Configuration& config, int handle, const String& name, bool& value,
                          RETURN_CODE_TYPE::Value& rc) {
    Get_Boolean_Parameter(config, handle, name, value, rc);
}
template <typename T>
std::enable_if_t<std::is_integral_v<T>> Get_Parameter(Configuration& config, int handle,
                                                      const String& name, T& value,
                                                      RETURN_CODE_TYPE::Value& rc) {
    Get_Number_Parameter(config, handle, name, value, rc);
}

void Set_String_Parameter(Configuration& config, int handle, const String& name,
                          const String& value, RETURN_CODE_TYPE::Value& rc);

/// Writes "TRUE" or "FALSE".
void Set_Boolean_Parameter(Configuration& config, int handle, const String& name, bool value,
                           RETURN_CODE_TYPE::Value& rc);

}  // namespace FACE::KD_Config_Helpers

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

// Checks by the compiler that a generated class has a field of that type with all its overloads.
// PLAIN and RECORD are for the tests of this folder that include it.
namespace shape {

// A number or an enumeration: set by value, got by value, got by reference.
template <typename C, typename T>
constexpr bool isPlainField(void (C::*)(T), T (C::*)() const, T& (C::*)()) {
    return true;
}

// Anything else: set by copy and by move, got by both kinds of reference.
template <typename C, typename T>
constexpr bool isRecordField(void (C::*)(const T&), void (C::*)(T&&), const T& (C::*)() const,
                             T& (C::*)()) {
    return true;
}

/// Every enumeration is an unsigned 32-bit number.
template <typename... ENUMS>
constexpr bool areUnsigned32 = (std::is_same_v<std::underlying_type_t<ENUMS>, uint32_t> && ...);

}  // namespace shape

// std::array has a comma, so the type comes last.
#define PLAIN(record, field, ...)                                            \
    static_assert(shape::isPlainField<aspn2_msgs::idl::record, __VA_ARGS__>( \
        &aspn2_msgs::idl::record::field, &aspn2_msgs::idl::record::field,    \
        &aspn2_msgs::idl::record::field))
#define RECORD(record, field, ...)                                            \
    static_assert(shape::isRecordField<aspn2_msgs::idl::record, __VA_ARGS__>( \
        &aspn2_msgs::idl::record::field, &aspn2_msgs::idl::record::field,     \
        &aspn2_msgs::idl::record::field, &aspn2_msgs::idl::record::field))

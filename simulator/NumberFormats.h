// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

// The receiver's floating-point formats, made from their definition: a sign, an exponent in excess
// 128 and a fraction with an implied leading 1 just behind the binary point, so that 1.0 is 0.5
// times 2 to the 1st. The server takes the numbers apart bit by bit; here they are put together by
// arithmetic, so that neither repeats the other's mistakes.
//
// A value too small for the exponent becomes zero without a sign, one too large the largest
// magnitude. Surplus fraction bits are cut off.
namespace Simulator {

/// 55 fraction bits, most significant word first.
std::array<std::uint16_t, 4> pdpDouble(double value);
/// 23 fraction bits, most significant word first.
std::array<std::uint16_t, 2> pdpSingle(float value);
/// 39 fraction bits: exponent and lowest 8 bits, next 16 bits, sign and top 15 bits.
std::array<std::uint16_t, 3> veskExtended(double value);
/// 23 fraction bits: exponent and lowest 8 bits, sign and top 15 bits.
std::array<std::uint16_t, 2> veskSingle(float value);

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/NumberFormats.h"

#include <cmath>

namespace Simulator {
namespace {

struct Parts {
    unsigned sign;           // 1 is negative
    unsigned exponent;       // excess 128
    std::uint64_t fraction;  // without the leading 1
};

Parts split(double value, int fractionBits) {
    const std::uint64_t leadingOne = std::uint64_t{1} << fractionBits;
    const unsigned sign = std::signbit(value) ? 1 : 0;
    int exponent = 0;
    const double magnitude = std::frexp(std::fabs(value), &exponent);  // 0.5 up to 1, or 0
    const int excess = exponent + 128;
    if (!std::isfinite(value) || excess > 255) {
        return {sign, 255, leadingOne - 1};
    }
    if (magnitude == 0.0 || excess < 1) {
        return {0, 0, 0};
    }
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(magnitude, fractionBits + 1));
    return {sign, static_cast<unsigned>(excess), mantissa - leadingOne};
}

std::uint16_t word(std::uint64_t value) {
    return static_cast<std::uint16_t>(value & 0xFFFF);
}

}  // namespace

std::array<std::uint16_t, 4> pdpDouble(double value) {
    const Parts parts = split(value, 55);
    return {word(parts.sign << 15 | parts.exponent << 7 | parts.fraction >> 48),
            word(parts.fraction >> 32), word(parts.fraction >> 16), word(parts.fraction)};
}

std::array<std::uint16_t, 2> pdpSingle(float value) {
    const Parts parts = split(static_cast<double>(value), 23);
    return {word(parts.sign << 15 | parts.exponent << 7 | parts.fraction >> 16),
            word(parts.fraction)};
}

std::array<std::uint16_t, 3> veskExtended(double value) {
    const Parts parts = split(value, 39);
    return {word((parts.fraction & 0xFF) << 8 | parts.exponent), word(parts.fraction >> 8),
            word(parts.sign << 15 | parts.fraction >> 24)};
}

std::array<std::uint16_t, 2> veskSingle(float value) {
    const Parts parts = split(static_cast<double>(value), 23);
    return {word((parts.fraction & 0xFF) << 8 | parts.exponent),
            word(parts.sign << 15 | parts.fraction >> 8)};
}

}  // namespace Simulator

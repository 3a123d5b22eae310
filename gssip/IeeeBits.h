// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstring>

// The bit patterns of IEEE 754 numbers and the halves of 32-bit words, for the number conversions.
namespace Gssip {

inline float floatOf(uint32_t ieeeBits) {
    float value;
    std::memcpy(&value, &ieeeBits, sizeof value);
    return value;
}

inline double doubleOf(uint64_t ieeeBits) {
    double value;
    std::memcpy(&value, &ieeeBits, sizeof value);
    return value;
}

inline uint32_t bitsOf(float value) {
    uint32_t ieeeBits;
    std::memcpy(&ieeeBits, &value, sizeof ieeeBits);
    return ieeeBits;
}

inline uint64_t bitsOf(double value) {
    uint64_t ieeeBits;
    std::memcpy(&ieeeBits, &value, sizeof ieeeBits);
    return ieeeBits;
}

inline uint16_t high(uint32_t value) {
    return static_cast<uint16_t>(value >> 16);
}

inline uint16_t low(uint32_t value) {
    return static_cast<uint16_t>(value);
}

inline uint32_t join(uint32_t highHalf, uint32_t lowHalf) {
    return highHalf << 16 | (lowHalf & 0xFFFF);
}

}  // namespace Gssip

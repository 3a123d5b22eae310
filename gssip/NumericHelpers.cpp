// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstring>
#include <limits>

#include "gssip/NumericConversions.h"

// What belongs to no floating-point format: word and byte order, BCD, angles, times, memory test.

namespace {

uint16_t swappedBytes(uint16_t value) {
    return static_cast<uint16_t>(value << 8 | value >> 8);
}

// Volatile, so that neither the fill nor the reading back is optimised away.
bool holdsPattern(volatile unsigned char* bytes, unsigned size, unsigned char pattern) {
    for (unsigned i = 0; i < size; ++i) {
        bytes[i] = pattern;
    }
    for (unsigned i = 0; i < size; ++i) {
        if (bytes[i] != pattern) {
            return false;
        }
    }
    return true;
}

}  // namespace

uint32_t lswap(uint32_t* value) {
    *value = *value << 16 | *value >> 16;
    return *value;
}

void MSW16_LSW16_swap(void* bytes) {
    uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    lswap(&value);
    std::memcpy(bytes, &value, sizeof value);
}

uint16_t u16swap(uint16_t* value) {
    *value = swappedBytes(*value);
    return *value;
}

void ByteSwap(uint16_t* words, int count) {
    for (int i = 0; i < count; ++i) {
        words[i] = swappedBytes(words[i]);
    }
}

uint16_t FromNBCD(uint16_t word) {
    unsigned value = 0;
    unsigned weight = 1;
    for (unsigned shift = 0; shift < 16; shift += 4, weight *= 10) {
        const unsigned digit = (word >> shift) & 0xFu;
        value += digit < 10 ? digit * weight : 0;
    }
    return static_cast<uint16_t>(value);
}

uint16_t ToNBCD(uint16_t value) {
    if (value > 9999) {
        return 0;
    }
    unsigned word = 0;
    unsigned rest = value;
    for (unsigned shift = 0; rest != 0; shift += 4, rest /= 10) {
        word |= (rest % 10) << shift;
    }
    return static_cast<uint16_t>(word);
}

double DirectionRadiansFromVelocity(double y, double x) {
    return std::atan2(y, x);
}

float DirectionRadiansFromVelocityF(float y, float x) {
    return std::atan2(y, x);
}

void ToSecondsNanoseconds(int32_t* seconds, double* nanoseconds, double time) {
    double whole = 0.0;
    const double fraction = std::modf(time, &whole);
    *nanoseconds = fraction * 1e9;
    // A double outside int32 must not be cast: saturate, and let what is no number be no seconds.
    using Limits = std::numeric_limits<int32_t>;
    if (std::isnan(whole)) {
        *seconds = 0;
    } else if (whole < double{Limits::min()}) {
        *seconds = Limits::min();
    } else if (whole > double{Limits::max()}) {
        *seconds = Limits::max();
    } else {
        *seconds = static_cast<int32_t>(whole);
    }
}

int flushZero(void* buffer, uint16_t size) {
    auto* bytes = static_cast<volatile unsigned char*>(buffer);
    const bool good = holdsPattern(bytes, size, 0x55) && holdsPattern(bytes, size, 0xAA) &&
                      holdsPattern(bytes, size, 0x55);
    return good ? 0 : 1;
}

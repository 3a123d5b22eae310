// SPDX-License-Identifier: Apache-2.0
#include "gssip/IeeeBits.h"
#include "gssip/NumericConversions.h"

// The T formats: fraction of a negative number in two's complement.

using Gssip::doubleOf;
using Gssip::floatOf;
using Gssip::high;
using Gssip::join;
using Gssip::low;

namespace {

constexpr uint16_t kSignBit = 0x8000;
constexpr unsigned kTExponentOfZero = 0x80;

// The IEEE bits of a T single.
uint32_t bitsOfTSingle(const uint16_t* words) {
    const uint32_t w1 = words[1];
    const uint32_t w0 = words[0];
    if (w1 >> 8 == kTExponentOfZero) {
        return 0;
    }
    // The exponent byte counts as unsigned: from 0x81 up it carries into the sign bit of a positive
    // number, and there it stays.
    const uint32_t exponent = ((w1 & 0xFF00) + 0x7F00) >> 1;
    if ((w1 & 0x80) == 0) {
        return join(exponent | (w1 & 0x7F), w0);
    }
    const uint32_t negated = 0u - join(0xFF80 | (w1 & 0x7F), w0);
    return join(kSignBit | ((exponent | high(negated)) & 0x7FFFu), low(negated));
}

// The IEEE bits of a T extended.
uint64_t bitsOfTExtended(const uint16_t* words) {
    const uint32_t w3 = words[3];
    const uint32_t w1 = words[1];
    const uint32_t w0 = words[0];
    if (w3 >> 8 == kTExponentOfZero) {
        return 0;
    }
    const uint32_t exponent = (((w3 >> 3) & 0x1FE0) + 0x7FE0) >> 1;
    const uint32_t top = (w3 >> 3) & 15;
    const uint32_t mid = (w0 >> 11 | ((w1 << 5) & 0x1FE0) | w3 << 13) & 0xFFFF;
    const uint32_t lowest = (w0 << 5) & 0xFFFF;
    if ((w3 & 0x80) == 0) {
        return uint64_t{join(exponent | top, mid)} << 32 | uint64_t{lowest} << 16;
    }
    // The halves are negated each by itself, without a borrow between them.
    const uint32_t negatedHigh = 0u - join(0xFFF0 | top, mid);
    const uint32_t negatedLow = 0u - join(lowest | 0x1F, 0xFFFF);
    const uint32_t ieeeHigh =
        join(kSignBit | ((exponent | high(negatedHigh)) & 0x7FFFu), low(negatedHigh));
    return uint64_t{ieeeHigh} << 32 | negatedLow;
}

}  // namespace

double cnvte(const uint16_t* words) {
    return doubleOf(bitsOfTExtended(words));
}

float cnvts(const uint16_t* words) {
    return floatOf(bitsOfTSingle(words));
}

void cnvten(const uint16_t* words, double* out) {
    *out = cnvte(words);
}

void cnvtsn(const uint16_t* words, float* out) {
    *out = cnvts(words);
}

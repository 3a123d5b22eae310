// SPDX-License-Identifier: Apache-2.0
#include "gssip/NumericConversions.h"

#include "gssip/IeeeBits.h"

using Gssip::bitsOf;
using Gssip::doubleOf;
using Gssip::floatOf;
using Gssip::join;
using Gssip::low;

// Shifts and masks only: these run for every field of the receiver's fastest message. A PDP number
// is taken apart into sign, exponent and one whole fraction, so that each rule stands once.
namespace {

// IEEE exponent minus PDP exponent: the implied leading 1 of PDP stands one place lower, and the
// excess is 128 against 127 (single) and 1023 (double).
constexpr unsigned kSingleRebias = 2;    // PDP = IEEE + 2
constexpr unsigned kDoubleRebias = 894;  // IEEE = PDP + 894
constexpr unsigned kPdpExcess = 128;
constexpr unsigned kPdpLargestExponent = 255;

constexpr unsigned kPdpFractionBits = 55;
constexpr uint64_t kPdpFractionMask = (uint64_t{1} << kPdpFractionBits) - 1;
constexpr unsigned kPdpExtraBits = 3;  // a PDP double has 55 fraction bits, an IEEE double 52

constexpr uint16_t kSignBit = 0x8000;

uint16_t pdpWord0(unsigned sign, unsigned exponent, unsigned topFraction) {
    return static_cast<uint16_t>(sign << 15 | exponent << 7 | topFraction);
}

unsigned pdpExponent(uint16_t word0) {
    return (word0 >> 7) & 0xFF;
}

uint64_t pdpFraction(const uint16_t* words) {
    return uint64_t{words[0] & 0x7Fu} << 48 | uint64_t{words[1]} << 32 | uint64_t{words[2]} << 16 |
           words[3];
}

bool isPdpZero(const uint16_t* words) {
    return (words[0] | words[1] | words[2] | words[3]) == 0;
}

// The low 3 bits of the 55-bit fraction are dropped, never rounded.
double ieeeDouble(unsigned sign, unsigned ieeeExponent, uint64_t fraction55) {
    return doubleOf(uint64_t{sign} << 63 | uint64_t{ieeeExponent} << 52 |
                    fraction55 >> kPdpExtraBits);
}

void putPdpDouble(uint16_t* words, unsigned sign, unsigned exponent, uint64_t fraction55) {
    words[0] = pdpWord0(sign, exponent, static_cast<unsigned>(fraction55 >> 48));
    words[1] = static_cast<uint16_t>(fraction55 >> 32);
    words[2] = static_cast<uint16_t>(fraction55 >> 16);
    words[3] = static_cast<uint16_t>(fraction55);
}

}  // namespace

float CnvPdpF2PcF(const uint16_t* words) {
    const unsigned exponent = pdpExponent(words[0]);
    if (exponent < 3) {
        return 0.0f;
    }
    const uint32_t sign = words[0] & kSignBit;
    return floatOf(join(sign | (exponent - kSingleRebias) << 7 | (words[0] & 0x7Fu), words[1]));
}

double CnvPdpD2PcD(const uint16_t* words) {
    if (isPdpZero(words)) {
        return 0.0;
    }
    return ieeeDouble(words[0] >> 15, pdpExponent(words[0]) + kDoubleRebias, pdpFraction(words));
}

void cnvpcs(const float* value, uint16_t* words) {
    const uint32_t ieee = bitsOf(*value);
    const unsigned sign = ieee >> 31;
    const unsigned exponent = (ieee >> 23) & 0xFF;
    if (exponent < 2) {
        words[0] = 0;
        words[1] = 0;
    } else if (exponent + kSingleRebias > kPdpLargestExponent) {
        words[0] = pdpWord0(sign, kPdpLargestExponent, 0x7F);
        words[1] = 0xFFFF;
    } else {
        words[0] = pdpWord0(sign, exponent + kSingleRebias, (ieee >> 16) & 0x7F);
        words[1] = low(ieee);
    }
}

void cnvpcd(const double* value, uint16_t* words) {
    const uint64_t ieee = bitsOf(*value);
    const unsigned sign = static_cast<unsigned>(ieee >> 63);
    const unsigned exponent = static_cast<unsigned>(ieee >> 52) & 0x7FF;
    if (exponent <= kDoubleRebias) {
        putPdpDouble(words, 0, 0, 0);
    } else if (exponent > kDoubleRebias + kPdpLargestExponent) {
        putPdpDouble(words, sign, kPdpLargestExponent, kPdpFractionMask);
    } else {
        putPdpDouble(words, sign, exponent - kDoubleRebias,
                     (ieee << kPdpExtraBits) & kPdpFractionMask);
    }
}

double PdpD_modf(const uint16_t* words, double* integerPart) {
    const unsigned sign = words[0] >> 15;
    const unsigned exponent = pdpExponent(words[0]);
    const unsigned ieeeExponent = exponent + kDoubleRebias;
    const uint64_t fraction = pdpFraction(words);
    *integerPart = 0.0;
    if (isPdpZero(words)) {
        return 0.0;
    }
    if (exponent <= kPdpExcess) {
        return ieeeDouble(sign, ieeeExponent, fraction);
    }
    const unsigned integerBits = exponent - kPdpExcess;  // the implied leading 1 among them
    if (integerBits > kPdpFractionBits) {
        *integerPart = ieeeDouble(sign, ieeeExponent, fraction);
        return 0.0;
    }
    const uint64_t belowPoint = kPdpFractionMask >> (integerBits - 1);
    *integerPart = ieeeDouble(sign, ieeeExponent, fraction & ~belowPoint);
    uint64_t rest = (fraction << (integerBits - 1)) & kPdpFractionMask;
    if (rest == 0) {
        return 0.0;
    }
    unsigned restExponent = 1022;  // of a rest of a half or more
    while (rest >> (kPdpFractionBits - 1) == 0) {
        rest <<= 1;
        --restExponent;
    }
    return ieeeDouble(sign, restExponent, (rest << 1) & kPdpFractionMask);
}

double CnvVeskD2PcD(const uint16_t* words) {
    const uint16_t pdp[4] = {
        pdpWord0(words[2] >> 15, words[0] & 0xFF, (words[2] >> 8) & 0x7F),
        static_cast<uint16_t>(words[2] << 8 | words[1] >> 8),
        static_cast<uint16_t>(words[1] << 8 | words[0] >> 8),
        0,
    };
    return CnvPdpD2PcD(pdp);
}

float CnvVeskF2PcF(const uint16_t* words) {
    const uint16_t pdp[2] = {
        pdpWord0(words[1] >> 15, words[0] & 0xFF, (words[1] >> 8) & 0x7F),
        static_cast<uint16_t>(words[1] << 8 | words[0] >> 8),
    };
    return CnvPdpF2PcF(pdp);
}

void CnvPcD2VeskE(double value, uint16_t* words) {
    uint16_t pdp[4];
    cnvpcd(&value, pdp);
    words[0] = static_cast<uint16_t>(unsigned{pdp[2]} << 8 | pdpExponent(pdp[0]));
    words[1] = static_cast<uint16_t>(pdp[1] << 8 | pdp[2] >> 8);
    words[2] = static_cast<uint16_t>((pdp[0] & kSignBit) | (pdp[0] & 0x7F) << 8 | pdp[1] >> 8);
}

void CnvPcF2VeskF(float value, uint16_t* words) {
    uint16_t pdp[2];
    cnvpcs(&value, pdp);
    words[0] = static_cast<uint16_t>(unsigned{pdp[1]} << 8 | pdpExponent(pdp[0]));
    words[1] = static_cast<uint16_t>((pdp[0] & kSignBit) | (pdp[0] & 0x7F) << 8 | pdp[1] >> 8);
}

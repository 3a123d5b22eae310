// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>

#include "gssip/IeeeBits.h"
#include "gssip/NumericConversions.h"

// The vectors were worked out by a separate Python program with exact fractions from the formats'
// bit tables. Vesk: (-1)^sign * (1/2 + fraction / 2^(n+1)) * 2^(exponent - 128), n being 39 or 23,
// cut off where it does not fit. T, with b the exponent byte and f the n-bit fraction: (1 + f /
// 2^n)
// * 2^b for a positive and -(2 - f / 2^n) * 2^b for a negative number; for a T extended, whose
// 20 upper and 11 lower fraction bits u and l are complemented each by itself, the negative value
// works out by hand to -(1 + (2^20 - u) / 2^20 + ((2047 - l) * 2^21 + 1) / 2^52) * 2^b.
namespace {

using Gssip::bitsOf;
using Gssip::doubleOf;
using Gssip::floatOf;

struct VeskToDouble {
    uint16_t words[3];
    uint64_t ieee;
};
const VeskToDouble kVeskToDouble[] = {
    {{0x0081, 0x0000, 0x0000}, 0x3FF0000000000000}, {{0x0081, 0x0000, 0x8000}, 0xBFF0000000000000},
    {{0x0101, 0x0203, 0x0405}, 0x37F080A040602000}, {{0x57C0, 0x57C8, 0xD700}, 0xC3EAE00AF90AE000},
    {{0xFC83, 0x029D, 0x7676}, 0x401ECEC053BF8000}, {{0x30F3, 0xB674, 0xFE66}, 0xC71FCCD6CE860000},
    {{0x1324, 0x108A, 0x584E}, 0x3A2B09C211426000}, {{0x0728, 0x3425, 0x7BAF}, 0x3A6F75E684A0E000},
    {{0xE7E5, 0x636F, 0xBAE0}, 0xC6375C0C6DFCE000},
};

struct VeskToFloat {
    uint16_t words[2];
    uint32_t ieee;
};
const VeskToFloat kVeskToFloat[] = {
    {{0x0081, 0x0000}, 0x3F800000}, {{0x0081, 0x8000}, 0xBF800000}, {{0x0103, 0x0405}, 0x00840501},
    {{0xC84B, 0xE945}, 0xA4E945C8}, {{0x88CE, 0x3731}, 0x66373188}, {{0xD056, 0xB157}, 0xAA3157D0},
    {{0xDAA0, 0xA120}, 0xCF2120DA}, {{0xC424, 0xD606}, 0x915606C4}, {{0xAA88, 0xDEAA}, 0xC35EAAAA},
};

struct DoubleToVesk {
    uint64_t ieee;
    uint16_t words[3];
};
const DoubleToVesk kDoubleToVesk[] = {
    {0x3FF0000000000000, {0x0081, 0x0000, 0x0000}}, {0xBFF0000000000000, {0x0081, 0x0000, 0x8000}},
    {0x3FD5555555555555, {0xAA7F, 0xAAAA, 0x2AAA}}, {0x3FDFFFFFFFFFFFFF, {0xFF7F, 0xFFFF, 0x7FFF}},
    {0x47DFFFFFFFFFFFFF, {0xFFFF, 0xFFFF, 0x7FFF}}, {0xC7D3C3754032FE3B, {0x97FF, 0xAA01, 0x9E1B}},
    {0x43DF6DDFBD1C8831, {0xE4BF, 0xFDE8, 0x7B6E}}, {0xC0C61E243741F3AE, {0x0F8E, 0x21BA, 0xB0F1}},
    {0xC70CFDC29B43380A, {0x19F2, 0x14DA, 0xE7EE}}, {0xBAC2BBEDD6F0E60C, {0x872E, 0x6EB7, 0x95DF}},
};

struct FloatToVesk {
    uint32_t ieee;
    uint16_t words[2];
};
const FloatToVesk kFloatToVesk[] = {
    {0x3F800000, {0x0081, 0x0000}}, {0xBF800000, {0x0081, 0x8000}}, {0x3EAAAAAB, {0xAB7F, 0x2AAA}},
    {0x21BA3092, {0x9245, 0x3A30}}, {0x1E2062C5, {0xC53E, 0x2062}}, {0xCF2F697E, {0x7EA0, 0xAF69}},
    {0x396A0CFC, {0xFC74, 0x6A0C}}, {0x6A1B5FDB, {0xDBD6, 0x1B5F}},
};

struct TToDouble {
    uint16_t words[4];
    uint64_t ieee;
};
const TToDouble kTToDouble[] = {
    {{0x0000, 0x0000, 0x0000, 0x0000}, 0x3FF0000000000000},
    {{0x0000, 0x0000, 0x0000, 0x00C0}, 0xBFF80000FFE00001},
    {{0x0001, 0x0000, 0xFFFF, 0x00C0}, 0xBFF80000FFC00001},
    {{0x8832, 0x1C87, 0x30C1, 0xF35E}, 0x4F2BD0F106400000},
    {{0x8052, 0x0622, 0x45CB, 0x2214}, 0x421284500A400000},
    {{0x2E66, 0x00B7, 0xE90C, 0xF582}, 0xCF4FA91B33200001},
    {{0x5680, 0x3F4C, 0x9AEA, 0x7136}, 0x4706C98AD0000000},
    {{0x36A1, 0x7B8D, 0x2700, 0x32F6}, 0xC3112E5A2BC00001},
    {{0x4B94, 0x2655, 0xB742, 0x2B84}, 0xC2AF75578D600001},
    {{0xE823, 0x190F, 0x53C7, 0x636A}, 0x462D41FD04600000},
    {{0x304F, 0x18AB, 0xA268, 0x936B}, 0x492D756609E00000},
};

struct TToFloat {
    uint16_t words[2];
    uint32_t ieee;
};
const TToFloat kTToFloat[] = {
    {{0x0000, 0x0000}, 0x3F800000}, {{0x0000, 0x00C0}, 0xBFC00000}, {{0x0000, 0xFF00}, 0xBF000000},
    {{0x0001, 0x0080}, 0xBFFFFFFF}, {{0x480C, 0xABFD}, 0x9502B7F4}, {{0x5363, 0x3AAF}, 0xDCD0AC9D},
    {{0x7694, 0x0826}, 0x43A67694}, {{0x28ED, 0x2A05}, 0x548528ED}, {{0x6659, 0x3F9F}, 0xDF6099A7},
    {{0x7508, 0x213D}, 0x503D7508}, {{0xCB9D, 0x3973}, 0x5C73CB9D}, {{0xFA94, 0x5A72}, 0x6CF2FA94},
};

TEST(VeskConversions, ExtendedNumbersRead) {
    for (const auto& row : kVeskToDouble) {
        EXPECT_EQ(bitsOf(CnvVeskD2PcD(row.words)), row.ieee) << std::hex << row.ieee;
    }
    const uint16_t zero[3] = {0, 0, 0};
    EXPECT_EQ(bitsOf(CnvVeskD2PcD(zero)), 0u);
}

TEST(VeskConversions, SingleNumbersRead) {
    for (const auto& row : kVeskToFloat) {
        EXPECT_EQ(bitsOf(CnvVeskF2PcF(row.words)), row.ieee) << std::hex << row.ieee;
    }
    const uint16_t exponentTwo[2] = {0x1202, 0x8034};
    EXPECT_EQ(bitsOf(CnvVeskF2PcF(exponentTwo)), 0u);
}

TEST(VeskConversions, ExtendedNumbersWriteCutOffAt39Bits) {
    for (const auto& row : kDoubleToVesk) {
        uint16_t words[3] = {0x1111, 0x2222, 0x3333};
        CnvPcD2VeskE(doubleOf(row.ieee), words);
        for (unsigned i = 0; i < 3; ++i) {
            EXPECT_EQ(words[i], row.words[i]) << std::hex << row.ieee << " word " << i;
        }
    }
}

TEST(VeskConversions, SingleNumbersWrite) {
    for (const auto& row : kFloatToVesk) {
        uint16_t words[2] = {0x1111, 0x2222};
        CnvPcF2VeskF(floatOf(row.ieee), words);
        for (unsigned i = 0; i < 2; ++i) {
            EXPECT_EQ(words[i], row.words[i]) << std::hex << row.ieee << " word " << i;
        }
    }
}

TEST(VeskConversions, WhatIsTooLargeShowsTheLargestExponentAndAllFractionBits) {
    uint16_t extended[3] = {};
    CnvPcD2VeskE(-std::numeric_limits<double>::infinity(), extended);
    EXPECT_EQ(extended[0], 0xFFFF);
    EXPECT_EQ(extended[1], 0xFFFF);
    EXPECT_EQ(extended[2], 0xFFFF);
    uint16_t single[2] = {};
    CnvPcF2VeskF(std::numeric_limits<float>::infinity(), single);
    EXPECT_EQ(single[0], 0xFFFF);
    EXPECT_EQ(single[1], 0x7FFF);
}

TEST(VeskConversions, WhatIsTooSmallFlushesToZeroWithoutItsSign) {
    uint16_t extended[3] = {1, 1, 1};
    CnvPcD2VeskE(-1e-300, extended);
    EXPECT_EQ(extended[0], 0);
    EXPECT_EQ(extended[1], 0);
    EXPECT_EQ(extended[2], 0);
    uint16_t single[2] = {1, 1};
    CnvPcF2VeskF(-1e-38f, single);
    EXPECT_EQ(single[0], 0);
    EXPECT_EQ(single[1], 0);
}

TEST(TConversions, ExtendedNumbersRead) {
    for (const auto& row : kTToDouble) {
        double out = 77.0;
        cnvten(row.words, &out);
        EXPECT_EQ(bitsOf(cnvte(row.words)), row.ieee) << std::hex << row.ieee;
        EXPECT_EQ(bitsOf(out), row.ieee) << std::hex << row.ieee;
    }
}

TEST(TConversions, SingleNumbersRead) {
    for (const auto& row : kTToFloat) {
        float out = 77.0f;
        cnvtsn(row.words, &out);
        EXPECT_EQ(bitsOf(cnvts(row.words)), row.ieee) << std::hex << row.ieee;
        EXPECT_EQ(bitsOf(out), row.ieee) << std::hex << row.ieee;
    }
}

TEST(TConversions, AnExponentByteOf0x80IsZeroWhateverTheRest) {
    const uint16_t extended[4] = {0x1234, 0xFFFF, 0xFFFF, 0x80FF};
    EXPECT_EQ(bitsOf(cnvte(extended)), 0u);
    const uint16_t single[2] = {0x1234, 0x80FF};
    EXPECT_EQ(bitsOf(cnvts(single)), 0u);
}

TEST(TConversions, ALargeExponentByteOfAPositiveSingleCarriesIntoTheSign) {
    const uint16_t words[2] = {0x0000, 0xFF00};
    EXPECT_LT(cnvts(words), 0.0f);
    EXPECT_EQ(cnvts(words), -0.5f);
    const uint16_t lowestCarry[2] = {0x0003, 0x8100};  // 0x8100 + 0x7F00 is 0x10000: exponent 0
    EXPECT_EQ(bitsOf(cnvts(lowestCarry)), 0x80000003u);
}

// A negative number with fraction 0 has a complement that overflows into the lowest exponent bit,
// where it is ORed: gone when that bit was set (-2 reads as -1), doubling when it was not.
TEST(TConversions, AnEmptyNegativeFractionIsOredIntoTheExponent) {
    const uint16_t single0[2] = {0x0000, 0x0080};  // X 3F80, -M 00800000: 3F80 | 0080
    EXPECT_EQ(bitsOf(cnvts(single0)), 0xBF800000u);
    const uint16_t single1[2] = {0x0000, 0x0180};  // X 4000: 4000 | 0080
    EXPECT_EQ(bitsOf(cnvts(single1)), 0xC0800000u);
    const uint16_t extended0[4] = {0, 0, 0, 0x0080};  // X 3FF0, -H 00100000, -L FFE00001
    EXPECT_EQ(bitsOf(cnvte(extended0)), 0xBFF00000FFE00001u);
    const uint16_t extended1[4] = {0, 0, 0, 0x0180};  // X 4000: 4000 | 0010
    EXPECT_EQ(bitsOf(cnvte(extended1)), 0xC0100000FFE00001u);
}

}  // namespace

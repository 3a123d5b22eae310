// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <initializer_list>

#include "gssip/IeeeBits.h"
#include "gssip/NumericConversions.h"

// The vectors of the tables were worked out by a separate Python program with exact fractions, from
// the format and not from the shifts: a number's value is (-1)^sign * (1/2 + fraction / 2^(n+1)) *
// 2^(exponent - 128) with n fraction bits, and the expected bits are that exact value, its
// magnitude cut off (never rounded) at the bits of the other format. Some rows are chosen, the rest
// are random. Compared are bits, so that a wrong sign of zero shows.
namespace {

using Gssip::bitsOf;
using Gssip::doubleOf;
using Gssip::floatOf;

struct PdpToDouble {
    uint16_t words[4];
    uint64_t ieee;
};
const PdpToDouble kPdpToDouble[] = {
    {{0x4080, 0x0000, 0x0000, 0x0000}, 0x3FF0000000000000},
    {{0xC0C0, 0x0000, 0x0000, 0x0000}, 0xBFF8000000000000},
    {{0x4000, 0x0000, 0x0000, 0x0000}, 0x3FE0000000000000},
    {{0x0000, 0x0000, 0x0000, 0x0001}, 0x37E0000000000000},
    {{0x0000, 0x0000, 0x0000, 0x0008}, 0x37E0000000000001},
    {{0x7FFF, 0xFFFF, 0xFFFF, 0xFFFF}, 0x47DFFFFFFFFFFFFF},
    {{0xFFFF, 0xFFFF, 0xFFFF, 0xFFF8}, 0xC7DFFFFFFFFFFFFF},
    {{0x8000, 0x0000, 0x0000, 0x0000}, 0xB7E0000000000000},
    {{0x9018, 0x6EDD, 0x8CE1, 0x8687}, 0xB9E30DDBB19C30D0},
    {{0x7DAB, 0x1ED4, 0x9BA0, 0x3FE6}, 0x479563DA937407FC},
    {{0x9253, 0xCB67, 0x3BEC, 0x2D38}, 0xBA2A796CE77D85A7},
    {{0xBDA5, 0x57B3, 0x20F0, 0xBAFC}, 0xBF94AAF6641E175F},
    {{0x4826, 0x0608, 0xE8A4, 0xA93F}, 0x40E4C0C11D149527},
    {{0x9756, 0xE2C5, 0xA6D5, 0x70DB}, 0xBACADC58B4DAAE1B},
    {{0xEA81, 0xB51D, 0x98D0, 0x7F53}, 0xC53036A3B31A0FEA},
    {{0xDE57, 0x0B00, 0x4DD5, 0x88B0}, 0xC3AAE16009BAB116},
};

struct PdpToFloat {
    uint16_t words[2];
    uint32_t ieee;
};
const PdpToFloat kPdpToFloat[] = {
    {{0x4080, 0x0000}, 0x3F800000}, {{0xC0C0, 0x0000}, 0xBFC00000}, {{0x0180, 0x0000}, 0x00800000},
    {{0x8180, 0x0001}, 0x80800001}, {{0x7FFF, 0xFFFF}, 0x7EFFFFFF}, {{0xFFFF, 0xFFFF}, 0xFEFFFFFF},
    {{0x8DCC, 0x3730}, 0x8CCC3730}, {{0x2C11, 0x187E}, 0x2B11187E}, {{0x3A12, 0x2D4C}, 0x39122D4C},
    {{0x09AE, 0x6ACC}, 0x08AE6ACC}, {{0x2671, 0x4285}, 0x25714285}, {{0xE0D3, 0x374C}, 0xDFD3374C},
    {{0xA1B0, 0x4E9A}, 0xA0B04E9A}, {{0x7DC7, 0x1DBA}, 0x7CC71DBA},
};

struct DoubleToPdp {
    uint64_t ieee;
    uint16_t words[4];
};
const DoubleToPdp kDoubleToPdp[] = {
    {0x3FF0000000000000, {0x4080, 0x0000, 0x0000, 0x0000}},
    {0xBFF0000000000000, {0xC080, 0x0000, 0x0000, 0x0000}},
    {0x3FD5555555555555, {0x3FAA, 0xAAAA, 0xAAAA, 0xAAA8}},
    {0x37F0000000000000, {0x0080, 0x0000, 0x0000, 0x0000}},
    {0x47DFFFFFFFFFFFFF, {0x7FFF, 0xFFFF, 0xFFFF, 0xFFF8}},
    {0x4334DF0322D5189B, {0x5AA6, 0xF819, 0x16A8, 0xC4D8}},
    {0x476189C371C61315, {0x7C0C, 0x4E1B, 0x8E30, 0x98A8}},
    {0xC1B9F81D837A0C10, {0xCECF, 0xC0EC, 0x1BD0, 0x6080}},
    {0xC5FADE2CCBFA5CD5, {0xF0D6, 0xF166, 0x5FD2, 0xE6A8}},
    {0x476353E874592C37, {0x7C1A, 0x9F43, 0xA2C9, 0x61B8}},
    {0x418ADA1151FC914B, {0x4D56, 0xD08A, 0x8FE4, 0x8A58}},
    {0xC2472CE281BA40BB, {0xD339, 0x6714, 0x0DD2, 0x05D8}},
};

struct FloatToPdp {
    uint32_t ieee;
    uint16_t words[2];
};
const FloatToPdp kFloatToPdp[] = {
    {0x3F800000, {0x4080, 0x0000}}, {0xBF800000, {0xC080, 0x0000}}, {0x3EAAAAAB, {0x3FAA, 0xAAAB}},
    {0x01000000, {0x0200, 0x0000}}, {0x7EFFFFFF, {0x7FFF, 0xFFFF}}, {0x44DA5703, {0x45DA, 0x5703}},
    {0x5EDDD036, {0x5FDD, 0xD036}}, {0xA03C926A, {0xA13C, 0x926A}}, {0xB17DE0BD, {0xB27D, 0xE0BD}},
    {0xB23D82EF, {0xB33D, 0x82EF}}, {0x6279B306, {0x6379, 0xB306}}, {0x6805CEDF, {0x6905, 0xCEDF}},
};

struct PdpModf {
    uint16_t words[4];
    uint64_t integerPart;
    uint64_t fraction;
};
// Integer part and fraction of the exact value, each cut off at 52 bits.
const PdpModf kPdpModf[] = {
    {{0xC120, 0x0000, 0x0000, 0x0000}, 0xC000000000000000, 0xBFE0000000000000},  // -2.5
    {{0x4080, 0x0000, 0x0000, 0x0000}, 0x3FF0000000000000, 0x0000000000000000},  // 1.0
    {{0xC040, 0x0000, 0x0000, 0x0000}, 0x0000000000000000, 0xBFE8000000000000},  // -0.75
    {{0x4A13, 0xA7F1, 0xF9AD, 0xD373}, 0x412274FE00000000, 0x3FBF9ADD37300000},  // 604799.123456789
    {{0x5A80, 0x0000, 0x0000, 0x0003},
     0x4330000000000000,
     0x3FD8000000000000},  // 4503599627370496.0
    {{0xC04A, 0x0318, 0x2E28, 0xB014},
     0x0000000000000000,
     0xBFE9406305C51602},  // -0.789109717625877
    {{0x40BF, 0xDF91, 0xFF0E, 0xB134},
     0x3FF0000000000000,
     0x3FDFEFC8FF87589A},  // 1.499010324039213
    {{0x4165, 0xC5B1, 0x7C43, 0xAF79},
     0x4008000000000000,
     0x3FE2E2D8BE21D7BC},  // 3.5901912415999884
    {{0xCA38, 0x04C7, 0x485A, 0x204C},
     0xC127009800000000,
     0xBFDD216881300000},  // -753740.4551640761
    {{0x5564, 0xB892, 0x973F, 0x4E93},
     0x428C971252E7E800,
     0x3FCD260000000000},  // 3929396632829.2275
    {{0xDB01, 0x626E, 0x8B4B, 0x0924},
     0xC3402C4DD1696124,
     0x0000000000000000},  // -9104624729637448.0
    {{0x5BDD, 0x188B, 0x9B1E, 0x6AE8},
     0x435BA3117363CD5D,
     0x0000000000000000},  // 3.1116478867518836e+16
    {{0x5C5B, 0x29BC, 0x390C, 0x57A0},
     0x436B653787218AF4,
     0x0000000000000000},  // 6.16889082873343e+16
    {{0xE412, 0xBFCA, 0xA120, 0x2FEB},
     0xC46257F9542405FD,
     0x0000000000000000},  // -2.707044670327749e+21
    {{0x3243, 0x9053, 0x648D, 0x782C},
     0x0000000000000000,
     0x3E28720A6C91AF05},  // 2.8458274387651923e-09
    {{0x5B00, 0x0000, 0x0000, 0x0003}, 0x4340000000000000, 0x3FE8000000000000},  // 2^53 + 3/4
    {{0x5B80, 0x0000, 0x0000, 0x0001}, 0x4350000000000000, 0x3FE0000000000000},  // 2^54 + 1/2
    {{0x5C00, 0x0000, 0x0000, 0x0001}, 0x4360000000000000, 0x0000000000000000},  // 2^55 + 1
    {{0x0000, 0x0000, 0x0000, 0x0000}, 0x0000000000000000, 0x0000000000000000},
};

struct Pdp {
    uint16_t words[4] = {0x1111, 0x2222, 0x3333, 0x4444};
};

Pdp doubleToPdp(uint64_t ieee) {
    Pdp pdp;
    const double value = doubleOf(ieee);
    cnvpcd(&value, pdp.words);
    return pdp;
}

Pdp floatToPdp(uint32_t ieee) {
    Pdp pdp;
    const float value = floatOf(ieee);
    cnvpcs(&value, pdp.words);
    return pdp;
}

void expectWords(const uint16_t* actual, std::initializer_list<uint16_t> expected) {
    unsigned i = 0;
    for (const uint16_t word : expected) {
        EXPECT_EQ(actual[i], word) << "word " << i;
        ++i;
    }
}

TEST(PdpConversions, DoublesReadExactlyWithTheLowThreeBitsDropped) {
    for (const auto& row : kPdpToDouble) {
        EXPECT_EQ(bitsOf(CnvPdpD2PcD(row.words)), row.ieee) << std::hex << row.ieee;
    }
}

TEST(PdpConversions, OnlyFourZeroWordsReadAsADoubleZero) {
    const uint16_t zero[4] = {0, 0, 0, 0};
    EXPECT_EQ(bitsOf(CnvPdpD2PcD(zero)), 0u);
    const uint16_t lowestBit[4] = {0, 0, 0, 1};
    EXPECT_EQ(bitsOf(CnvPdpD2PcD(lowestBit)) >> 52, 894u);
}

TEST(PdpConversions, SinglesReadExactly) {
    for (const auto& row : kPdpToFloat) {
        EXPECT_EQ(bitsOf(CnvPdpF2PcF(row.words)), row.ieee) << std::hex << row.ieee;
    }
}

TEST(PdpConversions, SinglesWithAnExponentBelowThreeReadAsPlusZero) {
    const uint16_t exponentTwo[2] = {0x0100, 0x1234};
    EXPECT_EQ(bitsOf(CnvPdpF2PcF(exponentTwo)), 0u);
    const uint16_t negativeExponentTwo[2] = {0x817F, 0xFFFF};
    EXPECT_EQ(bitsOf(CnvPdpF2PcF(negativeExponentTwo)), 0u);
    const uint16_t exponentThree[2] = {0x0180, 0x0000};
    EXPECT_EQ(bitsOf(CnvPdpF2PcF(exponentThree)), 0x00800000u);
}

TEST(PdpConversions, DoublesWriteExactly) {
    for (const auto& row : kDoubleToPdp) {
        const Pdp pdp = doubleToPdp(row.ieee);
        expectWords(pdp.words, {row.words[0], row.words[1], row.words[2], row.words[3]});
    }
}

TEST(PdpConversions, SmallDoublesFlushToZeroWithoutTheirSign) {
    expectWords(doubleToPdp(0xB7EFFFFFFFFFFFFF).words, {0, 0, 0, 0});  // exponent 894
    expectWords(doubleToPdp(0x8000000000000000).words, {0, 0, 0, 0});
    expectWords(doubleToPdp(0x8000000000000001).words, {0, 0, 0, 0});
    expectWords(doubleToPdp(0xB7F0000000000000).words, {0x8080, 0, 0, 0});  // exponent 895
}

TEST(PdpConversions, LargeDoublesInfinitiesAndNansSaturate) {
    expectWords(doubleToPdp(0x47D0000000000000).words, {0x7F80, 0, 0, 0});  // exponent 1149
    expectWords(doubleToPdp(0x47E0000000000000).words, {0x7FFF, 0xFFFF, 0xFFFF, 0xFFFF});
    expectWords(doubleToPdp(0x7FF0000000000000).words, {0x7FFF, 0xFFFF, 0xFFFF, 0xFFFF});
    expectWords(doubleToPdp(0xFFF0000000000000).words, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF});
    expectWords(doubleToPdp(0x7FF8000000000000).words, {0x7FFF, 0xFFFF, 0xFFFF, 0xFFFF});
}

TEST(PdpConversions, SinglesWriteExactly) {
    for (const auto& row : kFloatToPdp) {
        expectWords(floatToPdp(row.ieee).words, {row.words[0], row.words[1]});
    }
}

TEST(PdpConversions, SmallSinglesFlushToZeroWithoutTheirSign) {
    expectWords(floatToPdp(bitsOf(-1e-38f)).words, {0, 0});
    expectWords(floatToPdp(0x80FFFFFF).words, {0, 0});       // exponent 1
    expectWords(floatToPdp(0x807FFFFF).words, {0, 0});       // exponent 0
    expectWords(floatToPdp(0x81000000).words, {0x8200, 0});  // exponent 2
}

TEST(PdpConversions, LargeSinglesInfinitiesAndNansSaturate) {
    expectWords(floatToPdp(0x7E800000).words, {0x7F80, 0});  // exponent 253
    expectWords(floatToPdp(bitsOf(3e38f)).words, {0x7FFF, 0xFFFF});
    expectWords(floatToPdp(0x7F800000).words, {0x7FFF, 0xFFFF});
    expectWords(floatToPdp(0xFF800000).words, {0xFFFF, 0xFFFF});
    expectWords(floatToPdp(0x7FC00000).words, {0x7FFF, 0xFFFF});
}

TEST(PdpConversions, OneGoesThereAndBack) {
    EXPECT_EQ(CnvPdpF2PcF(floatToPdp(0x3F800000).words), 1.0f);
    EXPECT_EQ(CnvPdpD2PcD(doubleToPdp(0x3FF0000000000000).words), 1.0);
}

TEST(PdpConversions, ModfSplitsWithoutLosingTheSubSecondBits) {
    for (const auto& row : kPdpModf) {
        double integerPart = 77.0;
        const double fraction = PdpD_modf(row.words, &integerPart);
        EXPECT_EQ(bitsOf(integerPart), row.integerPart) << std::hex << row.words[0];
        EXPECT_EQ(bitsOf(fraction), row.fraction) << std::hex << row.words[0];
    }
}

TEST(PdpConversions, ModfOfAnExponentOfZeroIsAllFraction) {
    const uint16_t words[4] = {0x8000, 0, 0, 0};
    double integerPart = 77.0;
    EXPECT_EQ(bitsOf(PdpD_modf(words, &integerPart)), 0xB7E0000000000000u);
    EXPECT_EQ(bitsOf(integerPart), 0u);
}

}  // namespace

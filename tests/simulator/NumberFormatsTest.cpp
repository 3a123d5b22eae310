// SPDX-License-Identifier: Apache-2.0
// The expected words come from a script that moved the bits of the IEEE patterns about (PDP
// exponent = IEEE double exponent - 894, or single + 2; fraction from the top), which is not how
// the code works.
#include "simulator/NumberFormats.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using Simulator::pdpDouble;
using Simulator::pdpSingle;
using Simulator::veskExtended;
using Simulator::veskSingle;
using testing::Each;
using testing::ElementsAre;

TEST(NumberFormats, PdpDoubleHasItsMostSignificantWordFirst) {
    EXPECT_THAT(pdpDouble(0.0), Each(0));
    EXPECT_THAT(pdpDouble(1.0), ElementsAre(0x4080, 0, 0, 0));
    EXPECT_THAT(pdpDouble(-2.5), ElementsAre(0xC120, 0, 0, 0));
    EXPECT_THAT(pdpDouble(0.1), ElementsAre(0x3ECC, 0xCCCC, 0xCCCC, 0xCCD0));
    EXPECT_THAT(pdpDouble(604799.5), ElementsAre(0x4A13, 0xA7F8, 0, 0));
    EXPECT_THAT(pdpDouble(-0.9424777960769379), ElementsAre(0xC071, 0x4639, 0x8F5B, 0x4A80));
}

TEST(NumberFormats, PdpSingle) {
    EXPECT_THAT(pdpSingle(1.0F), ElementsAre(0x4080, 0));
    EXPECT_THAT(pdpSingle(-2.5F), ElementsAre(0xC120, 0));
    EXPECT_THAT(pdpSingle(0.1F), ElementsAre(0x3ECC, 0xCCCD));
    EXPECT_THAT(pdpSingle(-1234.5625F), ElementsAre(0xC59A, 0x5200));
    EXPECT_THAT(pdpSingle(1e-30F), ElementsAre(0x0EA2, 0x4260));
}

TEST(NumberFormats, VeskExtendedCutsTheFractionAt39Bits) {
    EXPECT_THAT(veskExtended(1.0), ElementsAre(0x0081, 0, 0));
    EXPECT_THAT(veskExtended(-2.5), ElementsAre(0x0082, 0, 0xA000));
    EXPECT_THAT(veskExtended(0.1), ElementsAre(0xCC7D, 0xCCCC, 0x4CCC));
    EXPECT_THAT(veskExtended(-0.9424777960769379), ElementsAre(0x5B80, 0x398F, 0xF146));
    EXPECT_THAT(veskExtended(0.13089969389957472), ElementsAre(0x6B7E, 0x91C1, 0x060A));
}

TEST(NumberFormats, VeskSingle) {
    EXPECT_THAT(veskSingle(1.0F), ElementsAre(0x0081, 0));
    EXPECT_THAT(veskSingle(0.1F), ElementsAre(0xCD7D, 0x4CCC));
    EXPECT_THAT(veskSingle(-1234.5625F), ElementsAre(0x008B, 0x9A52));
}

TEST(NumberFormats, WhatIsTooLargeBecomesTheLargestMagnitudeOfItsSign) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_THAT(pdpDouble(1e300), ElementsAre(0x7FFF, 0xFFFF, 0xFFFF, 0xFFFF));
    EXPECT_THAT(pdpDouble(-infinity), Each(0xFFFF));
    EXPECT_THAT(pdpSingle(3e38F), ElementsAre(0x7FFF, 0xFFFF));
    EXPECT_THAT(veskExtended(-1e300), ElementsAre(0xFFFF, 0xFFFF, 0xFFFF));
    EXPECT_THAT(veskSingle(3e38F), ElementsAre(0xFFFF, 0x7FFF));
}

TEST(NumberFormats, WhatIsTooSmallBecomesZeroWithoutASign) {
    EXPECT_THAT(pdpDouble(-1e-300), Each(0));
    EXPECT_THAT(veskExtended(1e-300), Each(0));
    EXPECT_THAT(pdpSingle(-0.0F), Each(0));
}

}  // namespace

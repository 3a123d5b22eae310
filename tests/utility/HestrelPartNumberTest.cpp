// SPDX-License-Identifier: Apache-2.0
#include "utility/HestrelPartNumber.h"

#include <gtest/gtest.h>

namespace {

TEST(HestrelPartNumber, JoinsItsThreePartsInOneText) {
    HestrelPartNumber part;
    part.serverName = "Rovan";
    part.notice = "All rights reserved";
    EXPECT_EQ("Rovan HPN: 100-2000-300B  All rights reserved", part.text());
}

}  // namespace

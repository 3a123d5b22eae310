// SPDX-License-Identifier: Apache-2.0
#include "ASPN/SystemIds.h"

#include <gtest/gtest.h>

namespace {

using ASPN2::SystemIds;

TEST(SystemIds, KnowsThreeSystems) {
    EXPECT_EQ(SystemIds::from_string("ARVEN"), 1);
    EXPECT_EQ(SystemIds::from_string("BRELD"), 2);
    EXPECT_EQ(SystemIds::from_string("TessalyPlus"), 3);
}

TEST(SystemIds, GivesZeroForAnyOtherName) {
    for (const char* name : {"", "arven", "ARVEN ", "ARVE", "Tessaly", "TESSALYPLUS", "3"}) {
        EXPECT_EQ(SystemIds::from_string(name), 0) << name;
    }
    EXPECT_EQ(SystemIds::from_string(nullptr), 0);
}

}  // namespace

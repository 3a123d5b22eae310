// SPDX-License-Identifier: Apache-2.0
#include "ASPN/TimeCodeHelper.h"

#include <gtest/gtest.h>

namespace {

using ASPN2::TimeCodeHelper;

TEST(TimeCodeHelper, StartsLive) {
    EXPECT_EQ(TimeCodeHelper::Instance().getTimeCode(), 100);
}

TEST(TimeCodeHelper, ChangesBetweenLiveAndSimulation) {
    TimeCodeHelper::Instance().setSimMode();
    EXPECT_EQ(TimeCodeHelper::Instance().getTimeCode(), 101);

    TimeCodeHelper::Instance().setLiveMode();
    EXPECT_EQ(TimeCodeHelper::Instance().getTimeCode(), 100);
}

TEST(TimeCodeHelper, IsOneForTheWholeProcess) {
    EXPECT_EQ(&TimeCodeHelper::Instance(), &TimeCodeHelper::Instance());
}

}  // namespace

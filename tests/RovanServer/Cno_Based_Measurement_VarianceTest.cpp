// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/Cno_Based_Measurement_Variance.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

namespace idl = aspn2_msgs::idl;

constexpr double kReported = 123.456;

struct Row {
    int cn0;
    double y;       // pseudorange, codes 2 and 3
    double m;       // pseudorange, code 4
    double mDelta;  // delta range, code 4
};
const Row kRows[] = {
    {14, 10.6, 2.15, 0.17},
    {15, 10.0, 1.95, 0.14},
    {16, 9.4, 1.75, 0.1},
    {17, 8.8, 1.5, 0.07},
    {18, 8.2, 1.3, 0.04},
    {19, 7.5, 1.2, 0.01},
    {20, 6.9, 1.0, 0.002},
    {21, 6.3, 0.8, 0.0018},
    {22, 5.7, 0.5, 0.00055},
    {23, 5.1, 0.35, 0.00045},
    {24, 4.5, 0.25, 0.00033},
    {25, 3.8, 0.2, 0.0004},
    {26, 3.2, 0.18, 0.00035},
    {27, 2.6, 0.15, 0.00025},
    {28, 2.25, 0.12, 0.00017},
    // Beyond the tables.
    {13, 10.6, 2.15, 0.17},
    {10, 10.6, 2.15, 0.17},
    {0, 10.6, 2.15, 0.17},
    {-1, 10.6, 2.15, 0.17},
    {INT_MIN, 10.6, 2.15, 0.17},
    {29, 2.25, 0.12, 0.00017},
    {40, 2.25, 0.12, 0.00017},
    {255, 2.25, 0.12, 0.00017},
    {INT_MAX, 2.25, 0.12, 0.00017},
};

double pseudorangeVariance(int code, int state, int cn0) {
    double variance = kReported;
    Cno_Based_Measurement_Variance::pr_override_check(
        variance, static_cast<idl::channel_code_enum>(code),
        static_cast<idl::channel_state_enum>(state), cn0);
    return variance;
}

double deltaRangeVariance(int code, int state, int cn0) {
    double variance = kReported;
    Cno_Based_Measurement_Variance::dr_override_check(
        variance, static_cast<idl::channel_code_enum>(code),
        static_cast<idl::channel_state_enum>(state), cn0);
    return variance;
}

}  // namespace

TEST(CnoBasedMeasurementVariance, HoldsItsTables) {
    ASSERT_EQ(std::size(kRows), 15u + 9u);
    for (const Row& row : kRows) {
        EXPECT_EQ(pseudorangeVariance(2, 3, row.cn0), row.y) << row.cn0;
        EXPECT_EQ(pseudorangeVariance(3, 3, row.cn0), row.y) << row.cn0;
        for (const int state : {3, 4, 5}) {
            EXPECT_EQ(pseudorangeVariance(4, state, row.cn0), row.m) << row.cn0;
            EXPECT_EQ(deltaRangeVariance(4, state, row.cn0), row.mDelta) << row.cn0;
        }
    }
}

TEST(CnoBasedMeasurementVariance, LeavesAllOtherCodesAndStatesAlone) {
    int left = 0;
    for (int code = 0; code <= 4; ++code) {
        for (int state = 0; state <= 15; ++state) {
            const bool m = code == 4 && state >= 3 && state <= 5;
            const bool y = (code == 2 || code == 3) && state == 3;
            for (const Row& row : kRows) {
                EXPECT_EQ(pseudorangeVariance(code, state, row.cn0), m   ? row.m
                                                                     : y ? row.y
                                                                         : kReported)
                    << code << ' ' << state << ' ' << row.cn0;
                EXPECT_EQ(deltaRangeVariance(code, state, row.cn0), m ? row.mDelta : kReported)
                    << code << ' ' << state << ' ' << row.cn0;
            }
            left += m || y ? 0 : 1;
        }
    }
    EXPECT_EQ(left, 5 * 16 - 5);
}

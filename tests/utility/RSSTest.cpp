// SPDX-License-Identifier: Apache-2.0
#include "utility/RSS.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

// The sums of squares below are whole squares, so every step is exact in double.

TEST(RSS, SquareSumAddsTheSquare) {
    EXPECT_EQ(19.0, RSS::SquareSum(10.0, 3.0));
    EXPECT_EQ(19.0, RSS::SquareSum(10.0, -3.0));
}

TEST(RSS, RootItIsZeroBelowTheEpsilonAndTheRootFromItOn) {
    constexpr double kEpsilon = 2.220446049250313e-16;  // 2 to the power of -52
    EXPECT_EQ(0.0, RSS::RootIt(0.0));
    EXPECT_EQ(0.0, RSS::RootIt(-4.0));
    EXPECT_EQ(0.0, RSS::RootIt(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(0.0, RSS::RootIt(2.2204460492503128e-16));       // the double just below
    EXPECT_EQ(1.4901161193847656e-08, RSS::RootIt(kEpsilon));  // 2 to the power of -26
    EXPECT_EQ(3.0, RSS::RootIt(9.0));
}

TEST(RSS, RssTakesTwoToSixTerms) {
    EXPECT_EQ(5.0, RSS::Rss(3.0, -4.0));                     // 9 + 16
    EXPECT_EQ(3.0, RSS::Rss(1.0, 2.0, 2.0));                 // 1 + 4 + 4
    EXPECT_EQ(6.0, RSS::Rss(1.0, 1.0, 3.0, 5.0));            // 1 + 1 + 9 + 25
    EXPECT_EQ(5.0, RSS::Rss(4.0, 2.0, 2.0, 1.0, 0.0));       // 16 + 4 + 4 + 1
    EXPECT_EQ(7.0, RSS::Rss(6.0, 2.0, 2.0, 2.0, 1.0, 0.0));  // 36 + 4 + 4 + 4 + 1
}

TEST(RSS, EveryTermCounts) {
    EXPECT_EQ(2.0, RSS::Rss(0.0, 2.0));
    EXPECT_EQ(2.0, RSS::Rss(0.0, 0.0, 2.0));
    EXPECT_EQ(2.0, RSS::Rss(0.0, 0.0, 0.0, 2.0));
    EXPECT_EQ(2.0, RSS::Rss(0.0, 0.0, 0.0, 0.0, 2.0));
    EXPECT_EQ(2.0, RSS::Rss(0.0, 0.0, 0.0, 0.0, 0.0, 2.0));
}

TEST(RSS, RssOfZeroAndOfTinyTermsIsExactlyZero) {
    EXPECT_EQ(0.0, RSS::Rss(0.0, 0.0));
    EXPECT_EQ(0.0, RSS::Rss(1e-8, 1e-9));  // 1.01e-16
}

TEST(RSS, TermsThatAreNoFiniteNumbersComeThrough) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(infinity, RSS::Rss(1.0, -infinity));
    EXPECT_TRUE(std::isnan(RSS::Rss(1.0, std::numeric_limits<double>::quiet_NaN())));
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "tools/config/Suggestion.h"

#include <gtest/gtest.h>

namespace {

using Config::distance;
using Config::suggestion;

TEST(Distance, CountsLettersPutInLeftOutReplacedAndSwapped) {
    EXPECT_EQ(distance("", ""), 0u);
    EXPECT_EQ(distance("abc", "abc"), 0u);
    EXPECT_EQ(distance("abc", ""), 3u);
    EXPECT_EQ(distance("abc", "abxc"), 1u);
    EXPECT_EQ(distance("abc", "ac"), 1u);
    EXPECT_EQ(distance("abc", "axc"), 1u);
    EXPECT_EQ(distance("abc", "acb"), 1u);
    EXPECT_EQ(distance("kitten", "sitting"), 3u);
}

TEST(Distance, CountsCaseAsHalfALetter) {
    EXPECT_EQ(distance("udp", "UDp"), 1u);
    EXPECT_EQ(distance("udp", "UDP"), 2u);
}

TEST(Distance, OfLongTextsIsTheirLength) {
    EXPECT_EQ(distance(std::string(101, 'a'), "a"), 101u);
    EXPECT_EQ(distance(std::string(10'000'000, 'a'), std::string(10'000'000, 'a')), 10'000'000u);
}

TEST(Suggestion, IsTheClosestWithinASlipOfThePen) {
    EXPECT_EQ(suggestion("Baudrat", {"DataBits", "Baudrate"}), "Baudrate");
    EXPECT_EQ(suggestion("PARAM_11", {"PARAM_1", "PARAM_2"}), "PARAM_1");
    EXPECT_EQ(suggestion("Port", {"Parity", "StopBits"}), "");
    EXPECT_EQ(suggestion("Port", {"Port"}), "");
    EXPECT_EQ(suggestion("Port", {}), "");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "ASPN/ResponseType.h"

#include <gtest/gtest.h>

namespace {

using ASPN2::ResponseType;

int typeOf(const std::string& text) {
    aspn2_msgs::idl::CommandResponse response;
    response.command_response(text);
    return ResponseType::GetResponseType(response);
}

TEST(ResponseType, KnowsTheFourSuffixes) {
    EXPECT_EQ(typeOf("X_ACK"), 1);
    EXPECT_EQ(typeOf("X_NACK"), 2);
    EXPECT_EQ(typeOf("X_PASS"), 3);
    EXPECT_EQ(typeOf("X_FAIL"), 4);
}

TEST(ResponseType, FindsThemAnywhereInTheText) {
    EXPECT_EQ(typeOf("X_ACK,1"), 1);
    EXPECT_EQ(typeOf("_NACK"), 2);
    EXPECT_EQ(typeOf("A_PASSAGE,7"), 3);
}

TEST(ResponseType, TakesTheFirstOfTheOrderNotOfTheText) {
    EXPECT_EQ(typeOf("X_FAIL_ACK"), 1);
    EXPECT_EQ(typeOf("X_NACK_ACK"), 1);
    EXPECT_EQ(typeOf("X_FAIL_PASS"), 3);
    EXPECT_EQ(typeOf("X_PASS_NACK"), 2);
}

TEST(ResponseType, GivesZeroForAnythingElse) {
    for (const char* text : {"", "X", "ACK", "X_ack", "CURRENT_ROVAN_STATUS", "X_AC"}) {
        EXPECT_EQ(typeOf(text), 0) << text;
    }
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "ASPN/Components.h"

#include <gtest/gtest.h>

namespace {

using ASPN2::Components;

TEST(Components, CallsThisServersReceiverGps) {
    EXPECT_STREQ(Components::to_component(39, 0), "GPS");
}

TEST(Components, NamesSubIdsOneAndTwoAlikeOnEveryServer) {
    const char* const first = Components::to_component(39, 1);
    const char* const second = Components::to_component(39, 2);

    EXPECT_STRNE(first, second);
    EXPECT_STRNE(first, "INVALID_SERVER_ID");
    EXPECT_STRNE(second, "INVALID_SERVER_ID");
    constexpr unsigned char kServers[] = {0, 1, 47, 200};
    for (const unsigned char server : kServers) {
        EXPECT_STREQ(Components::to_component(server, 1), first) << int{server};
        EXPECT_STREQ(Components::to_component(server, 2), second) << int{server};
    }
}

TEST(Components, HasNoNameWithoutAMatch) {
    EXPECT_STREQ(Components::to_component(39, 3), "INVALID_SERVER_ID");
    EXPECT_STREQ(Components::to_component(39, 255), "INVALID_SERVER_ID");
    EXPECT_STREQ(Components::to_component(0, 0), "INVALID_SERVER_ID");
    EXPECT_STREQ(Components::to_component(255, 0), "INVALID_SERVER_ID");
}

}  // namespace

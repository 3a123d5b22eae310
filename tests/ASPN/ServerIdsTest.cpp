// SPDX-License-Identifier: Apache-2.0
#include "ASPN/ServerIds.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using ASPN2::ServerIds;

TEST(ServerIds, NamesThisServerAndTheOneItAnswers) {
    EXPECT_STREQ(ServerIds::to_string(39), "Rovan");
    EXPECT_STREQ(ServerIds::to_string(47), "ZelmServer");
}

TEST(ServerIds, HasNoNameForZero) {
    EXPECT_STREQ(ServerIds::to_string(0), "INVALID_SERVER_ID");
}

// The ids in use: 1, 16, 32 to 42, 44 to 54, 80, 96, 97 and 113 to 125.
bool isInUse(unsigned id) {
    return id == 1 || id == 16 || (id >= 32 && id <= 42) || (id >= 44 && id <= 54) || id == 80 ||
           id == 96 || id == 97 || (id >= 113 && id <= 125);
}

TEST(ServerIds, HasANameOfItsOwnForEachIdInUseAndForNoOther) {
    std::set<std::string> names;
    for (unsigned id = 0; id <= 255; ++id) {
        const std::string name = ServerIds::to_string(static_cast<unsigned char>(id));
        if (isInUse(id)) {
            EXPECT_NE(name, "INVALID_SERVER_ID") << id;
            names.insert(name);
        } else {
            EXPECT_EQ(name, "INVALID_SERVER_ID") << id;
        }
    }
    EXPECT_EQ(names.size(), 40u);
}

}  // namespace

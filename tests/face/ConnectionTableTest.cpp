// SPDX-License-Identifier: Apache-2.0
#include "face/ConnectionTable.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using Code = FACE::RETURN_CODE_TYPE::Value;

struct Line : FACE::IOSS::NamedConnection {
    Line(const std::string& itsName, int itsNumber) : NamedConnection(itsName), number(itsNumber) {}
    Line(const Line&) = delete;  // a connection stays where it was made
    int number;
};

using Table = FACE::IOSS::ConnectionTable<Line>;

TEST(ConnectionTable, GivesIdsInTheOrderOfEntry) {
    Table table;

    EXPECT_EQ(table.add("a", 10), 0);
    EXPECT_EQ(table.add("b", 11), 1);
    EXPECT_EQ(table.size(), 2u);

    Code rc = FACE::RETURN_CODE_TYPE::NO_ACTION;
    EXPECT_EQ(table.find(1, rc)->number, 11);
    EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);
}

TEST(ConnectionTable, KnowsConnectionsByName) {
    Table table;
    EXPECT_EQ(table.idOf("a"), -1);
    table.add("a", 1);
    table.add("b", 2);

    EXPECT_EQ(table.idOf("a"), 0);
    EXPECT_EQ(table.idOf("b"), 1);
    EXPECT_EQ(table.idOf("B"), -1);
    EXPECT_EQ(table.idOf(""), -1);
}

TEST(ConnectionTable, FindsTheFirstOfTwoEqualNames) {
    Table table;
    table.add("a", 1);
    table.add("a", 2);

    EXPECT_EQ(table.idOf("a"), 0);
}

TEST(ConnectionTable, RefusesEveryIdItNeverGave) {
    Table table;
    table.add("a", 1);

    for (const long long id : {-1LL, 1LL, std::numeric_limits<long long>::max(),
                               std::numeric_limits<long long>::min(), 0x100000000LL}) {
        Code rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        EXPECT_EQ(table.find(id, rc), nullptr) << id;
        EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::INVALID_PARAM) << id;
        rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
        EXPECT_EQ(table.findOpen(id, rc), nullptr) << id;
        EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::INVALID_PARAM) << id;
    }
}

TEST(ConnectionTable, TellsAClosedConnectionFromAnOpenOne) {
    Table table;
    const long long id = table.add("a", 1);
    Code rc = FACE::RETURN_CODE_TYPE::NO_ERROR;

    EXPECT_EQ(table.findOpen(id, rc), nullptr);
    EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::CONNECTION_CLOSED);

    Line* const line = table.find(id, rc);
    line->isOpen = true;
    EXPECT_EQ(table.findOpen(id, rc), line);
    EXPECT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);
}

TEST(ConnectionTable, NeverMovesAConnection) {
    Table table;
    Code rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    Line* const first = table.find(table.add("first", 7), rc);

    for (int i = 0; i < 10'000; ++i) {
        table.add(std::to_string(i), i);
    }

    EXPECT_EQ(table.find(0, rc), first);
    EXPECT_EQ(first->name, "first");
    EXPECT_EQ(first->number, 7);
}

TEST(ConnectionTable, WalksItsConnectionsInOrder) {
    Table table;
    table.add("a", 1);
    table.add("b", 2);

    std::string names;
    for (Line& line : table) {
        names += line.name;
    }

    EXPECT_EQ(names, "ab");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <vector>

#include "PCSMaintReporter/PCSMaintReporter.h"

namespace {

using Sources = std::array<int, 8>;  // lru and component, four times

struct Row {
    std::vector<int> serverIds;
    int result;
    Sources sources;
};

const std::vector<Row> kRows{
    {{1, 32, 37, 40, 51, 53, 54}, 1, {1, 0}},
    {{33, 34}, 1, {1, 5}},
    {{35}, 1, {1, 9}},
    {{36}, 1, {1, 10}},
    {{38}, 1, {1, 3}},
    {{39, 50, 80}, 4, {1, 4, 2, 14, 2, 16}},
    {{41, 42}, 16, {3, 16, 3, 17, 1, 17, 1, 1}},
    {{44, 45, 46, 52, 125}, 1, {1, 8}},
    {{47}, 14, {2, 15, 2, 14, 2, 13, 2, 16}},
    {{48}, 1, {1, 6}},
    {{49}, 1, {1, 2}},
    {{96, 97}, 0, {1, 1}},
};

struct Answer {
    int result;
    Sources sources;
};

Answer answerFor(int serverId) {
    // No answer has these numbers: every output is written.
    auto lru = std::array<PCSMaintReporter::Lru, 4>{};
    auto component = std::array<PCSMaintReporter::Component, 4>{};
    lru.fill(static_cast<PCSMaintReporter::Lru>(-1));
    component.fill(static_cast<PCSMaintReporter::Component>(-1));
    Answer answer{};
    answer.result = PCSMaintReporter::Instance().getDefaultLruSubForServerID(
        static_cast<unsigned char>(serverId), lru[0], component[0], lru[1], component[1], lru[2],
        component[2], lru[3], component[3]);
    for (std::size_t i = 0; i < 4; ++i) {
        answer.sources[2 * i] = lru[i];
        answer.sources[2 * i + 1] = component[i];
    }
    return answer;
}

TEST(DefaultSources, FollowTheTableForEveryServerId) {
    std::map<int, Row> expected;
    for (const Row& row : kRows) {
        for (const int id : row.serverIds) {
            EXPECT_TRUE(expected.emplace(id, row).second) << id << " twice";
        }
    }
    EXPECT_EQ(27u, expected.size());
    for (int id = 0; id < 256; ++id) {
        const auto row = expected.find(id);
        const Answer answer = answerFor(id);
        EXPECT_EQ(row == expected.end() ? 0 : row->second.result, answer.result) << id;
        EXPECT_EQ(row == expected.end() ? Sources{} : row->second.sources, answer.sources) << id;
    }
}

}  // namespace

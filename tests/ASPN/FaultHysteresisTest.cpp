// SPDX-License-Identifier: Apache-2.0
#include "ASPN/FaultHysteresis.h"

#include <gmock/gmock.h>

#include <thread>

#include "utility/Sleep.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using EventTypes::eEventType;

// Stands first: the filter cannot go back to what it is before its first set-up. Under ctest each
// test has a process of its own.
TEST(FaultHysteresisBeforeSetUp, MarksNothing) {
    auto type = EventTypes::eError;
    FaultHysteresis& filter = FaultHysteresis::Instance();
    EXPECT_EQ("x", filter.Check(type, "Foo", 1, "x"));
    EXPECT_EQ(EventTypes::eError, type);
    EXPECT_TRUE(filter.faults().empty());
}

class FaultHysteresisTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(m_filter.OkInitFaultHysteresis(180, 16, 2000)); }

    std::string check(unsigned type, const std::string& file, int line, const std::string& text) {
        auto typed = static_cast<eEventType>(type);
        std::string marked = m_filter.Check(typed, file, line, text);
        EXPECT_EQ(type, typed) << "no type ever changes";
        return marked;
    }

    std::vector<std::string> keys() const {
        std::vector<std::string> keys;
        for (const auto& entry : m_filter.faults()) {
            keys.push_back(entry.key);
        }
        return keys;
    }

    FaultHysteresis& m_filter = FaultHysteresis::Instance();
};

TEST_F(FaultHysteresisTest, MarksErrorsAndFailuresWithTheirSourcePosition) {
    EXPECT_EQ("Foo[12]:x", check(4, "/a/b/Foo", 12, "x"));
    EXPECT_EQ("Foo.cpp[1]:x", check(3, "/a/b/Foo.cpp", 1, "x"));
    EXPECT_EQ("Foo[-1]:", check(5, "/a/b/Foo", -1, ""));
}

TEST_F(FaultHysteresisTest, LeavesOtherTypesUnchanged) {
    for (const unsigned type : {0u, 1u, 2u, 6u, 7u, 0xFFFFFFFFu}) {
        EXPECT_EQ("x", check(type, "/a/b/Foo", 12, "x")) << type;
    }
}

TEST_F(FaultHysteresisTest, TakesTheNameAfterTheLastSlashOrBackslash) {
    EXPECT_EQ("Foo[1]:x", check(4, "Foo", 1, "x")) << "without a directory the name stays whole";
    EXPECT_EQ("Foo[1]:x", check(4, "C:\\a\\Foo", 1, "x"));
    EXPECT_EQ("Foo[1]:x", check(4, "a/b\\Foo", 1, "x"));
    EXPECT_EQ("Foo[1]:x", check(4, "a\\b/Foo", 1, "x"));
    EXPECT_EQ("[1]:x", check(4, "a/b/", 1, "x"));
    EXPECT_EQ("[1]:x", check(4, "", 1, "x"));
}

TEST_F(FaultHysteresisTest, MarksNothingWithoutAThresholdOrAMaximum) {
    ASSERT_TRUE(m_filter.OkInitFaultHysteresis(180, 0, 2000));
    EXPECT_EQ("x", check(3, "Foo", 1, "x"));
    ASSERT_TRUE(m_filter.OkInitFaultHysteresis(180, 16, 0));
    EXPECT_EQ("x", check(3, "Foo", 1, "x"));
    EXPECT_TRUE(keys().empty());
}

TEST_F(FaultHysteresisTest, RecordsErrorsOnlyByFileAsGivenAndLine) {
    check(3, "/a/Foo", 12, "x");
    check(4, "/a/Foo", 13, "x");
    check(5, "/a/Foo", 14, "x");
    check(2, "/a/Foo", 15, "x");
    check(3, "/a/Foo", 12, "another text");
    EXPECT_THAT(keys(), testing::ElementsAre("/a/Foo12", "/a/Foo12"));
}

TEST_F(FaultHysteresisTest, NeverHoldsAReportBack) {
    for (int i = 0; i < 40; ++i) {  // well beyond the threshold
        EXPECT_EQ("Foo[12]:x", check(3, "/a/Foo", 12, "x"));
    }
    EXPECT_EQ(40u, keys().size());
}

TEST_F(FaultHysteresisTest, TheFirstErrorAboveTheMaximumPushesOutTheOldest) {
    for (int line = 1; line <= 2000; ++line) {
        check(3, "Foo", line, "x");
    }
    ASSERT_EQ(2000u, keys().size());
    EXPECT_EQ("Foo1", keys().front());

    check(3, "Foo", 2001, "x");

    EXPECT_EQ(2000u, keys().size());
    EXPECT_EQ("Foo2", keys().front());
    EXPECT_EQ("Foo2001", keys().back());
}

TEST_F(FaultHysteresisTest, ErrorsLeaveTheRecordWhenTheWindowHasPassed) {
    ASSERT_TRUE(m_filter.OkInitFaultHysteresis(2, 16, 2000));
    check(3, "Foo", 1, "x");
    Utility::sleepFor(1s);
    check(3, "Foo", 2, "x");
    const auto entries = m_filter.faults();
    ASSERT_EQ(2u, entries.size()) << "half a window is no whole one";

    Utility::sleepFor(entries[0].time + 2001ms - Clock::now());
    check(3, "Foo", 3, "x");

    EXPECT_THAT(keys(), testing::ElementsAre("Foo2", "Foo3"));
}

TEST_F(FaultHysteresisTest, AWindowOfZeroKeepsErrorsForEver) {
    ASSERT_TRUE(m_filter.OkInitFaultHysteresis(0, 16, 2000));
    check(3, "Foo", 1, "x");
    Utility::sleepFor(10ms);
    check(3, "Foo", 2, "x");
    EXPECT_THAT(keys(), testing::ElementsAre("Foo1", "Foo2"));
}

TEST_F(FaultHysteresisTest, ANegativeArgumentIsRefusedAndChangesNothing) {
    ASSERT_TRUE(m_filter.OkInitFaultHysteresis(180, 16, 1));
    check(3, "Foo", 1, "x");
    EXPECT_FALSE(m_filter.OkInitFaultHysteresis(-1, 0, 2000));
    EXPECT_FALSE(m_filter.OkInitFaultHysteresis(180, -1, 2000));
    EXPECT_FALSE(m_filter.OkInitFaultHysteresis(180, 16, -1));
    EXPECT_THAT(keys(), testing::ElementsAre("Foo1"));
    EXPECT_EQ("Foo[2]:x", check(3, "Foo", 2, "x")) << "the threshold is still there";
    EXPECT_THAT(keys(), testing::ElementsAre("Foo2")) << "and so is the maximum";
}

TEST_F(FaultHysteresisTest, SettingUpAgainEmptiesTheRecord) {
    check(3, "Foo", 1, "x");
    ASSERT_TRUE(m_filter.OkInitFaultHysteresis(180, 16, 2000));
    EXPECT_TRUE(keys().empty());
}

TEST_F(FaultHysteresisTest, ThreadsMayReportWhileItIsSetUpAgain) {
    std::vector<std::thread> reporters;
    for (int r = 0; r < 3; ++r) {
        reporters.emplace_back([this, r] {
            for (int i = 0; i < 500; ++i) {
                auto type = EventTypes::eError;
                EXPECT_EQ("Foo[" + std::to_string(r) + "]:x", m_filter.Check(type, "Foo", r, "x"));
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(m_filter.OkInitFaultHysteresis(180, 16, i % 2 == 0 ? 5 : 3));
    }
    for (std::thread& reporter : reporters) {
        reporter.join();
    }
    EXPECT_LE(keys().size(), 3u);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Tally.h"

#include <gtest/gtest.h>

namespace {

using Bus::Sample;
using Bus::Tally;

Sample sample(const std::string& topic, unsigned char writer, uint64_t sequence) {
    Sample s;
    s.topic = topic;
    s.writer.guidPrefix.value[0] = writer;
    s.sequence = sequence;
    s.message = Bus::makeMessage("aspn2_msgs::idl::EventLog");
    return s;
}

TEST(Tally, SaysThatThereWasNothing) {
    EXPECT_EQ(Tally().summary(), "no samples\n");
}

TEST(Tally, CountsEachTopic) {
    Tally tally;
    tally.add(sample("B", 1, 5));
    tally.add(sample("A", 2, 9));
    tally.add(sample("B", 1, 6));

    EXPECT_EQ(tally.summary(),
              "A: 1 samples, 0 lost, 0 unreadable\n"
              "B: 2 samples, 0 lost, 0 unreadable\n");
}

TEST(Tally, MissesWhatIsNotInThePublishersNumbering) {
    Tally tally;
    tally.add(sample("A", 1, 5));
    tally.add(sample("A", 1, 8));
    tally.add(sample("A", 1, 9));

    EXPECT_EQ(tally.summary(), "A: 3 samples, 2 lost, 0 unreadable\n");
}

TEST(Tally, KeepsThePublishersOfATopicApart) {
    Tally tally;
    for (uint64_t i = 0; i < 3; ++i) {
        tally.add(sample("A", 1, 5 + i));
        tally.add(sample("A", 2, 1000 + i));
    }

    EXPECT_EQ(tally.summary(), "A: 6 samples, 0 lost, 0 unreadable\n");
}

TEST(Tally, IsNotConfusedByASampleThatComesAgain) {
    Tally tally;
    for (const uint64_t sequence : {5u, 6u, 6u, 5u, 7u}) {
        tally.add(sample("A", 1, sequence));
    }

    EXPECT_EQ(tally.summary(), "A: 5 samples, 0 lost, 0 unreadable\n");
}

TEST(Tally, CountsWhatCouldNotBeRead) {
    Tally tally;
    Sample unreadable;
    unreadable.topic = "A";
    tally.add(unreadable);

    EXPECT_EQ(tally.summary(), "A: 0 samples, 0 lost, 1 unreadable\n");
    EXPECT_TRUE(tally.hasUnreadable("A"));
    EXPECT_FALSE(tally.hasUnreadable("B"));
}

TEST(Tally, HasNoProblemUntilSomethingIsMissing) {
    Tally tally;
    tally.add(sample("A", 1, 1));
    tally.add(sample("B", 2, 1));
    EXPECT_EQ(tally.problems(), "");

    tally.add(sample("B", 2, 3));
    EXPECT_EQ(tally.problems(), "B: 2 samples, 1 lost, 0 unreadable\n");
}

}  // namespace

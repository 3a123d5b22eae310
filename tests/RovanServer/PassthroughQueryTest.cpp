// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/PassthroughQuery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/RovanServer/RecordedActions.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A link that refuses its next messages.
class FailingLink : public RecordedActions {
  public:
    using RecordedActions::queueMessage;
    void queueMessage(GssipMessagePtr message) override {
        if (failures-- > 0) {
            throw std::runtime_error("no link");
        }
        RecordedActions::queueMessage(std::move(message));
    }

    int failures = 0;
};

}  // namespace

TEST(PassthroughQuery, EndsAtOnceAndSaysNothingOutsideAReradSetup) {
    for (const char* environment :
         {"SYSTEM_ENV_LIVE", "", "system_env_rerad", "SYSTEM_ENV_RERAD "}) {
        RecordedActions actions;
        PassthroughQuery query(actions, environment);
        EXPECT_FALSE(query.check()) << environment;
        query.enable();
        EXPECT_FALSE(query.check()) << environment;
        EXPECT_THAT(actions.take(), IsEmpty()) << environment;
    }
}

TEST(PassthroughQuery, AsksOnEachRunUntilPassthroughIsEnabled) {
    RecordedActions actions;
    PassthroughQuery query(actions, "SYSTEM_ENV_RERAD");
    for (int run = 0; run < 5; ++run) {
        EXPECT_TRUE(query.check());
        EXPECT_THAT(actions.take(), ElementsAre("command QUERY_PASSTHROUGH_STATE"));
    }
}

TEST(PassthroughQuery, AsksOnceMoreInTheRunThatFindsItEnabledAndTellsTheReceiver) {
    RecordedActions actions;
    PassthroughQuery query(actions, "SYSTEM_ENV_RERAD");
    query.check();
    actions.take();
    query.enable();
    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_FALSE(query.check());
    EXPECT_THAT(actions.take(), ElementsAre("command QUERY_PASSTHROUGH_STATE", "queue 5001 mist 3",
                                            "queue 5001 mode 1"));
}

TEST(PassthroughQuery, TheReceiverGetsTheExtendedCommandWithItsSelector) {
    RecordedActions actions;
    PassthroughQuery query(actions, "SYSTEM_ENV_RERAD");
    query.enable();
    query.check();
    ASSERT_EQ(actions.messages.size(), 2u);
    EXPECT_EQ(actions.messages[0]->data()[4], 64);
    EXPECT_EQ(actions.messages[0]->data()[5], 14371);
    EXPECT_EQ(actions.messages[0]->data()[6], 3);
    EXPECT_THAT(actions.callbacks, ElementsAre(testing::IsNull(), testing::IsNull()));
}

TEST(PassthroughQuery, AThreadThatIsStartedAgainTellsTheReceiverAgain) {
    RecordedActions actions;
    PassthroughQuery query(actions, "SYSTEM_ENV_RERAD");
    query.enable();
    EXPECT_FALSE(query.check());
    const auto firstTime = actions.take();
    EXPECT_FALSE(query.check());
    EXPECT_EQ(actions.take(), firstTime);
}

TEST(PassthroughQuery, ARunThatFailsIsMadeAgain) {
    FailingLink actions;
    PassthroughQuery query(actions, "SYSTEM_ENV_RERAD");
    query.enable();
    actions.failures = 1;
    EXPECT_THROW(query.check(), std::runtime_error);
    EXPECT_THAT(actions.take(), ElementsAre("command QUERY_PASSTHROUGH_STATE"));
    EXPECT_FALSE(query.check());
    EXPECT_THAT(actions.take(), ElementsAre("command QUERY_PASSTHROUGH_STATE", "queue 5001 mist 3",
                                            "queue 5001 mode 1"));
}

// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ZeroizeCommanded.h"

#include <gtest/gtest.h>

#include <future>

#include "tests/RovanServer/RecordedActions.h"

using namespace std::chrono_literals;

namespace {

class ZeroizeCommandedTest : public testing::Test {
  protected:
    /// Whether another thread that makes a destroy pending has to wait while `step` of `operation`
    /// runs; it has gone on when this returns.
    template <typename Operation>
    bool keepsOthersOut(Operation operation) {
        std::future<void> other;
        bool kept = false;
        operation([&] {
            other = std::async(std::launch::async, [this] {
                commanded.Pending(zeroizeType::destroy, commandOf("other"));
            });
            kept = other.wait_for(50ms) == std::future_status::timeout;
        });
        other.get();
        return kept;
    }

    std::chrono::steady_clock::time_point now{1h};
    ZeroizeCommanded commanded{[this] { return now; }};
};

void neverRuns() {
    ADD_FAILURE() << "the step of a replaced command ran";
}

}  // namespace

TEST_F(ZeroizeCommandedTest, NothingIsPendingAtFirst) {
    EXPECT_EQ(commanded.type(), zeroizeType::none);
    EXPECT_FALSE(commanded.pending());
}

TEST_F(ZeroizeCommandedTest, TheKindsHaveTheirNumbers) {
    static_assert(sizeof(zeroizeType) == 4);
    EXPECT_EQ(static_cast<int>(zeroizeType::none), 0);
    EXPECT_EQ(static_cast<int>(zeroizeType::cvZeroize), 1);
    EXPECT_EQ(static_cast<int>(zeroizeType::zeroize), 2);
    EXPECT_EQ(static_cast<int>(zeroizeType::destroy), 3);
}

TEST_F(ZeroizeCommandedTest, APendingCommandComesBackWhenItIsComplete) {
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));

    EXPECT_EQ(commanded.type(), zeroizeType::zeroize);
    EXPECT_FALSE(commanded.pending());
    EXPECT_EQ(commanded.Complete().command_response(), "first");
    EXPECT_EQ(commanded.type(), zeroizeType::none);
    EXPECT_FALSE(commanded.pending());
}

TEST_F(ZeroizeCommandedTest, CompletingCopiesTheCommandAndKeepsIt) {
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));
    commanded.Complete();

    EXPECT_EQ(commanded.Complete().command_response(), "first");
}

TEST_F(ZeroizeCommandedTest, TheLaterPendingCommandCounts) {
    commanded.Pending(zeroizeType::cvZeroize, commandOf("first"));
    now += 5s;
    commanded.Pending(zeroizeType::destroy, commandOf("second"));

    EXPECT_EQ(commanded.type(), zeroizeType::destroy);
    EXPECT_EQ(commanded.elapsed(), 0s);
    EXPECT_EQ(commanded.Complete().command_response(), "second");
}

TEST_F(ZeroizeCommandedTest, TimeCountsFromTheCommandInWholeSeconds) {
    now += 1h;
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));

    now += 2999ms;
    EXPECT_EQ(commanded.elapsed(), 2s);
    now += 1ms;
    EXPECT_EQ(commanded.elapsed(), 3s);
}

TEST_F(ZeroizeCommandedTest, TimeStartsAgainForTheCommandThatIsHandled) {
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));
    now += 11s;

    EXPECT_TRUE(commanded.restart(zeroizeType::zeroize));
    EXPECT_EQ(commanded.elapsed(), 0s);
}

TEST_F(ZeroizeCommandedTest, TimeGoesOnForACommandThatHasReplacedTheHandledOne) {
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));
    now += 11s;

    EXPECT_FALSE(commanded.restart(zeroizeType::cvZeroize));
    EXPECT_EQ(commanded.elapsed(), 11s);
}

TEST_F(ZeroizeCommandedTest, TheHandledCommandIsFinishedWithItsStep) {
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));
    zeroizeType typeInStep = zeroizeType::destroy;

    const auto command =
        commanded.CompleteIf(zeroizeType::zeroize, [&] { typeInStep = commanded.type(); });

    ASSERT_TRUE(command.has_value());
    EXPECT_EQ(command->command_response(), "first");
    EXPECT_EQ(typeInStep, zeroizeType::none);
    EXPECT_EQ(commanded.type(), zeroizeType::none);
}

TEST_F(ZeroizeCommandedTest, ACommandThatHasReplacedTheHandledOneIsNotFinished) {
    commanded.Pending(zeroizeType::destroy, commandOf("second"));

    EXPECT_FALSE(commanded.CompleteIf(zeroizeType::zeroize, neverRuns).has_value());
    EXPECT_EQ(commanded.type(), zeroizeType::destroy);
    EXPECT_EQ(commanded.Complete().command_response(), "second");
    EXPECT_FALSE(commanded.CompleteIf(zeroizeType::zeroize, neverRuns).has_value());
}

TEST_F(ZeroizeCommandedTest, TheFirstStepRunsBeforeTheTypeShows) {
    zeroizeType typeInStep = zeroizeType::destroy;

    commanded.Pending(zeroizeType::destroy, commandOf("first"),
                      [&] { typeInStep = commanded.type(); });

    EXPECT_EQ(typeInStep, zeroizeType::none);
    EXPECT_EQ(commanded.type(), zeroizeType::destroy);
}

TEST_F(ZeroizeCommandedTest, ACommandWaitsWhileAnotherIsFinished) {
    commanded.Pending(zeroizeType::zeroize, commandOf("first"));

    EXPECT_TRUE(keepsOthersOut([this](const ZeroizeCommanded::Step& step) {
        EXPECT_TRUE(commanded.CompleteIf(zeroizeType::zeroize, step).has_value());
    }));
    EXPECT_EQ(commanded.type(), zeroizeType::destroy);
}

TEST_F(ZeroizeCommandedTest, ACommandWaitsWhileAnotherStarts) {
    EXPECT_TRUE(keepsOthersOut([this](const ZeroizeCommanded::Step& step) {
        commanded.Pending(zeroizeType::zeroize, commandOf("first"), step);
    }));
    EXPECT_EQ(commanded.type(), zeroizeType::destroy);
}

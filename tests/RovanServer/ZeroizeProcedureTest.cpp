// SPDX-License-Identifier: Apache-2.0
// The three commands, how they replace each other, and the two zeroizes that are one command with a
// retry.
#include "RovanServer/ZeroizeProcedure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/RovanServer/RecordedActions.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Acceptance = ZeroizeProcedure::Acceptance;
using Lines = std::vector<std::string>;

constexpr auto kIpDataClear = Rovan_5404_Msg::e5404_IPZeroize_0;  // makes ipClearStatus 2
constexpr auto kStatusOne = Rovan_5404_Msg::e5404_IPZeroize_1;    // makes ipClearStatus 4

// Actions in whose midst something else happens, as on another thread.
class InterruptedActions : public RecordedActions {
  public:
    using RecordedActions::queueMessage;

    std::function<void()> onQueue;
    std::function<void()> onRespond;

    void queueMessage(GssipMessagePtr message, AckCallback callback) override {
        RecordedActions::queueMessage(std::move(message), std::move(callback));
        once(onQueue);
    }
    void respondText(const CommandResponse& cmd, const std::string& text) override {
        RecordedActions::respondText(cmd, text);
        once(onRespond);
    }

  private:
    static void once(std::function<void()>& happening) {
        if (auto now = std::exchange(happening, nullptr)) {
            now();
        }
    }
};

// The commands by what their tests need to know.
struct Command {
    const char* text;
    Acceptance (ZeroizeProcedure::*accept)(const aspn2_msgs::idl::CommandResponse&);
};
const Command kCv{"ROVAN_CV_ZEROIZE", &ZeroizeProcedure::acceptCvZeroize};
const Command kZeroize{"ROVAN_ZEROIZE", &ZeroizeProcedure::acceptZeroize};
const Command kDestroy{"ROVAN_DESTROY", &ZeroizeProcedure::acceptDestroy};

/// Brings whatever is pending to its end, with the events of a success and, for a destroy, the time
/// limits. The answers of that; "" when nothing was pending.
std::string finalAnswer(ZeroizeProcedure& procedure, RecordedActions& actions) {
    actions.take();
    procedure.handleZeroize(3);
    procedure.handleZeroize(17);
    for (int passes = 0; procedure.isPending() && passes < 20; ++passes) {
        actions.wait(601s);
        procedure.handleZeroize(0);
    }
    EXPECT_FALSE(procedure.isPending());
    std::string answers;
    for (const std::string& line : actions.take()) {
        if (line.rfind("respond ", 0) == 0) {
            answers += line;
        }
    }
    return answers;
}

class ZeroizeProcedureTest : public testing::Test {
  protected:
    Acceptance give(const Command& command, const std::string& text) {
        return (procedure.*command.accept)(commandOf(text));
    }

    /// An event of the receiver.
    void event(unsigned short id) { procedure.handleZeroize(id); }
    void tick() { procedure.handleZeroize(0); }

    InterruptedActions actions;
    ZeroizeProcedure procedure{actions};
};

// The two kinds that are one command with a retry.
struct Kind {
    const char* name;
    Command command;
    std::string mode;    // of the 5001
    std::string answer;  // the final answer's first part
    unsigned short succeeded;
    unsigned short failed;
};

void PrintTo(const Kind& kind, std::ostream* out) {
    *out << kind.name;
}

class RepeatedZeroizeTest : public ZeroizeProcedureTest, public testing::WithParamInterface<Kind> {
  protected:
    RepeatedZeroizeTest() {
        EXPECT_EQ(give(kind.command, "it"), Acceptance::accepted);
        EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode " + kind.mode + ", answers it"));
    }

    /// The command sent again: neither the link nor the bus is answered.
    void expectSentAgain() {
        EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode " + kind.mode));
        EXPECT_FALSE(actions.callbacks.back());
    }
    void expectAnswer(const std::string& suffix) {
        EXPECT_THAT(actions.take(), ElementsAre("respond " + kind.answer + suffix + " to it"));
        EXPECT_FALSE(procedure.isPending());
    }

    const Kind& kind = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Kinds, RepeatedZeroizeTest,
                         testing::Values(Kind{"Cv", kCv, "8", "ROVAN_CV_ZEROIZE", 3, 4},
                                         Kind{"Zeroize", kZeroize, "7", "COMPONENT_ZEROIZE", 17,
                                              18}),
                         [](const auto& kind) { return kind.param.name; });

// The command table: what is pending, what comes, and what follows at an ipClearStatus of 0 or 4
// and at 2. "old" and "new" stand for the text of the command that is answered in the end.
struct Pair {
    const Command* pending;  // null: nothing
    const Command* command;
    struct Effect {
        Acceptance acceptance;
        Lines done;
        std::string finalAnswer;
    } whenOpen, whenClear;
};

const std::string kCvPass = "respond ROVAN_CV_ZEROIZE_PASS to ";
const std::string kZeroizePass = "respond COMPONENT_ZEROIZE_PASS to ";
const std::string kDestroyFail = "respond COMPONENT_DESTROY_FAIL to ";

std::vector<Pair> commandTable() {
    const Pair::Effect refused{Acceptance::refused, {}, ""};
    const Pair::Effect cv{
        Acceptance::accepted, {"queue 5001 mode 8, answers new"}, kCvPass + "new"};
    const Pair::Effect zeroize{
        Acceptance::accepted, {"queue 5001 mode 7, answers new"}, kZeroizePass + "new"};
    const Pair::Effect destroy{Acceptance::accepted, {}, kDestroyFail + "new"};
    const auto ignored = [](const std::string& answer) {
        return Pair::Effect{Acceptance::ignored, {}, answer + "old"};
    };
    const Pair::Effect destroyRefused{Acceptance::refused, {}, kDestroyFail + "old"};
    return {
        {nullptr, &kCv, cv, refused},
        {&kCv, &kCv, ignored(kCvPass), ignored(kCvPass)},
        {&kZeroize, &kCv, ignored(kZeroizePass), ignored(kZeroizePass)},
        {&kDestroy, &kCv, ignored(kDestroyFail), ignored(kDestroyFail)},
        {nullptr, &kZeroize, zeroize, refused},
        // The CV zeroize is dropped even where the new command is refused.
        {&kCv, &kZeroize, zeroize, refused},
        {&kZeroize, &kZeroize, ignored(kZeroizePass), ignored(kZeroizePass)},
        {&kDestroy, &kZeroize, ignored(kDestroyFail), ignored(kDestroyFail)},
        {nullptr, &kDestroy, destroy, destroy},
        {&kCv, &kDestroy, destroy, destroy},
        {&kZeroize, &kDestroy, destroy, destroy},
        {&kDestroy, &kDestroy, destroyRefused, destroyRefused},
    };
}

void expectEffect(const Pair& pair, int ipClearStatus, const Pair::Effect& effect) {
    SCOPED_TRACE(std::string(pair.command->text) + " over " +
                 (pair.pending != nullptr ? pair.pending->text : "nothing") + " at status " +
                 std::to_string(ipClearStatus));
    RecordedActions actions;
    ZeroizeProcedure procedure(actions);
    if (pair.pending != nullptr) {
        EXPECT_EQ((procedure.*pair.pending->accept)(commandOf("old")), Acceptance::accepted);
    }
    if (ipClearStatus != 0) {
        procedure.onIpZeroizeStatus(ipClearStatus == 2 ? kIpDataClear : kStatusOne);
    }
    actions.take();

    EXPECT_EQ((procedure.*pair.command->accept)(commandOf("new")), effect.acceptance);

    EXPECT_THAT(actions.take(), testing::ElementsAreArray(effect.done));
    EXPECT_EQ(procedure.isPending(), effect.finalAnswer != "");
    EXPECT_EQ(finalAnswer(procedure, actions), effect.finalAnswer);
}

}  // namespace

TEST(ZeroizeCommandTable, EveryCommandOverEveryPendingOneDoesWhatItsRowSays) {
    const std::vector<Pair> table = commandTable();
    ASSERT_EQ(table.size(), 3u * 4u);
    for (const Pair& pair : table) {
        expectEffect(pair, 0, pair.whenOpen);
        expectEffect(pair, 4, pair.whenOpen);
        expectEffect(pair, 2, pair.whenClear);
    }
}

TEST_F(ZeroizeProcedureTest, NothingIsPendingAtFirstAndPassesDoNothing) {
    EXPECT_FALSE(procedure.isPending());
    EXPECT_EQ(procedure.ipClearStatus(), 0);
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_Idle);

    actions.wait(1000s);
    for (const unsigned short id : std::vector<unsigned short>{0, 3, 4, 17, 18, 34, 35, 65535}) {
        event(id);
    }

    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_FALSE(procedure.isPending());
}

TEST_F(ZeroizeProcedureTest, TheClearStatusFollowsTheLastReportThatTells) {
    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_2);
    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_3);
    EXPECT_EQ(procedure.ipClearStatus(), 0);

    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_0);
    EXPECT_EQ(procedure.ipClearStatus(), 2);
    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_3);
    EXPECT_EQ(procedure.ipClearStatus(), 2);

    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_1);
    EXPECT_EQ(procedure.ipClearStatus(), 4);
    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_2);
    EXPECT_EQ(procedure.ipClearStatus(), 4);
}

TEST_F(ZeroizeProcedureTest, TheReceiverIsCommandedBeforeTheCommandIsPending) {
    bool pendingWhenQueued = true;
    actions.onQueue = [&] { pendingWhenQueued = procedure.isPending(); };
    give(kCv, "first");
    EXPECT_FALSE(pendingWhenQueued);

    pendingWhenQueued = true;
    actions.onQueue = [&] { pendingWhenQueued = procedure.isPending(); };
    give(kZeroize, "second");
    EXPECT_FALSE(pendingWhenQueued);
}

TEST_F(ZeroizeProcedureTest, AReplacingCommandHasItsFullTime) {
    give(kCv, "first");
    actions.wait(9s);
    give(kZeroize, "second");
    actions.take();

    actions.wait(10s);
    tick();
    EXPECT_THAT(actions.take(), IsEmpty());
    actions.wait(1s);
    tick();
    EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode 7"));
}

TEST_P(RepeatedZeroizeTest, TheEventOfItsSuccessPasses) {
    event(kind.succeeded);

    expectAnswer("_PASS");
    event(kind.succeeded);
    EXPECT_THAT(actions.take(), IsEmpty());
}

TEST_P(RepeatedZeroizeTest, APassTurnsStatusFourToZero) {
    procedure.onIpZeroizeStatus(kStatusOne);

    event(kind.succeeded);

    expectAnswer("_PASS");
    EXPECT_EQ(procedure.ipClearStatus(), 0);
}

TEST_P(RepeatedZeroizeTest, APassLeavesStatusTwo) {
    procedure.onIpZeroizeStatus(kIpDataClear);

    event(kind.succeeded);

    expectAnswer("_PASS");
    EXPECT_EQ(procedure.ipClearStatus(), 2);
}

TEST_P(RepeatedZeroizeTest, EventsOfOtherZeroizesDoNothing) {
    for (const unsigned short id :
         std::vector<unsigned short>{0, 1, 2, 3, 4, 5, 16, 17, 18, 19, 34, 35, 65535}) {
        if (id != kind.succeeded && id != kind.failed) {
            event(id);
        }
    }

    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_TRUE(procedure.isPending());
}

TEST_P(RepeatedZeroizeTest, TheCommandGoesOutAgainFromElevenSecondsOn) {
    actions.wait(10999ms);
    tick();
    EXPECT_THAT(actions.take(), IsEmpty());

    actions.wait(1ms);
    tick();
    expectSentAgain();
    tick();
    EXPECT_THAT(actions.take(), IsEmpty());
}

TEST_P(RepeatedZeroizeTest, RepeatsGoOnUntilSomethingEndsThem) {
    for (int repeat = 0; repeat < 50; ++repeat) {
        actions.wait(10999ms);
        tick();
        ASSERT_THAT(actions.take(), IsEmpty());
        actions.wait(1ms);
        tick();
        expectSentAgain();
    }
    EXPECT_TRUE(procedure.isPending());

    event(kind.succeeded);
    expectAnswer("_PASS");
}

TEST_P(RepeatedZeroizeTest, TheEventOfAFailureSendsAtOnceAndStartsTheTimeAgain) {
    actions.wait(8s);
    event(kind.failed);
    expectSentAgain();

    actions.wait(10s);
    tick();
    EXPECT_THAT(actions.take(), IsEmpty());
    actions.wait(1s);
    tick();
    expectSentAgain();
}

TEST_P(RepeatedZeroizeTest, AnyEventFindsTheCommandOverdue) {
    actions.wait(11s);

    event(35);

    expectSentAgain();
}

TEST_P(RepeatedZeroizeTest, AtStatusFourNothingGoesOutAgainButTheTimeStartsAgain) {
    procedure.onIpZeroizeStatus(kStatusOne);
    actions.wait(8s);
    event(kind.failed);
    EXPECT_THAT(actions.take(), IsEmpty());
    EXPECT_TRUE(procedure.isPending());
    EXPECT_EQ(procedure.ipClearStatus(), 4);

    // Had the time not started again, the command would be overdue now, and at status 2 it fails.
    procedure.onIpZeroizeStatus(kIpDataClear);
    actions.wait(10s);
    tick();
    EXPECT_THAT(actions.take(), IsEmpty());
    actions.wait(1s);
    tick();
    expectAnswer("_FAIL");
}

TEST_P(RepeatedZeroizeTest, AtStatusTwoTheEventOfAFailureFails) {
    procedure.onIpZeroizeStatus(kIpDataClear);

    event(kind.failed);

    expectAnswer("_FAIL");
    EXPECT_EQ(procedure.ipClearStatus(), 2);
}

TEST_P(RepeatedZeroizeTest, AtStatusTwoAnOverdueCommandFails) {
    procedure.onIpZeroizeStatus(kIpDataClear);
    actions.wait(10999ms);
    tick();
    EXPECT_THAT(actions.take(), IsEmpty());

    actions.wait(1ms);
    tick();

    expectAnswer("_FAIL");
}

TEST_P(RepeatedZeroizeTest, NothingIsPendingAnyMoreWhenTheAnswerGoesOut) {
    bool pending = true;
    actions.onRespond = [&] { pending = procedure.isPending(); };

    event(kind.succeeded);

    EXPECT_FALSE(pending);
    EXPECT_EQ(give(kind.command, "next"), Acceptance::accepted);
}

TEST_P(RepeatedZeroizeTest, ItsEndForgetsWhatWasLatched) {
    if (kind.succeeded != 17) {
        event(17);
    }
    event(kind.succeeded);
    actions.take();

    // A destroy with a remembered emergency zeroize would go on to the IP zeroize at once.
    give(kDestroy, "destroy");
    tick();
    procedure.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_2);
    procedure.onReportReceived(5404);
    procedure.onReportReceived(5044);
    procedure.onVersionRecord(true, false, false);
    tick();
    tick();
    ASSERT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);
    tick();
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_WaitOnEZero);
}

TEST_P(RepeatedZeroizeTest, ACommandThatReplacesItWhileItFailsIsNeitherAnsweredNorLost) {
    // Between the repeat and the look at the status.
    actions.onQueue = [this] {
        procedure.onIpZeroizeStatus(kIpDataClear);
        EXPECT_EQ(give(kDestroy, "destroy"), Acceptance::accepted);
    };

    event(kind.failed);

    EXPECT_THAT(actions.take(), ElementsAre("queue 5001 mode " + kind.mode));
    EXPECT_TRUE(procedure.isPending());
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ConnectMessages);
    EXPECT_EQ(finalAnswer(procedure, actions), "respond COMPONENT_DESTROY_FAIL to destroy");
}

TEST_P(RepeatedZeroizeTest, ADestroyThatComesWithTheAnswerIsStarted) {
    actions.onRespond = [this] { EXPECT_EQ(give(kDestroy, "destroy"), Acceptance::accepted); };

    event(kind.succeeded);

    EXPECT_TRUE(procedure.isPending());
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_ConnectMessages);
    EXPECT_EQ(finalAnswer(procedure, actions), "respond COMPONENT_DESTROY_FAIL to destroy");
}

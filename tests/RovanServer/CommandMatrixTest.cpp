// SPDX-License-Identifier: Apache-2.0
// Every command in every state of the procedures: what is answered at once, what goes to the
// receiver, and what each procedure does from there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "ASPN/TimeCodeHelper.h"
#include "tests/RovanServer/BenchServer.h"
#include "tests/RovanServer/CommandTable.h"

using namespace std::chrono_literals;
using namespace command_table;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

using Lines = std::vector<std::string>;
using LinkResult = BenchServer::LinkResult;

// The numbers of the commands: what was given before, and the one under test.
constexpr int kPendingZeroize = 1;
constexpr int kRunningBit = 2;
constexpr int kUnderTest = 3;

/// A 9405, which tells of the serial cable and the rerad mode.
std::vector<uint8_t> frame9405(bool serialDisconnected, bool reradMode) {
    std::vector<uint8_t> frame(2 * (5 + 104 + 1));
    const auto put = [&frame](unsigned word, unsigned value) {
        frame[2 * word] = static_cast<uint8_t>(value);
        frame[2 * word + 1] = static_cast<uint8_t>(value >> 8);
    };
    put(0, 0x81FF);
    put(1, 9405);
    put(2, 104);
    put(5 + 27, serialDisconnected ? 1 : 0);
    put(5 + 86, reradMode ? 0x4000 : 0);
    return frame;
}

Lines oneOrNone(const std::string& line) {
    return line.empty() ? Lines{} : Lines{line};
}
std::string to(int number) {
    return " to " + std::to_string(number);
}

class CommandMatrix : public testing::TestWithParam<ZeroizeState> {
  protected:
    ~CommandMatrix() override { ASPN2::TimeCodeHelper::Instance().setLiveMode(); }

    std::unique_ptr<BenchServer> serverIn(const State& state) {
        ASPN2::TimeCodeHelper::Instance().setLiveMode();
        auto server = std::make_unique<BenchServer>(
            m_bus, state.isRerad() ? "SYSTEM_ENV_RERAD" : "SYSTEM_ENV_LIVE");
        server->run();
        enter(state.circumstance, *server);
        enterBit(state.bit, *server);
        enterZeroize(state.zeroize, *server);
        if (state.ipClearStatus != 0) {
            server->m_zeroize.onIpZeroizeStatus(state.ipClearStatus == 2
                                                    ? Rovan_5404_Msg::e5404_IPZeroize_0
                                                    : Rovan_5404_Msg::e5404_IPZeroize_1);
        }
        EXPECT_EQ(server->m_zeroize.ipClearStatus(), state.ipClearStatus);
        server->forgetAll();
        return server;
    }

    /// One cell: what happens at once, and what everything comes to in the end.
    void check(const std::string& text, const State& state) {
        SCOPED_TRACE("\"" + text.substr(0, 40) + "\" in " + state.text());
        const Effect effect = expectedEffect(text, state);
        auto server = serverIn(state);

        server->cbCmd(numberedCommand(kUnderTest, text));

        EXPECT_THAT(server->takeAnswers(),
                    ElementsAreArray(
                        oneOrNone(effect.answer.empty() ? "" : effect.answer + to(kUnderTest))));
        EXPECT_THAT(server->takeCommands(), ElementsAreArray(oneOrNone(effect.command)));
        EXPECT_THAT(server->takeDone(), IsEmpty());
        expectSequence(effect, state, *server);
        expectLinkAnswer(effect, text, *server);
        EXPECT_EQ(ASPN2::TimeCodeHelper::Instance().getTimeCode(),
                  effect.timeCode != 0 ? effect.timeCode : 100);
        expectBit(effect, state, *server);
        expectFinalAnswer(effect, state, *server);
        expectCircumstanceGoesOn(effect, state, *server);
        if (effect.startsBit) {
            server->m_serverThread.requestStop();
            server->m_periodicThread.requestStop();
            m_ending.push_back(std::move(server));
        }
    }

  private:
    static void enter(Circumstance circumstance, BenchServer& server) {
        switch (circumstance) {
            case Circumstance::plain:
                break;
            case Circumstance::reradAsking:
                server.m_supervision.setReradMode(true);
                EXPECT_TRUE(server.m_passthroughQuery->check());
                break;
            case Circumstance::reradPassthrough:
                server.m_supervision.setReradMode(true);
                server.m_passthroughQuery->enable();
                EXPECT_FALSE(server.m_passthroughQuery->check());
                // Its thread has ended with that.
                server.m_periodicThread.start([] {});
                server.m_periodicThread.requestStop();
                break;
            case Circumstance::timeDataTransfer:
                server.m_timeDataTransfer->on5042(true);
                server.m_timeDataTransfer->on5040(4);
                break;
            case Circumstance::faultyReceiver:
                server.receive(frame9405(true, false));
                break;
        }
    }

    static void enterBit(int bitState, BenchServer& server) {
        if (bitState == 0) {
            return;
        }
        CommandedBit& bit = server.m_bit;
        bit.begin(numberedCommand(kRunningBit, "REQUEST_COMPONENT_CBIT"));
        bit.enterThread();
        bit.onAccessoryDone();
        for (int passes = 0; bit.bitState() < bitState && passes < 60; ++passes) {
            if (bit.bitState() == CommandedBit::eWaitForRestart) {
                bit.onMessage8();
            }
            bit.step();
        }
        ASSERT_EQ(bit.bitState(), bitState);
        ASSERT_TRUE(bit.isRunning());
    }

    static void enterZeroize(const ZeroizeState& state, BenchServer& server) {
        ZeroizeProcedure& zeroize = server.m_zeroize;
        const auto event = [&](unsigned short id) { zeroize.handleZeroize(id); };
        const std::string name = state.name;
        if (name == "Nothing") {
            return;
        }
        if (name == "CvZeroize" || name == "Zeroize") {
            server.cbCmd(numberedCommand(kPendingZeroize,
                                         name == "Zeroize" ? "ROVAN_ZEROIZE" : "ROVAN_CV_ZEROIZE"));
        } else {
            server.cbCmd(numberedCommand(kPendingZeroize, "ROVAN_DESTROY"));
            // Each step leads on from one state; the last ones tell success from failure.
            for (int passes = 0; zeroize.getIPZstate() != state.sequence && passes < 20; ++passes) {
                switch (zeroize.getIPZstate()) {
                    case eIPZ_WaitOnConnects:
                        zeroize.onVersionRecord(true, false, false);
                        zeroize.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_2);
                        zeroize.onReportReceived(5404);
                        zeroize.onReportReceived(5044);
                        zeroize.handleZeroize(0);
                        break;
                    case eIPZ_WaitOnEZero:
                        event(17);
                        break;
                    case eIPZ_WaitOnIPZero:
                        event(state.sequence == eIPZ_ReportFail ? 35 : 34);
                        break;
                    default:
                        zeroize.handleZeroize(0);
                        break;
                }
            }
        }
        ASSERT_EQ(zeroize.getIPZstate(), state.sequence);
        ASSERT_EQ(zeroize.isPending(), state.pending != Pending::nothing);
    }

    static void expectSequence(const Effect& effect, const State& state, BenchServer& server) {
        const bool wasPending = state.zeroize.pending != Pending::nothing;
        EXPECT_EQ(server.m_zeroize.ipClearStatus(), state.ipClearStatus);
        switch (effect.zeroize) {
            case Effect::goesOn:
                EXPECT_EQ(server.m_zeroize.isPending(), wasPending);
                EXPECT_EQ(server.m_zeroize.getIPZstate(), state.zeroize.sequence);
                break;
            case Effect::isDropped:
                EXPECT_FALSE(server.m_zeroize.isPending());
                EXPECT_EQ(server.m_zeroize.getIPZstate(), eIPZ_Idle);
                break;
            case Effect::startsCv:
            case Effect::startsZeroize:
                EXPECT_TRUE(server.m_zeroize.isPending());
                EXPECT_EQ(server.m_zeroize.getIPZstate(), eIPZ_Idle);
                break;
            case Effect::startsDestroy:
                EXPECT_TRUE(server.m_zeroize.isPending());
                EXPECT_EQ(server.m_zeroize.getIPZstate(), eIPZ_ConnectMessages);
                break;
        }
    }

    /// What is queued, and that the link's result answers the command it was queued for.
    static void expectLinkAnswer(const Effect& effect, const std::string& text,
                                 BenchServer& server) {
        EXPECT_THAT(server.takeQueued(LinkResult::good),
                    ElementsAreArray(oneOrNone(effect.queued)));
        EXPECT_THAT(server.takeAnswers(),
                    ElementsAreArray(
                        oneOrNone(effect.queued.empty() ? "" : text + "_ACK" + to(kUnderTest))));
    }

    static void expectBit(const Effect& effect, const State& state, BenchServer& server) {
        if (effect.startsBit) {
            EXPECT_TRUE(server.m_bit.isRunning());
            // Its thread has to come that far.
            EXPECT_TRUE(transport_test::eventually(
                [&] { return server.m_bit.bitState() == CommandedBit::eWaitForAccessory; }));
            EXPECT_TRUE(server.m_serverThread.joinable());
        } else {
            EXPECT_EQ(server.m_bit.isRunning(), state.bit != 0);
            EXPECT_EQ(server.m_bit.bitState(), state.bit);
            EXPECT_FALSE(server.m_serverThread.joinable());
        }
        // Where it has ended, a BIT in a rerad setup starts it again.
        const bool hasEnded = state.circumstance == Circumstance::reradPassthrough;
        EXPECT_EQ(server.m_periodicThread.joinable(), hasEnded);
        EXPECT_EQ(server.m_periodicThread.stopRequested(), hasEnded && !effect.startsBit);
    }

    /// Brings what is pending to its end and looks who is answered, and how.
    static void expectFinalAnswer(const Effect& effect, const State& state, BenchServer& server) {
        std::string answer = state.zeroize.finalAnswer;
        int number = kPendingZeroize;
        if (effect.zeroize != Effect::goesOn) {
            number = kUnderTest;
            answer = effect.zeroize == Effect::startsCv        ? "ROVAN_CV_ZEROIZE_PASS"
                     : effect.zeroize == Effect::startsZeroize ? "COMPONENT_ZEROIZE_PASS"
                     : effect.zeroize == Effect::startsDestroy ? "COMPONENT_DESTROY_FAIL"
                                                               : "";
        }
        server.m_zeroize.handleZeroize(3);
        server.m_zeroize.handleZeroize(17);
        for (int passes = 0; server.m_zeroize.isPending() && passes < 20; ++passes) {
            server.wait(601s);
            server.m_zeroize.handleZeroize(0);
        }
        EXPECT_FALSE(server.m_zeroize.isPending());
        EXPECT_EQ(server.m_zeroize.getIPZstate(), eIPZ_Idle);
        EXPECT_THAT(server.takeAnswers(),
                    ElementsAreArray(oneOrNone(answer.empty() ? "" : answer + to(number))));
        server.takeQueued();
        server.takeDone();
    }

    static void expectCircumstanceGoesOn(const Effect& effect, const State& state,
                                         BenchServer& server) {
        // Who has asked for the antenna is told when a cable is lost.
        server.receive(frame9405(true, state.isRerad()));
        EXPECT_THAT(server.takeAnswers(),
                    ElementsAreArray(oneOrNone(
                        effect.subscribesAntenna ? "CURRENT_ANTENNA_STATE,CRPA,Yes" + to(kUnderTest)
                                                 : "")));
        EXPECT_EQ(server.m_supervision.isReradMode(), state.isRerad());

        // A passthrough query goes out in a rerad setup, and the receiver is told of what is
        // granted.
        const bool granted = state.isPassthroughGranted() || effect.grantsPassthrough;
        EXPECT_EQ(server.m_passthroughQuery->check(), state.isRerad() && !granted);
        EXPECT_THAT(server.takeCommands(),
                    ElementsAreArray(oneOrNone(state.isRerad() ? "QUERY_PASSTHROUGH_STATE" : "")));
        EXPECT_THAT(server.takeQueued(), ElementsAreArray(state.isRerad() && granted
                                                              ? Lines{"5001 mist 3", "5001 mode 1"}
                                                              : Lines{}));

        // The receiver is commanded back in the fifth second after the transfer.
        const bool transfer = state.circumstance == Circumstance::timeDataTransfer;
        server.m_timeDataTransfer->tick();
        if (transfer) {
            server.m_timeDataTransfer->on5042(false);
        }
        for (int second = 1; second < 5; ++second) {
            server.m_timeDataTransfer->tick();
        }
        EXPECT_THAT(server.takeQueued(), IsEmpty());
        server.m_timeDataTransfer->tick();
        EXPECT_THAT(server.takeQueued(),
                    ElementsAreArray(oneOrNone(transfer ? "5001 mode 1" : "")));
    }

    ServerBus m_bus;
    // With a thread that takes a second to end.
    std::vector<std::unique_ptr<BenchServer>> m_ending;
};

INSTANTIATE_TEST_SUITE_P(Zeroize, CommandMatrix, testing::ValuesIn(kZeroizeStates),
                         [](const auto& state) { return state.param.name; });

class CommandsToAServerAtRest : public testing::Test {
  protected:
    ServerBus m_bus;
};

}  // namespace

TEST_P(CommandMatrix, EveryCommandDoesWhatItsRowSays) {
    const std::vector<std::string> texts = commandTexts();
    ASSERT_EQ(texts.size(), 16u + 3u);
    std::size_t cells = 0;
    for (const int bit : kBitStates) {
        for (const int ipClearStatus : kIpClearStatuses) {
            for (const Circumstance circumstance : kCircumstances) {
                for (const std::string& text : texts) {
                    check(text, {GetParam(), bit, ipClearStatus, circumstance});
                    ASSERT_FALSE(HasFatalFailure());
                    ++cells;
                }
            }
        }
    }
    // BIT states, clear statuses, circumstances, texts.
    EXPECT_EQ(cells, 6u * 3u * 5u * 19u);
}

TEST(CommandMatrixSize, EveryKindOfZeroizeAndEveryStateOfTheDestroyIsInIt) {
    ASSERT_EQ(std::size(kZeroizeStates), 3u + 9u);
    std::set<eIPZ_State> sequence;
    for (const ZeroizeState& state : kZeroizeStates) {
        sequence.insert(state.sequence);
    }
    EXPECT_EQ(sequence.size(), 9u);
}

TEST_F(CommandsToAServerAtRest, NoCommandDoesAnythingBeforeTheStart) {
    std::size_t cells = 0;
    for (const std::string& text : commandTexts()) {
        SCOPED_TRACE(text.substr(0, 40));
        OpenServer unconnected;
        unconnected.cbCmd(numberedCommand(kUnderTest, text));
        EXPECT_FALSE(unconnected.m_zeroize.isPending());
        EXPECT_FALSE(unconnected.m_bit.isRunning());

        BenchServer connected(m_bus);
        connected.cbCmd(numberedCommand(kUnderTest, text));
        EXPECT_THAT(connected.takeAnswers(), IsEmpty());
        EXPECT_THAT(connected.takeCommands(), IsEmpty());
        EXPECT_THAT(connected.takeQueued(), IsEmpty());
        EXPECT_THAT(connected.takeDone(), IsEmpty());
        EXPECT_FALSE(connected.m_zeroize.isPending());
        EXPECT_FALSE(connected.m_bit.isRunning());
        EXPECT_EQ(ASPN2::TimeCodeHelper::Instance().getTimeCode(), 100);
        cells += 2;
    }
    EXPECT_EQ(cells, 2u * 19u);
}

TEST_F(CommandsToAServerAtRest, NoResponseIsTakenForACommand) {
    BenchServer server(m_bus);
    server.run();
    for (const std::string& text : commandTexts()) {
        SCOPED_TRACE(text.substr(0, 40));
        auto command = numberedCommand(kUnderTest, text);
        command.command_response_type(aspn2_msgs::idl::COMMAND_RESPONSE_TYPE_1);
        server.cbCmd(command);
        EXPECT_THAT(server.takeAnswers(), IsEmpty());
        EXPECT_THAT(server.takeCommands(), IsEmpty());
        EXPECT_THAT(server.takeQueued(), IsEmpty());
        EXPECT_FALSE(server.m_zeroize.isPending());
        EXPECT_FALSE(server.m_bit.isRunning());
    }
}

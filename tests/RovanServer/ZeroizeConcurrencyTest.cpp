// SPDX-License-Identifier: Apache-2.0
// Commands, passes, events, reports and link results on threads of their own, as in the running
// server. Whatever their order, every command has exactly the answers that it is owed.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "RovanServer/ZeroizeProcedure.h"
#include "tests/RovanServer/RecordedActions.h"

using namespace std::chrono_literals;

namespace {

using Acceptance = ZeroizeProcedure::Acceptance;

constexpr int kCommandThreads = 2;
constexpr int kCommandsEach = 1000;

// Counts the answers by the text of their command, and does so on any thread, as it overrides all
// that the procedure calls. Its clock jumps with every look at it.
class CountingActions : public RecordedActions {
  public:
    struct Answer {
        int count = 0;
        std::string text;
    };

    std::map<std::string, Answer> answers() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_answers;
    }

    void queueMessage(GssipMessagePtr message) override { queueMessage(message, AckCallback()); }
    void queueMessage(GssipMessagePtr message, AckCallback callback) override {
        if (callback) {
            // As from the link: some of the messages are refused.
            callback(message->msgId(), false, false, ++m_messages % 3 == 0);
        }
    }
    void queueMessage(GssipMessagePtr message, const CommandResponse&) override {
        queueMessage(message, AckCallback());
    }
    void respondText(const CommandResponse& cmd, const std::string& text) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Answer& answer = m_answers[cmd.command_response()];
        ++answer.count;
        answer.text = text;
    }
    void sendEvent(const char*, int, EventTypes::eEventType, const std::string&) override {}
    std::chrono::steady_clock::time_point now() const override {
        return std::chrono::steady_clock::time_point(m_ticks++ * 700ms);
    }

  private:
    std::mutex m_mutex;
    std::map<std::string, Answer> m_answers;
    std::atomic<int> m_messages{0};
    mutable std::atomic<int> m_ticks{0};
};

// What one thread's commands came to: their texts, which begin with the kind.
struct Commands {
    std::vector<std::string> accepted;

    void giveAll(ZeroizeProcedure& procedure, int thread) {
        for (int i = 0; i < kCommandsEach; ++i) {
            const std::string id = std::to_string(thread) + "-" + std::to_string(i);
            give("ROVAN_CV_ZEROIZE " + id, procedure, &ZeroizeProcedure::acceptCvZeroize);
            give("ROVAN_ZEROIZE " + id, procedure, &ZeroizeProcedure::acceptZeroize);
            if (i % 4 == 0) {
                give("ROVAN_DESTROY " + id, procedure, &ZeroizeProcedure::acceptDestroy);
            }
            std::this_thread::yield();
        }
    }

  private:
    void give(const std::string& text, ZeroizeProcedure& procedure,
              Acceptance (ZeroizeProcedure::*accept)(const ServerActions::CommandResponse&)) {
        if ((procedure.*accept)(commandOf(text)) == Acceptance::accepted) {
            accepted.push_back(text);
        }
    }
};

/// What the final answer to a command begins with.
std::string answerTo(const std::string& command) {
    const std::map<std::string, std::string> prefixes = {{"ROVAN_CV_ZEROIZE", "ROVAN_CV_ZEROIZE"},
                                                         {"ROVAN_ZEROIZE", "COMPONENT_ZEROIZE"},
                                                         {"ROVAN_DESTROY", "COMPONENT_DESTROY"}};
    return prefixes.at(command.substr(0, command.find(' ')));
}

bool isDestroy(const std::string& command) {
    return command.rfind("ROVAN_DESTROY", 0) == 0;
}

}  // namespace

TEST(ZeroizeProcedureOnManyThreads, AnswersEveryCommandOnceAndEveryDestroy) {
    CountingActions actions;
    ZeroizeProcedure procedure(actions);
    std::vector<Commands> commands(kCommandThreads);
    std::atomic<bool> stop{false};
    const auto untilStopped = [&stop](const auto& work) {
        return std::thread([&stop, work] {
            for (unsigned turn = 0; !stop; ++turn) {
                work(turn);
            }
        });
    };

    std::vector<std::thread> others;
    others.push_back(untilStopped([&](unsigned) { procedure.handleZeroize(0); }));
    others.push_back(untilStopped([&](unsigned turn) {
        const unsigned short ids[] = {3, 4, 17, 18, 34, 35, 1};
        procedure.onReportReceived(5044);
        procedure.handleZeroize(ids[turn % 7]);
    }));
    others.push_back(untilStopped([&](unsigned turn) {
        procedure.onIpZeroizeStatus(static_cast<Rovan_5404_Msg::e5404IPZeroizeStatus>(turn % 4));
        procedure.onReportReceived(5404);
        procedure.onVersionRecord(turn % 5 != 0, turn % 2 == 0, turn % 3 == 0);
        procedure.gssipMessageCallback(turn % 2 == 0 ? 5001 : 5402, true, false, turn % 3 == 0);
    }));
    std::vector<std::thread> givers;
    for (int i = 0; i < kCommandThreads; ++i) {
        givers.emplace_back(
            [&, i] { commands[static_cast<std::size_t>(i)].giveAll(procedure, i); });
    }
    for (std::thread& giver : givers) {
        giver.join();
    }
    stop = true;
    for (std::thread& other : others) {
        other.join();
    }

    // What is still pending has its end: a CV zeroize or a zeroize with its event, a destroy, which
    // takes no notice of these two, with the time limits.
    procedure.handleZeroize(3);
    procedure.handleZeroize(17);
    for (int passes = 0; procedure.isPending() && passes < 10000; ++passes) {
        procedure.handleZeroize(0);
    }
    EXPECT_FALSE(procedure.isPending());
    EXPECT_EQ(procedure.getIPZstate(), eIPZ_Idle);

    auto answers = actions.answers();
    std::size_t accepted = 0;
    std::size_t answeredDestroys = 0;
    for (const Commands& given : commands) {
        for (const std::string& command : given.accepted) {
            ++accepted;
            const auto answer = answers.find(command);
            if (answer == answers.end()) {
                EXPECT_FALSE(isDestroy(command)) << command << " is never replaced";
                continue;
            }
            EXPECT_EQ(answer->second.count, 1) << command;
            EXPECT_EQ(answer->second.text.substr(0, answerTo(command).size()), answerTo(command));
            answeredDestroys += isDestroy(command) ? 1u : 0u;
            answers.erase(answer);
        }
    }
    EXPECT_TRUE(answers.empty()) << "an answer to " << answers.begin()->first;
    EXPECT_GT(accepted, answeredDestroys);
    EXPECT_GT(answeredDestroys, 0u);
    EXPECT_EQ(procedure.acceptDestroy(commandOf("ROVAN_DESTROY next")), Acceptance::accepted);
}

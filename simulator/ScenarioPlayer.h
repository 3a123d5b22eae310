// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "simulator/BoundedLog.h"
#include "simulator/IReceiverObserver.h"
#include "simulator/Receiver.h"
#include "simulator/Scenario.h"
#include "utility/WorkerThread.h"

namespace Simulator {

/// A statement that was carried out, or undone when its time was over.
struct PlayedStatement {
    std::chrono::nanoseconds at;  // since the start
    std::shared_ptr<const ScenarioStatement> statement;
    bool ended = false;
};

// Plays a scenario on a receiver and what is round it. What strikes a message before it is answered
// is done on the receiver's own thread; all else on a thread of this object, at its time and in
// order.
//
// The stage must outlive it. start() and stop() belong to one thread; order() any thread may call
// in between.
class ScenarioPlayer : public IReceiverObserver {
  public:
    ScenarioPlayer(const Scenario& scenario, const ScenarioStage& stage);
    ScenarioPlayer(const ScenarioPlayer&) = delete;
    ScenarioPlayer& operator=(const ScenarioPlayer&) = delete;
    ~ScenarioPlayer() override { stop(); }

    /// From now on times count, from the first statement anew. What is due at 0 is done on return,
    /// so that a receiver that is started next comes up with it.
    void start();
    /// To be called when nobody drives the receiver any more.
    void stop();

    /// Carries out one more statement as if it had stood in the scenario; what was due before now
    /// is done at once. Throws ScenarioError when there are too many already.
    void order(ScenarioStatement statement);

    const BoundedLog<PlayedStatement>& played() const { return m_played; }

    void beforeAnswer(const ScannedFrame& frame) override;
    void afterAnswer(const ScannedFrame& frame) override;
    void onPower(bool on) override;
    void onBootDone() override;

  private:
    using Clock = std::chrono::steady_clock;
    using Kind = ScenarioTrigger::Kind;
    using Statement = std::shared_ptr<const ScenarioStatement>;
    struct Turn {
        Statement statement;
        Receiver::MsgId heard{};
        bool ends = false;
    };
    // A statement that waits for something to happen.
    struct Waiting {
        Statement statement;
        std::uint32_t turnsTaken = 0;
    };
    // What has happened, and which statements are concerned now: those that strike first, or the
    // others.
    struct Event {
        Kind kind;
        const ScannedFrame* frame = nullptr;
    };

    void happened(const Event& event, bool strikesFirst);
    static bool isMeant(const ScenarioTrigger& trigger, const Event& event);
    /// Those that this event sets off now, one turn of each taken.
    std::vector<Statement> setOff(const Event& event, bool strikesFirst);
    bool schedule(Clock::time_point at, const Turn& turn);
    void perform(const Turn& turn);
    void play();

    const std::vector<Statement> m_statements;
    ScenarioStage m_stage;
    Clock::time_point m_start{};  // set before anything can happen
    BoundedLog<PlayedStatement> m_played{1000};

    std::mutex m_mutex;  // guards the two below
    std::condition_variable m_changed;
    std::vector<Waiting> m_waiting;
    std::multimap<Clock::time_point, Turn> m_due;

    Utility::WorkerThread m_thread;
};

}  // namespace Simulator

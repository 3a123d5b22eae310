// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioPlayer.h"

#include <utility>

namespace Simulator {
namespace {

// A message that comes in masses must not pile up what it sets off.
constexpr std::size_t kMostDue = 10'000;

}  // namespace

ScenarioPlayer::ScenarioPlayer(Scenario scenario, Receiver& receiver)
    : m_scenario(std::move(scenario)), m_receiver(receiver) {
}

void ScenarioPlayer::start() {
    stop();
    m_start = Clock::now();
    m_turnsTaken.assign(m_scenario.statements().size(), 0);
    m_due.clear();
    m_receiver.setObserver(this);
    for (const ScenarioStatement& statement : m_scenario.statements()) {
        if (statement.trigger.kind != Kind::Time) {
            continue;
        }
        if (statement.trigger.at.count() == 0) {
            perform({&statement, {}});
        } else {
            schedule(m_start + statement.trigger.at, {&statement, {}});
        }
    }
    m_thread.start([this] { play(); });
}

void ScenarioPlayer::stop() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_thread.requestStop();
    }
    m_changed.notify_all();
    m_thread.stop();
    m_receiver.setObserver(nullptr);
}

void ScenarioPlayer::beforeAnswer(const ScannedFrame& frame) {
    happened({Kind::Heard, &frame}, true);
}

void ScenarioPlayer::afterAnswer(const ScannedFrame& frame) {
    happened({Kind::Heard, &frame}, false);
}

void ScenarioPlayer::onPower(bool on) {
    const Event event{on ? Kind::PowerOn : Kind::PowerOff};
    happened(event, true);
    happened(event, false);
}

void ScenarioPlayer::onBootDone() {
    happened({Kind::BootDone}, true);
    happened({Kind::BootDone}, false);
}

void ScenarioPlayer::happened(const Event& event, bool strikesFirst) {
    const Clock::time_point now = Clock::now();
    const std::vector<ScenarioStatement>& statements = m_scenario.statements();
    for (std::size_t i = 0; i < statements.size(); ++i) {
        const ScenarioStatement& statement = statements[i];
        const bool atOnce = statement.action.strikesFirst && statement.after.count() == 0;
        if (atOnce != strikesFirst || !isMeant(statement.trigger, event) || !takeTurn(i)) {
            continue;
        }
        Turn turn{&statement, {}};
        if (event.frame != nullptr) {
            turn.heard = event.frame->msgId();
        }
        if (atOnce) {
            perform(turn);
        } else {
            schedule(now + statement.after, turn);
        }
    }
}

bool ScenarioPlayer::isMeant(const ScenarioTrigger& trigger, const Event& event) {
    if (trigger.kind != event.kind) {
        return false;
    }
    if (event.frame == nullptr) {
        return true;
    }
    constexpr std::size_t kModeWord = 4;
    const bool isMode = !trigger.mode || (!event.frame->headerOnly() &&
                                          event.frame->data(kModeWord) == *trigger.mode);
    return trigger.msgId == event.frame->msgId() && isMode;
}

bool ScenarioPlayer::takeTurn(std::size_t statement) {
    const std::optional<std::uint32_t> most = m_scenario.statements()[statement].trigger.times;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (most && m_turnsTaken[statement] >= *most) {
        return false;
    }
    ++m_turnsTaken[statement];
    return true;
}

void ScenarioPlayer::schedule(Clock::time_point at, const Turn& turn) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_due.size() >= kMostDue) {
            return;
        }
        m_due.emplace(at, turn);
    }
    m_changed.notify_all();
}

void ScenarioPlayer::perform(const Turn& turn) {
    turn.statement->action.perform(m_receiver, turn.heard);
    m_played.add({Clock::now() - m_start, turn.statement});
}

void ScenarioPlayer::play() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_thread.stopRequested()) {
        if (m_due.empty()) {
            m_changed.wait(lock);
        } else if (const auto next = m_due.begin(); next->first > Clock::now()) {
            // A copy: what waits first may change meanwhile.
            const Clock::time_point at = next->first;
            m_changed.wait_until(lock, at);
        } else {
            const Turn turn = next->second;
            m_due.erase(next);
            lock.unlock();
            perform(turn);
            lock.lock();
        }
    }
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioPlayer.h"

#include <utility>

namespace Simulator {
namespace {

// A message that comes in masses must not pile up what it sets off, nor somebody's orders.
constexpr std::size_t kMostDue = 10'000;
constexpr std::size_t kMostWaiting = 1'000;

std::vector<std::shared_ptr<const ScenarioStatement>> shared(const Scenario& scenario) {
    std::vector<std::shared_ptr<const ScenarioStatement>> statements;
    for (const ScenarioStatement& statement : scenario.statements()) {
        statements.push_back(std::make_shared<const ScenarioStatement>(statement));
    }
    return statements;
}

}  // namespace

ScenarioPlayer::ScenarioPlayer(const Scenario& scenario, const ScenarioStage& stage)
    : m_statements(shared(scenario)), m_stage(stage) {
}

void ScenarioPlayer::start() {
    stop();
    m_start = Clock::now();
    m_due.clear();
    m_waiting.clear();
    for (const Statement& statement : m_statements) {
        if (statement->trigger.kind != Kind::Time) {
            m_waiting.push_back({statement});
        }
    }
    m_stage.receiver.setObserver(this);
    for (const Statement& statement : m_statements) {
        if (statement->trigger.kind != Kind::Time) {
            continue;
        }
        if (statement->trigger.at.count() == 0) {
            perform({statement});
        } else {
            schedule(m_start + statement->trigger.at, {statement});
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
    m_stage.receiver.setObserver(nullptr);
}

void ScenarioPlayer::order(ScenarioStatement statement) {
    const auto ordered = std::make_shared<const ScenarioStatement>(std::move(statement));
    bool taken = false;
    if (ordered->trigger.kind == Kind::Time) {
        taken = schedule(m_start + ordered->trigger.at, {ordered});
    } else {
        const std::lock_guard<std::mutex> lock(m_mutex);
        taken = m_waiting.size() < kMostWaiting;
        if (taken) {
            m_waiting.push_back({ordered});
        }
    }
    if (!taken) {
        throw ScenarioError(ordered->where + ": too many statements wait already");
    }
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
    for (const Statement& statement : setOff(event, strikesFirst)) {
        Turn turn{statement};
        if (event.frame != nullptr) {
            turn.heard = event.frame->msgId();
        }
        if (strikesFirst) {
            perform(turn);
        } else {
            schedule(now + statement->after, turn);
        }
    }
}

std::vector<ScenarioPlayer::Statement> ScenarioPlayer::setOff(const Event& event,
                                                              bool strikesFirst) {
    std::vector<Statement> result;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Waiting& waiting : m_waiting) {
        const ScenarioStatement& statement = *waiting.statement;
        const std::optional<std::uint32_t> most = statement.trigger.times;
        const bool atOnce = statement.action.strikesFirst && statement.after.count() == 0;
        if (atOnce == strikesFirst && isMeant(statement.trigger, event) &&
            (!most || waiting.turnsTaken < *most)) {
            ++waiting.turnsTaken;
            result.push_back(waiting.statement);
        }
    }
    return result;
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

bool ScenarioPlayer::schedule(Clock::time_point at, const Turn& turn) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_due.size() >= kMostDue && !turn.ends) {
            return false;
        }
        m_due.emplace(at, turn);
    }
    m_changed.notify_all();
    return true;
}

void ScenarioPlayer::perform(const Turn& turn) {
    const ScenarioStatement& statement = *turn.statement;
    if (turn.ends) {
        statement.action.end(m_stage);
    } else {
        statement.action.perform(m_stage, turn.heard);
        if (statement.lasts) {
            schedule(Clock::now() + *statement.lasts, {turn.statement, {}, true});
        }
    }
    m_played.add({Clock::now() - m_start, turn.statement, turn.ends});
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

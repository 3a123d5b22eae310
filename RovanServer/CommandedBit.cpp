// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/CommandedBit.h"

#include <utility>

#include "MSID_messages/RovanCommandMsg.h"

namespace {

// Time limits of the steps, in passes. The wait for the accessory, the time without power and the
// wait for the restart each end with the eleventh pass after the one that they began in; the wait
// for the accessory began with a pass 0 that is never made.
constexpr int32_t kStepTicks = 10;
/// However early the accessory is done, the ACK comes after this pass.
constexpr int32_t kLeastTicksBeforeAck = 4;

/// For the report after the restart, counted from the command.
constexpr std::chrono::seconds kReportLimit{180};

}  // namespace

CommandedBit::CommandedBit(ServerActions& actions, std::function<bool()> currentRcvrFail,
                           std::function<void()> clearBciCable)
    : m_actions(actions),
      m_currentRcvrFail(std::move(currentRcvrFail)),
      m_clearBciCable(std::move(clearBciCable)) {
}

void CommandedBit::begin(const CommandResponse& command) {
    const std::lock_guard<std::mutex> lock(m_bitMutex);
    m_bitStartTime = m_actions.now();
    m_bitCommand = command;
    m_bitDone = false;
    m_zelmCbitDone = false;
    m_restartSeen = false;
    m_bitRunning = true;
}

void CommandedBit::enterThread() {
    m_serverThreadEnds = false;
    m_ticks = 0;
    m_deadline = kStepTicks;
    if (m_bitRunning) {
        m_bitState = eWaitForAccessory;
    }
}

bool CommandedBit::step() {
    // After an exception that came when the BIT had ended: what may run by now is the next one,
    // and that has a thread of its own.
    if (m_serverThreadEnds) {
        return false;
    }
    if (m_bitRunning) {
        // Counted first, since a pass that throws takes its second too.
        ++m_ticks;
        act();
    }
    return !m_serverThreadEnds;
}

// Each case sets the next state last, so that an exception leaves the state as it was.
void CommandedBit::act() {
    switch (m_bitState) {
        case eWaitForAccessory:
            if (m_ticks > (m_zelmCbitDone ? kLeastTicksBeforeAck : m_deadline)) {
                m_actions.respondAck(command(), true);
                m_bitState = ePowerOff;
            }
            break;
        case ePowerOff:
            m_actions.disableRovanPower();
            m_deadline = m_ticks + kStepTicks;
            m_bitState = ePowerOn;
            break;
        case ePowerOn:
            if (m_ticks > m_deadline) {
                m_restartSeen = false;
                m_actions.enableRovanPower();
                m_deadline = m_ticks + kStepTicks;
                m_bitState = eWaitForRestart;
            }
            break;
        case eWaitForRestart:
            if (m_restartSeen || m_ticks > m_deadline) {
                m_actions.queueMessage(make_simple_command(RovanCommandMsg::e5001_Cmd_0));
                m_bitDataWanted = false;
                m_bitState = eJudge;
            }
            break;
        case eJudge:
            handleCommandedBIT();
            break;
        case eNoStep:
            break;
    }
}

void CommandedBit::handleCommandedBIT() {
    if (!m_bitRunning) {
        return;
    }
    const auto now = m_actions.now();
    m_clearBciCable();
    bool pass = false;
    if (m_bitDataWanted && m_bitDataSeen) {
        m_bitDataWanted = false;
        m_bitDataSeen = false;
        pass = !m_currentRcvrFail();
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                            "ROVAN Commanded BIT complete");
    } else if (isReportOverdue(now)) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eError,
                            "ROVAN Commanded BIT Incomplete");
    } else {
        return;
    }
    std::unique_lock<std::mutex> lock(m_bitMutex);
    const CommandResponse command = m_bitCommand;
    m_bitDone = true;
    m_bitRunning = false;
    lock.unlock();
    m_serverThreadEnds = true;
    m_actions.respondResult(command, pass);
    m_actions.queueMessage(make_simple_command(RovanCommandMsg::e5001_Cmd_1));
}

void CommandedBit::onMessage8() {
    if (m_bitRunning) {
        m_restartSeen = true;
        m_bitDataWanted = true;
    }
}

void CommandedBit::on8504Processed() {
    if (m_bitRunning && m_bitDataWanted) {
        m_bitDataSeen = true;
    }
}

void CommandedBit::onAccessoryDone() {
    if (m_bitRunning) {
        m_zelmCbitDone = true;
    }
}

bool CommandedBit::isReportOverdue(std::chrono::steady_clock::time_point now) const {
    const std::lock_guard<std::mutex> lock(m_bitMutex);
    return std::chrono::duration_cast<std::chrono::seconds>(now - m_bitStartTime) > kReportLimit;
}

CommandedBit::CommandResponse CommandedBit::command() const {
    const std::lock_guard<std::mutex> lock(m_bitMutex);
    return m_bitCommand;
}

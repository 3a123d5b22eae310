// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/TimeDataTransfer.h"

#include <string>

#include "MSID_messages/RovanCommandMsg.h"
#include "utility/Console.h"

namespace {

// Operating modes of the receiver: where a transfer leaves it, and where there is nothing to do.
constexpr int16_t kModeTransfer = 4;
constexpr int16_t kModeSettled = 0;

constexpr int32_t kSecondsToCommand = 5;

std::string digit(bool flag) {
    return flag ? "1" : "0";
}

std::string word(bool flag) {
    return flag ? "true" : "false";
}

}  // namespace

TimeDataTransfer::TimeDataTransfer(ServerActions& actions, bool debug)
    : m_actions(actions), m_debug(debug) {
}

void TimeDataTransfer::on5040(int16_t opMode) {
    m_opMode = opMode;
    if (m_debug) {
        Console::line("process5040: OpMode = " + std::to_string(opMode) + " (TDTStatus)");
    }
}

void TimeDataTransfer::on5042(bool isDtsCOM1) {
    m_isDtsCOM1 = isDtsCOM1;
    if (isDtsCOM1) {
        m_threadDoWork = true;
    }
    if (m_debug) {
        Console::line("process5042: isDtsCOM1 = " + digit(isDtsCOM1) +
                      ", threadDoWork = " + word(m_threadDoWork) + "   (TDTStatus)");
    }
}

void TimeDataTransfer::tick() {
    if (!m_threadDoWork) {
        if (m_debug) {
            Console::line(" No work for thread   (TDTStatus)");
        }
        return;
    }
    if (m_debug) {
        Console::line("In pThread2: Timer = " + std::to_string(m_timeDataTimer) + ", OpMode = " +
                      std::to_string(m_opMode) + ", DtsCOM1 = " + digit(m_isDtsCOM1) +
                      " , threadDoWork = " + word(m_threadDoWork) + "   (TDTStatus)");
    }
    monitorOperationModeAfterTimeDataTxfr();
}

void TimeDataTransfer::monitorOperationModeAfterTimeDataTxfr() {
    if (m_opMode == kModeTransfer) {
        if (m_isDtsCOM1 || ++m_timeDataTimer < kSecondsToCommand) {
            return;
        }
        if (m_debug) {
            Console::line("##  Command to Continuous  (TDTStatus)");
        }
        m_actions.queueMessage(make_simple_command(RovanCommandMsg::e5001_Cmd_1));
        m_timeDataTimer = 0;
    }
    // The mode is looked at again: it may have changed by now.
    if (m_opMode == kModeSettled && !m_isDtsCOM1) {
        m_threadDoWork = false;
        m_timeDataTimer = 0;
    }
}

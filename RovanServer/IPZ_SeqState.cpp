// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/IPZ_SeqState.h"

#include <iterator>
#include <utility>

#include "MSID_messages/RovanCommandMsg.h"
#include "MSID_messages/Rovan_5044_Msg.h"
#include "MSID_messages/Rovan_5402_Msg.h"
#include "MSID_messages/Rovan_9225_Msg.h"

IPZ_SeqState::IPZ_SeqState(Clock clock) : m_clock(std::move(clock)) {
    reset();
    msg5402.sendTime = m_stateTime.load();
    msg5402.reportTime = m_stateTime.load();
}

void IPZ_SeqState::reset() {
    const TimePoint now = m_clock();
    m_state = eIPZ_Idle;
    m_stateTime = now;
    ipZeroizeStatus = Rovan_5404_Msg::e5404_IPZeroize_3;
    eZeroizeSuccess = false;
    ipZeroizeSuccess = false;
    cvZeroizeSuccess = false;
    bootFlagNormal = true;
    pspBootAllZeroes = false;
    pspSwAllZeroes = false;
    for (TrackingRecord* record : {&msg9225, &msg5404, &msg5044, &msg5001}) {
        record->sendTime = now;
        record->reportTime = now;
        record->done = false;
        record->rejected = false;
        record->success = false;
        record->received = false;
        record->retried = false;
    }
}

void IPZ_SeqState::setNextIPZstate(eIPZ_State next) {
    m_state = next;
    m_stateTime = m_clock();
}

double IPZ_SeqState::secondsInState() const {
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(m_clock() - m_stateTime.load());
    return static_cast<double>(elapsed.count()) / 1000.0;
}

const char* IPZ_SeqState::getStateStr(eIPZ_State state) {
    static constexpr const char* kNames[] = {
        "eIPZ_Idle ",         "eIPZ_ConnectMessages ", "eIPZ_WaitOnConnects ",
        "eIPZ_CommandEZero ", "eIPZ_WaitOnEZero ",     "eIPZ_CommandIPZ ",
        "eIPZ_WaitOnIPZero ", "eIPZ_ReportFail ",      "eIPZ_ReportSuccess "};
    return state < std::size(kNames) ? kNames[state] : "UNKNOWN!!! ";
}

IPZ_SeqState::TrackingRecord* IPZ_SeqState::record(unsigned short msgId) {
    switch (msgId) {
        case Rovan_9225_Msg::kMsgId:
            return &msg9225;
        case Rovan_5404_Msg::kMsgId:
            return &msg5404;
        case Rovan_5044_Msg::kMsgId:
            return &msg5044;
        case RovanCommandMsg::kMsgId:
            return &msg5001;
        case Rovan_5402_Msg::kMsgId:
            return &msg5402;
        default:
            return nullptr;
    }
}

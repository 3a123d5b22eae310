// SPDX-License-Identifier: Apache-2.0
// The destroy sequence. A pass handles one state; the state that it enters waits for the next pass.
// Where a pass makes two transitions, the later one counts: no state returns early.
#include <iterator>
#include <string>
#include <utility>

#include "ASPN/CommandStrings.h"
#include "ASPN/EventTypes.h"
#include "MSID_messages/RovanCommandMsg.h"
#include "MSID_messages/Rovan_5044_Msg.h"
#include "MSID_messages/Rovan_9225_Msg.h"
#include "RovanServer/ZeroizeProcedure.h"

namespace {

// Time limits, each counted from the entry to the state that waits; passed when more has gone by.
constexpr double kReportsLimitSec = 6.0;
constexpr double kEZeroLimitSec = 10.0;
constexpr double kIpzRetrySec = 15.0;
constexpr double kIpzLimitSec = 600.0;

// Events of the receiver.
constexpr unsigned short kEZeroSucceeded = 17;
constexpr unsigned short kEZeroFailed = 18;
constexpr unsigned short kIpzSucceeded = 34;
constexpr unsigned short kIpzFailed = 35;

const char* const kAnswer = "COMPONENT_DESTROY";

bool needsRetry(const IPZ_SeqState::TrackingRecord& record) {
    return record.done && record.rejected && !record.retried;
}

}  // namespace

// By eIPZ_State.
const ZeroizeProcedure::StateFunction ZeroizeProcedure::kStateTable[] = {
    &ZeroizeProcedure::stayIdle,       &ZeroizeProcedure::connectMessages,
    &ZeroizeProcedure::waitOnConnects, &ZeroizeProcedure::commandEZero,
    &ZeroizeProcedure::waitOnEZero,    &ZeroizeProcedure::commandIPZ,
    &ZeroizeProcedure::waitOnIPZero,   &ZeroizeProcedure::reportFail,
    &ZeroizeProcedure::reportSuccess,
};

void ZeroizeProcedure::handleDestroy(unsigned short id) {
    static_assert(std::size(kStateTable) == eIPZ_ReportSuccess + 1, "one function for each state");
    (this->*kStateTable[m_sequence.getIPZstate()])(Pass{id, m_sequence.secondsInState()});
}

void ZeroizeProcedure::stayIdle(const Pass&) {
}

void ZeroizeProcedure::connectMessages(const Pass&) {
    const auto now = m_actions.now();
    for (auto* record : {&m_sequence.msg5044, &m_sequence.msg5404, &m_sequence.msg9225}) {
        record->sendTime = now;
        record->done = false;
        record->success = false;
        record->received = false;
    }
    // Two rounds: what the first one loses, the second one makes good.
    for (int round = 0; round < 2; ++round) {
        for (const uint16_t id :
             {Rovan_9225_Msg::kMsgId, Rovan_5044_Msg::kMsgId, Rovan_5404_Msg::kMsgId}) {
            queueTracked(make_connect(id));
        }
    }
    m_sequence.setNextIPZstate(eIPZ_WaitOnConnects);
}

void ZeroizeProcedure::waitOnConnects(const Pass& pass) {
    const bool version = m_sequence.msg9225.received;
    const bool status = m_sequence.msg5404.received;
    const bool all = version && status && m_sequence.msg5044.received;
    if (!all && !(pass.seconds > kReportsLimitSec)) {
        return;
    }
    if (!version) {
        m_sequence.setNextIPZstate(eIPZ_CommandIPZ);
    } else if (!m_sequence.bootFlagNormal) {
        m_sequence.setNextIPZstate(eIPZ_WaitOnIPZero);
    } else if (status && m_sequence.ipZeroizeStatus != Rovan_5404_Msg::e5404_IPZeroize_2) {
        m_sequence.setNextIPZstate(eIPZ_CommandIPZ);
    } else {
        m_sequence.setNextIPZstate(eIPZ_CommandEZero);
    }
}

void ZeroizeProcedure::commandEZero(const Pass& pass) {
    queueTracked(make_simple_command(RovanCommandMsg::e5001_Cmd_7));
    m_sequence.setNextIPZstate(eIPZ_WaitOnEZero);
    if (pass.id == kEZeroSucceeded) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                            "Emergency Zeroize Success");
        m_sequence.eZeroizeSuccess = true;
    } else if (pass.id == kEZeroFailed) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eError, "Failed to Emergency Zeroize");
    }
}

void ZeroizeProcedure::waitOnEZero(const Pass& pass) {
    const bool late = pass.seconds > kEZeroLimitSec;
    if (needsRetry(m_sequence.msg5001)) {
        m_sequence.msg5001.retried = true;
        m_sequence.setNextIPZstate(eIPZ_CommandEZero);
    }
    if (pass.id == kEZeroSucceeded) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                            "Emergency Zeroize Success");
        m_sequence.eZeroizeSuccess = true;
        m_sequence.setNextIPZstate(eIPZ_CommandIPZ);
    } else if (pass.id == kEZeroFailed) {
        m_sequence.eZeroizeSuccess = false;
        if (late) {
            m_sequence.setNextIPZstate(eIPZ_CommandIPZ);
        }
    } else if (m_sequence.eZeroizeSuccess || late) {
        m_sequence.setNextIPZstate(eIPZ_CommandIPZ);
    }
}

void ZeroizeProcedure::commandIPZ(const Pass&) {
    queueTracked(make_ip_zeroize_command());
    m_sequence.setNextIPZstate(eIPZ_WaitOnIPZero);
}

void ZeroizeProcedure::waitOnIPZero(const Pass& pass) {
    if (needsRetry(m_sequence.msg5402) && pass.seconds > kIpzRetrySec) {
        m_sequence.msg5402.retried = true;
        m_sequence.setNextIPZstate(eIPZ_CommandIPZ);
    }
    if (m_sequence.ipZeroizeSuccess) {
        m_sequence.setNextIPZstate(m_sequence.eZeroizeSuccess ? eIPZ_ReportSuccess
                                                              : eIPZ_ReportFail);
    } else if (pass.seconds > kIpzLimitSec) {
        m_sequence.setNextIPZstate(eIPZ_ReportFail);
    }
    if (pass.id == kIpzSucceeded) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eInformation, "IP Zeroize Success");
    } else if (pass.id == kIpzFailed) {
        m_sequence.setNextIPZstate(eIPZ_ReportFail);
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eError, "Failed to IP Zeroize");
    }
}

void ZeroizeProcedure::reportFail(const Pass&) {
    m_sequence.setNextIPZstate(eIPZ_Idle);
    finish(zeroizeType::destroy, kAnswer + Sys::ResponseString::Fail);
}

void ZeroizeProcedure::reportSuccess(const Pass&) {
    m_sequence.setNextIPZstate(eIPZ_Idle);
    finish(zeroizeType::destroy, kAnswer + Sys::ResponseString::Pass);
}

void ZeroizeProcedure::queueTracked(GssipMessagePtr message) {
    m_actions.queueMessage(std::move(message),
                           [this](unsigned short msgId, bool success, bool nak, bool rejected) {
                               gssipMessageCallback(msgId, success, nak, rejected);
                           });
}

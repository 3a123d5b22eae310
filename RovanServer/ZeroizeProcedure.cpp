// SPDX-License-Identifier: Apache-2.0
// The commands, what the receiver reports, and the two zeroizes that are one command with a retry.
#include "RovanServer/ZeroizeProcedure.h"

#include <chrono>
#include <optional>
#include <utility>

#include "ASPN/CommandStrings.h"
#include "MSID_messages/RovanCommandMsg.h"

namespace {

/// The command is sent again when more whole seconds than these have passed: from 11 s on.
constexpr std::chrono::seconds kRepeatLimit{10};

}  // namespace

struct ZeroizeProcedure::Repeated {
    zeroizeType type;
    const char* answer;  // the final answer's first part
    uint16_t command;
    unsigned short succeeded;  // event ids
    unsigned short failed;
    bool repeatsAtReserved;

    static const Repeated kCvZeroize;
    static const Repeated kZeroize;
};

const ZeroizeProcedure::Repeated ZeroizeProcedure::Repeated::kCvZeroize{
    zeroizeType::cvZeroize, "ROVAN_CV_ZEROIZE", RovanCommandMsg::e5001_Cmd_8, 3, 4, true};
const ZeroizeProcedure::Repeated ZeroizeProcedure::Repeated::kZeroize{
    zeroizeType::zeroize, "COMPONENT_ZEROIZE", RovanCommandMsg::e5001_Cmd_7, 17, 18, false};

ZeroizeProcedure::ZeroizeProcedure(ServerActions& actions)
    : m_actions(actions),
      m_commanded([&actions] { return actions.now(); }),
      m_sequence([&actions] { return actions.now(); }) {
}

ZeroizeProcedure::Acceptance ZeroizeProcedure::acceptCvZeroize(const CommandResponse& cmd) {
    const std::lock_guard<std::mutex> lock(m_acceptMutex);
    if (isPending()) {
        return Acceptance::ignored;
    }
    return commandReceiver(Repeated::kCvZeroize, cmd);
}

ZeroizeProcedure::Acceptance ZeroizeProcedure::acceptZeroize(const CommandResponse& cmd) {
    const std::lock_guard<std::mutex> lock(m_acceptMutex);
    const zeroizeType pending = m_commanded.type();
    if (pending == zeroizeType::zeroize || pending == zeroizeType::destroy) {
        return Acceptance::ignored;
    }
    // Even if the new command is then refused: the old one is gone and stays unanswered.
    if (pending == zeroizeType::cvZeroize) {
        m_commanded.Complete();
    }
    return commandReceiver(Repeated::kZeroize, cmd);
}

ZeroizeProcedure::Acceptance ZeroizeProcedure::acceptDestroy(const CommandResponse& cmd) {
    const std::lock_guard<std::mutex> lock(m_acceptMutex);
    const zeroizeType pending = m_commanded.type();
    if (pending == zeroizeType::destroy) {
        return Acceptance::refused;
    }
    if (pending != zeroizeType::none) {
        m_commanded.Complete();
    }
    // Under the one lock: a pass that is just finishing the replaced command would otherwise reset
    // the sequence after its start, and the destroy would never go on.
    m_commanded.Pending(zeroizeType::destroy, cmd, [this] { m_sequence.startSequence(); });
    return Acceptance::accepted;
}

ZeroizeProcedure::Acceptance ZeroizeProcedure::commandReceiver(const Repeated& kind,
                                                               const CommandResponse& cmd) {
    const int status = m_ipClearStatus;
    if (status != kNothingReported && status != kStatusOneReported) {
        return Acceptance::refused;
    }
    m_actions.queueMessage(make_simple_command(kind.command), cmd);
    m_commanded.Pending(kind.type, cmd);
    return Acceptance::accepted;
}

void ZeroizeProcedure::handleZeroize(unsigned short id) {
    // The zeroize thread and the one that delivers events never run a pass together.
    static std::mutex s_handleZeroizeMutex;
    const std::lock_guard<std::mutex> lock(s_handleZeroizeMutex);
    latch(id);
    switch (m_commanded.type()) {
        case zeroizeType::none:
            break;
        case zeroizeType::cvZeroize:
            handleRepeated(Repeated::kCvZeroize, id);
            break;
        case zeroizeType::zeroize:
            handleRepeated(Repeated::kZeroize, id);
            break;
        case zeroizeType::destroy:
            handleDestroy(id);
            break;
    }
}

void ZeroizeProcedure::latch(unsigned short eventId) {
    switch (eventId) {
        case 3:
        case 4:
            m_sequence.cvZeroizeSuccess = eventId == 3;
            break;
        case 17:
        case 18:
            m_sequence.eZeroizeSuccess = eventId == 17;
            break;
        case 34:
        case 35:
            m_sequence.ipZeroizeSuccess = eventId == 34;
            break;
        default:
            break;
    }
}

void ZeroizeProcedure::handleRepeated(const Repeated& kind, unsigned short id) {
    if (id == kind.succeeded) {
        int expected = kStatusOneReported;
        m_ipClearStatus.compare_exchange_strong(expected, kNothingReported);
        finish(kind.type, kind.answer + Sys::ResponseString::Pass);
        return;
    }
    if (id != kind.failed && m_commanded.elapsed() <= kRepeatLimit) {
        return;
    }
    // A command that was replaced meanwhile is not sent again.
    if (!m_commanded.restart(kind.type)) {
        return;
    }
    const int status = m_ipClearStatus;
    if (status == kNothingReported || (status == kReserved && kind.repeatsAtReserved)) {
        m_actions.queueMessage(make_simple_command(kind.command));
    }
    if (isIpDataClear()) {
        finish(kind.type, kind.answer + Sys::ResponseString::Fail);
    }
}

void ZeroizeProcedure::finish(zeroizeType handled, const std::string& text) {
    const std::optional<CommandResponse> command =
        m_commanded.CompleteIf(handled, [this] { m_sequence.reset(); });
    if (command) {
        m_actions.respondText(*command, text);
    }
}

void ZeroizeProcedure::gssipMessageCallback(unsigned short msgId, bool success, bool /*nak*/,
                                            bool rejected) {
    IPZ_SeqState::TrackingRecord* const record = m_sequence.record(msgId);
    if (record == nullptr) {
        return;
    }
    if (rejected) {
        record->rejected = true;
    }
    if (success) {
        record->success = true;
    }
    record->done = true;
}

void ZeroizeProcedure::onReportReceived(unsigned short msgId) {
    if (IPZ_SeqState::TrackingRecord* const record = m_sequence.record(msgId)) {
        record->received = true;
    }
}

void ZeroizeProcedure::onIpZeroizeStatus(Rovan_5404_Msg::e5404IPZeroizeStatus status) {
    m_sequence.set5404IPzeroizationStatus(status);
    if (status == Rovan_5404_Msg::e5404_IPZeroize_0) {
        m_ipClearStatus = kIpDataClear;
    } else if (status == Rovan_5404_Msg::e5404_IPZeroize_1) {
        m_ipClearStatus = kStatusOneReported;
    }
}

void ZeroizeProcedure::onVersionRecord(bool bootFlagNormal, bool pspBootAllZeroes,
                                       bool pspSwAllZeroes) {
    m_sequence.bootFlagNormal = bootFlagNormal;
    m_sequence.msg9225.received = true;
    m_sequence.pspBootAllZeroes = pspBootAllZeroes;
    m_sequence.pspSwAllZeroes = pspSwAllZeroes;
}

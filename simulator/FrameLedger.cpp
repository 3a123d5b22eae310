// SPDX-License-Identifier: Apache-2.0
#include "simulator/FrameLedger.h"

#include <utility>

#include "gssip/GssipFrame.h"

namespace Simulator {
namespace {

bool isAnswer(const Bytes& frame, std::uint16_t flags) {
    return frame.size() == Gssip::kHeaderBytes && (flags & Gssip::kFlagsProtocolAnswer) != 0;
}

}  // namespace

void FrameLedger::addHeard(ScannedFrame frame) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        switch (frame.kind) {
            case ScannedFrame::Kind::Stray:
                m_totals.strayBytes += frame.bytes.size();
                break;
            case ScannedFrame::Kind::Damaged:
                ++m_totals.heardDamaged;
                break;
            case ScannedFrame::Kind::Intact:
                ++m_totals.heardIntact;
                if (!isAnswer(frame.bytes, frame.flags())) {
                    ++m_heardById[frame.msgId()];
                } else if ((frame.flags() & Gssip::kFlagAck) != 0) {
                    ++m_totals.acksHeard;
                    ++m_acksHeard[frame.msgId()];
                }
                break;
        }
    }
    m_heard.add({std::chrono::steady_clock::now(), std::move(frame)});
}

void FrameLedger::addSaid(SaidFrame frame) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!frame.intact || !frame.delivered) {
            ++m_totals.saidDamaged;
        } else {
            ++m_totals.saidIntact;
            const std::uint16_t flags = frame.flags();
            const bool answer = isAnswer(frame.bytes, flags);
            m_totals.acksSaid += answer && (flags & Gssip::kFlagAck) != 0 ? 1 : 0;
            m_totals.naksSaid += answer && (flags & Gssip::kFlagNak) != 0 ? 1 : 0;
            if (!answer) {
                ++m_saidById[frame.msgId()];
            }
            if ((flags & Gssip::kFlagAckRequest) != 0) {
                ++m_acksWanted[frame.msgId()];
            }
        }
    }
    m_said.add(std::move(frame));
}

FrameLedger::Counts FrameLedger::heardById() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_heardById;
}

FrameLedger::Counts FrameLedger::saidById() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_saidById;
}

FrameLedger::Totals FrameLedger::totals() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_totals;
}

FrameLedger::Counts FrameLedger::unacknowledged() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Counts missing;
    for (const auto& [msgId, wanted] : m_acksWanted) {
        const auto heard = m_acksHeard.find(msgId);
        const std::uint64_t count = heard == m_acksHeard.end() ? 0 : heard->second;
        if (wanted > count) {
            missing[msgId] = wanted - count;
        }
    }
    return missing;
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
// The protocol thread and the write thread of the link: from messageQueue to the line.
#include <cstdio>
#include <stdexcept>
#include <vector>

#include "RovanServer/RovanIo.h"
#include "gssip/GssipFrame.h"

using FACE::RETURN_CODE_TYPE;

namespace {

constexpr std::chrono::nanoseconds kQueueTimeout = std::chrono::milliseconds(200);
constexpr std::chrono::nanoseconds kPause = std::chrono::milliseconds(100);
constexpr long long kNoLimit = -1;

}  // namespace

void RovanIo::protocolRound() {
    MessageQueueItem_t item;
    if (!messageQueue.pop_front(item, kQueueTimeout)) {
        return;
    }
    if (!m_protocol || !item.message || item.message->frame() == nullptr) {
        throw std::logic_error("no link or no frame to send");
    }
    const uint16_t msgId = item.message->msgId();
    bool nak = false;
    bool rejected = false;
    bool answered = sendAndWait(item.message, nak, rejected);
    if (!answered) {
        reportProtocol(__LINE__, "PROTOCOL TIMEOUT", msgId, ++m_counters.protocolTimeouts);
    } else if (nak) {
        reportProtocol(__LINE__, "TX CHECKSUM ERROR", msgId, ++m_counters.txChecksumErrors);
    }
    if (!answered || nak) {
        // Once more and no further. What the first attempt said stays when the second says nothing.
        answered = sendAndWait(item.message, nak, rejected);
    }
    if (rejected) {
        reportProtocol(__LINE__, "MSG REJECTED", msgId, ++m_counters.rejectedMessages);
    }
    const bool success = answered && !nak && !rejected;
    if (item.commandCallback) {
        item.commandCallback(item.response, success);
    }
    if (item.ackCallback) {
        item.ackCallback(msgId, success, nak, rejected);
    }
}

bool RovanIo::sendAndWait(const std::shared_ptr<GssipMessage>& message, bool& nak, bool& rejected) {
    // Armed before the frame can leave, so that an instant answer is not lost. A full queue loses
    // the frame, and the wait ends at its time limit.
    m_protocol->startNewSequence(message->msgId(), static_cast<uint16_t>(message->wdcnt()),
                                 message->flagWord());
    m_writeQueue.push_back(message);
    return m_protocol->wait(nak, rejected);
}

void RovanIo::reportProtocol(int line, const char* what, uint16_t msgId, uint32_t count) const {
    report(__FILE__, line,
           std::string("protocolThreadFunction() GSSIP ") + what + " (" + std::to_string(msgId) +
               ") (" + std::to_string(count) + ")");
}

void RovanIo::writeRound() {
    std::shared_ptr<GssipMessage> message;
    if (!m_writeQueue.pop_front(message, kQueueTimeout)) {
        return;
    }
    if (message->flagWord() == Gssip::kFlagsPause) {
        return m_sleep(kPause);
    }
    message->WriteMessage(this);
    // The next frame is not handed over before this one has left the line. On a slow line that
    // takes up to a minute, which a stop does not wait for.
    rest(m_writeThread, timeToSendDataWordCount(static_cast<uint16_t>(message->wdcnt())));
}

int RovanIo::WriteBytes(const void* bytes, unsigned int count) {
    trace("T:", bytes, count);
    // The service only reads the payload, which has no form for constant bytes.
    auto* viewedBytes = static_cast<uint8_t*>(const_cast<void*>(bytes));
    FACE::IOSS::Serial::WRITE_PAYLOAD_TYPE payload;
    FACE::Sequence<uint8_t>::RETURN_CODE viewed{};
    payload.payload = {viewedBytes, count, count, viewed};
    Code rc = RETURN_CODE_TYPE::NO_ERROR;
    m_io->Write(m_connection, kNoLimit, payload, rc);
    if (rc == RETURN_CODE_TYPE::NO_ERROR) {
        return static_cast<int>(count);
    }
    const std::vector<uint16_t> words = Gssip::toWords(bytes, count);
    char flags[8];
    std::snprintf(flags, sizeof flags, "%04X", unsigned{words[Gssip::kWordFlags]});
    report(__FILE__, __LINE__,
           "WriteBytes() GSSIP WRITE ERROR (" + std::to_string(++m_counters.writeErrors) +
               "), msgid = " + std::to_string(words[Gssip::kWordMsgId]) +
               ", wdcnt = " + std::to_string(words[Gssip::kWordCount]) + ", flagWord = 0x" + flags);
    return -1;
}

// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanIoProtocol.h"

#include <algorithm>
#include <chrono>
#include <iterator>

#include "gssip/GssipFrame.h"

namespace {

struct AnswerTimes {
    int64_t baud;
    uint64_t ack;
    uint64_t reply;
};

// How long the receiver may take to answer, in microseconds.
constexpr AnswerTimes kAnswerTimes[] = {
    {300, 400'000, 1'200'000},  {600, 360'000, 1'080'000},  {1200, 320'000, 960'000},
    {2400, 280'000, 840'000},   {4800, 240'000, 720'000},   {9600, 200'000, 600'000},
    {19200, 160'000, 480'000},  {38400, 120'000, 360'000},  {76800, 100'000, 120'000},
    {115200, 100'000, 120'000}, {230400, 100'000, 120'000}, {460800, 100'000, 120'000},
    {921600, 100'000, 120'000},
};
constexpr AnswerTimes kAnswerTimesOfOtherSpeeds = {0, 200'000, 600'000};

constexpr unsigned kMarginCharacters = 10;
constexpr uint64_t kMicrosecondsPerSecond = 1'000'000;

// The receiver acknowledges this message and never replies to it.
constexpr uint16_t kMsgIdWithoutReply = 2501;

AnswerTimes answerTimes(int64_t baud) {
    const auto* found = std::find_if(std::begin(kAnswerTimes), std::end(kAnswerTimes),
                                     [baud](const AnswerTimes& row) { return row.baud == baud; });
    return found == std::end(kAnswerTimes) ? kAnswerTimesOfOtherSpeeds : *found;
}

}  // namespace

RovanIoProtocol::RovanIoProtocol(int64_t baud, unsigned parity)
    : m_baud(baud),
      m_bitsPerCharacter(parity == 0 ? 10 : 11),
      m_ackTimeout(answerTimes(baud).ack),
      m_replyTimeout(answerTimes(baud).reply) {
}

uint64_t RovanIoProtocol::timeToSendMessageByteCount(uint16_t bytes) const {
    if (m_baud <= 0) {
        return 0;
    }
    const auto characters = static_cast<uint16_t>(bytes + kMarginCharacters);
    return characters * m_bitsPerCharacter * kMicrosecondsPerSecond /
               static_cast<uint64_t>(m_baud) +
           1;
}

uint64_t RovanIoProtocol::timeToSendDataWordCount(uint16_t words) const {
    return timeToSendMessageByteCount(static_cast<uint16_t>(Gssip::frameBytes(words)));
}

void RovanIoProtocol::startNewSequence(uint16_t msgId, uint16_t wdcnt, uint16_t flagWord) {
    const bool isReply = wdcnt == 0 && (flagWord & Gssip::kFlagReply) != 0;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_currentMsgId = msgId;
    m_ackPending = (flagWord & Gssip::kFlagAckRequest) != 0;
    m_replyPending = msgId != kMsgIdWithoutReply && !isReply;
    m_timeout = timeToSendDataWordCount(0) + timeToSendDataWordCount(wdcnt) +
                (m_ackPending ? m_ackTimeout : 0) + (m_replyPending ? m_replyTimeout : 0);
    m_nakReceived = false;
    m_rejected = false;
}

uint64_t RovanIoProtocol::timeout() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_timeout;
}

void RovanIoProtocol::newProtocolMessage(uint16_t msgId, uint16_t flagWord) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (msgId != m_currentMsgId) {
        return;
    }
    if ((flagWord & Gssip::kFlagAck) != 0) {
        m_ackPending = false;
        m_nakReceived = false;
    }
    if ((flagWord & Gssip::kFlagNak) != 0) {
        m_ackPending = false;
        m_replyPending = false;
        m_nakReceived = true;
    }
    if ((flagWord & Gssip::kFlagReply) != 0) {
        m_replyPending = false;
        m_rejected = (flagWord & Gssip::kFlagReject) != 0;
    }
    if (!isPending()) {
        m_ended.notify_one();
    }
}

bool RovanIoProtocol::wait(bool& nak, bool& rejected) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::microseconds(m_timeout);
    if (!m_ended.wait_until(lock, deadline, [this] { return !isPending(); })) {
        return false;
    }
    nak = m_nakReceived;
    rejected = m_rejected;
    return true;
}

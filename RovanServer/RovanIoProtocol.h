// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

// What the link waits for after a frame went out, and how long. The receiver answers in up to two
// steps: an ACK (or NAK) says that the frame arrived intact, a reply says that it was accepted (or
// rejected).
//
// The protocol thread arms a sequence with startNewSequence before the frame can leave, and then
// waits; the read thread passes on the answers. The time functions may be called by any thread. All
// times are in microseconds.
class RovanIoProtocol {
  public:
    /// `baud` in bits per second; one of 0 or less makes all times on the line 0. A `parity` other
    /// than 0 lengthens each character by a bit.
    RovanIoProtocol(int64_t baud, unsigned parity);

    /// The time on the line of a message, with a margin of ten characters.
    uint64_t timeToSendMessageByteCount(uint16_t bytes) const;
    /// The same for a frame with that many data words.
    uint64_t timeToSendDataWordCount(uint16_t words) const;

    /// Arms the state for the frame about to be sent.
    void startNewSequence(uint16_t msgId, uint16_t wdcnt, uint16_t flagWord);

    /// The time limit of the sequence armed last.
    uint64_t timeout();

    /// Takes a header-only answer. One to another message than that in flight is ignored.
    void newProtocolMessage(uint16_t msgId, uint16_t flagWord);

    /// Blocks until the sequence has ended by its answers, and tells how; at once when none are
    /// expected. False at the time limit, with the outputs untouched.
    bool wait(bool& nak, bool& rejected);

  private:
    bool isPending() const { return m_ackPending || m_replyPending; }

    const int64_t m_baud;
    const uint64_t m_bitsPerCharacter;
    uint64_t m_ackTimeout;
    uint64_t m_replyTimeout;

    std::mutex m_mutex;  // guards all below
    std::condition_variable m_ended;
    uint16_t m_currentMsgId = 0;
    uint64_t m_timeout = 0;
    bool m_ackPending = false;
    bool m_replyPending = false;
    bool m_nakReceived = false;
    bool m_rejected = false;
};

// SPDX-License-Identifier: Apache-2.0
// The read thread of the link: from the line to the queue.
#include <algorithm>

#include "ASPN/TimeConversion.h"
#include "MSID_messages/RovanHeaderOnlyMsg.h"
#include "RovanServer/RovanIo.h"
#include "gssip/GssipFrame.h"
#include "ioss_mcsq/GssipMcsq.h"
#include "platform/FPGA.h"

using FACE::RETURN_CODE_TYPE;

namespace {

constexpr std::chrono::nanoseconds kReadTimeout = std::chrono::milliseconds(200);

uint16_t frameWord(const unsigned char* frame, unsigned word) {
    return Gssip::wordAt(frame + 2 * word);
}

}  // namespace

void RovanIo::readRound() {
    if (m_parseUnfinished) {
        return parse(nullptr, 0);
    }
    const auto start = std::chrono::steady_clock::now();
    Code rc = RETURN_CODE_TYPE::NO_ERROR;
    m_readPayload.payload.resize(kReadBytes);
    m_io->Read(m_connection, kReadTimeout.count(), m_readPayload, rc);
    switch (rc) {
        case RETURN_CODE_TYPE::NO_ERROR:
            return parse(m_readBuffer.data(), std::min(m_readPayload.payload.length(), kReadBytes));
        case RETURN_CODE_TYPE::NOT_AVAILABLE:
        case RETURN_CODE_TYPE::TIMED_OUT:
            // A line that was hung up gives empty reads at once, and without a rest as many as a
            // processor can make. On a healthy line nothing is left to rest.
            return rest(m_readThread, start + kReadTimeout - std::chrono::steady_clock::now());
        default:
            debugLine("RovanIo::readThreadFunction() received unexpected return code: " +
                      FACE::toStdString(RETURN_CODE_TYPE::ToString(rc)));
    }
}

// A handler that throws leaves further frames in the parser; the next round goes on with them.
void RovanIo::parse(const unsigned char* bytes, uint32_t count) {
    m_parseUnfinished = true;
    m_parser.LoadBytes(bytes, static_cast<uint16_t>(count));
    m_parseUnfinished = false;
}

void RovanIo::OnGpsMessageReceived(unsigned char* message, unsigned int length, unsigned int) {
    const uint16_t msgId = frameWord(message, Gssip::kWordMsgId);
    const uint16_t flagWord = frameWord(message, Gssip::kWordFlags);
    ++m_counters.rxMessages;
    trace("R:", message, length);
    if ((flagWord & Gssip::kFlagAckRequest) != 0) {
        queueHeader(msgId, Gssip::kFlagsAckAnswer);
    }
    if ((flagWord & Gssip::kFlagFrameMarker) == 0) {
        queueHeader(msgId, Gssip::kFlagsPause);
    }
    if (length == Gssip::kHeaderBytes && (flagWord & Gssip::kFlagsProtocolAnswer) != 0) {
        if (m_protocol) {
            m_protocol->newProtocolMessage(msgId, flagWord);
        }
        return;
    }
    publish(message, length);
}

void RovanIo::queueHeader(uint16_t msgId, uint16_t flagWord) {
    m_writeQueue.emplace_back(std::make_shared<RovanHeaderOnlyMsg>(msgId, flagWord));
}

void RovanIo::publish(const unsigned char* message, unsigned length) {
    const FpgaFace& fpga = FpgaFace::Instance();
    auto& header = m_sample.header();
    ASPN2::setToA_fromFpgaTicks(fpga.getUARTDataTimestampRaw(m_uartIndex), header);
    ASPN2::setToV_fromFpgaTicks(fpga.getPulseTimestampRaw(m_pulseIndex), header);
    header.seq_num(static_cast<int64_t>(m_sequenceNumber++));
    m_sample.data().assign(message, message + length);
    m_sample.num_bytes(static_cast<int32_t>(length));
    // The queue reports for itself, and a frame that is late is not sent again.
    Code ignored = RETURN_CODE_TYPE::NO_ERROR;
    m_gssipQueue->Write(m_gssipConnection, m_sample, ignored);
}

void RovanIo::OnParserChecksumError(unsigned int) {
    const uint32_t count = ++m_counters.rxChecksumErrors;
    report(__FILE__, __LINE__,
           "readThreadFunction() GSSIP RX CHECKSUM ERROR (" + std::to_string(count) + ")");
}

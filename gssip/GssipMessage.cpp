// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipMessage.h"

#include <algorithm>
#include <cstring>

#include "gssip/GssipFrame.h"
#include "gssip/IWriteByteStreams.h"

void GssipMessage::attach(uint16_t* frame, uint16_t* data, uint16_t msgId, uint32_t wdcnt,
                          unsigned capacityBytes) {
    m_frame = frame;
    m_data = data;
    m_msgId = msgId;
    m_wdcnt = wdcnt;
    m_capacityBytes = capacityBytes;
}

bool GssipMessage::OkSetContent(const void* bytes, unsigned size) {
    // Signed, so that a frame shorter than the overhead matches no word count.
    const int64_t words = int64_t{size / 2} - int64_t{Gssip::kOverheadWords};
    if (m_frame == nullptr || words != int64_t{m_wdcnt}) {
        return false;
    }
    std::memcpy(m_frame, bytes, std::min(size, m_capacityBytes));
    return true;
}

uint16_t GssipMessage::flagWord() const {
    return m_frame == nullptr ? uint16_t{0} : m_frame[Gssip::kWordFlags];
}

uint16_t GssipMessage::checksumOfContents() const {
    const uint32_t words = dataWordsHeld();
    return words == 0 ? uint16_t{0} : CalculateChecksum(m_data, 0, words - 1);
}

uint16_t GssipMessage::calculateHeaderChecksum() const {
    return m_frame == nullptr
               ? uint16_t{0}
               : CalculateChecksum(m_frame, Gssip::kWordDelimiter, Gssip::kWordFlags);
}

uint16_t GssipMessage::checksumOfHeader() const {
    return m_frame == nullptr
               ? uint16_t{0}
               : CalculateChecksum(m_frame, Gssip::kWordDelimiter, Gssip::kWordHeaderChecksum);
}

void GssipMessage::insert_checksum() {
    if (!frameFits() || m_frame[Gssip::kWordCount] != m_wdcnt) {
        return;
    }
    m_frame[Gssip::kWordHeaderChecksum] = calculateHeaderChecksum();
    m_headerChecksumInserted = true;
    if (m_wdcnt == 0) {
        return;
    }
    m_frame[Gssip::kWordData + m_wdcnt] = checksumOfContents();
    m_dataChecksumInserted = true;
}

void GssipMessage::setHeaderChecksum() {
    if (m_frame != nullptr) {
        m_frame[Gssip::kWordHeaderChecksum] = calculateHeaderChecksum();
    }
}

void GssipMessage::set_gpsip_wdcnt(uint16_t count) {
    if (m_frame != nullptr) {
        m_frame[Gssip::kWordCount] = count;
        m_wdcnt = count;
    }
}

void GssipMessage::clearContents() {
    std::fill_n(m_data, dataWordsHeld(), uint16_t{0});
}

void GssipMessage::WriteMessage(IWriteByteStreams* stream) {
    if (stream == nullptr || !frameFits()) {
        return;
    }
    insert_checksum();
    if (!m_headerChecksumInserted || (m_wdcnt != 0 && !m_dataChecksumInserted)) {
        return;
    }
    debugPrintMessage();
    stream->WriteBytes(m_frame, Gssip::frameBytes(m_wdcnt));
}

bool GssipMessage::frameFits() const {
    return m_frame != nullptr && Gssip::frameBytes(m_wdcnt) <= m_capacityBytes;
}

uint32_t GssipMessage::dataWordsHeld() const {
    if (m_data == nullptr) {
        return 0;
    }
    return std::min<uint32_t>(m_wdcnt, m_capacityBytes / 2 - Gssip::kHeaderWords);
}

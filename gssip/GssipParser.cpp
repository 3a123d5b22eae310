// SPDX-License-Identifier: Apache-2.0
#include "gssip/GssipParser.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

// The delimiter as it comes over the line.
constexpr unsigned char kFirstByte = Gssip::kDelimiter & 0xFF;
constexpr unsigned char kSecondByte = Gssip::kDelimiter >> 8;

constexpr unsigned kWordCountOffset = 2 * Gssip::kWordCount;

std::string dumpOf(const unsigned char* bytes, unsigned length, uint16_t sum) {
    std::string text;
    char piece[16];
    for (unsigned i = 0; i + 1 < length; i += 2) {
        std::snprintf(piece, sizeof piece, "%04X ", unsigned{Gssip::wordAt(bytes + i)});
        text += piece;
    }
    std::snprintf(piece, sizeof piece, "\nSum:%04X\n", unsigned{sum});
    return text += piece;
}

}  // namespace

void GssipParser::ProcessMessagesWithThis(IHandleGpsipMessages* handler, unsigned int cookie) {
    if (handler != nullptr) {
        m_handler = handler;
        m_cookie = cookie;
    }
}

void GssipParser::LoadBytes(const unsigned char* bytes, uint16_t count) {
    m_queue.append(bytes, count);
    Parse();
}

void GssipParser::reset() {
    m_queue.clear();
    m_state = State::kSearching;
    m_expectedLength = 0;
}

void GssipParser::Parse() {
    while (m_state == State::kSearching ? searchHeader() : collectData()) {}
}

bool GssipParser::searchHeader() {
    const unsigned char* begin = m_queue.data();
    const unsigned char* end = begin + m_queue.size();
    m_queue.drop(static_cast<unsigned>(std::find(begin, end, kFirstByte) - begin));
    if (m_queue.size() < 2) {
        return false;
    }
    if (m_queue[1] != kSecondByte) {
        m_queue.drop(1);
        return true;
    }
    if (m_queue.size() < Gssip::kHeaderBytes) {
        return false;
    }
    if (m_queue.wordSum(Gssip::kHeaderBytes) != 0) {
        failHeader();
        return true;
    }
    m_expectedLength = Gssip::frameBytes(Gssip::wordAt(m_queue.data() + kWordCountOffset));
    m_state = State::kCollectingData;
    return true;
}

bool GssipParser::collectData() {
    if (m_queue.size() < m_expectedLength) {
        return false;
    }
    // A good header adds nothing to the sum, so that this is the sum of the data. A frame without
    // data is complete with its header.
    if (m_queue.wordSum(m_expectedLength) != 0) {
        failData();
    } else {
        PostMessage(m_expectedLength);
    }
    return true;
}

// The parser is ready for the next candidate before it calls its handler, here and below, so that a
// handler that throws gets each frame and each failure once only.
void GssipParser::PostMessage(unsigned length) {
    std::memcpy(m_message.data(), m_queue.data(), length);
    m_queue.drop(length);
    m_state = State::kSearching;
    if (m_handler != nullptr) {
        m_handler->OnGpsMessageReceived(m_message.data(), length, m_cookie);
    }
}

void GssipParser::failHeader() {
    m_queue.drop(1);
    if (m_handler != nullptr) {
        m_handler->OnParserChecksumError(m_cookie);
    }
}

void GssipParser::failData() {
    std::string dump;
    if (m_debug != 0) {
        dump = dumpOf(m_queue.data(), m_expectedLength, m_queue.wordSum(m_expectedLength));
    }
    m_state = State::kSearching;
    failHeader();
    if (!dump.empty()) {
        std::fwrite(dump.data(), 1, dump.size(), stderr);
    }
}

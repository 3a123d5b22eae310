// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/FrameScanner.h"

#include <algorithm>

#include "gssip/GssipFrame.h"

namespace GssipTool {
namespace {

constexpr uint8_t kFirstByte = Gssip::kDelimiter & 0xFF;
constexpr uint8_t kSecondByte = Gssip::kDelimiter >> 8;

}  // namespace

void FrameScanner::feed(const uint8_t* bytes, size_t count) {
    constexpr size_t kAtOnce = 4096;
    for (size_t done = 0; done < count;) {
        const size_t now = std::min(count - done, kAtOnce);
        m_queue.append(bytes + done, static_cast<unsigned>(now));
        done += now;
        while (step(false)) {}
    }
}

void FrameScanner::finish() {
    while (step(true)) {}
    flush();
}

// Decides about the queue's front; false when nothing is decided.
bool FrameScanner::step(bool ended) {
    const uint8_t* const begin = m_queue.data();
    skip(static_cast<unsigned>(std::find(begin, begin + m_queue.size(), kFirstByte) - begin));
    if (m_queue.size() == 0) {
        return false;
    }
    if (m_queue.size() >= 2 && m_queue[1] != kSecondByte) {
        skip(1);
        return true;
    }
    if (m_queue.size() < Gssip::kHeaderBytes) {
        return needsMore(ended);
    }
    if (m_queue.wordSum(Gssip::kHeaderBytes) != 0) {
        fail(Fault::Kind::kHeaderChecksum);
        return true;
    }
    const unsigned length =
        Gssip::frameBytes(Gssip::wordAt(m_queue.data() + 2 * Gssip::kWordCount));
    if (m_queue.size() < length) {
        return needsMore(ended);
    }
    if (m_queue.wordSum(length) != 0) {
        fail(Fault::Kind::kDataChecksum);
    } else {
        takeFrame(length);
    }
    return true;
}

bool FrameScanner::needsMore(bool ended) {
    if (ended && m_queue.size() == 1) {
        skip(1);  // not even a delimiter
    } else if (ended) {
        fail(Fault::Kind::kCutOff);
    }
    return ended;
}

void FrameScanner::fail(Fault::Kind kind) {
    const auto word = [this](unsigned i) {
        return m_queue.size() >= 2 * i + 2 ? Gssip::wordAt(m_queue.data() + 2 * i) : uint16_t{0};
    };
    m_faults.push_back({kind, m_offset, word(Gssip::kWordMsgId), word(Gssip::kWordCount)});
    skip(1);
}

void FrameScanner::skip(unsigned count) {
    while (count > 0) {
        const auto room = static_cast<unsigned>(kMaxSkipped - m_skipped.size());
        const unsigned now = std::min(count, room);
        const uint8_t* const begin = m_queue.data();
        m_skipped.insert(m_skipped.end(), begin, begin + now);
        m_queue.drop(now);
        m_offset += now;
        count -= now;
        if (m_skipped.size() == kMaxSkipped) {
            flush();
        }
    }
}

void FrameScanner::flush() {
    if (!m_skipped.empty()) {
        const uint64_t offset = m_offset - m_skipped.size();
        m_take({false, offset, std::move(m_skipped), std::move(m_faults)});
        m_skipped.clear();
        m_faults.clear();
    }
}

void FrameScanner::takeFrame(unsigned length) {
    flush();
    const uint8_t* const begin = m_queue.data();
    Piece frame{true, m_offset, Bytes(begin, begin + length), {}};
    m_queue.drop(length);
    m_offset += length;
    m_take(std::move(frame));
}

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

namespace GssipTool {
namespace {

constexpr unsigned kTimeBytes = 8;
constexpr unsigned kLengthBytes = 4;

uint64_t littleEndian(const uint8_t* bytes, unsigned count) {
    uint64_t value = 0;
    for (unsigned i = count; i-- > 0;) {
        value = value << 8 | bytes[i];
    }
    return value;
}

void appendLittleEndian(Bytes& bytes, uint64_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
    }
}

}  // namespace

Bytes blockHeader(int64_t timeNs, size_t count) {
    Bytes header;
    appendLittleEndian(header, static_cast<uint64_t>(timeNs), kTimeBytes);
    appendLittleEndian(header, count, kLengthBytes);
    return header;
}

void RecordingReader::feed(const uint8_t* bytes, size_t count, const Sink& sink) {
    for (size_t done = 0; done < count;) {
        size_t now = 1;
        if (m_left > 0) {
            now = std::min(m_left, count - done);
            sink(bytes + done, now, m_timeNs);
            m_left -= now;
        } else {
            m_header.push_back(bytes[done]);
            readHeader();
        }
        done += now;
        m_offset += now;
    }
}

void RecordingReader::readHeader() {
    if (m_header.size() < kTimeBytes + kLengthBytes) {
        return;
    }
    m_timeNs = static_cast<int64_t>(littleEndian(m_header.data(), kTimeBytes));
    const uint64_t length = littleEndian(m_header.data() + kTimeBytes, kLengthBytes);
    m_header.clear();
    if (m_timeNs < 0 || length > kMaxBlockBytes) {
        throw std::runtime_error(
            fmt::format("the recording is damaged before its byte {}", m_offset + 1));
    }
    m_left = length;
}

}  // namespace GssipTool

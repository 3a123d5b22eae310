// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "gssip/GssipFrame.h"
#include "gssip/GssipMessage.h"
#include "gssip/IWriteByteStreams.h"

// A frame built by hand, word by word or text by text, and a stream that keeps what is written.
namespace Frames {

using Bytes = std::vector<uint8_t>;

class Frame {
  public:
    /// All data words zero. No checksums: the message classes do not look at them.
    Frame(uint16_t msgId, unsigned wdcnt) : m_bytes(2 * (wdcnt + 6)) {
        const uint16_t header[] = {0x81FF, msgId, static_cast<uint16_t>(wdcnt), 0x8000};
        std::memcpy(m_bytes.data(), header, sizeof header);
    }

    Frame& word(unsigned i, uint16_t value) {
        m_bytes[2 * (5 + i)] = static_cast<uint8_t>(value);
        m_bytes[2 * (5 + i) + 1] = static_cast<uint8_t>(value >> 8);
        return *this;
    }
    Frame& text(unsigned firstWord, const std::string& text) {
        std::memcpy(m_bytes.data() + 2 * (5 + firstWord), text.data(), text.size());
        return *this;
    }

    const void* bytes() const { return m_bytes.data(); }
    unsigned size() const { return static_cast<unsigned>(m_bytes.size()); }

  private:
    Bytes m_bytes;
};

class RecordingStream : public IWriteByteStreams {
  public:
    int WriteBytes(const void* bytes, unsigned int count) override {
        const auto* first = static_cast<const uint8_t*>(bytes);
        written.insert(written.end(), first, first + count);
        return static_cast<int>(count);
    }

    Bytes written;
};

/// What the link would put on the line for this message.
inline Bytes onTheLine(GssipMessage& message) {
    RecordingStream stream;
    message.WriteMessage(&stream);
    return stream.written;
}

/// The words of the message's frame as they lie, header to data checksum.
inline std::vector<uint16_t> wordsOf(const GssipMessage& message) {
    const uint16_t* first = message.frame();
    return {first, first + Gssip::frameBytes(message.wdcnt()) / 2};
}

inline unsigned size(const Bytes& bytes) {
    return static_cast<unsigned>(bytes.size());
}

}  // namespace Frames

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "MSID_messages/DataWords.h"
#include "MSID_messages/MessageTable.h"
#include "gssip/GssipFrame.h"
#include "gssip/GssipMessage.h"

// A receiver message with its frame embedded: header, WORDS data words, data checksum. A new
// message is all zero but for header words 0 to 3; the checksums come when it is written. Objects
// belong to one thread at a time and cannot be copied.
template <unsigned WORDS>
class RovanMessage : public GssipMessage {
  public:
    static constexpr unsigned kWords = WORDS;

  protected:
    explicit RovanMessage(uint16_t msgId, uint16_t flagWord = Gssip::kFlagsTypedMessage) {
        attach(m_block.data(), WORDS == 0 ? nullptr : m_block.data() + Gssip::kWordData, msgId,
               WORDS, sizeof m_block);
        setHeader(msgId, flagWord);
    }

    /// Writes header words 0 to 3 and a zero checksum.
    void setHeader(uint16_t msgId, uint16_t flagWord) {
        m_block[Gssip::kWordDelimiter] = Gssip::kDelimiter;
        m_block[Gssip::kWordMsgId] = msgId;
        m_block[Gssip::kWordCount] = WORDS;
        m_block[Gssip::kWordFlags] = flagWord;
        m_block[Gssip::kWordHeaderChecksum] = 0;
    }

    /// Loads a received frame of `size` bytes. False, changing nothing, unless it has as many data
    /// words as this message. Every ok_set_... of the messages is this.
    bool okSet(const void* bytes, unsigned size) { return OkSetContent(bytes, size); }

    DataWords words() const { return DataWords(m_data); }
    void setWord(unsigned i, uint16_t value) { m_data[i] = value; }
    void setMask(unsigned i, uint16_t mask) { m_data[i] = static_cast<uint16_t>(m_data[i] | mask); }
    void setBits(unsigned i, unsigned high, unsigned low, unsigned value) {
        FieldWriter(m_data).bits(i, high, low, value);
    }

    static constexpr unsigned kBlockBytes = 2 * (Gssip::kOverheadWords + WORDS + 1);

  private:
    // One word more than the longest frame that the length test lets in: the test halves the size,
    // so that an odd size passes, and a message without data takes a frame of 12 or 13 bytes.
    std::array<uint16_t, kBlockBytes / 2> m_block{};
};

// The data words of a message as a plain structure, for those who hold no message object.
template <unsigned WORDS>
struct PackedWords {
    static constexpr unsigned kWords = WORDS;
    uint16_t words[WORDS];
};

// A message that is decoded as a whole: behind its frame stands the decoded form. It holds what the
// latest unpack made of the frame, and zeros before the first.
template <typename PACKED, typename UNPACKED>
class UnpackedMessage : public RovanMessage<PACKED::kWords> {
  public:
    UNPACKED& unpacked() { return m_unpacked; }
    const UNPACKED& unpacked() const { return m_unpacked; }

  protected:
    using RovanMessage<PACKED::kWords>::RovanMessage;

    UNPACKED m_unpacked{};
};

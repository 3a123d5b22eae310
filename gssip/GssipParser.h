// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include "gssip/GssipByteQueue.h"
#include "gssip/GssipFrame.h"
#include "gssip/IHandleGpsipMessages.h"

// Finds whole frames with good checksums in a stream of bytes that comes in pieces of any size. It
// knows no message types, does not look at the flags and takes every word count a frame can name.
//
// After a failed candidate the search goes on at the candidate's second byte, so that a real frame
// inside the bytes of a false or damaged one is found. A candidate with a good header holds the
// bytes behind it until it is complete; nothing times that out, and no more than one largest frame
// is held. The work for each byte is bounded whatever the stream.
//
// Not locked: one thread at a time. The object is over 128 KB, meant to be a member, not a local.
class GssipParser {
  public:
    GssipParser() = default;

    /// Installs the handler, which must outlive the parser's use, and its cookie. A null handler is
    /// ignored, and the old pair stays. Without a handler good frames are consumed silently.
    void ProcessMessagesWithThis(IHandleGpsipMessages* handler, unsigned int cookie);

    /// Other than 0: a candidate whose data checksum fails is dumped on standard error.
    void doDebug(int level) { m_debug = level; }

    /// Takes in `count` bytes. The callbacks of all frames that they complete come before it
    /// returns.
    void LoadBytes(const unsigned char* bytes, uint16_t count);

    /// Forgets a partial frame; handler and cookie stay.
    void reset();

  private:
    enum class State { kSearching, kCollectingData };

    /// Each goes on as far as the bytes reach; false when more bytes are needed.
    bool searchHeader();
    bool collectData();

    void Parse();
    void PostMessage(unsigned length);
    void failHeader();
    void failData();

    GssipByteQueue m_queue;
    State m_state = State::kSearching;
    unsigned m_expectedLength = 0;  // bytes, known once the header is good
    IHandleGpsipMessages* m_handler = nullptr;
    unsigned int m_cookie = 0;
    int m_debug = 0;
    // What a handler sees. Aligned for handlers that look at words.
    alignas(uint64_t) std::array<unsigned char, Gssip::kMaxFrameBytes + 2> m_message{};
};

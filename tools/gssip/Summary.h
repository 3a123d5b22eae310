// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "tools/common/JsonText.h"
#include "tools/gssip/FrameScanner.h"
#include "tools/gssip/Options.h"

namespace GssipTool {

// Counts what a stream holds. On a live line somebody joins and leaves in the middle of a frame:
// the bytes before its first frame and those that still wait at its end are no errors there. One
// thread.
class Summary {
  public:
    explicit Summary(bool isLive) : m_isLive(isLive) {}

    void count(const Piece& piece);
    /// At the end of a live line: bytes of a frame that is not complete.
    void countWaiting(size_t bytes) { m_waiting = bytes; }

    uint64_t frames() const { return m_frames; }
    /// kDataErrors for skipped bytes and for no frame at all.
    ExitStatus status() const;
    std::string text() const;
    Tools::Json json() const;

  private:
    struct PerMessage {
        uint64_t frames = 0;
        uint64_t headerOnly = 0;
    };

    const bool m_isLive;
    uint64_t m_frames = 0;
    uint64_t m_frameBytes = 0;
    uint64_t m_skippedBytes = 0;
    uint64_t m_leadIn = 0;  // of the skipped bytes, those before the first frame of a live line
    uint64_t m_waiting = 0;
    uint64_t m_places = 0;  // where bytes were skipped
    uint64_t m_resynchronisations = 0;
    bool m_lost = false;                 // the latest piece was skipped
    std::array<uint64_t, 3> m_faults{};  // by kind
    std::map<uint16_t, PerMessage> m_messages;
};

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "simulator/Frame.h"

namespace Simulator {

/// What the scanner makes of a stretch of bytes.
struct ScannedFrame {
    enum class Kind {
        Intact,   // a whole frame, both checksums right
        Damaged,  // a good header whose data do not match their checksum
        Stray     // bytes that belong to no frame
    };
    Kind kind;
    Bytes bytes;

    /// Header fields; 0 for stray bytes.
    std::uint16_t msgId() const { return kind == Kind::Stray ? std::uint16_t{0} : word(1); }
    std::uint16_t flags() const { return kind == Kind::Stray ? std::uint16_t{0} : word(3); }
    /// Frame word `number`; the data begin at word 5.
    std::uint16_t word(std::size_t number) const { return frameWord(bytes, number); }
    std::uint16_t data(std::size_t number) const { return frameWord(bytes, number + 5); }
    bool headerOnly() const { return bytes.size() == 10; }
};

// Finds the frames in what the server writes, fed in pieces of any size. Unlike the server's parser
// it names the damaged frame, which the receiver must answer with a NAK, and it keeps every byte
// that was no frame. One thread.
class FrameScanner {
  public:
    /// No frame for the receiver is longer; a header that says so is taken for noise.
    static constexpr std::size_t kMaxDataWords = 1000;

    /// What these bytes complete, in order. A frame that is not whole yet waits for more.
    std::vector<ScannedFrame> feed(const std::uint8_t* bytes, std::size_t count);

    /// Forgets a frame that is not whole.
    void reset() { m_buffer.clear(); }
    bool waiting() const { return !m_buffer.empty(); }

  private:
    Bytes m_buffer;
};

}  // namespace Simulator

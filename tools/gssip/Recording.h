// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>

#include "tools/gssip/FrameScanner.h"

// A recording: the line kRecordingMagic, then blocks. A block is 8 bytes of time (nanoseconds of
// Unix time), 4 bytes of length, both low byte first, and as many bytes as that, which came at that
// time. A recording that ends within a block is one that was cut off; what there is of it is good.
namespace GssipTool {

constexpr char kRecordingMagic[] = "GSSIP recording 1\n";
constexpr size_t kRecordingMagicBytes = sizeof kRecordingMagic - 1;
/// Blocks are never longer; a length beyond it is damage.
constexpr size_t kMaxBlockBytes = 1 << 20;

/// The block's header, for `count` bytes that came at that time.
Bytes blockHeader(int64_t timeNs, size_t count);

// Takes a recording behind its first line, in pieces of any size, and hands over the bytes in it as
// they come, each stretch with its time. One thread.
class RecordingReader {
  public:
    using Sink = std::function<void(const uint8_t* bytes, size_t count, int64_t timeNs)>;

    /// Throws std::runtime_error, with the place, where a block cannot be right.
    void feed(const uint8_t* bytes, size_t count, const Sink& sink);
    /// False within a block.
    bool isAtEnd() const { return m_header.empty() && m_left == 0; }

  private:
    void readHeader();

    uint64_t m_offset = kRecordingMagicBytes;
    Bytes m_header;  // of the next block, as far as it has come
    int64_t m_timeNs = 0;
    size_t m_left = 0;  // bytes of the block still to come
};

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "gssip/GssipByteQueue.h"

namespace GssipTool {

using Bytes = std::vector<uint8_t>;

// Why a place that began like a frame was none.
struct Fault {
    enum class Kind { kHeaderChecksum, kDataChecksum, kCutOff };
    Kind kind;
    uint64_t offset;  // of the delimiter, from the start of the stream
    uint16_t msgId;   // as the header says, which only a good header checksum makes reliable;
    uint16_t wdcnt;   // both 0 when the stream ends before them
};

// A stretch of the stream: a whole frame with good checksums, or bytes that belong to none.
struct Piece {
    bool isFrame;
    uint64_t offset;  // from the start of the stream
    Bytes bytes;
    std::vector<Fault> faults;  // of skipped bytes: what failed among them
};

// Cuts a stream into pieces, of which none is lost: put together again they are the stream. It
// finds the frames that the server's parser finds: after a failed candidate it goes on at the
// candidate's second byte. A good header holds the bytes behind it until the frame is complete.
//
// The pieces are handed over in order, from within the calls below. Skipped bytes come in pieces of
// at most kMaxSkipped. One thread.
class FrameScanner {
  public:
    static constexpr size_t kMaxSkipped = 4096;

    explicit FrameScanner(std::function<void(Piece&&)> take) : m_take(std::move(take)) {}

    void feed(const uint8_t* bytes, size_t count);
    /// Hands over the bytes skipped so far, as for somebody who watches a live line.
    void flush();
    /// The stream has ended: what waits to be complete never will be, and is cut off.
    void finish();

    /// Bytes that wait for the rest of their frame.
    size_t waiting() const { return m_queue.size(); }

  private:
    bool step(bool ended);
    bool needsMore(bool ended);
    void fail(Fault::Kind kind);
    void skip(unsigned count);
    void takeFrame(unsigned length);

    std::function<void(Piece&&)> m_take;
    GssipByteQueue m_queue;
    uint64_t m_offset = 0;  // of the queue's front
    Bytes m_skipped;        // just before the queue's front
    std::vector<Fault> m_faults;
};

}  // namespace GssipTool

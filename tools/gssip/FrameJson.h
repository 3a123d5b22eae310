// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

#include "tools/gssip/Catalogue.h"
#include "tools/gssip/DataFields.h"
#include "tools/gssip/FrameScanner.h"

// Pieces of a stream as JSON objects and back, without loss. An object is
//   a frame:  {"type":"frame","offset":...,"time_ns":...,"id":...,"title":...,"flags":[...],
//              "words":...,"fields":{...},"raw":{...}}
//   bytes that belong to none: {"type":"bytes","offset":...,"count":...,"faults":[...],"bytes":...}
// Of these, offset, time_ns, title, count and faults are for the reader only. On the way back:
//  - words default to as many as the message has, or as raw needs; without fields, raw and words
//    the frame is its header alone. flags default to marker and ack-request.
//  - data words that nobody gives are zero. A field wins over the raw words where it says something
//    else than they do.
//  - both checksums are computed, unless header_checksum or data_checksum is given.
namespace GssipTool {

/// The header's and data's words of a whole frame.
class FrameView {
  public:
    explicit FrameView(const Bytes& bytes) : m_bytes(bytes) {}

    uint16_t msgId() const;
    uint16_t flags() const;
    Words data() const;

  private:
    const Bytes& m_bytes;
};

/// A piece and, if known, when it came, in nanoseconds of Unix time. With `allWords`, raw holds all
/// data words and not only those that the fields do not tell.
Json toJson(const Piece& piece, std::optional<int64_t> timeNs, bool allWords);

/// The bytes of an object. Throws std::invalid_argument for one that is wrong in any way.
Bytes bytesOf(const Json& item);

/// "header checksum", ...
const char* nameOf(Fault::Kind kind);

}  // namespace GssipTool

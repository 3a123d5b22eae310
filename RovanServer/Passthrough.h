// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "RovanServer/ServerActions.h"
#include "gssip/GssipFrame.h"
#include "gssip/GssipMessage.h"

// A frame that somebody else made for the receiver. It keeps its flag word; its checksums are
// inserted when it is written, which changes nothing in a correct frame. Like every message it
// belongs to one thread at a time.
class Passthrough : public GssipMessage {
  public:
    static constexpr unsigned kMaxWords = 1000;
    static constexpr size_t kBlockBytes = Gssip::frameBytes(kMaxWords);  // 2012

    /// `frame` is copied whole, with what follows the frame in it. Where it is shorter than its
    /// word count says, the rest is zero: such a message must not be sent. Throws
    /// std::runtime_error when the frame's word count is above kMaxWords. Bytes beyond kBlockBytes
    /// under a count that promises fewer end the process, after a line on standard error.
    explicit Passthrough(const std::vector<uint8_t>& frame);

  private:
    std::array<uint16_t, kBlockBytes / 2> m_block{};
};

/// Queues the frame in `sample` for the receiver if its message id is one of `ids`. A sample that
/// is shorter than a header, or than its data words, is dropped: filled up and freshly checksummed
/// it would be a command that nobody gave. Fails as the constructor of Passthrough does.
void forwardPassthrough(const std::vector<uint8_t>& sample, const std::set<uint16_t>& ids,
                        ServerActions& actions);

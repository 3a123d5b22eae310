// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The receiver's own making and testing of GSSIP frames. The layout's constants are those of
// gssip/GssipFrame.h; the arithmetic is not shared with the server, so that a fault in the one does
// not hide in the other.
namespace Simulator {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint16_t>;

/// A whole frame with both checksums; without data words it is the 10 bytes of its header.
Bytes makeFrame(std::uint16_t msgId, std::uint16_t flags, const Words& data = {});

/// Frame word `number`; 0 when the bytes do not reach so far.
std::uint16_t frameWord(const Bytes& frame, std::size_t number);

/// True for exactly one whole frame with its delimiter, its length and both its checksums right.
bool isIntact(const Bytes& frame);

/// The sum of `count` little-endian words at `bytes`, modulo 65536; 0 over a header or over data
/// with their checksum.
std::uint16_t wordSum(const std::uint8_t* bytes, std::size_t count);

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

// The GSSIP frame: 5 header words, `wdcnt` data words and, when there are data words, one data
// checksum word. All words are 16 bits and travel least significant byte first. A frame without
// data is exactly the 10 bytes of its header.
namespace Gssip {

constexpr uint16_t kDelimiter = 0x81FF;

// Word numbers within a frame.
constexpr unsigned kWordDelimiter = 0;
constexpr unsigned kWordMsgId = 1;
constexpr unsigned kWordCount = 2;
constexpr unsigned kWordFlags = 3;
constexpr unsigned kWordHeaderChecksum = 4;
constexpr unsigned kWordData = 5;

constexpr unsigned kHeaderWords = 5;
constexpr unsigned kHeaderBytes = 10;
/// Header and both checksums of a frame with data, in words.
constexpr unsigned kOverheadWords = 6;
/// The largest frame the format allows: (65535 + 6) words.
constexpr unsigned kMaxFrameBytes = 131082;

// Bits of the flag word.
constexpr uint16_t kFlagFrameMarker = 0x8000;
constexpr uint16_t kFlagAckRequest = 0x1000;
constexpr uint16_t kFlagAck = 0x0800;
constexpr uint16_t kFlagNak = 0x0400;
constexpr uint16_t kFlagReply = 0x0200;
constexpr uint16_t kFlagReject = 0x0100;
constexpr uint16_t kFlagConnect = 0x0040;
constexpr uint16_t kFlagDisconnect = 0x0020;
constexpr uint16_t kFlagRequest = 0x0010;
/// Any of these in a header-only frame makes it an answer of the link protocol.
constexpr uint16_t kFlagsProtocolAnswer = kFlagAck | kFlagNak | kFlagReply;

// Flag words as whole values.
constexpr uint16_t kFlagsTypedMessage = 0x9000;
constexpr uint16_t kFlagsAckAnswer = 0x8800;
constexpr uint16_t kFlagsNakAnswer = 0x8400;
constexpr uint16_t kFlagsRequest = 0x9010;
constexpr uint16_t kFlagsDisconnect = 0x9020;
constexpr uint16_t kFlagsConnect = 0x9040;
/// Marks the pause item of the write queue; never transmitted.
constexpr uint16_t kFlagsPause = 0x0000;

/// Length in bytes of a whole frame with `wdcnt` data words.
constexpr unsigned frameBytes(unsigned wdcnt) {
    return wdcnt == 0 ? kHeaderBytes : 2 * (wdcnt + kOverheadWords);
}

/// The little-endian 16-bit word at `bytes`, at any alignment.
constexpr uint16_t wordAt(const unsigned char* bytes) {
    return static_cast<uint16_t>(bytes[0] | (bytes[1] << 8));
}

/// The `count` bytes of a frame as words in host order, with zeros for what its header and its word
/// count promise beyond them: what is meant to be printed can be read in full.
std::vector<uint16_t> toWords(const void* bytes, unsigned count);

/// Bits `high` to `low` of `word`, shifted down to bit 0.
constexpr unsigned bits(unsigned word, unsigned high, unsigned low) {
    return (word >> low) & ((1u << (high - low + 1)) - 1u);
}

}  // namespace Gssip

// Functions on frames as arrays of 16-bit words in host order.

/// Two's complement of the 16-bit sum of words[first] to words[last], both inclusive. 0, reading
/// nothing, when `first` is greater than `last`.
uint16_t CalculateChecksum(const uint16_t* words, unsigned first, unsigned last);

/// Fills the five header words; returns the header checksum.
uint16_t MakeHdrSpecifyFlagWd(uint16_t* header, uint16_t msgId, uint16_t flagWord, uint16_t wdcnt);
/// The same with flag word 0x8000.
uint16_t MakeHeader(uint16_t* header, uint16_t msgId, uint16_t wdcnt);
/// The header-only answers, flag words 0x8800 and 0x8400.
uint16_t MakeACK(uint16_t* header, uint16_t msgId);
uint16_t MakeNAK(uint16_t* header, uint16_t msgId);

/// Inserts both checksums. False, after a line on standard error, for more than 32500 data words or
/// a wrong delimiter in a frame with data; the header checksum is written in any case.
bool OkChecksumGPSmessage(uint16_t* frame);

/// Verifies both checksums. False, after a line on standard error, for a wrong checksum and for
/// more than 106 data words: the limit of this check is deliberately tighter than the inserting
/// one's.
bool ChecksumsAreOkInGPSmessage(const uint16_t* frame);

/// Prints a frame in hexadecimal on standard output. `prefix` stands before the first line, on it.
void PrintMessageInHex(const uint16_t* frame, const char* prefix = "");

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <random>
#include <vector>

// Frames as bytes, made here word by word so that the code under test has no part in them.
namespace Frames {

using Bytes = std::vector<unsigned char>;

inline void putWord(Bytes& bytes, unsigned word) {
    bytes.push_back(static_cast<unsigned char>(word & 0xFF));
    bytes.push_back(static_cast<unsigned char>((word >> 8) & 0xFF));
}

/// A good header for `wdcnt` data words.
inline Bytes header(uint16_t msgId, uint16_t wdcnt, uint16_t flags = 0x8000) {
    Bytes bytes;
    putWord(bytes, 0x81FF);
    putWord(bytes, msgId);
    putWord(bytes, wdcnt);
    putWord(bytes, flags);
    putWord(bytes, 0x40000u - (0x81FFu + msgId + wdcnt + flags));
    return bytes;
}

/// A good frame with these data words.
inline Bytes frame(uint16_t msgId, const std::vector<uint16_t>& data, uint16_t flags = 0x8000) {
    Bytes bytes = header(msgId, static_cast<uint16_t>(data.size()), flags);
    unsigned sum = 0;
    for (const uint16_t word : data) {
        putWord(bytes, word);
        sum += word;
    }
    if (!data.empty()) {
        putWord(bytes, 0u - sum);
    }
    return bytes;
}

/// A good frame with random data words.
inline Bytes randomFrame(std::mt19937& random, uint16_t msgId, uint16_t wdcnt) {
    std::vector<uint16_t> data(wdcnt);
    for (uint16_t& word : data) {
        word = static_cast<uint16_t>(random());
    }
    return frame(msgId, data);
}

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

}  // namespace Frames

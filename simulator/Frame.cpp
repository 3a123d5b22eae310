// SPDX-License-Identifier: Apache-2.0
#include "simulator/Frame.h"

#include "gssip/GssipFrame.h"

namespace Simulator {
namespace {

void append(Bytes& frame, std::uint16_t word) {
    frame.push_back(static_cast<std::uint8_t>(word & 0xFF));
    frame.push_back(static_cast<std::uint8_t>(word >> 8));
}

// The word that brings the sum of the words from byte `begin` on to zero.
std::uint16_t balance(const Bytes& frame, std::size_t begin) {
    return static_cast<std::uint16_t>(0x10000 -
                                      wordSum(frame.data() + begin, (frame.size() - begin) / 2));
}

}  // namespace

Bytes makeFrame(std::uint16_t msgId, std::uint16_t flags, const Words& data) {
    Bytes frame;
    frame.reserve(Gssip::frameBytes(static_cast<unsigned>(data.size())));
    append(frame, Gssip::kDelimiter);
    append(frame, msgId);
    append(frame, static_cast<std::uint16_t>(data.size()));
    append(frame, flags);
    append(frame, balance(frame, 0));
    if (!data.empty()) {
        for (const std::uint16_t word : data) {
            append(frame, word);
        }
        append(frame, balance(frame, Gssip::kHeaderBytes));
    }
    return frame;
}

std::uint16_t frameWord(const Bytes& frame, std::size_t number) {
    return 2 * number + 1 < frame.size() ? Gssip::wordAt(frame.data() + 2 * number)
                                         : std::uint16_t{0};
}

bool isIntact(const Bytes& frame) {
    if (frame.size() < Gssip::kHeaderBytes ||
        frameWord(frame, Gssip::kWordDelimiter) != Gssip::kDelimiter ||
        wordSum(frame.data(), Gssip::kHeaderWords) != 0 ||
        frame.size() != Gssip::frameBytes(frameWord(frame, Gssip::kWordCount))) {
        return false;
    }
    return wordSum(frame.data() + Gssip::kHeaderBytes, (frame.size() - Gssip::kHeaderBytes) / 2) ==
           0;
}

std::uint16_t wordSum(const std::uint8_t* bytes, std::size_t count) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += Gssip::wordAt(bytes + 2 * i);
    }
    return static_cast<std::uint16_t>(sum & 0xFFFF);
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/MessageBody.h"

#include <algorithm>
#include <cstring>

#include "simulator/NumberFormats.h"

namespace Simulator {

void MessageBody::word(std::size_t at, unsigned value) {
    m_words.at(at) = static_cast<std::uint16_t>(value & 0xFFFF);
}

void MessageBody::bits(std::size_t at, unsigned high, unsigned low, unsigned value) {
    const unsigned mask = ((1u << (high - low + 1)) - 1) << low;
    word(at, (m_words.at(at) & ~mask) | (value << low & mask));
}

void MessageBody::byte(std::size_t at, unsigned value) {
    const unsigned low = at % 2 == 0 ? 0 : 8;
    bits(at / 2, low + 7, low, value);
}

void MessageBody::pdpDouble(std::size_t at, double value) {
    put(at, Simulator::pdpDouble(value));
}

void MessageBody::pdpSingle(std::size_t at, double value) {
    put(at, Simulator::pdpSingle(static_cast<float>(value)));
}

void MessageBody::veskExtended(std::size_t at, double value) {
    put(at, Simulator::veskExtended(value));
}

void MessageBody::int32(std::size_t at, std::int32_t value) {
    little(at, static_cast<std::uint32_t>(value), 2);
}

void MessageBody::ieeeSingle(std::size_t at, float value) {
    std::uint32_t pattern = 0;
    std::memcpy(&pattern, &value, sizeof pattern);
    little(at, pattern, 2);
}

void MessageBody::ieeeDouble(std::size_t at, double value) {
    std::uint64_t pattern = 0;
    std::memcpy(&pattern, &value, sizeof pattern);
    little(at, pattern, 4);
}

void MessageBody::text(std::size_t at, std::size_t bytes, const std::string& text) {
    for (std::size_t i = 0; i < std::min(bytes, text.size()); ++i) {
        byte(2 * at + i, static_cast<unsigned char>(text[i]));
    }
}

template <std::size_t N>
void MessageBody::put(std::size_t at, const std::array<std::uint16_t, N>& words) {
    for (std::size_t i = 0; i < N; ++i) {
        word(at + i, words[i]);
    }
}

void MessageBody::little(std::size_t at, std::uint64_t value, std::size_t words) {
    for (std::size_t i = 0; i < words; ++i) {
        word(at + i, static_cast<unsigned>(value >> (16 * i) & 0xFFFF));
    }
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "simulator/Frame.h"

namespace Simulator {

// The data words of one message in the making, all zero at first. Words are numbered from 0, the
// first one behind the header. A field that does not fit throws std::out_of_range.
class MessageBody {
  public:
    explicit MessageBody(std::size_t words) : m_words(words) {}

    void word(std::size_t at, unsigned value);
    /// Bits `high` to `low` of a word; surplus bits of `value` are cut off.
    void bits(std::size_t at, unsigned high, unsigned low, unsigned value);
    /// One byte, counted from the first byte of the data.
    void byte(std::size_t at, unsigned value);

    void pdpDouble(std::size_t at, double value);
    void pdpSingle(std::size_t at, double value);
    void veskExtended(std::size_t at, double value);

    /// Little-endian, least significant word first.
    void int32(std::size_t at, std::int32_t value);
    void ieeeSingle(std::size_t at, float value);
    void ieeeDouble(std::size_t at, double value);

    /// Up to `bytes` characters from the low byte of word `at` on; the rest of the field stays
    /// zero.
    void text(std::size_t at, std::size_t bytes, const std::string& text);

    const Words& words() const { return m_words; }

  private:
    template <std::size_t N>
    void put(std::size_t at, const std::array<std::uint16_t, N>& words);
    void little(std::size_t at, std::uint64_t value, std::size_t words);

    Words m_words;
};

}  // namespace Simulator

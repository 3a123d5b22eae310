// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstring>

#include "gssip/GssipFrame.h"
#include "gssip/NumericConversions.h"

// Access to the data words of a frame, numbered from 0, the first word after the header. None of
// these classes owns the words; the caller keeps every index inside the message. Words are in host
// order, and the fields that the receiver sends as plain little-endian bytes are copied as they
// lie.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "frames are loaded bytewise: the host must be little-endian like the line");

// Reads single fields, by value.
class DataWords {
  public:
    explicit DataWords(const uint16_t* words) : m_words(words) {}

    uint16_t word(unsigned i) const { return m_words[i]; }
    int16_t signedWord(unsigned i) const { return static_cast<int16_t>(m_words[i]); }
    unsigned bits(unsigned i, unsigned high, unsigned low) const {
        return Gssip::bits(m_words[i], high, low);
    }
    bool bit(unsigned i, unsigned number) const { return bits(i, number, number) != 0; }

    /// An IEEE number or an integer of more than one word, at any alignment.
    template <typename T>
    T littleEndian(unsigned i) const {
        T value;
        std::memcpy(&value, m_words + i, sizeof value);
        return value;
    }

    double pdpDouble(unsigned i) const { return CnvPdpD2PcD(m_words + i); }
    float pdpSingle(unsigned i) const { return CnvPdpF2PcF(m_words + i); }
    double veskExtended(unsigned i) const { return CnvVeskD2PcD(m_words + i); }
    float veskSingle(unsigned i) const { return CnvVeskF2PcF(m_words + i); }

  private:
    const uint16_t* m_words;
};

// FieldReader and FieldWriter have the same operations, so that one field table, written as a
// template on them, both unpacks and packs a message.

// Moves fields from the words into variables.
class FieldReader {
  public:
    explicit FieldReader(const uint16_t* words) : m_words(words), m_address(words) {}

    void word(unsigned i, uint16_t& field) const { field = m_words.word(i); }
    template <typename T>
    void bits(unsigned i, unsigned high, unsigned low, T& field) const {
        field = static_cast<T>(m_words.bits(i, high, low));
    }
    void pdpDouble(unsigned i, double& field) const { field = m_words.pdpDouble(i); }
    void pdpSingle(unsigned i, float& field) const { field = m_words.pdpSingle(i); }
    void veskExtended(unsigned i, double& field) const { field = m_words.veskExtended(i); }
    void veskSingle(unsigned i, float& field) const { field = m_words.veskSingle(i); }
    /// As many bytes as `field` has, as they are.
    template <typename T>
    void raw(unsigned i, T& field) const {
        std::memcpy(&field, m_address + i, sizeof field);
    }

  private:
    DataWords m_words;
    const uint16_t* m_address;
};

// Moves variables into their fields in the words; the bits round them stay as they are.
class FieldWriter {
  public:
    explicit FieldWriter(uint16_t* words) : m_words(words) {}

    void word(unsigned i, uint16_t field) const { m_words[i] = field; }
    /// What of `field` does not fit into its bits is cut off.
    template <typename T>
    void bits(unsigned i, unsigned high, unsigned low, T field) const {
        const unsigned mask = Gssip::bits(0xFFFF, high, low) << low;
        const unsigned value = (static_cast<unsigned>(field) << low) & mask;
        m_words[i] = static_cast<uint16_t>((m_words[i] & ~mask) | value);
    }
    void pdpDouble(unsigned i, double field) const { cnvpcd(&field, m_words + i); }
    void pdpSingle(unsigned i, float field) const { cnvpcs(&field, m_words + i); }
    void veskExtended(unsigned i, double field) const { CnvPcD2VeskE(field, m_words + i); }
    void veskSingle(unsigned i, float field) const { CnvPcF2VeskF(field, m_words + i); }
    template <typename T>
    void raw(unsigned i, const T& field) const {
        std::memcpy(m_words + i, &field, sizeof field);
    }

  private:
    uint16_t* m_words;
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_msg8040_t : PackedWords<Msid::wordCount(8040)> {};

// One of the words 4, 5 and 6.
struct key_word_8040_t {
    uint16_t word;

    /// Bit 0: the key is loaded and active.
    bool status() const { return Gssip::bits(word, 0, 0) != 0; }
    /// Bit 1: the last load failed.
    bool loadStatus() const { return Gssip::bits(word, 1, 1) != 0; }
    unsigned remainingTime() const { return Gssip::bits(word, 11, 2); }
    /// The bus's number for bits 13 to 12; the two middle values change places.
    unsigned zeroizationStatus() const;
};

// Word 9: four further keys, counted from 0, of which the first two have more than a load status.
struct further_keys_8040_t {
    uint16_t word;

    /// Bits 1 to 0: 1 says that the first key is present, 3 the second.
    unsigned selector() const { return Gssip::bits(word, 1, 0); }
    bool firstPresent() const { return selector() == 1; }
    bool secondPresent() const { return selector() == 3; }
    bool loadStatus(unsigned key) const { return Gssip::bits(word, 2 + key, 2 + key) != 0; }
    unsigned firstRemainingTime() const { return Gssip::bits(word, 13, 6); }
    unsigned secondRemainingTime() const { return Gssip::bits(word, 15, 14); }
};

// A copy of the data with the time decoded.
struct unpacked_msg8040_t {
    double time;
    key_word_8040_t keys[3];  // words 4 to 6
    uint16_t words7to8[2];
    further_keys_8040_t furtherKeys;  // word 9
    uint16_t words10to24[15];
};

// 8040: key status.
class Rovan_8040_Msg : public UnpackedMessage<packed_msg8040_t, unpacked_msg8040_t> {
  public:
    static constexpr uint16_t kMsgId = 8040;

    Rovan_8040_Msg();

    bool ok_set_8040_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_8040();
    static void unpack_8040(const packed_msg8040_t& packed, unpacked_msg8040_t& unpacked);
    /// This message is never sent: packing does nothing.
    void pack_8040() {}
    static void pack_8040(const unpacked_msg8040_t&, packed_msg8040_t&) {}
};

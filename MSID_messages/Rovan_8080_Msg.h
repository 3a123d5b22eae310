// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_msg8080_t : PackedWords<Msid::wordCount(8080)> {};

struct unpacked_msg8080_t {
    double time;
    uint16_t indications;  // word 4
    uint16_t word5;

    /// Interference indications: `number` 0 to 2 is that bit of word 4, and 3 is bits 3 and 4
    /// together.
    bool interference(unsigned number) const;
};

// 8080: interference.
class Rovan_8080_Msg : public UnpackedMessage<packed_msg8080_t, unpacked_msg8080_t> {
  public:
    static constexpr uint16_t kMsgId = 8080;

    Rovan_8080_Msg();

    bool ok_set_8080_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_8080();
    static void unpack_8080(const packed_msg8080_t& packed, unpacked_msg8080_t& unpacked);
    /// This message is never sent: packing does nothing.
    void pack_8080() {}
    static void pack_8080(const unpacked_msg8080_t&, packed_msg8080_t&) {}
};

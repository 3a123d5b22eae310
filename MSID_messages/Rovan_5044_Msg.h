// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_msg5044_t : PackedWords<Msid::wordCount(5044)> {};

struct unpacked_msg5044_t {
    double time;
    uint16_t eventId;  // word 4
    /// Words 5 to 20: 32 characters and two zero bytes, so that the text always ends.
    char text[34];
};

// 5044: an event report with a text, the first character of each pair in the word's high byte.
class Rovan_5044_Msg : public UnpackedMessage<packed_msg5044_t, unpacked_msg5044_t> {
  public:
    static constexpr uint16_t kMsgId = 5044;

    Rovan_5044_Msg();

    bool ok_set_5044_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_5044();
    static void unpack_5044(const packed_msg5044_t& packed, unpacked_msg5044_t& unpacked);
    /// This message is never sent: packing does nothing.
    void pack_5044() {}
    static void pack_5044(const unpacked_msg5044_t&, packed_msg5044_t&) {}
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_SVRiseMsg_t : PackedWords<Msid::wordCount(5047)> {};

// What is known of one satellite, 16 words.
struct sv_rise_record_t {
    uint16_t svid;    // 0: the record is empty
    uint16_t health;  // not zero: healthy
    uint16_t azimuth;
    int16_t elevation;
    uint16_t flags;  // bit 0: rising
    uint16_t unused[11];

    bool healthy() const { return health != 0; }
    bool rising() const { return (flags & 1) != 0; }
};

struct unpacked_SVRiseMsg_t {
    double time;
    sv_rise_record_t records[6];
};
static_assert(sizeof(unpacked_SVRiseMsg_t) == 2 * Msid::wordCount(5047),
              "time and records fill the data words to the last byte");

// 5047 and 5048: satellite visibility, six satellites in each.
class Rovan_SVRise_Msg : public UnpackedMessage<packed_SVRiseMsg_t, unpacked_SVRiseMsg_t> {
  public:
    /// 5047 or 5048. A new message has the flag word 0x8000, unlike all others.
    explicit Rovan_SVRise_Msg(uint16_t msgId);

    bool ok_set_SVRiseMsg_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_SVRiseMsg();
    static void unpack_SVRiseMsg(const packed_SVRiseMsg_t& packed, unpacked_SVRiseMsg_t& unpacked);
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_msg5042_t : PackedWords<Msid::wordCount(5042)> {};

struct unpacked_msg5042_t {
    double time;
    bool isDtsCom1;     // word 48, bit 1
    uint8_t lowByte58;  // word 58, bits 7 to 0
};

// 5042: the receiver's data transfer state.
class Rovan_5042_Msg : public UnpackedMessage<packed_msg5042_t, unpacked_msg5042_t> {
  public:
    static constexpr uint16_t kMsgId = 5042;

    Rovan_5042_Msg();

    bool ok_set_5042_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_5042();
    static void unpack_5042(const packed_msg5042_t& packed, unpacked_msg5042_t& unpacked);
};

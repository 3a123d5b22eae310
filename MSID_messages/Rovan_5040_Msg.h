// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_msg5040_t : PackedWords<Msid::wordCount(5040)> {};

// The fields carry the number of their first data word where this system has no other name for
// them.
struct unpacked_msg5040_t {
    double time;
    uint16_t words18to24[7];
    uint16_t word25;
    uint16_t nibble33;
    uint16_t word42;
    float single44;
    uint16_t nibble46;
    uint16_t operatingMode;  // word 49
    uint16_t word71;
    uint16_t word72;
    uint16_t word73;
    double hundredths74;
    uint16_t remainingKeyTime;  // word 75
    uint16_t word76;
    uint16_t cryptoState;  // word 77
    float single78;
    uint16_t nibble80;
    float single36;
    uint8_t nibble38;
    float single82;
    uint8_t nibble84;
    uint8_t bit61;
};

// 5040: key status.
class Rovan_5040_Msg : public UnpackedMessage<packed_msg5040_t, unpacked_msg5040_t> {
  public:
    static constexpr uint16_t kMsgId = 5040;

    Rovan_5040_Msg();

    bool ok_set_5040_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_5040();
    static void unpack_5040(const packed_msg5040_t& packed, unpacked_msg5040_t& unpacked);
    /// This message is never sent: packing does nothing.
    void pack_5040() {}
    static void pack_5040(const unpacked_msg5040_t&, packed_msg5040_t&) {}
};

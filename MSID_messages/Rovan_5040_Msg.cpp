// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5040_Msg.h"

namespace {

void unpack(const uint16_t* data, unpacked_msg5040_t& out) {
    const DataWords words(data);
    const FieldReader field(data);
    field.pdpDouble(0, out.time);
    field.raw(18, out.words18to24);
    field.word(25, out.word25);
    field.bits(33, 3, 0, out.nibble33);
    field.word(42, out.word42);
    field.veskSingle(44, out.single44);
    field.bits(46, 3, 0, out.nibble46);
    field.bits(49, 3, 0, out.operatingMode);
    field.word(71, out.word71);
    field.word(72, out.word72);
    field.word(73, out.word73);
    out.hundredths74 = words.signedWord(74) / 100.0;
    field.word(75, out.remainingKeyTime);
    field.word(76, out.word76);
    field.bits(77, 3, 0, out.cryptoState);
    field.veskSingle(78, out.single78);
    field.bits(80, 3, 0, out.nibble80);
    field.veskSingle(36, out.single36);
    field.bits(38, 3, 0, out.nibble38);
    field.veskSingle(82, out.single82);
    field.bits(84, 3, 0, out.nibble84);
    field.bits(61, 0, 0, out.bit61);
}

}  // namespace

Rovan_5040_Msg::Rovan_5040_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_5040_Msg::unpack_5040() {
    unpack(data(), m_unpacked);
}

void Rovan_5040_Msg::unpack_5040(const packed_msg5040_t& packed, unpacked_msg5040_t& unpacked) {
    unpack(packed.words, unpacked);
}

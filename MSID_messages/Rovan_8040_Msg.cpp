// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_8040_Msg.h"

namespace {

void unpack(const uint16_t* data, unpacked_msg8040_t& out) {
    const FieldReader field(data);
    field.pdpDouble(0, out.time);
    field.raw(4, out.keys);
    field.raw(7, out.words7to8);
    field.raw(9, out.furtherKeys);
    field.raw(10, out.words10to24);
}

}  // namespace

unsigned key_word_8040_t::zeroizationStatus() const {
    static constexpr unsigned kBusNumbers[] = {0, 2, 1, 3};
    return kBusNumbers[Gssip::bits(word, 13, 12)];
}

Rovan_8040_Msg::Rovan_8040_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_8040_Msg::unpack_8040() {
    unpack(data(), m_unpacked);
}

void Rovan_8040_Msg::unpack_8040(const packed_msg8040_t& packed, unpacked_msg8040_t& unpacked) {
    unpack(packed.words, unpacked);
}

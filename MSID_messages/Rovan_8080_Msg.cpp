// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_8080_Msg.h"

namespace {

void unpack(const uint16_t* data, unpacked_msg8080_t& out) {
    const FieldReader field(data);
    field.pdpDouble(0, out.time);
    field.word(4, out.indications);
    field.word(5, out.word5);
}

}  // namespace

bool unpacked_msg8080_t::interference(unsigned number) const {
    return Gssip::bits(indications, number == 3 ? 4 : number, number) != 0;
}

Rovan_8080_Msg::Rovan_8080_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_8080_Msg::unpack_8080() {
    unpack(data(), m_unpacked);
}

void Rovan_8080_Msg::unpack_8080(const packed_msg8080_t& packed, unpacked_msg8080_t& unpacked) {
    unpack(packed.words, unpacked);
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_SVRise_Msg.h"

static_assert(Msid::wordCount(5047) == Msid::wordCount(5048), "both ids have one layout");

namespace {

void unpack(const uint16_t* data, unpacked_SVRiseMsg_t& out) {
    const FieldReader field(data);
    field.pdpDouble(0, out.time);
    field.raw(4, out.records);
}

}  // namespace

Rovan_SVRise_Msg::Rovan_SVRise_Msg(uint16_t msgId)
    : UnpackedMessage(msgId, Gssip::kFlagFrameMarker) {
}

void Rovan_SVRise_Msg::unpack_SVRiseMsg() {
    unpack(data(), m_unpacked);
}

void Rovan_SVRise_Msg::unpack_SVRiseMsg(const packed_SVRiseMsg_t& packed,
                                        unpacked_SVRiseMsg_t& unpacked) {
    unpack(packed.words, unpacked);
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5042_Msg.h"

namespace {

void unpack(const uint16_t* data, unpacked_msg5042_t& out) {
    const FieldReader field(data);
    field.pdpDouble(0, out.time);
    field.bits(48, 1, 1, out.isDtsCom1);
    field.bits(58, 7, 0, out.lowByte58);
}

}  // namespace

Rovan_5042_Msg::Rovan_5042_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_5042_Msg::unpack_5042() {
    unpack(data(), m_unpacked);
}

void Rovan_5042_Msg::unpack_5042(const packed_msg5042_t& packed, unpacked_msg5042_t& unpacked) {
    unpack(packed.words, unpacked);
}

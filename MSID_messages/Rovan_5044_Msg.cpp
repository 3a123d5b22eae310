// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5044_Msg.h"

#include <array>

namespace {

constexpr unsigned kTextWords = 16;

void unpack(const uint16_t* data, unpacked_msg5044_t& out) {
    const FieldReader field(data);
    field.pdpDouble(0, out.time);
    field.word(4, out.eventId);
    std::array<uint16_t, kTextWords + 1> text{};
    static_assert(sizeof text == sizeof out.text);
    std::memcpy(text.data(), data + 5, 2 * kTextWords);
    ByteSwap(text.data(), kTextWords);
    std::memcpy(out.text, text.data(), sizeof out.text);
}

}  // namespace

Rovan_5044_Msg::Rovan_5044_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_5044_Msg::unpack_5044() {
    unpack(data(), m_unpacked);
}

void Rovan_5044_Msg::unpack_5044(const packed_msg5044_t& packed, unpacked_msg5044_t& unpacked) {
    unpack(packed.words, unpacked);
}

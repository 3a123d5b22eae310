// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_8504_Msg.h"

namespace {

constexpr unsigned kWordFlags = 48;
constexpr unsigned kBitReceiverFailure = 4;

// The field table: with a FieldReader it unpacks into `m`, with a FieldWriter it packs from it.
template <typename FIELD, typename MESSAGE>
void moveFields(const FIELD& field, MESSAGE& m) {
    field.pdpDouble(0, m.time);
    field.pdpDouble(4, m.double4);
    field.veskExtended(8, m.latitude);
    field.veskExtended(11, m.longitude);
    field.pdpDouble(14, m.double14);
    field.pdpDouble(18, m.double18);
    field.pdpDouble(22, m.double22);
    field.pdpSingle(26, m.single26);
    field.pdpSingle(28, m.altitude);
    field.pdpSingle(30, m.eastVelocity);
    field.pdpSingle(32, m.northVelocity);
    field.pdpSingle(34, m.upVelocity);
    field.pdpSingle(42, m.single42);
    field.word(44, m.horizontalPositionError);
    field.word(45, m.verticalPositionError);
    field.word(46, m.horizontalVelocityError);
    field.word(47, m.verticalVelocityError);
    field.bits(kWordFlags, 3, 0, m.bits48at0);
    field.bits(kWordFlags, kBitReceiverFailure, kBitReceiverFailure, m.receiverFailure);
    field.bits(kWordFlags, 5, 5, m.noSolution);
    field.bits(kWordFlags, 7, 6, m.bits48at6);
    field.bits(kWordFlags, 9, 8, m.bits48at8);
    field.bits(kWordFlags, 15, 10, m.bits48at10);
    field.word(49, m.word49);
    field.bits(50, 7, 0, m.byte50);
    field.bits(50, 8, 8, m.bit50at8);
    field.bits(50, 9, 9, m.bit50at9);
    field.bits(50, 10, 10, m.bit50at10);
    field.bits(50, 15, 11, m.bits50at11);
    for (unsigned i = 0; i < 8; ++i) {
        const unsigned low = i % 4 * 4;
        field.bits(51 + i / 4, low + 3, low, m.nibbles51[i]);
    }
    field.word(55, m.hdop);
    field.word(56, m.vdop);
    field.word(57, m.tdop);
    field.bits(58, 7, 0, m.byte58);
    field.bits(58, 8, 8, m.bit58at8);
    field.bits(58, 10, 9, m.corrections58at9);
    field.bits(58, 12, 11, m.corrections58at11);
    field.bits(58, 14, 13, m.bits58at13);
    field.bits(58, 15, 15, m.bit58at15);
    field.bits(59, 2, 0, m.bits59at0);
    field.bits(59, 7, 3, m.bits59at3);
    field.bits(59, 15, 8, m.byte59at8);
    field.bits(60, 1, 0, m.bits60at0);
    field.bits(60, 2, 2, m.bit60at2);
    field.bits(60, 7, 3, m.bits60at3);
    field.bits(60, 15, 8, m.byte60at8);
    field.veskSingle(61, m.single61);
    field.veskSingle(63, m.single63);
    field.bits(65, 3, 0, m.bits65at0);
    field.bits(65, 7, 4, m.bits65at4);
    field.bits(65, 15, 8, m.byte65at8);
    field.raw(72, m.channels);
}

void unpack(const uint16_t* data, unpacked_msg8504_t& out) {
    moveFields(FieldReader(data), out);
    out.fractionOfSecond = PdpD_modf(data, &out.wholeSeconds);
}

void pack(const unpacked_msg8504_t& in, uint16_t* data) {
    moveFields(FieldWriter(data), in);
}

}  // namespace

Rovan_8504_Msg::Rovan_8504_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_8504_Msg::unpack_8504() {
    unpack(data(), m_unpacked);
}

void Rovan_8504_Msg::unpack_8504(const packed_msg8504_t& packed, unpacked_msg8504_t& unpacked) {
    unpack(packed.words, unpacked);
}

void Rovan_8504_Msg::pack_8504() {
    pack(m_unpacked, m_data);
}

void Rovan_8504_Msg::pack_8504(const unpacked_msg8504_t& unpacked, packed_msg8504_t& packed) {
    pack(unpacked, packed.words);
}

void Rovan_8504_Msg::copy_all(const Rovan_8504_Msg& other) {
    std::memmove(m_frame, other.m_frame, Gssip::frameBytes(kWords));
    m_unpacked = other.m_unpacked;
}

bool Rovan_8504_Msg::recieverFailureDetected() const {
    return words().bit(kWordFlags, kBitReceiverFailure);
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

struct packed_msg8504_t : PackedWords<Msid::wordCount(8504)> {};

// One of the 32 channel records, as it lies in the frame.
struct channel_record_8504_t {
    uint8_t bytes[8];

    unsigned prn() const { return bytes[0]; }
    unsigned channel() const { return Gssip::bits(bytes[1], 6, 0); }
    bool usedInSolution() const { return Gssip::bits(bytes[1], 7, 7) != 0; }
    /// 2 to 6 are valid.
    unsigned signalCode() const { return Gssip::bits(bytes[2], 3, 0); }
    /// 1 is the first frequency, 2 the second.
    unsigned frequency() const { return Gssip::bits(Gssip::wordAt(bytes + 2), 10, 7); }
    bool assured() const { return Gssip::bits(bytes[3], 4, 3) != 0; }
    unsigned carrierToNoise() const { return Gssip::bits(bytes[4], 5, 0); }
    /// The field counts in units of 2; this is the value.
    unsigned jammerToSignal() const { return 2 * Gssip::bits(Gssip::wordAt(bytes + 4), 11, 6); }
    /// 1 to 7 are valid.
    unsigned trackingStatus() const { return Gssip::bits(bytes[7], 3, 0); }
    bool satelliteAvailable() const { return trackingStatus() >= 3 && trackingStatus() <= 5; }
};

// In the order of the frame. Fields carry the number of their word (and bit) where this system has
// no other name for them; the error estimates and dilutions are raw counts.
struct unpacked_msg8504_t {
    double time;
    double double4;
    double latitude;
    double longitude;
    double double14;
    double double18;
    double double22;
    float single26;
    float altitude;
    float eastVelocity;
    float northVelocity;
    float upVelocity;
    float single42;
    uint16_t horizontalPositionError;  // 1 m
    uint16_t verticalPositionError;    // 1 m
    uint16_t horizontalVelocityError;  // 0.03125 m/s
    uint16_t verticalVelocityError;    // 0.03125 m/s
    uint8_t bits48at0;
    bool receiverFailure;
    bool noSolution;    // position and velocity are not to be used
    uint8_t bits48at6;  // not zero: the position is not the normal one
    uint8_t bits48at8;
    uint8_t bits48at10;
    uint16_t word49;
    uint8_t byte50;
    uint8_t bit50at8;
    uint8_t bit50at9;
    uint8_t bit50at10;
    uint8_t bits50at11;
    uint8_t nibbles51[8];
    uint16_t hdop;  // tenths
    uint16_t vdop;  // tenths
    uint16_t tdop;  // tenths
    uint8_t byte58;
    uint8_t bit58at8;
    uint8_t corrections58at9;
    uint8_t corrections58at11;
    uint8_t bits58at13;
    uint8_t bit58at15;
    uint8_t bits59at0;
    uint8_t bits59at3;
    uint8_t byte59at8;
    uint8_t bits60at0;
    uint8_t bit60at2;
    uint8_t bits60at3;
    uint8_t byte60at8;
    float single61;
    float single63;
    uint8_t bits65at0;
    uint8_t bits65at4;
    uint8_t byte65at8;
    channel_record_8504_t channels[32];
    // The message time once more, split so that no sub-second bit is lost.
    double wholeSeconds;
    double fractionOfSecond;
};

// 8504: the navigation solution and the state of the channels.
class Rovan_8504_Msg : public UnpackedMessage<packed_msg8504_t, unpacked_msg8504_t> {
  public:
    static constexpr uint16_t kMsgId = 8504;

    Rovan_8504_Msg();

    bool ok_set_8504_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    void unpack_8504();
    static void unpack_8504(const packed_msg8504_t& packed, unpacked_msg8504_t& unpacked);
    /// The inverse of unpack_8504 on its fields; words without a field stay as they are. The
    /// message time is taken from `time`, not from the split pair.
    void pack_8504();
    static void pack_8504(const unpacked_msg8504_t& unpacked, packed_msg8504_t& packed);

    /// Copies frame and unpacked form.
    void copy_all(const Rovan_8504_Msg& other);
    /// Read from the frame, not from the unpacked form.
    bool recieverFailureDetected() const;
};

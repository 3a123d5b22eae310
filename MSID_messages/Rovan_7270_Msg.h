// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "MSID_messages/RovanMessage.h"

struct packed_msg7270_t : PackedWords<Msid::wordCount(7270)> {};

// A copy of the words; the fields are read from them. Lengths are in metres, rates in metres a
// second.
struct unpacked_msg7270_t : PackedWords<Msid::wordCount(7270)> {
    /// Word 5: tells the epochs apart; 0 when the message holds no measurement.
    uint16_t epochTag() const;
    bool deltaRangeValid() const;
    bool pseudorangeValid() const;
    /// The error that the index in word 6 stands for.
    double expectedRangeError() const;
    unsigned prn() const;
    /// Raw values of word 7: frequency 0 to 3, C/N0, channel state 0 to 15.
    unsigned frequency() const;
    unsigned carrierToNoise() const;
    unsigned channelState() const;
    double pseudorange() const;
    double deltaRange() const;
    unsigned deltaRangeIntervalMs() const;
    std::array<double, 3> svPositionStart() const;
    std::array<double, 3> svPositionStop() const;
    double pseudorangeCorrection() const;
    double rangeRateCorrection() const;
    bool hasSecondRateCorrection() const;
    double secondRateCorrection() const;
    bool assured() const;
    bool tropoCorrectionApplied() const;
    bool ionoCorrectionApplied() const;
    /// Raw value, 0 to 3.
    unsigned ionoCorrectionSource() const;
    /// Raw value, 0 to 7.
    unsigned channelCode() const;
    double pseudorangeSigma() const;
    double deltaRangeSigma() const;
};

// 7270: one satellite measurement.
class Rovan_7270_Msg : public UnpackedMessage<packed_msg7270_t, unpacked_msg7270_t> {
  public:
    static constexpr uint16_t kMsgId = 7270;

    Rovan_7270_Msg();

    bool ok_set_7270_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    /// Copies the words; converts nothing.
    void unpack_7270();
    static void unpack_7270(const packed_msg7270_t& packed, unpacked_msg7270_t& unpacked);
    /// This message is never sent: packing does nothing.
    void pack_7270() {}
    static void pack_7270(const unpacked_msg7270_t&, packed_msg7270_t&) {}

    /// Prints the frame's words on the console, five to a line.
    void debugPrintMessage() const override;
};

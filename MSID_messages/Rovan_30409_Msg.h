// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// The data words of 30409, whose numbers are IEEE; the names are those of the GPS UTC parameters
// (IS-GPS-200).
struct msg30409_t : PackedWords<Msid::wordCount(30409)> {
    bool sourceOneValid() const { return DataWords(words).bit(6, 0); }
    bool sourceTwoValid() const { return DataWords(words).bit(9, 0); }
    double a1() const { return DataWords(words).littleEndian<double>(12); }
    double a0() const { return DataWords(words).littleEndian<double>(16); }
    /// Not yet rounded to a whole number.
    double tot() const { return DataWords(words).littleEndian<double>(20); }
    int delta_t_lsf() const { return DataWords(words).signedWord(24); }
    int WNt() const { return DataWords(words).signedWord(25); }
    int dn() const { return DataWords(words).signedWord(26); }
    int wn_lsf() const { return DataWords(words).signedWord(27); }
    int delta_t_ls() const { return DataWords(words).signedWord(28); }
    bool utcDataValid() const { return DataWords(words).bit(30, 0); }
};

// 30409: UTC parameters; also received under the id 9409.
class Rovan_30409_Msg : public RovanMessage<Msid::wordCount(30409)> {
  public:
    static constexpr uint16_t kMsgId = 30409;

    Rovan_30409_Msg();

    bool ok_set_30409_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    /// A copy of the frame's data words.
    msg30409_t contents() const;

    /// UTC data is there and comes from at least one valid source.
    static bool isUtc_Valid(const msg30409_t& message);
    bool isUtc_Valid() const;
};

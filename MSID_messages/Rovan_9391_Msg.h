// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// 9391: the receiver's time solution. Unlike the other messages it carries IEEE numbers and 32-bit
// integers; the getters read them from the frame.
class Rovan_9391_Msg : public RovanMessage<Msid::wordCount(9391)> {
  public:
    static constexpr uint16_t kMsgId = 9391;

    Rovan_9391_Msg();

    bool ok_set_9391_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }

    /// The count times its unit of 0.01.
    double clockBias() const;
    int gpsWeek() const;
    int32_t gpsTimeOfWeek() const;           // whole seconds
    double gpsTimeOfWeekFraction() const;    // s
    int32_t receiverSetTime() const;         // whole seconds
    double receiverSetTimeFraction() const;  // s
    double clockBiasError() const;
    float clockBiasErrorRate() const;
    /// Diagonal of the time covariance, as standard deviations.
    float firstSigma() const;
    float secondSigma() const;
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "MSID_messages/RovanMessage.h"

// 9405: connection status. Data words:
//   26, bits 0 to 4  what is wrong with the BCI connection
//   27, bit 0        serial cable disconnected
//   86, bit 14       rerad mode
class Rovan_9405_Msg : public RovanMessage<Msid::wordCount(9405)> {
  public:
    static constexpr uint16_t kMsgId = 9405;

    Rovan_9405_Msg();

    bool ok_set_9405_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }

    bool isFpgaOff() const;
    bool isBciClockOff() const;
    bool isFpgaRecievingInvalidSignal() const;
    bool isDorvelNotUsingBciClock() const;
    /// True for any of the five bits, those of the clock included.
    bool isBciCableDisconnected() const;
    bool isSerialCableDisconnected() const;
    bool isInReRad() const;
    /// "BCI Connection Failures: ", the names of the set bits, each with a trailing blank, and a
    /// line end.
    std::string getBciConnectionFailure() const;
};

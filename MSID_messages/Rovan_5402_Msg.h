// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// 5402: zeroize and mission set-up. Data words:
//   4  zeroize selection: 0x0010 CV, 0x0001 IP
//   5  validity: 0x0001 CV zeroize, 0x0020 IP zeroize, 0x0008 mission duration
//   6  mission duration, 0 to 84
class Rovan_5402_Msg : public RovanMessage<Msid::wordCount(5402)> {
  public:
    static constexpr uint16_t kMsgId = 5402;

    Rovan_5402_Msg();

    /// False, changing nothing, for a duration above 84.
    bool setMissionDuration(unsigned duration);
    void setCvZeroize();
    void setIpZeroize();
};

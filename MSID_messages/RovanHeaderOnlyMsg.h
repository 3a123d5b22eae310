// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// A header alone, for any message id: the flag word says whether it connects, disconnects, requests
// or acknowledges that message (the values are in gssip/GssipFrame.h).
class RovanHeaderOnlyMsg : public RovanMessage<0> {
  public:
    /// Message id 0, flag word 0x9000.
    RovanHeaderOnlyMsg();
    RovanHeaderOnlyMsg(uint16_t msgId, uint16_t flagWord);

    /// Rewrites all five header words; the checksum becomes 0.
    void setMsgIdAndFlag(uint16_t msgId, uint16_t flagWord);
};

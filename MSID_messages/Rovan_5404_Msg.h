// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// 5404: zeroize status. Data words:
//   5, bits 5 to 4  IP zeroize status
class Rovan_5404_Msg : public RovanMessage<Msid::wordCount(5404)> {
  public:
    static constexpr uint16_t kMsgId = 5404;

    // 0 says that the receiver's IP data is clear.
    enum e5404IPZeroizeStatus : uint32_t {
        e5404_IPZeroize_0 = 0,
        e5404_IPZeroize_1 = 1,
        e5404_IPZeroize_2 = 2,
        e5404_IPZeroize_3 = 3,
    };

    Rovan_5404_Msg();

    bool ok_set_5404_gpsip(const void* bytes, unsigned size) { return okSet(bytes, size); }
    e5404IPZeroizeStatus getIPZeroizeStatus() const;
};

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5404_Msg.h"

Rovan_5404_Msg::Rovan_5404_Msg() : RovanMessage(kMsgId) {
}

Rovan_5404_Msg::e5404IPZeroizeStatus Rovan_5404_Msg::getIPZeroizeStatus() const {
    return static_cast<e5404IPZeroizeStatus>(words().bits(5, 5, 4));
}

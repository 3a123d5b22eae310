// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovanHeaderOnlyMsg.h"

RovanHeaderOnlyMsg::RovanHeaderOnlyMsg() : RovanMessage(0) {
}

RovanHeaderOnlyMsg::RovanHeaderOnlyMsg(uint16_t msgId, uint16_t flagWord)
    : RovanMessage(msgId, flagWord) {
}

void RovanHeaderOnlyMsg::setMsgIdAndFlag(uint16_t msgId, uint16_t flagWord) {
    setHeader(msgId, flagWord);
    // The link matches answers by the message's own copy of the id.
    m_msgId = msgId;
}

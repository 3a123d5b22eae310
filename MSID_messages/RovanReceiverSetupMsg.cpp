// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovanReceiverSetupMsg.h"

namespace {

constexpr unsigned kWordValidity = 4;
constexpr uint16_t kValidCodeType = 0x0001;
constexpr uint16_t kValidBfeaMode = 0x0002;

constexpr unsigned kWordCodeType = 43;
constexpr unsigned kCodeType1 = 11;
constexpr unsigned kWordBfeaMode = 44;

}  // namespace

RovanReceiverSetupMsg::RovanReceiverSetupMsg() : RovanMessage(kMsgId) {
}

int RovanReceiverSetupMsg::setCodeType(e5313_CodeType type) {
    setMask(kWordValidity, kValidCodeType);
    if (type == e5313_CodeType_0) {
        setBits(kWordCodeType, 3, 0, 0);
    } else if (type == e5313_CodeType_1) {
        setBits(kWordCodeType, 3, 0, kCodeType1);
    }
    return 0;
}

void RovanReceiverSetupMsg::setBFEA_Mode(e5313_BfeaMode mode) {
    setMask(kWordValidity, kValidBfeaMode);
    setBits(kWordBfeaMode, 3, 0, mode <= e5313_BfeaMode_3 ? mode : e5313_BfeaMode_0);
}

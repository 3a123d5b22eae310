// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// 5313: sets up the receiver. Data words:
//   4                  validity: 0x0001 code type, 0x0002 BFEA mode
//   43, bits 3 to 0    code type
//   44, bits 3 to 0    BFEA mode
class RovanReceiverSetupMsg : public RovanMessage<Msid::wordCount(5313)> {
  public:
    static constexpr uint16_t kMsgId = 5313;

    enum e5313_CodeType : uint16_t { e5313_CodeType_0 = 0, e5313_CodeType_1 = 1 };
    enum e5313_BfeaMode : uint16_t {
        e5313_BfeaMode_0 = 0,
        e5313_BfeaMode_1 = 1,
        e5313_BfeaMode_2 = 2,
        e5313_BfeaMode_3 = 3,
    };

    RovanReceiverSetupMsg();

    /// Type 0 writes 0 and type 1 writes 11; any other type is only marked valid. Always returns 0.
    int setCodeType(e5313_CodeType type);
    /// A mode that does not exist is stored as 0.
    void setBFEA_Mode(e5313_BfeaMode mode);
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/RovanMessage.h"

// 5001: tells the receiver which mode to take. Data words:
//   0 to 3  GPS time (PDP double), zero when sending
//   4       mode command; 64 marks the extended form
//   5       extended selector, 14371 in the extended form
//   6       extended value
class RovanCommandMsg : public RovanMessage<Msid::wordCount(5001)> {
  public:
    static constexpr uint16_t kMsgId = 5001;

    // The commands that this system sends; the receiver knows more, and every number can be sent.
    enum e5001_Command : uint16_t {
        e5001_Cmd_0 = 0,  // first command after the receiver was powered on
        e5001_Cmd_1 = 1,  // continuous operation
        e5001_Cmd_5 = 5,  // standby
        e5001_Cmd_7 = 7,  // emergency zeroize
        e5001_Cmd_8 = 8,  // CV zeroize
    };
    enum e5001_Mist_Command : uint16_t { e5001_Mist_Cmd_3 = 3 };

    RovanCommandMsg();

    /// Both setters zero all data words first.
    void setSimpleModeCommand(e5001_Command command);
    void setMistMode(e5001_Mist_Command command);
    e5001_Command getSimpleModeCommand() const;

    /// Loads a received 5001 frame of `size` bytes, which may be shorter or longer than this
    /// message. Fewer than 5 data words: a line on the console, false, nothing changed. More than
    /// 31: a line on the console, and what is beyond is cut off. A short one leaves the rest of the
    /// old data.
    bool ok_set_5001_gpsip(const void* bytes, unsigned size);
};

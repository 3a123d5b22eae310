// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovanCommandMsg.h"

#include <cstring>
#include <string>

#include "MSID_messages/ConsoleText.h"

namespace {

constexpr unsigned kWordCommand = 4;
constexpr unsigned kWordExtendedSelector = 5;
constexpr unsigned kWordExtendedValue = 6;

constexpr uint16_t kExtendedForm = 64;
constexpr uint16_t kExtendedSelector = 14371;

/// GPS time and the command.
constexpr int64_t kFewestWords = 5;

}  // namespace

RovanCommandMsg::RovanCommandMsg() : RovanMessage(kMsgId) {
}

void RovanCommandMsg::setSimpleModeCommand(e5001_Command command) {
    clearContents();
    setWord(kWordCommand, command);
}

void RovanCommandMsg::setMistMode(e5001_Mist_Command command) {
    clearContents();
    setWord(kWordCommand, kExtendedForm);
    setWord(kWordExtendedSelector, kExtendedSelector);
    setWord(kWordExtendedValue, command);
}

RovanCommandMsg::e5001_Command RovanCommandMsg::getSimpleModeCommand() const {
    return static_cast<e5001_Command>(words().word(kWordCommand));
}

bool RovanCommandMsg::ok_set_5001_gpsip(const void* bytes, unsigned size) {
    // Signed: a frame shorter than its overhead has a negative count.
    const int64_t count = int64_t{size / 2} - int64_t{Gssip::kOverheadWords};
    if (count < kFewestWords) {
        printConsoleText(
            "Warning: Incoming 5001 message must be at least 5 words (GPS Time and command) but "
            "only "
            "contains " +
            std::to_string(count) + " words : Message ignored\n");
        return false;
    }
    if (count > kWords) {
        printConsoleText("Info: Incoming 5001 message of " + std::to_string(count) +
                         " words truncated to only contain " + std::to_string(kWords) +
                         " words : Message accepted\n");
        size = Gssip::frameBytes(kWords);
    }
    std::memcpy(m_frame, bytes, size);
    return true;
}

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_5402_Msg.h"

namespace {

constexpr unsigned kWordSelection = 4;
constexpr uint16_t kSelectCvZeroize = 0x0010;
constexpr uint16_t kSelectIpZeroize = 0x0001;

constexpr unsigned kWordValidity = 5;
constexpr uint16_t kValidCvZeroize = 0x0001;
constexpr uint16_t kValidIpZeroize = 0x0020;
constexpr uint16_t kValidMissionDuration = 0x0008;

constexpr unsigned kWordMissionDuration = 6;
constexpr unsigned kLongestMission = 84;

}  // namespace

Rovan_5402_Msg::Rovan_5402_Msg() : RovanMessage(kMsgId) {
}

bool Rovan_5402_Msg::setMissionDuration(unsigned duration) {
    if (duration > kLongestMission) {
        return false;
    }
    setWord(kWordMissionDuration, static_cast<uint16_t>(duration));
    setMask(kWordValidity, kValidMissionDuration);
    return true;
}

void Rovan_5402_Msg::setCvZeroize() {
    setMask(kWordValidity, kValidCvZeroize);
    setMask(kWordSelection, kSelectCvZeroize);
}

void Rovan_5402_Msg::setIpZeroize() {
    setMask(kWordValidity, kValidIpZeroize);
    setMask(kWordSelection, kSelectIpZeroize);
}

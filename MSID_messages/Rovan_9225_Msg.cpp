// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_9225_Msg.h"

#include <algorithm>

namespace {

// First word and length in bytes of the fields that more than one function reads.
constexpr unsigned kWordBuildTime = 20;
constexpr unsigned kWordBootFlag = 298;
constexpr unsigned kWordPspSw = 354;
constexpr unsigned kWordPspBoot = 362;
constexpr unsigned kWordBsl = 402;
constexpr unsigned kBuildIdBytes = 120;
constexpr unsigned kPartNumberBytes = 16;
constexpr unsigned kFcmIdBytes = 12;

constexpr const char* kZeroPartNumber = "000-0000-000";

}  // namespace

Rovan_9225_Msg::Rovan_9225_Msg() : RovanMessage(kMsgId) {
}

std::string Rovan_9225_Msg::text(unsigned word, unsigned length) const {
    std::string field(length, '\0');
    std::memcpy(field.data(), data() + word, length);
    field.resize(std::min(field.size(), field.find('\0')));
    return field;
}

std::string Rovan_9225_Msg::get_BuildTime_String() const {
    struct {
        uint8_t month, day, year, hour, minute, second;
    } built;
    FieldReader(data()).raw(kWordBuildTime, built);
    return "GPS BuildTime YMD HMS: " + std::to_string(built.year) + "/" +
           std::to_string(built.month) + "/" + std::to_string(built.day) + " - " +
           std::to_string(built.hour) + ":" + std::to_string(built.minute) + ":" +
           std::to_string(built.second);
}

std::string Rovan_9225_Msg::get_PAP_SW_Build_String() const {
    return "GPS PAP_Prog_Build_ID: " + text(24, kBuildIdBytes);
}

std::string Rovan_9225_Msg::get_PAP_Boot_Build_String() const {
    return "GPS PAP_Boot_Build_ID: " + text(84, kBuildIdBytes);
}

std::string Rovan_9225_Msg::get_PSP_SW_Build_String() const {
    return "GPS PSP_Prog_Build_ID: " + text(164, kBuildIdBytes);
}

std::string Rovan_9225_Msg::get_PSP_Boot_Build_String() const {
    return "GPS PSP_Boot_Build_ID: " + text(224, kBuildIdBytes);
}

std::string Rovan_9225_Msg::get_HPN_PAP_SW() const {
    return "GPS PAP_SW_HPN: " + text(338, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_PAP_Boot() const {
    return "GPS PAP_Boot_HPN: " + text(346, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_PSP_SW() const {
    return "GPS PSP_SW_HPN: " + text(kWordPspSw, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_PSP_Boot() const {
    return "GPS PSP_Boot_HPN: " + text(kWordPspBoot, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_Civil_Boot() const {
    return "GPS Civil_Boot_HPN: " + text(370, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_Civil_App() const {
    return "GPS Civil_App_HPN: " + text(378, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_FPGA() const {
    return "GPS FPGA_HPN: " + text(386, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_HW() const {
    return "GPS HW_Version: " + text(394, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_HPN_BSL() const {
    return "GPS BSL_HPN: " + get_HPN_BSL_NoLabel();
}

std::string Rovan_9225_Msg::get_HPN_BSL_NoLabel() const {
    return text(kWordBsl, kPartNumberBytes);
}

std::string Rovan_9225_Msg::get_FCM_ID() const {
    return "GPS FCM_ID: " + text(410, kFcmIdBytes);
}

bool Rovan_9225_Msg::isBootFlagNormal() const {
    return words().word(kWordBootFlag) != 0;
}

bool Rovan_9225_Msg::isPSPbootAllZeroes() const {
    return text(kWordPspBoot, kPartNumberBytes) == kZeroPartNumber;
}

bool Rovan_9225_Msg::isPSP_SwAllZeroes() const {
    return text(kWordPspSw, kPartNumberBytes) == kZeroPartNumber;
}

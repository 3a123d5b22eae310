// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "MSID_messages/RovanMessage.h"

// 9225: version identifiers. The getters read the frame, which is loaded with OkSetContent. A text
// field ends at its first zero byte, or fills all its bytes; the getters put their label before it.
class Rovan_9225_Msg : public RovanMessage<Msid::wordCount(9225)> {
  public:
    static constexpr uint16_t kMsgId = 9225;

    Rovan_9225_Msg();

    /// "GPS BuildTime YMD HMS: year/month/day - hour:minute:second", as plain numbers.
    std::string get_BuildTime_String() const;
    std::string get_PAP_SW_Build_String() const;
    std::string get_PAP_Boot_Build_String() const;
    std::string get_PSP_SW_Build_String() const;
    std::string get_PSP_Boot_Build_String() const;
    std::string get_HPN_PAP_SW() const;
    std::string get_HPN_PAP_Boot() const;
    std::string get_HPN_PSP_SW() const;
    std::string get_HPN_PSP_Boot() const;
    std::string get_HPN_Civil_Boot() const;
    std::string get_HPN_Civil_App() const;
    std::string get_HPN_FPGA() const;
    std::string get_HPN_HW() const;
    std::string get_HPN_BSL() const;
    std::string get_HPN_BSL_NoLabel() const;
    std::string get_FCM_ID() const;

    bool isBootFlagNormal() const;
    /// Whether the part number is "000-0000-000", which the receiver reports after a zeroize.
    bool isPSPbootAllZeroes() const;
    bool isPSP_SwAllZeroes() const;

  private:
    std::string text(unsigned word, unsigned length) const;
};

// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_9225_Msg.h"

#include <gtest/gtest.h>

#include "Frames.h"

namespace {

using Getter = std::string (Rovan_9225_Msg::*)() const;

struct Field {
    unsigned word;
    unsigned length;
    Getter get;
    const char* label;
};

// The text fields of the frame, as the receiver's table gives them.
const Field kFields[] = {
    {24, 120, &Rovan_9225_Msg::get_PAP_SW_Build_String, "GPS PAP_Prog_Build_ID: "},
    {84, 120, &Rovan_9225_Msg::get_PAP_Boot_Build_String, "GPS PAP_Boot_Build_ID: "},
    {164, 120, &Rovan_9225_Msg::get_PSP_SW_Build_String, "GPS PSP_Prog_Build_ID: "},
    {224, 120, &Rovan_9225_Msg::get_PSP_Boot_Build_String, "GPS PSP_Boot_Build_ID: "},
    {338, 16, &Rovan_9225_Msg::get_HPN_PAP_SW, "GPS PAP_SW_HPN: "},
    {346, 16, &Rovan_9225_Msg::get_HPN_PAP_Boot, "GPS PAP_Boot_HPN: "},
    {354, 16, &Rovan_9225_Msg::get_HPN_PSP_SW, "GPS PSP_SW_HPN: "},
    {362, 16, &Rovan_9225_Msg::get_HPN_PSP_Boot, "GPS PSP_Boot_HPN: "},
    {370, 16, &Rovan_9225_Msg::get_HPN_Civil_Boot, "GPS Civil_Boot_HPN: "},
    {378, 16, &Rovan_9225_Msg::get_HPN_Civil_App, "GPS Civil_App_HPN: "},
    {386, 16, &Rovan_9225_Msg::get_HPN_FPGA, "GPS FPGA_HPN: "},
    {394, 16, &Rovan_9225_Msg::get_HPN_HW, "GPS HW_Version: "},
    {402, 16, &Rovan_9225_Msg::get_HPN_BSL, "GPS BSL_HPN: "},
    {402, 16, &Rovan_9225_Msg::get_HPN_BSL_NoLabel, ""},
    {410, 12, &Rovan_9225_Msg::get_FCM_ID, "GPS FCM_ID: "},
};

void load(Rovan_9225_Msg& message, const Frames::Frame& frame) {
    ASSERT_TRUE(message.OkSetContent(frame.bytes(), frame.size()));
}

}  // namespace

TEST(Rovan_9225_Msg, GivesEachFieldUpToItsFirstZeroByte) {
    for (const Field& field : kFields) {
        Rovan_9225_Msg message;
        load(message, Frames::Frame(9225, 416).text(field.word, std::string("AB-12\0CD", 8)));
        EXPECT_EQ((message.*field.get)(), std::string(field.label) + "AB-12");
    }
}

TEST(Rovan_9225_Msg, GivesAFieldWithoutAZeroByteInItsFullLength) {
    Frames::Frame frame(9225, 416);
    frame.text(0, std::string(832, 'x'));
    for (const Field& field : kFields) {
        std::string text;
        for (unsigned i = 0; i < field.length; ++i) {
            text += static_cast<char>('a' + (field.word + i) % 26);
        }
        frame.text(field.word, text);
        Rovan_9225_Msg message;
        load(message, frame);
        EXPECT_EQ((message.*field.get)(), field.label + text);
    }
}

TEST(Rovan_9225_Msg, GivesTheLabelAloneForAnEmptyField) {
    for (const Field& field : kFields) {
        EXPECT_EQ((Rovan_9225_Msg().*field.get)(), field.label);
    }
}

TEST(Rovan_9225_Msg, GivesTheBuildTimeAsPlainNumbers) {
    // Month, day, year, hour, minute, second.
    Rovan_9225_Msg message;
    load(message, Frames::Frame(9225, 416).text(20, {4, 5, 23, 6, 7, 8}));
    EXPECT_EQ(message.get_BuildTime_String(), "GPS BuildTime YMD HMS: 23/4/5 - 6:7:8");

    load(message, Frames::Frame(9225, 416).text(20, "\xFF\xFE\xFD\xFC\xFB\xFA"));
    EXPECT_EQ(message.get_BuildTime_String(), "GPS BuildTime YMD HMS: 253/255/254 - 252:251:250");
}

TEST(Rovan_9225_Msg, TakesAnyNonZeroBootFlagAsNormal) {
    Rovan_9225_Msg message;
    EXPECT_FALSE(message.isBootFlagNormal());

    load(message, Frames::Frame(9225, 416).word(297, 0xFFFF).word(299, 0xFFFF));
    EXPECT_FALSE(message.isBootFlagNormal());
    load(message, Frames::Frame(9225, 416).word(298, 0x0001));
    EXPECT_TRUE(message.isBootFlagNormal());
    load(message, Frames::Frame(9225, 416).word(298, 0x8000));
    EXPECT_TRUE(message.isBootFlagNormal());
}

TEST(Rovan_9225_Msg, RecognisesZeroPartNumbers) {
    struct Case {
        std::string text;
        bool allZeroes;
    };
    for (const auto& [text, allZeroes] :
         {Case{"000-0000-000", true}, Case{std::string("000-0000-000\0zzz", 16), true},
          Case{"000-0000-0001", false}, Case{"000-0000-00", false}, Case{"100-0000-000", false},
          Case{"", false}, Case{"000-0000-0000000", false}}) {
        Rovan_9225_Msg boot;
        load(boot, Frames::Frame(9225, 416).text(362, text));
        Rovan_9225_Msg software;
        load(software, Frames::Frame(9225, 416).text(354, text));

        EXPECT_EQ(boot.isPSPbootAllZeroes(), allZeroes) << text;
        EXPECT_FALSE(boot.isPSP_SwAllZeroes()) << text;
        EXPECT_EQ(software.isPSP_SwAllZeroes(), allZeroes) << text;
        EXPECT_FALSE(software.isPSPbootAllZeroes()) << text;
    }
}

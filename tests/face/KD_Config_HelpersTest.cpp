// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Config_Helpers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "face/KD_Config.h"
#include "face/KD_Config_Row.h"
#include "tests/RovanServer/TemporaryDirectory.h"

namespace {

using namespace FACE::KD_Config_Helpers;
using FACE::KD_Config;
using FACE::KD_Config_Row;
using FACE::RETURN_CODE_TYPE;

constexpr auto kNoError = RETURN_CODE_TYPE::NO_ERROR;
constexpr auto kInvalidConfig = RETURN_CODE_TYPE::INVALID_CONFIG;
// What `rc` holds before a call that shall leave it alone.
constexpr auto kUntouched = RETURN_CODE_TYPE::IN_PROGRESS;

class KD_Config_HelpersTest : public testing::Test {
  protected:
    // A container "Rovan" with these parameters, opened.
    void load(const std::string& parameters) {
        const std::string path = m_directory.write("config.xml",
                                                   "<KD_Configurations><Server><Name>Rovan</Name>"
                                                   "<Parameters>" +
                                                       parameters +
                                                       "</Parameters></Server>"
                                                       "</KD_Configurations>");
        auto rc = kUntouched;
        m_config.Initialize(path.c_str(), rc);
        ASSERT_EQ(rc, kNoError);
        m_config.Open("Rovan", m_handle, rc);
        ASSERT_EQ(rc, kNoError);
    }
    bool booleanOf(const std::string& text) {
        load("<P>" + text + "</P>");
        bool value = false;
        auto rc = kUntouched;
        Get_Boolean_Parameter(m_config, m_handle, "P", value, rc);
        EXPECT_EQ(rc, kUntouched);
        return value;
    }
    template <typename T>
    T numberOf(const std::string& name) {
        T value = 77;
        auto rc = kUntouched;
        Get_Number_Parameter(m_config, m_handle, name.c_str(), value, rc);
        EXPECT_EQ(rc, kUntouched);
        return value;
    }

    TemporaryDirectory m_directory;
    KD_Config m_config;
    int m_handle = -1;
};

TEST_F(KD_Config_HelpersTest, ReadsATextOfAnyLength) {
    const std::string text = std::string(300, 'x') + "y";
    load("<P>" + text + "</P>");
    testing::internal::CaptureStdout();
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "P"), text);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(KD_Config_HelpersTest, WarnsOfAMissingOrEmptyParameter) {
    load("<Empty></Empty>");
    testing::internal::CaptureStdout();
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "PRI"), "");
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "Empty"), "");
    EXPECT_EQ(Details::Read_Config(m_config, m_handle + 1, "CPU"), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "WARNING - Parameter PRI not found\n"
              "WARNING - Parameter Empty not found\n"
              "WARNING - Parameter CPU not found\n");
}

TEST_F(KD_Config_HelpersTest, GetsAString) {
    load("<P>some words</P>");
    FACE::String value;
    auto rc = kUntouched;
    Get_String_Parameter(m_config, m_handle, "P", value, rc);
    EXPECT_EQ(rc, kUntouched);
    EXPECT_TRUE(value.is_managed());
    EXPECT_STREQ(value.buffer(), "some words");
    Get_String_Parameter(m_config, m_handle, "Q", value, rc);
    EXPECT_EQ(rc, kInvalidConfig);
    EXPECT_STREQ(value.buffer(), "some words");
}

TEST_F(KD_Config_HelpersTest, GetsTheWordsOfABooleanInAnyCase) {
    EXPECT_TRUE(booleanOf("TRUE"));
}
TEST_F(KD_Config_HelpersTest, GetsAMixedCaseTrue) {
    EXPECT_TRUE(booleanOf("TrUe"));
}
TEST_F(KD_Config_HelpersTest, GetsAFalseInCapitals) {
    load("<P>FALSE</P>");
    bool value = true;
    auto rc = kUntouched;
    Get_Boolean_Parameter(m_config, m_handle, "P", value, rc);
    EXPECT_EQ(rc, kUntouched);
    EXPECT_FALSE(value);
}

TEST_F(KD_Config_HelpersTest, GetsABooleanFromANumber) {
    load(
        "<One>1</One><Two>2</Two><Hex>0x10</Hex><Minus>-1</Minus><Octal>010</Octal>"
        "<Zero>0</Zero><No>no</No><Yes>yes</Yes><Padded> true </Padded><Junk>1x</Junk>");
    const struct {
        const char* name;
        bool value;
    } kTable[] = {{"One", true},     {"Two", true},   {"Hex", true}, {"Minus", true},
                  {"Octal", true},   {"Zero", false}, {"No", false}, {"Yes", false},
                  {"Padded", false}, {"Junk", true}};
    for (const auto& row : kTable) {
        bool value = !row.value;
        auto rc = kUntouched;
        Get_Boolean_Parameter(m_config, m_handle, row.name, value, rc);
        EXPECT_EQ(value, row.value) << row.name;
        EXPECT_EQ(rc, kUntouched);
    }
}

TEST_F(KD_Config_HelpersTest, LeavesTheBooleanOfAnEmptyParameter) {
    load("<P></P>");
    bool value = true;
    auto rc = kNoError;
    Get_Boolean_Parameter(m_config, m_handle, "P", value, rc);
    EXPECT_EQ(rc, kInvalidConfig);
    EXPECT_TRUE(value);
}

TEST_F(KD_Config_HelpersTest, GetsNumbersOfEveryBase) {
    load(
        "<Decimal>115200</Decimal><Hex>0x1F</Hex><Capital>0X1f</Capital><Octal>017</Octal>"
        "<Minus>-5</Minus><Plus>+5</Plus><Junk>12 apples</Junk><Words>apples</Words>"
        "<Padded>  9 </Padded><NoOctal>09</NoOctal>");
    EXPECT_EQ(numberOf<uint32_t>("Decimal"), 115200u);
    EXPECT_EQ(numberOf<uint16_t>("Hex"), 31u);
    EXPECT_EQ(numberOf<int>("Capital"), 31);
    EXPECT_EQ(numberOf<uint8_t>("Octal"), 15u);
    EXPECT_EQ(numberOf<int32_t>("Minus"), -5);
    EXPECT_EQ(numberOf<uint8_t>("Plus"), 5u);
    EXPECT_EQ(numberOf<int>("Junk"), 12);
    EXPECT_EQ(numberOf<int>("Words"), 0);
    EXPECT_EQ(numberOf<int>("Padded"), 9);
    EXPECT_EQ(numberOf<int>("NoOctal"), 0);
}

TEST_F(KD_Config_HelpersTest, CutsANumberToItsWidth) {
    load(
        "<Wide>0x1FFFE</Wide><Bits>0xFFFFFFFF</Bits><Minus>-1</Minus>"
        "<Full>0xFFFFFFFFFFFFFFFF</Full><Beyond>99999999999999999999</Beyond>");
    EXPECT_EQ(numberOf<uint16_t>("Wide"), 0xFFFEu);
    EXPECT_EQ(numberOf<uint8_t>("Wide"), 0xFEu);
    EXPECT_EQ(numberOf<int16_t>("Wide"), -2);
    EXPECT_EQ(numberOf<int32_t>("Bits"), -1);
    EXPECT_EQ(numberOf<uint32_t>("Bits"), 0xFFFFFFFFu);
    EXPECT_EQ(numberOf<uint16_t>("Minus"), 0xFFFFu);
    EXPECT_EQ(numberOf<uint64_t>("Full"), UINT64_MAX);
    EXPECT_EQ(numberOf<uint64_t>("Beyond"), UINT64_MAX);
    EXPECT_EQ(numberOf<int64_t>("Beyond"), INT64_MAX);
}

TEST_F(KD_Config_HelpersTest, LeavesTheNumberOfAMissingParameter) {
    load("<Empty></Empty>");
    uint16_t value = 77;
    auto rc = kNoError;
    Get_Number_Parameter(m_config, m_handle, "Missing", value, rc);
    EXPECT_EQ(rc, kInvalidConfig);
    rc = kNoError;
    Get_Number_Parameter(m_config, m_handle, "Empty", value, rc);
    EXPECT_EQ(rc, kInvalidConfig);
    EXPECT_EQ(value, 77u);
}

TEST_F(KD_Config_HelpersTest, WritesTextsAndBooleans) {
    load("<P>old</P><B>maybe</B>");
    auto rc = kUntouched;
    EXPECT_TRUE(Details::Write_Config(m_config, m_handle, "P", "new text"));
    Set_Boolean_Parameter(m_config, m_handle, "B", true, rc);
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "P"), "new text");
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "B"), "TRUE");
    Set_Boolean_Parameter(m_config, m_handle, "B", false, rc);
    Set_String_Parameter(m_config, m_handle, "P", "newer", rc);
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "B"), "FALSE");
    EXPECT_EQ(Details::Read_Config(m_config, m_handle, "P"), "newer");
    EXPECT_EQ(rc, kUntouched);
}

TEST_F(KD_Config_HelpersTest, ReportsWhatItCouldNotWrite) {
    load("<P>old</P>");
    EXPECT_FALSE(Details::Write_Config(m_config, m_handle, "Missing", "x"));
    auto rc = kNoError;
    Set_String_Parameter(m_config, m_handle, "Missing", "x", rc);
    EXPECT_EQ(rc, kInvalidConfig);
    rc = kNoError;
    Set_Boolean_Parameter(m_config, m_handle, "Missing", true, rc);
    EXPECT_EQ(rc, kInvalidConfig);
}

// ---- A row of parameters

TEST_F(KD_Config_HelpersTest, ReadsARowOfEveryType) {
    load("<S>text</S><F>face</F><B>true</B><I>-3</I><U>0x10001</U><C>300</C>");
    std::string s;
    FACE::String f;
    bool b = false;
    int32_t i = 0;
    uint16_t u = 0;
    uint8_t c = 0;
    const auto rc =
        KD_Config_Row(m_config, "Rovan")("S", s)("F", f)("B", b)("I", i)("U", u)("C", c).code();
    EXPECT_EQ(rc, kNoError);
    EXPECT_EQ(s, "text");
    EXPECT_STREQ(f.buffer(), "face");
    EXPECT_TRUE(b);
    EXPECT_EQ(i, -3);
    EXPECT_EQ(u, 1u);
    EXPECT_EQ(c, 44u);  // 300 - 256
}

TEST_F(KD_Config_HelpersTest, ReadsOnPastAMissingParameter) {
    load("<A>1</A><C>3</C>");
    int a = 0;
    int b = 77;
    int c = 0;
    const KD_Config_Row row(m_config, "Rovan");
    KD_Config_Row whole(m_config, "Rovan");
    whole("A", a)("B", b)("C", c);
    EXPECT_EQ(row.code(), kNoError);
    EXPECT_EQ(whole.code(), kInvalidConfig);
    EXPECT_EQ(whole.openCode(), kNoError);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 77);
    EXPECT_EQ(c, 3);
}

TEST_F(KD_Config_HelpersTest, ReadsNothingFromAMissingContainer) {
    load("<A>1</A>");
    testing::internal::CaptureStdout();
    int a = 77;
    KD_Config_Row row(m_config, "Unknown");
    row("A", a);
    EXPECT_EQ(row.code(), kInvalidConfig);
    EXPECT_EQ(row.openCode(), kInvalidConfig);
    EXPECT_EQ(a, 77);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    KD_Config empty;
    KD_Config_Row ofEmpty(empty, "Rovan");
    EXPECT_EQ(ofEmpty.code(), kInvalidConfig);
    EXPECT_EQ(ofEmpty.openCode(), RETURN_CODE_TYPE::INVALID_MODE);
}

TEST_F(KD_Config_HelpersTest, ClosesTheContainerOfARow) {
    load("<A>1</A>");
    { const KD_Config_Row row(m_config, "Rovan"); }
    // It had the same handle as the one that is open here, and its end closed both.
    auto rc = kUntouched;
    m_config.Close(m_handle, rc);
    EXPECT_EQ(rc, kInvalidConfig);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "utility/StringUtils.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kAllWhitespace = " \n\r\t\f\v";

TEST(StringUtils, LtrimCutsEveryKindOfLeadingWhitespaceOnly) {
    EXPECT_EQ("a b \t", StringUtils::ltrim(std::string(kAllWhitespace) + "a b \t"));
    EXPECT_EQ("a", StringUtils::ltrim("a"));
    EXPECT_EQ("", StringUtils::ltrim(kAllWhitespace));
    EXPECT_EQ("", StringUtils::ltrim(""));
}

TEST(StringUtils, RtrimCutsEveryKindOfTrailingWhitespaceOnly) {
    EXPECT_EQ("\t a b", StringUtils::rtrim("\t a b" + std::string(kAllWhitespace)));
    EXPECT_EQ("a", StringUtils::rtrim("a"));
    EXPECT_EQ("", StringUtils::rtrim(kAllWhitespace));
    EXPECT_EQ("", StringUtils::rtrim(""));
}

TEST(StringUtils, TrimCutsBothEndsAndKeepsTheMiddle) {
    EXPECT_EQ("a \t b", StringUtils::trim("\r\n a \t b \v\f"));
    EXPECT_EQ("", StringUtils::trim(kAllWhitespace));
}

TEST(StringUtils, TrimTakesNoOtherCharacterForWhitespace) {
    // 0x85 and 0xA0 are blanks in some locales, and zero bytes are ordinary ones.
    const std::string text = std::string("\x85\xA0\0x\0", 5);
    EXPECT_EQ(text, StringUtils::trim(text));
}

std::string replaced(const char* text, const char* set, char replacement) {
    std::array<char, 32> buffer{};
    std::strcpy(buffer.data(), text);
    StringUtils::cstr_replace(buffer.data(), set, replacement);
    return buffer.data();
}

TEST(StringUtils, CstrReplaceReplacesEveryOccurrenceOfEachCharacter) {
    EXPECT_EQ("a__b_c_", replaced("a,;b,c;", ",;", '_'));
    EXPECT_EQ("abc", replaced("abc", ",;", '_'));
    EXPECT_EQ("abc", replaced("abc", "", '_'));
    EXPECT_EQ("", replaced("", ",;", '_'));
}

TEST(StringUtils, CstrReplaceTakesTheSetInOrder) {
    EXPECT_EQ("bbb", replaced("aab", "a", 'b'));
    // "a" becomes "b" first; then "b" is due, which would be replaced by itself.
    EXPECT_EQ("bbb", replaced("aab", "ab", 'b'));
}

TEST(StringUtils, CstrReplaceWithAZeroEndsTheTextAtTheFirstHit) {
    std::array<char, 8> buffer{"a,b,c"};
    StringUtils::cstr_replace(buffer.data(), ",", '\0');
    EXPECT_EQ(0, std::memcmp(buffer.data(), "a\0b,c\0\0\0", 8));
}

TEST(StringUtils, CstrReplaceOfNothingDoesNothing) {
    std::array<char, 4> buffer{"a,b"};
    StringUtils::cstr_replace(nullptr, ",", '_');
    StringUtils::cstr_replace(buffer.data(), nullptr, '_');
    EXPECT_STREQ("a,b", buffer.data());
}

TEST(StringUtils, StrncpyProtAlwaysTerminates) {
    std::array<char, 5> buffer{"####"};
    EXPECT_EQ(buffer.data(), StringUtils::strncpy_prot(buffer.data(), "abcd", 3));
    EXPECT_EQ(0, std::memcmp(buffer.data(), "ab\0#\0", 5));
}

TEST(StringUtils, StrncpyProtZeroesTheRestOfASizeThatIsLarger) {
    std::array<char, 6> buffer{"#####"};
    StringUtils::strncpy_prot(buffer.data(), "a", 4);
    EXPECT_EQ(0, std::memcmp(buffer.data(), "a\0\0\0#\0", 6));
}

TEST(StringUtils, StrncpyProtOfSizeOneGivesTheEmptyText) {
    std::array<char, 3> buffer{"##"};
    StringUtils::strncpy_prot(buffer.data(), "abcd", 1);
    EXPECT_EQ(0, std::memcmp(buffer.data(), "\0#\0", 3));
}

TEST(StringUtils, StrncpyProtOfSizeZeroLeavesTheDestinationAlone) {
    std::array<char, 3> buffer{"##"};
    EXPECT_EQ(buffer.data(), StringUtils::strncpy_prot(buffer.data(), "abcd", 0));
    EXPECT_STREQ("##", buffer.data());
    EXPECT_EQ(nullptr, StringUtils::strncpy_prot(nullptr, "abcd", 3));
}

TEST(StringUtils, StrncpyProtTakesNullForAnEmptyText) {
    std::array<char, 3> buffer{"##"};
    StringUtils::strncpy_prot(buffer.data(), nullptr, 3);
    EXPECT_STREQ("", buffer.data());
}

TEST(StringUtils, ChunksAreOfTheSizeAndTheLastTakesTheRest) {
    EXPECT_THAT(StringUtils::splitToChunks("abcde", 2), ElementsAre("ab", "cd", "e"));
    EXPECT_THAT(StringUtils::splitToChunks("abcd", 2), ElementsAre("ab", "cd"));
    EXPECT_THAT(StringUtils::splitToChunks("ab", 5), ElementsAre("ab"));
    EXPECT_THAT(StringUtils::splitToChunks("ab", 0xFFFFFFFFu), ElementsAre("ab"));
}

TEST(StringUtils, ChunksAreAppendedToWhatIsThere) {
    std::vector<std::string> out{"x"};
    StringUtils::splitToChunks("abc", 2, out);
    StringUtils::splitToChunks("", 2, out);
    EXPECT_THAT(out, ElementsAre("x", "ab", "c"));
}

TEST(StringUtils, ChunksOfAnEmptyTextOrOfSizeZeroAreNone) {
    EXPECT_THAT(StringUtils::splitToChunks("", 2), IsEmpty());
    EXPECT_THAT(StringUtils::splitToChunks("abc", 0), IsEmpty());
}

TEST(StringUtils, JoinPutsTheDelimiterBetweenItems) {
    EXPECT_EQ("", StringUtils::join({}, ','));
    EXPECT_EQ("a", StringUtils::join({"a"}, ','));
    EXPECT_EQ("a,,b", StringUtils::join({"a", "", "b"}, ','));
    EXPECT_EQ(",", StringUtils::join({"", ""}, ','));
}

TEST(StringUtils, SplitKeepsEmptyPiecesInTheMiddleButNoneAtTheEnd) {
    EXPECT_THAT(StringUtils::split("a,,b,", ','), ElementsAre("a", "", "b"));
    EXPECT_THAT(StringUtils::split("a,b", ','), ElementsAre("a", "b"));
    EXPECT_THAT(StringUtils::split("a", ','), ElementsAre("a"));
    EXPECT_THAT(StringUtils::split(",a", ','), ElementsAre("", "a"));
    EXPECT_THAT(StringUtils::split(",", ','), ElementsAre(""));
    EXPECT_THAT(StringUtils::split("", ','), IsEmpty());
}

}  // namespace

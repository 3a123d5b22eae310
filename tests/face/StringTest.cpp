// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "face/FACE_Common.h"

namespace {

using FACE::kUnbounded;
using FACE::String;
using FACE::toStdString;

// A string that is invalid because its text is null.
String invalidString() {
    return String(static_cast<const char*>(nullptr));
}

void expectInvalid(const String& text) {
    EXPECT_FALSE(text.is_valid());
    EXPECT_FALSE(text.is_managed());
    EXPECT_FALSE(text.is_bounded());
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.capacity(), 0u);
    EXPECT_EQ(text.bound(), 0u);
    EXPECT_EQ(text.buffer(), nullptr);
}

TEST(String, IsManagedUnboundedAndEmptyByDefault) {
    String text;
    EXPECT_TRUE(text.is_valid());
    EXPECT_TRUE(text.is_managed());
    EXPECT_FALSE(text.is_bounded());
    EXPECT_EQ(text.bound(), 0xFFFFFFFFu);
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.buffer(), "");
}

TEST(String, TakesABoundBetweenNoneAndAll) {
    auto rc = String::PRECONDITION_VIOLATED;
    const String text(3u, rc);
    EXPECT_EQ(rc, String::NO_ERROR);
    EXPECT_TRUE(text.is_managed());
    EXPECT_TRUE(text.is_bounded());
    EXPECT_EQ(text.bound(), 3u);
    EXPECT_EQ(text.length(), 0u);

    auto rcOfNone = String::NO_ERROR;
    expectInvalid(String(0u, rcOfNone));
    EXPECT_EQ(rcOfNone, String::PRECONDITION_VIOLATED);
    auto rcOfAll = String::NO_ERROR;
    expectInvalid(String(kUnbounded, rcOfAll));
    EXPECT_EQ(rcOfAll, String::PRECONDITION_VIOLATED);
}

TEST(String, CopiesATextAndCannotGrowBeyondIt) {
    std::array<char, 4> source = {'a', 'b', 'c', '\0'};
    auto rc = String::PRECONDITION_VIOLATED;
    String text(source.data(), rc);
    source[0] = 'x';
    EXPECT_EQ(rc, String::NO_ERROR);
    EXPECT_TRUE(text.is_managed());
    EXPECT_STREQ(text.buffer(), "abc");
    EXPECT_EQ(text.bound(), 3u);
    EXPECT_EQ(text.append('d'), String::INSUFFICIENT_BOUND);
}

TEST(String, RefusesToCopyANullText) {
    auto rc = String::NO_ERROR;
    expectInvalid(String(static_cast<const char*>(nullptr), rc));
    EXPECT_EQ(rc, String::PRECONDITION_VIOLATED);
}

TEST(String, ViewsABufferAndTerminatesIt) {
    std::array<char, 5> buffer = {'a', 'b', 'X', 'X', 'X'};
    auto rc = String::PRECONDITION_VIOLATED;
    String text(buffer.data(), 2, 4, rc);
    EXPECT_EQ(rc, String::NO_ERROR);
    EXPECT_FALSE(text.is_managed());
    EXPECT_TRUE(text.is_bounded());
    EXPECT_EQ(text.buffer(), buffer.data());
    EXPECT_EQ(text.length(), 2u);
    EXPECT_EQ(text.capacity(), 4u);
    EXPECT_EQ(buffer, (std::array<char, 5>{'a', 'b', '\0', 'X', 'X'}));
}

TEST(String, ViewsAFullBuffer) {
    std::array<char, 3> buffer = {'a', 'b', 'X'};
    auto rc = String::PRECONDITION_VIOLATED;
    const String text(buffer.data(), 2, 2, rc);
    EXPECT_EQ(rc, String::NO_ERROR);
    EXPECT_STREQ(text.buffer(), "ab");
}

TEST(String, RefusesABufferThatIsNoneOrTooShort) {
    std::array<char, 3> buffer = {'a', 'b', 'c'};
    struct Case {
        char* buffer;
        uint32_t length;
        uint32_t bound;
    };
    for (const Case& refused : {Case{nullptr, 0, 2}, Case{buffer.data(), 0, 0},
                                Case{buffer.data(), 0, kUnbounded}, Case{buffer.data(), 3, 2}}) {
        auto rc = String::NO_ERROR;
        expectInvalid(String(refused.buffer, refused.length, refused.bound, rc));
        EXPECT_EQ(rc, String::PRECONDITION_VIOLATED);
    }
    EXPECT_EQ(buffer, (std::array<char, 3>{'a', 'b', 'c'}));
}

TEST(String, ViewsALiteral) {
    const char* literal = "Command";
    const String text(literal);
    EXPECT_TRUE(text.is_valid());
    EXPECT_FALSE(text.is_managed());
    EXPECT_EQ(text.buffer(), literal);
    EXPECT_EQ(text.length(), 7u);
    EXPECT_EQ(text.bound(), 7u);
    EXPECT_EQ(text.capacity(), 7u);
}

TEST(String, ViewsAnEmptyLiteral) {
    const String text("");
    EXPECT_TRUE(text.is_valid());
    EXPECT_TRUE(text.is_bounded());
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.bound(), 0u);
}

TEST(String, IsInvalidOnANullLiteral) {
    expectInvalid(invalidString());
}

TEST(String, OwnsItsCopyWhateverTheSourceWas) {
    std::array<char, 4> buffer = {'a', 'b', '\0', '\0'};
    auto rc = String::NO_ERROR;
    const String view(buffer.data(), 2, 3, rc);
    const String copy(view);
    buffer[0] = 'x';
    EXPECT_TRUE(copy.is_managed());
    EXPECT_STREQ(copy.buffer(), "ab");
    EXPECT_EQ(copy.bound(), 3u);
}

TEST(String, CopiesInvalidity) {
    const String invalid = invalidString();
    expectInvalid(String(invalid));
}

TEST(String, BecomesManagedByAssignment) {
    String target("literal");
    {
        std::array<char, 3> buffer = {'a', 'b', '\0'};
        auto rc = String::NO_ERROR;
        target = String(buffer.data(), 2, 2, rc);
        buffer[0] = 'x';
    }
    EXPECT_TRUE(target.is_managed());
    EXPECT_STREQ(target.buffer(), "ab");
    EXPECT_EQ(target.bound(), 2u);
}

TEST(String, TakesTheBoundOfWhatIsAssigned) {
    auto rc = String::NO_ERROR;
    String target(100u, rc);
    target = String();
    EXPECT_FALSE(target.is_bounded());
    target = String("abc");
    EXPECT_EQ(target.bound(), 3u);
}

TEST(String, BecomesInvalidByAssignmentOfAnInvalidOne) {
    String target;
    target.append("abc");
    target = invalidString();
    expectInvalid(target);
    target = String("again");
    EXPECT_STREQ(target.buffer(), "again");
}

TEST(String, KeepsItsTextWhenAssignedToItself) {
    String managed;
    managed.append("abc");
    String literal("def");
    std::array<char, 4> buffer = {'g', 'h', 'i', '\0'};
    auto rc = String::NO_ERROR;
    String view(buffer.data(), 3, 3, rc);
    for (String* text : {&managed, &literal, &view}) {
        const std::string before = toStdString(*text);
        const String& itself = *text;
        *text = itself;
        EXPECT_EQ(toStdString(*text), before);
        EXPECT_TRUE(text->is_managed());
    }
}

TEST(String, KeepsTheTextWhenAssignedAViewOfItself) {
    String text;
    text.append("abcdef");
    auto rc = String::NO_ERROR;
    const String tail(text.buffer() + 3, 3, 3, rc);
    text = tail;
    EXPECT_STREQ(text.buffer(), "def");
}

TEST(String, ClearsItsOwnText) {
    String text;
    text.append("abc");
    text.clear();
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.buffer(), "");
    EXPECT_FALSE(text.is_bounded());
}

TEST(String, ClearsABufferInPlace) {
    std::array<char, 4> buffer = {'a', 'b', '\0', '\0'};
    auto rc = String::NO_ERROR;
    String text(buffer.data(), 2, 3, rc);
    text.clear();
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(text.bound(), 3u);
    EXPECT_EQ(buffer, (std::array<char, 4>{'\0', 'b', '\0', '\0'}));
}

TEST(String, NeverWritesThroughALiteral) {
    static const char literal[] = "abc";  // in read-only memory: a write would end the test
    String text(literal);
    EXPECT_EQ(text.append('d'), String::INSUFFICIENT_BOUND);
    EXPECT_EQ(text.append(""), String::NO_ERROR);
    text.clear();
    EXPECT_EQ(text.length(), 0u);
    EXPECT_STREQ(text.buffer(), "");
    EXPECT_FALSE(text.is_managed());
    EXPECT_EQ(text.bound(), 3u);

    EXPECT_EQ(text.append("xyz"), String::NO_ERROR);
    EXPECT_STREQ(text.buffer(), "xyz");
    EXPECT_EQ(text.append('!'), String::INSUFFICIENT_BOUND);
    EXPECT_STREQ(literal, "abc");

    const String copy(text);
    text.clear();
    EXPECT_STREQ(copy.buffer(), "xyz");
}

TEST(String, ClearsAnEmptyLiteral) {
    String text("");
    text.clear();
    EXPECT_STREQ(text.buffer(), "");
    EXPECT_EQ(text.append('a'), String::INSUFFICIENT_BOUND);
}

TEST(String, DoesNothingWhenInvalid) {
    String text = invalidString();
    text.clear();
    EXPECT_EQ(text.append('a'), String::PRECONDITION_VIOLATED);
    EXPECT_EQ(text.append("abc"), String::PRECONDITION_VIOLATED);
    EXPECT_EQ(text.append(""), String::PRECONDITION_VIOLATED);
    expectInvalid(text);
}

TEST(String, YieldsTheTerminatorBeyondTheLength) {
    auto rc = String::NO_ERROR;
    std::array<char, 6> buffer = {'a', 'b', '\0', 'X', 'X', 'X'};
    const String view(buffer.data(), 2, 5, rc);
    EXPECT_EQ(view[1], 'b');
    EXPECT_EQ(&view[2], &buffer[2]);
    EXPECT_EQ(&view[4], &buffer[2]);
    String managed;
    managed.append("ab");
    EXPECT_EQ(managed[1], 'b');
    EXPECT_EQ(managed[2], '\0');
    EXPECT_EQ(&managed[0xFFFFFFFFu], managed.buffer() + 2);
    managed[0] = 'x';
    EXPECT_STREQ(managed.buffer(), "xb");
}

TEST(String, YieldsATerminatorThatNobodyCanSpoilWhenInvalid) {
    String text = invalidString();
    EXPECT_EQ(text[0], '\0');
    text[5] = 'x';
    EXPECT_EQ(text[5], '\0');
    const String other = invalidString();
    EXPECT_EQ(other[7], '\0');
}

TEST(String, RefusesToGrowBeyondItsBound) {
    auto rc = String::NO_ERROR;
    String text(3u, rc);
    ASSERT_EQ(text.append("ab"), String::NO_ERROR);
    EXPECT_EQ(text.append("cd"), String::INSUFFICIENT_BOUND);
    EXPECT_STREQ(text.buffer(), "ab");
    EXPECT_EQ(text.append("c"), String::NO_ERROR);
    EXPECT_EQ(text.append('d'), String::INSUFFICIENT_BOUND);
    EXPECT_STREQ(text.buffer(), "abc");
}

TEST(String, ExtendsABufferInPlace) {
    std::array<char, 5> buffer = {'a', '\0', 'X', 'X', 'X'};
    auto rc = String::NO_ERROR;
    String text(buffer.data(), 1, 4, rc);
    EXPECT_EQ(text.append("bc"), String::NO_ERROR);
    EXPECT_EQ(buffer, (std::array<char, 5>{'a', 'b', 'c', '\0', 'X'}));
    EXPECT_EQ(text.append('d'), String::NO_ERROR);
    EXPECT_EQ(buffer, (std::array<char, 5>{'a', 'b', 'c', 'd', '\0'}));
    EXPECT_EQ(text.append('e'), String::INSUFFICIENT_BOUND);
    EXPECT_EQ(text.length(), 4u);
}

TEST(String, RefusesToAppendAnInvalidOne) {
    String text;
    EXPECT_EQ(text.append(invalidString()), String::PRECONDITION_VIOLATED);
    EXPECT_TRUE(text.is_valid());
}

TEST(String, DoublesWhenAppendedToItself) {
    String managed;
    managed.append("abcdefghijklmnopqrstuvwxyz");  // longer than a store without allocation
    EXPECT_EQ(managed.append(managed), String::NO_ERROR);
    EXPECT_STREQ(managed.buffer(), "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz");

    std::array<char, 7> buffer = {'a', 'b', 'c', '\0', 'X', 'X', 'X'};
    auto rc = String::NO_ERROR;
    String view(buffer.data(), 3, 6, rc);
    EXPECT_EQ(view.append(view), String::NO_ERROR);
    EXPECT_STREQ(buffer.data(), "abcabc");
}

TEST(String, HoldsZeroBytes) {
    String text;
    text.append("a");
    text.append('\0');
    text.append("b");
    EXPECT_EQ(toStdString(text), std::string("a\0b", 3));
    EXPECT_EQ(toStdString(String(text)), std::string("a\0b", 3));
}

TEST(String, ConvertsToAStdStringAlsoWhenInvalid) {
    EXPECT_EQ(toStdString("Rovan"), "Rovan");
    EXPECT_EQ(toStdString(invalidString()), "");
}

}  // namespace

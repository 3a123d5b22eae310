// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/DataWords.h"

#include <gtest/gtest.h>

TEST(DataWords, ReadsFieldsByTheirBits) {
    const uint16_t words[] = {0xA5C3, 0x8001};
    const DataWords data(words);

    EXPECT_EQ(data.word(0), 0xA5C3);
    EXPECT_EQ(data.signedWord(1), -32767);
    EXPECT_EQ(data.bits(0, 15, 0), 0xA5C3u);
    EXPECT_EQ(data.bits(0, 11, 4), 0x5Cu);
    EXPECT_TRUE(data.bit(1, 15));
    EXPECT_FALSE(data.bit(1, 14));
}

TEST(DataWords, ReadsLittleEndianNumbersAtAnyWord) {
    // 0x80000001 as a signed number; 1.0f is 3F800000; 1.0 is 3FF0000000000000.
    const uint16_t words[] = {0x0000, 0x0001, 0x8000, 0x0000, 0x3F80, 0, 0, 0, 0x3FF0};
    const DataWords data(words);

    EXPECT_EQ(data.littleEndian<int32_t>(1), -2147483647);
    EXPECT_EQ(data.littleEndian<float>(3), 1.0f);
    EXPECT_EQ(data.littleEndian<double>(5), 1.0);
}

TEST(FieldWriter, LeavesTheBitsRoundAFieldAsTheyAre) {
    uint16_t words[] = {0xFFFF, 0x0000};
    const FieldWriter field(words);

    field.bits(0, 11, 4, 0x5Au);
    field.bits(1, 11, 4, 0xFFFFu);

    EXPECT_EQ(words[0], 0xF5AF);
    EXPECT_EQ(words[1], 0x0FF0);
}

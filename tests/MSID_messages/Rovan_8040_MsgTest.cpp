// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_8040_Msg.h"

#include "ExpectSameField.h"
#include "Frames.h"
#include "GoldenFrames.h"

namespace {

void expectSame(const unpacked_msg8040_t& unpacked, const unpacked_msg8040_t& expected) {
    EXPECT_SAME_FIELD(time);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_SAME_FIELD(keys[i].word);
    }
    EXPECT_SAME_ARRAY(words7to8);
    EXPECT_SAME_FIELD(furtherKeys.word);
    EXPECT_SAME_ARRAY(words10to24);
}

}  // namespace

TEST(Rovan_8040_Msg, UnpacksTheGoldenFrames) {
    for (const auto& sample : Golden::k8040) {
        Rovan_8040_Msg message;
        ASSERT_TRUE(message.ok_set_8040_gpsip(sample.frame.data(), Frames::size(sample.frame)));
        message.unpack_8040();
        expectSame(message.unpacked(), sample.expected);

        packed_msg8040_t packed;
        std::memcpy(packed.words, message.data(), sizeof packed.words);
        unpacked_msg8040_t unpacked{};
        Rovan_8040_Msg::unpack_8040(packed, unpacked);
        expectSame(unpacked, sample.expected);
    }
}

// Bits of a key word, one field filled at a time and then its complement.
TEST(Rovan_8040_Msg, ReadsTheFieldsOfAKeyWord) {
    EXPECT_TRUE(key_word_8040_t{0x0001}.status());
    EXPECT_FALSE(key_word_8040_t{0xFFFE}.status());
    EXPECT_TRUE(key_word_8040_t{0x0002}.loadStatus());
    EXPECT_FALSE(key_word_8040_t{0xFFFD}.loadStatus());
    EXPECT_EQ(key_word_8040_t{0x0FFC}.remainingTime(), 1023u);
    EXPECT_EQ(key_word_8040_t{0xF003}.remainingTime(), 0u);
    EXPECT_EQ(key_word_8040_t{0x0004}.remainingTime(), 1u);
}

TEST(Rovan_8040_Msg, SwapsTheMiddleZeroizationValues) {
    EXPECT_EQ(key_word_8040_t{0xCFFF}.zeroizationStatus(), 0u);
    EXPECT_EQ(key_word_8040_t{0x1000}.zeroizationStatus(), 2u);
    EXPECT_EQ(key_word_8040_t{0x2000}.zeroizationStatus(), 1u);
    EXPECT_EQ(key_word_8040_t{0x3000}.zeroizationStatus(), 3u);
}

TEST(Rovan_8040_Msg, ReadsTheFieldsOfTheFurtherKeys) {
    EXPECT_EQ(further_keys_8040_t{0x0003}.selector(), 3u);
    EXPECT_EQ(further_keys_8040_t{0xFFFC}.selector(), 0u);
    for (unsigned selector = 0; selector < 4; ++selector) {
        const further_keys_8040_t keys{static_cast<uint16_t>(selector)};
        EXPECT_EQ(keys.firstPresent(), selector == 1);
        EXPECT_EQ(keys.secondPresent(), selector == 3);
    }
    for (unsigned key = 0; key < 4; ++key) {
        const auto mask = static_cast<uint16_t>(0x0004 << key);
        EXPECT_TRUE(further_keys_8040_t{mask}.loadStatus(key)) << key;
        EXPECT_FALSE(further_keys_8040_t{static_cast<uint16_t>(~mask)}.loadStatus(key)) << key;
    }
    EXPECT_EQ(further_keys_8040_t{0x3FC0}.firstRemainingTime(), 255u);
    EXPECT_EQ(further_keys_8040_t{0xC03F}.firstRemainingTime(), 0u);
    EXPECT_EQ(further_keys_8040_t{0xC000}.secondRemainingTime(), 3u);
    EXPECT_EQ(further_keys_8040_t{0x3FFF}.secondRemainingTime(), 0u);
}

TEST(Rovan_8040_Msg, PacksNothing) {
    Rovan_8040_Msg message;
    message.unpacked().keys[0].word = 5;
    packed_msg8040_t packed{};

    message.pack_8040();
    Rovan_8040_Msg::pack_8040(message.unpacked(), packed);

    EXPECT_EQ(message.data()[4], 0);
    EXPECT_EQ(packed.words[4], 0);
}

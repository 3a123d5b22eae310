// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace {

using Words = std::map<unsigned, unsigned>;

/// The data words of a message that are not zero, by word number.
Words dataOf(const GssipMessagePtr& message) {
    Words words;
    for (unsigned i = 0; i < message->wdcnt(); ++i) {
        if (message->data()[i] != 0) {
            words[i] = message->data()[i];
        }
    }
    return words;
}

}  // namespace

TEST(ReceiverMessages, HeaderOnlyRequestsDifferByTheirFlags) {
    EXPECT_EQ(make_disconnect(0)->flagWord(), 0x9020);
    EXPECT_EQ(make_connect(8504)->flagWord(), 0x9040);
    EXPECT_EQ(make_request(9225)->flagWord(), 0x9010);
    EXPECT_EQ(make_disconnect(0)->msgId(), 0);
    EXPECT_EQ(make_connect(8504)->msgId(), 8504);
    EXPECT_EQ(make_request(9225)->wdcnt(), 0u);
}

TEST(ReceiverMessages, ThePulseSetupNamesPulseAndPort) {
    EXPECT_EQ(make_pps_setup(2, 15)->msgId(), 5331);
    EXPECT_EQ(dataOf(make_pps_setup(2, 15)), (Words{{4, 0x0200}, {6, 15}, {31, 2}}));
    EXPECT_EQ(dataOf(make_pps_setup(2, 0)), (Words{{4, 0x0200}, {31, 2}}));
}

TEST(ReceiverMessages, TheReceiverSetupNamesTheCodeType) {
    EXPECT_EQ(make_receiver_setup(1)->msgId(), 5313);
    EXPECT_EQ(dataOf(make_receiver_setup(1)), (Words{{4, 0x0001}, {43, 11}}));
}

TEST(ReceiverMessages, ModeCommandsAreSimpleOrExtended) {
    EXPECT_EQ(make_simple_command(5)->msgId(), 5001);
    EXPECT_EQ(dataOf(make_simple_command(5)), (Words{{4, 5}}));
    EXPECT_EQ(dataOf(make_simple_command(0)), (Words{}));
    EXPECT_EQ(dataOf(make_mist_command(3)), (Words{{4, 64}, {5, 14371}, {6, 3}}));
}

TEST(ReceiverMessages, TheIpZeroizeCommandSelectsIpZeroizeAlone) {
    EXPECT_EQ(make_ip_zeroize_command()->msgId(), 5402);
    EXPECT_EQ(dataOf(make_ip_zeroize_command()), (Words{{4, 0x0001}, {5, 0x0020}}));
}

TEST(ReceiverMessages, AMessageIdIsDecimalAndKeepsItsLow16Bits) {
    EXPECT_EQ(toMsgId("8504"), 8504);
    EXPECT_EQ(toMsgId("abc"), 0);
    EXPECT_EQ(toMsgId(""), 0);
    EXPECT_EQ(toMsgId("0x10"), 0);
    EXPECT_EQ(toMsgId(" 12x"), 12);
    EXPECT_EQ(toMsgId("-1"), 65535);
    EXPECT_EQ(toMsgId("65536"), 0);
}

TEST(ReceiverMessages, AListSkipsWhatNamesNoMessage) {
    std::vector<uint16_t> ids;
    forEachMsgId("8504,abc,,0,253,", [&](uint16_t id) { ids.push_back(id); });
    EXPECT_THAT(ids, testing::ElementsAre(8504, 253));
    forEachMsgId("", [](uint16_t) { ADD_FAILURE() << "an empty list has no entry"; });
}

TEST(ReceiverMessages, TheLastWordIsWhatFollowsTheLastWhiteSpace) {
    EXPECT_EQ(getLastWord("GPS FCM_ID: 12345"), "12345");
    EXPECT_EQ(getLastWord("one\ttwo\n three  "), "three");
    EXPECT_EQ(getLastWord("   "), "");
    EXPECT_EQ(getLastWord(""), "");
}

// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanIoProtocol.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr uint16_t kCommand = 5001;  // 31 data words
constexpr uint16_t kCommandWords = 31;

// How a sequence ended. The outputs begin as values that no sequence can give by chance.
struct Outcome {
    bool ended = false;
    bool nak = true;
    bool rejected = true;
};

Outcome waitFor(RovanIoProtocol& protocol, bool initial = true) {
    Outcome outcome{false, initial, initial};
    outcome.ended = protocol.wait(outcome.nak, outcome.rejected);
    return outcome;
}

// A fast line, so that a test that waits for the time limit waits for 0.2 s.
class RovanIoProtocolTest : public testing::Test {
  protected:
    void start(uint16_t flagWord) {
        m_protocol.startNewSequence(kCommand, kCommandWords, flagWord);
    }
    void answer(uint16_t flagWord) { m_protocol.newProtocolMessage(kCommand, flagWord); }

    RovanIoProtocol m_protocol{921600, 0};
};

TEST(RovanIoProtocol, TheTimeOnTheLineIncludesTenCharacters) {
    // 20 characters of 10 bits at 115200 are 1736.1 us; the result is cut off and 1 is added.
    EXPECT_EQ(RovanIoProtocol(115200, 0).timeToSendMessageByteCount(10), 1737u);
    EXPECT_EQ(RovanIoProtocol(115200, 0).timeToSendMessageByteCount(412), 36632u);
    EXPECT_EQ(RovanIoProtocol(9600, 1).timeToSendMessageByteCount(74), 96251u);
    // A time that is a whole number of microseconds is 1 longer too: 20 x 10 bits at 10000.
    EXPECT_EQ(RovanIoProtocol(10000, 0).timeToSendMessageByteCount(10), 20001u);
}

TEST(RovanIoProtocol, ParityLengthensEachCharacterByABit) {
    EXPECT_EQ(RovanIoProtocol(10000, 2).timeToSendMessageByteCount(10), 22001u);
    EXPECT_EQ(RovanIoProtocol(10000, 7).timeToSendMessageByteCount(10), 22001u);
}

TEST(RovanIoProtocol, TheTimeOfAFrameFollowsItsWordCount) {
    const RovanIoProtocol protocol(10000, 0);
    EXPECT_EQ(protocol.timeToSendDataWordCount(0), 20001u);     // 10 bytes
    EXPECT_EQ(protocol.timeToSendDataWordCount(1), 24001u);     // 14 bytes
    EXPECT_EQ(protocol.timeToSendDataWordCount(200), 422001u);  // 412 bytes
}

TEST(RovanIoProtocol, LengthsAreCutOffAt16Bits) {
    const RovanIoProtocol protocol(10000, 0);
    EXPECT_EQ(protocol.timeToSendMessageByteCount(65535), 9001u);  // 65545 is 9
    EXPECT_EQ(protocol.timeToSendDataWordCount(65535), 20001u);    // 131082 is 10
    EXPECT_EQ(protocol.timeToSendDataWordCount(32762), 10001u);    // 65536 is 0
}

TEST(RovanIoProtocol, WithoutASpeedNothingTakesTime) {
    EXPECT_EQ(RovanIoProtocol(0, 0).timeToSendMessageByteCount(412), 0u);
    EXPECT_EQ(RovanIoProtocol(-9600, 0).timeToSendDataWordCount(200), 0u);
}

TEST(RovanIoProtocol, TheReceiverSTimeToAnswerFollowsTheSpeed) {
    const struct {
        int64_t baud;
        uint64_t ack;
        uint64_t reply;
    } rows[] = {
        {300, 400000, 1200000},   {600, 360000, 1080000},   {1200, 320000, 960000},
        {2400, 280000, 840000},   {4800, 240000, 720000},   {9600, 200000, 600000},
        {19200, 160000, 480000},  {38400, 120000, 360000},  {76800, 100000, 120000},
        {115200, 100000, 120000}, {230400, 100000, 120000}, {460800, 100000, 120000},
        {921600, 100000, 120000}, {57600, 200000, 600000},  {301, 200000, 600000},
        {0, 200000, 600000},
    };
    for (const auto& row : rows) {
        RovanIoProtocol protocol(row.baud, 0);
        const uint64_t twoHeaders = 2 * protocol.timeToSendDataWordCount(0);
        protocol.startNewSequence(kCommand, 0, 0x9010);
        EXPECT_EQ(protocol.timeout() - twoHeaders, row.ack + row.reply) << row.baud;
        protocol.startNewSequence(kCommand, 0, 0x8010);
        EXPECT_EQ(protocol.timeout() - twoHeaders, row.reply) << row.baud;
        protocol.startNewSequence(kCommand, 0, 0x9200);
        EXPECT_EQ(protocol.timeout() - twoHeaders, row.ack) << row.baud;
    }
}

TEST(RovanIoProtocol, TheTimeLimitOfACommandIsTheSumOfItsParts) {
    RovanIoProtocol protocol(115200, 0);
    protocol.startNewSequence(kCommand, kCommandWords, 0x9000);
    EXPECT_EQ(protocol.timeout(), 1737u + 7292u + 100000u + 120000u);
}

TEST_F(RovanIoProtocolTest, EndsWhenAckAndReplyHaveCome) {
    start(0x9000);
    answer(0x8800);
    answer(0x8200);
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_TRUE(outcome.ended);
    EXPECT_FALSE(outcome.nak);
    EXPECT_FALSE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, EndsByOneFrameThatIsAckAndReply) {
    start(0x9000);
    answer(0x8A00);
    EXPECT_TRUE(waitFor(m_protocol).ended);
}

TEST_F(RovanIoProtocolTest, WaitsForAnAnswerOfAnotherThread) {
    start(0x9000);
    std::thread receiver([this] {
        answer(0x8800);
        answer(0x8300);
    });
    const Outcome outcome = waitFor(m_protocol);
    receiver.join();
    EXPECT_TRUE(outcome.ended);
    EXPECT_TRUE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, TheAckOfARequestAloneDoesNotEndTheWait) {
    m_protocol.startNewSequence(8504, 0, 0x9010);
    m_protocol.newProtocolMessage(8504, 0x8800);
    const auto before = steady_clock::now();
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_FALSE(outcome.ended);
    EXPECT_GE(steady_clock::now() - before, microseconds(m_protocol.timeout()));
}

TEST_F(RovanIoProtocolTest, AReplyBeforeTheAckDoesNotEndTheWait) {
    start(0x9000);
    answer(0x8200);
    EXPECT_FALSE(waitFor(m_protocol).ended);
    answer(0x8800);
    EXPECT_TRUE(waitFor(m_protocol).ended);
}

TEST_F(RovanIoProtocolTest, ATimeOutLeavesTheOutputsUntouched) {
    start(0x9000);
    Outcome outcome = waitFor(m_protocol, true);
    EXPECT_FALSE(outcome.ended);
    EXPECT_TRUE(outcome.nak);
    EXPECT_TRUE(outcome.rejected);
    outcome = waitFor(m_protocol, false);
    EXPECT_FALSE(outcome.nak);
    EXPECT_FALSE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, ANakEndsTheWaitAtOnce) {
    start(0x9000);
    answer(0x8400);
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_TRUE(outcome.ended);
    EXPECT_TRUE(outcome.nak);
    EXPECT_FALSE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, ANakEndsTheWaitAlsoWithTheReplyBit) {
    start(0x9000);
    answer(0x8700);
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_TRUE(outcome.ended);
    EXPECT_TRUE(outcome.nak);
    EXPECT_TRUE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, AnAckAfterANakTakesItBack) {
    start(0x9000);
    answer(0x8400);
    answer(0x8800);
    EXPECT_FALSE(waitFor(m_protocol).nak);
}

TEST_F(RovanIoProtocolTest, TheLastReplyTellsWhetherItWasRejected) {
    start(0x9000);
    answer(0x8300);
    answer(0x8A00);
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_TRUE(outcome.ended);
    EXPECT_FALSE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, TheRejectBitMeansNothingWithoutTheReplyBit) {
    start(0x9000);
    answer(0x8900);
    answer(0x8200);
    EXPECT_FALSE(waitFor(m_protocol).rejected);
}

TEST_F(RovanIoProtocolTest, AnswersToAnotherMessageAreIgnored) {
    start(0x9000);
    m_protocol.newProtocolMessage(5313, 0x8A00);
    m_protocol.newProtocolMessage(5313, 0x8400);
    const Outcome outcome = waitFor(m_protocol, false);
    EXPECT_FALSE(outcome.ended);
    EXPECT_FALSE(outcome.nak);
}

TEST_F(RovanIoProtocolTest, Message2501WaitsForItsAckOnly) {
    m_protocol.startNewSequence(2501, 10, 0x9000);
    m_protocol.newProtocolMessage(2501, 0x8800);
    EXPECT_TRUE(waitFor(m_protocol).ended);
}

TEST_F(RovanIoProtocolTest, Message2501WithoutAnAckRequestEndsAtOnce) {
    m_protocol.startNewSequence(2501, 10, 0x8000);
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_TRUE(outcome.ended);
    EXPECT_FALSE(outcome.nak);
    EXPECT_FALSE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, AHeaderOnlyReplyWaitsForItsAckOnly) {
    m_protocol.startNewSequence(5001, 0, 0x9200);
    m_protocol.newProtocolMessage(5001, 0x8800);
    EXPECT_TRUE(waitFor(m_protocol).ended);
}

TEST_F(RovanIoProtocolTest, AReplyBitInAFrameWithDataWaitsForTheReply) {
    start(0x9200);
    answer(0x8800);
    EXPECT_FALSE(waitFor(m_protocol).ended);
}

TEST_F(RovanIoProtocolTest, WithoutAnAckRequestTheReplyAloneEndsTheWait) {
    start(0x8000);
    answer(0x8200);
    EXPECT_TRUE(waitFor(m_protocol).ended);
}

TEST_F(RovanIoProtocolTest, ANewSequenceForgetsWhatTheLastOneSaw) {
    start(0x9000);
    answer(0x8700);
    start(0x8000);
    answer(0x8200);
    const Outcome outcome = waitFor(m_protocol);
    EXPECT_FALSE(outcome.nak);
    EXPECT_FALSE(outcome.rejected);
}

TEST_F(RovanIoProtocolTest, AnAnswerBeforeTheSequenceDoesNotCount) {
    answer(0x8A00);
    start(0x9000);
    EXPECT_FALSE(waitFor(m_protocol).ended);
}

}  // namespace

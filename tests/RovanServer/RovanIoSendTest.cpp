// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <stdexcept>

#include "MSID_messages/RovanCommandMsg.h"
#include "tests/RovanServer/RovanIoFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using CommandResponse = aspn2_msgs::idl::CommandResponse;

const Frames::Bytes kRequest8504 = Frames::frame(8504, {}, 0x9010);

class RovanIoSendTest : public RovanIoFixture {
  protected:
    /// Sends a request for 8504 and returns its outcome and what was printed meanwhile.
    struct Result {
        std::string outcome;
        std::string printed;
    };
    Result exchange() {
        CaptureStdout();
        RovanIoOutcome outcome;
        m_link->messageQueue.emplace_back(request(8504), outcome.callback());
        const std::vector<std::string> texts = outcome.texts();
        return {texts.empty() ? "" : texts[0], GetCapturedStdout()};
    }
    /// Answers the first attempt with some frames' flags and the second with others.
    void answerAttempts(std::vector<uint16_t> first, std::vector<uint16_t> second) {
        m_line->onFrame([this, first, second](uint16_t msgId, uint16_t flags) {
            if ((flags & 0x1000) != 0 && msgId != 5331) {
                for (const uint16_t answer : m_attempt++ == 0 ? first : second) {
                    m_line->send(Frames::frame(msgId, {}, answer));
                }
            }
        });
    }
    std::atomic<int> m_attempt{0};
};

TEST_F(RovanIoSendTest, AMessageThatIsAcknowledgedAndAcceptedGoesOutOnce) {
    answerAttempts({0x8800, 0x8200}, {});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 success");
    EXPECT_EQ(result.printed, "");
    EXPECT_THAT(sentFrames(), ElementsAre(kRequest8504));
}

TEST_F(RovanIoSendTest, AMessageWithoutAnswerGoesOutOnceMoreUnchanged) {
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure");
    EXPECT_EQ(result.printed,
              "Rovan: protocolThreadFunction() GSSIP PROTOCOL TIMEOUT (8504) (1)\n");
    EXPECT_THAT(sentFrames(), ElementsAre(kRequest8504, kRequest8504));
    EXPECT_EQ(m_link->counters().protocolTimeouts, 1u);
}

TEST_F(RovanIoSendTest, AnAckWithoutAReplyIsATimeOut) {
    answerAttempts({0x8800}, {0x8800, 0x8200});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 success");
    EXPECT_EQ(result.printed,
              "Rovan: protocolThreadFunction() GSSIP PROTOCOL TIMEOUT (8504) (1)\n");
    EXPECT_THAT(sentFrames(), SizeIs(2));
}

TEST_F(RovanIoSendTest, AReplyBeforeTheAckIsTaken) {
    answerAttempts({0x8200, 0x8800}, {});
    runLink();
    EXPECT_EQ(exchange().outcome, "8504 success");
    EXPECT_THAT(sentFrames(), SizeIs(1));
}

TEST_F(RovanIoSendTest, ANakIsReportedAndTheMessageGoesOutOnceMore) {
    answerAttempts({0x8400}, {0x8A00});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 success");
    EXPECT_EQ(result.printed,
              "Rovan: protocolThreadFunction() GSSIP TX CHECKSUM ERROR (8504) (1)\n");
    EXPECT_THAT(sentFrames(), ElementsAre(kRequest8504, kRequest8504));
    EXPECT_EQ(m_link->counters().txChecksumErrors, 1u);
}

TEST_F(RovanIoSendTest, ASecondNakIsNotReported) {
    answerAttempts({0x8400}, {0x8400});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure nak");
    EXPECT_EQ(result.printed,
              "Rovan: protocolThreadFunction() GSSIP TX CHECKSUM ERROR (8504) (1)\n");
    EXPECT_THAT(sentFrames(), SizeIs(2));
}

TEST_F(RovanIoSendTest, TheNakOfTheFirstAttemptStaysWhenTheSecondTimesOut) {
    answerAttempts({0x8400}, {});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure nak");
    EXPECT_EQ(m_link->counters().protocolTimeouts, 0u);
}

TEST_F(RovanIoSendTest, ARejectedMessageIsReportedAndNotSentAgain) {
    answerAttempts({0x8800, 0x8300}, {});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure rejected");
    EXPECT_EQ(result.printed, "Rovan: protocolThreadFunction() GSSIP MSG REJECTED (8504) (1)\n");
    EXPECT_THAT(sentFrames(), SizeIs(1));
    EXPECT_EQ(m_link->counters().rejectedMessages, 1u);
}

TEST_F(RovanIoSendTest, ARejectOfTheSecondAttemptIsReportedToo) {
    answerAttempts({}, {0x8B00});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure rejected");
    EXPECT_EQ(result.printed,
              "Rovan: protocolThreadFunction() GSSIP PROTOCOL TIMEOUT (8504) (1)\n"
              "Rovan: protocolThreadFunction() GSSIP MSG REJECTED (8504) (1)\n");
}

TEST_F(RovanIoSendTest, ANakGoesBeforeARejectOfTheSameFrame) {
    answerAttempts({0x8700}, {});
    runLink();
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure nak rejected");
    EXPECT_EQ(result.printed,
              "Rovan: protocolThreadFunction() GSSIP TX CHECKSUM ERROR (8504) (1)\n"
              "Rovan: protocolThreadFunction() GSSIP MSG REJECTED (8504) (1)\n");
    EXPECT_THAT(sentFrames(), SizeIs(2));
}

TEST_F(RovanIoSendTest, TheReportsCountOn) {
    answerAttempts({0x8B00}, {0x8B00});
    runLink();
    EXPECT_THAT(exchange().printed, HasSubstr("GSSIP MSG REJECTED (8504) (1)"));
    EXPECT_THAT(exchange().printed, HasSubstr("GSSIP MSG REJECTED (8504) (2)"));
}

TEST_F(RovanIoSendTest, OnlyOneMessageIsInFlightInTheOrderOfTheQueue) {
    m_line->answerWith(0x8A00);
    runLink();
    RovanIoOutcome outcome;
    // Each answer is held back until the test has seen that nothing else went out meanwhile.
    std::atomic<int> inFlight{0};
    std::atomic<int> most{0};
    m_line->onFrame([&](uint16_t msgId, uint16_t) {
        most = std::max<int>(most, ++inFlight);
        Utility::sleepFor(std::chrono::milliseconds(5));
        --inFlight;
        m_line->send(Frames::frame(msgId, {}, 0x8A00));
    });
    std::vector<std::string> expected;
    for (uint16_t msgId = 100; msgId < 120; ++msgId) {
        m_link->messageQueue.emplace_back(request(msgId), outcome.callback());
        expected.push_back(std::to_string(msgId) + " success");
    }
    EXPECT_EQ(outcome.texts(20), expected);
    m_link->stop();
    EXPECT_EQ(most, 1);
    const std::vector<Bytes> frames = sentFrames();
    ASSERT_THAT(frames, SizeIs(20));
    for (size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(frames[i][2], 100 + i);
    }
}

TEST_F(RovanIoSendTest, TheNextMessageWaitsForTheAnswerToTheLast) {
    runLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(1), outcome.callback());
    m_link->messageQueue.emplace_back(request(2), outcome.callback());
    EXPECT_THAT(outcome.texts(2), ElementsAre("1 failure", "2 failure"));
    EXPECT_THAT(m_line->journal("write"),
                ElementsAre("write 5331 9000", "write 1 9010", "write 1 9010", "write 2 9010",
                            "write 2 9010"));
}

TEST_F(RovanIoSendTest, TheCommandCallbackGetsTheResponseBackBeforeTheAckCallback) {
    m_line->answerWith(0x8A00);
    runLink();
    std::mutex mutex;
    std::vector<std::string> calls;
    RovanIoOutcome outcome;
    CommandResponse response;
    response.command_response("ROVAN_SET_STANDBY");
    RovanIo::MessageQueueItem_t item(
        std::make_shared<RovanCommandMsg>(),
        [&](const CommandResponse& given, bool success) {
            const std::lock_guard<std::mutex> lock(mutex);
            calls.push_back(given.command_response() + (success ? " success" : " failure"));
        },
        response);
    item.ackCallback = [&, tell = outcome.callback()](unsigned short msgId, bool success, bool nak,
                                                      bool rejected) {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            calls.emplace_back("ack");
        }
        tell(msgId, success, nak, rejected);
    };
    m_link->messageQueue.push_back(std::move(item));
    EXPECT_THAT(outcome.texts(), ElementsAre("5001 success"));
    m_link->stop();
    EXPECT_THAT(calls, ElementsAre("ROVAN_SET_STANDBY success", "ack"));
}

TEST_F(RovanIoSendTest, AMessageNeedsNoCallback) {
    m_line->answerWith(0x8A00);
    runLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(1));
    m_link->messageQueue.emplace_back(request(2), outcome.callback());
    EXPECT_THAT(outcome.texts(), ElementsAre("2 success"));
    EXPECT_THAT(sentFrames(), SizeIs(2));
}

TEST_F(RovanIoSendTest, EachFrameIsGivenItsTimeOnTheLine) {
    m_line->answerWith(0x8A00);
    runLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(8504), outcome.callback());
    m_link->messageQueue.emplace_back(std::make_shared<RovanCommandMsg>(), outcome.callback());
    outcome.texts(2);
    m_link->stop();
    std::vector<std::string> journal = m_line->journal();
    journal.erase(journal.begin(), std::find(journal.begin(), journal.end(), "write 8504 9010"));
    // 20 and 84 characters of 10 bits at 921600: 217.01 and 911.46 us, cut off, and 1 more each.
    ASSERT_GE(journal.size(), 4u);
    EXPECT_EQ(journal[1], "sleep 218000");
    EXPECT_EQ(journal[2], "write 5001 9000");
    EXPECT_EQ(journal[3], "sleep 912000");
}

TEST_F(RovanIoSendTest, AFailedWriteIsReportedAndFoundOutByTimeOut) {
    runLink();
    m_line->failWrites(RC::DATA_OVERFLOW);
    const Result result = exchange();
    EXPECT_EQ(result.outcome, "8504 failure");
    EXPECT_EQ(result.printed,
              "Rovan: WriteBytes() GSSIP WRITE ERROR (1), msgid = 8504, wdcnt = 0, flagWord = "
              "0x9010\n"
              "Rovan: protocolThreadFunction() GSSIP PROTOCOL TIMEOUT (8504) (1)\n"
              "Rovan: WriteBytes() GSSIP WRITE ERROR (2), msgid = 8504, wdcnt = 0, flagWord = "
              "0x9010\n");
    EXPECT_EQ(m_link->counters().writeErrors, 2u);
}

TEST_F(RovanIoSendTest, WriteBytesTellsWhatWasWritten) {
    makeLink();
    m_link->configure(false, kBaud, 0);
    const Bytes frame = Frames::frame(7, {1, 2, 3}, 0x0012);
    EXPECT_EQ(m_link->WriteBytes(frame.data(), 18), 18);
    EXPECT_EQ(m_line->written().back(), frame);
    m_line->failWrites(RC::NO_ACTION);
    CaptureStdout();
    EXPECT_EQ(m_link->WriteBytes(frame.data(), 18), -1);
    EXPECT_EQ(
        GetCapturedStdout(),
        "Rovan: WriteBytes() GSSIP WRITE ERROR (1), msgid = 7, wdcnt = 3, flagWord = 0x0012\n");
}

TEST_F(RovanIoSendTest, ShowsSentFramesInDebug) {
    m_line->answerWith(0x8A00);
    runLink(true);
    // 81FF + 2138 + 0000 + 9010 = 13347
    EXPECT_THAT(exchange().printed,
                HasSubstr("T:Header:  81FF 2138 0000 9010 CCB9; msgId: 8504 Wdcnt:    0\n"));
}

TEST_F(RovanIoSendTest, TheMessageQueueTakes64AndDropsTheRest) {
    makeLink();
    for (int i = 0; i < 64; ++i) {
        ASSERT_TRUE(m_link->messageQueue.emplace_back(request(1)));
    }
    EXPECT_FALSE(m_link->messageQueue.emplace_back(request(1)));
}

TEST_F(RovanIoSendTest, AnExceptionOfACallbackIsReportedAndTheNextMessageIsSent) {
    m_line->answerWith(0x8A00);
    runLink();
    CaptureStdout();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(1), [](unsigned short, bool, bool, bool) {
        throw std::runtime_error("no reader");
    });
    m_link->messageQueue.emplace_back(request(2),
                                      [](unsigned short, bool, bool, bool) { throw 42; });
    m_link->messageQueue.emplace_back(request(3), outcome.callback());
    EXPECT_THAT(outcome.texts(), ElementsAre("3 success"));
    EXPECT_EQ(GetCapturedStdout(),
              "Rovan: protocolThreadFunction() EXCEPTION: no reader\n"
              "Rovan: protocolThreadFunction() EXCEPTION: <unknown>\n");
}

TEST_F(RovanIoSendTest, AnItemWithoutAMessageIsReported) {
    m_line->answerWith(0x8A00);
    runLink();
    CaptureStdout();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(RovanIo::MessageQueueItem_t());
    m_link->messageQueue.emplace_back(std::make_shared<GssipMessage>());
    m_link->messageQueue.emplace_back(request(3), outcome.callback());
    EXPECT_THAT(outcome.texts(), ElementsAre("3 success"));
    EXPECT_EQ(GetCapturedStdout(),
              "Rovan: protocolThreadFunction() EXCEPTION: no link or no frame to send\n"
              "Rovan: protocolThreadFunction() EXCEPTION: no link or no frame to send\n");
}

TEST_F(RovanIoSendTest, AnExceptionOfTheLineIsReportedAndTheMessageSentAgain) {
    answerAttempts({0x8A00}, {});
    runLink();
    CaptureStdout();
    m_line->throwOnWrite([] { throw std::runtime_error("wire cut"); });
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(8504), outcome.callback());
    EXPECT_THAT(outcome.texts(), ElementsAre("8504 success"));
    EXPECT_EQ(GetCapturedStdout(),
              "Rovan: writeThreadFunction() EXCEPTION: wire cut\n"
              "Rovan: protocolThreadFunction() GSSIP PROTOCOL TIMEOUT (8504) (1)\n");
    EXPECT_THAT(sentFrames(), ElementsAre(kRequest8504));
}

}  // namespace

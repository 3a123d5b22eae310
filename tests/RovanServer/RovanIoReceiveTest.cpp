// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "tests/RovanServer/RovanIoFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

class RovanIoReceiveTest : public RovanIoFixture {
  protected:
    static constexpr const char* kUartStamp = "TimeStamp_Interface+520";   // 512 + 8 x UART 1
    static constexpr const char* kPulseStamp = "TimeStamp_Interface+152";  // 136 + 8 x pulse 2

    void setStamps(uint64_t uart, uint64_t pulse) {
        m_devmem->registers[kUartStamp] = uart;
        m_devmem->registers[kPulseStamp] = pulse;
    }
    void sendAndWait(const Bytes& frame) {
        const size_t before = samples().size();
        m_line->send(frame);
        ASSERT_TRUE(waitForSamples(before + 1));
    }
};

TEST_F(RovanIoReceiveTest, PublishesAFrameWhole) {
    runLink();
    const Bytes frame = Frames::frame(8504, {0x0102, 0x0304, 0x0506});
    sendAndWait(frame);
    const GSSIP sample = samples()[0];
    EXPECT_EQ(sample.data(), frame);
    EXPECT_EQ(sample.num_bytes(), 18);
    EXPECT_EQ(sample.header().device_id(), 0x02272E00);  // system 2, server 39, code 46, sub id 0
    EXPECT_THAT(sentFrames(), IsEmpty());
    EXPECT_EQ(m_link->counters().rxMessages, 1u);
}

TEST_F(RovanIoReceiveTest, NumbersTheSamplesFromZero) {
    runLink();
    for (const uint16_t word : std::initializer_list<uint16_t>{10, 11, 12}) {
        m_line->send(Frames::frame(8504, {word}));
    }
    ASSERT_TRUE(waitForSamples(3));
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(samples()[i].header().seq_num(), static_cast<int64_t>(i));
        EXPECT_EQ(samples()[i].data()[10], 10 + i);
    }
}

// 4608 ticks are 78125 ns, 58982400 a second; 8 ns are taken off each.
TEST_F(RovanIoReceiveTest, EachFrameHasTheStampsOfItsOwnRegisters) {
    runLink();
    const struct {
        uint64_t uart;
        uint64_t pulse;
        int64_t toaSec, tovSec;
        int32_t toaNsec, tovNsec;
    } rows[] = {
        {5u * 58982400u + 4608u, 5u * 58982400u, 5, 4, 78117, 999999992},
        {7u * 58982400u + 2u * 4608u, 6u * 58982400u + 3u * 4608u, 7, 6, 156242, 234367},
        {86400ull * 58982400u + 29491200u, 86400ull * 58982400u + 4608u, 86400, 86400, 499999992,
         78117},
    };
    for (const auto& row : rows) {
        setStamps(row.uart, row.pulse);
        sendAndWait(Frames::frame(8504, {1, 2}));
        const auto header = samples().back().header();
        EXPECT_EQ(header.timestamp_arrival().sec(), row.toaSec);
        EXPECT_EQ(header.timestamp_arrival().nsec(), row.toaNsec);
        EXPECT_EQ(header.timestamp_valid().sec(), row.tovSec);
        EXPECT_EQ(header.timestamp_valid().nsec(), row.tovNsec);
    }
}

TEST_F(RovanIoReceiveTest, PublishesAFrameThatComesInManyReads) {
    runLink();
    const Bytes frame = Frames::frame(9225, std::vector<uint16_t>(416, 0x1234));
    for (size_t at = 0; at < frame.size(); at += 100) {
        m_line->send(
            Bytes(frame.begin() + static_cast<std::ptrdiff_t>(at),
                  frame.begin() + static_cast<std::ptrdiff_t>(std::min(at + 100, frame.size()))));
        ASSERT_TRUE(m_line->waitUntilAllIsRead());
    }
    ASSERT_TRUE(waitForSamples(1));
    EXPECT_EQ(samples()[0].data(), frame);
}

TEST_F(RovanIoReceiveTest, AcknowledgesAFrameThatAsksForItAndPublishesIt) {
    runLink();
    sendAndWait(Frames::frame(5044, {1, 2}, 0x9000));
    ASSERT_TRUE(waitForSentFrames(1));
    EXPECT_THAT(sentFrames(), ElementsAre(Frames::frame(5044, {}, 0x8800)));
}

TEST_F(RovanIoReceiveTest, AcknowledgesEvenAnAcknowledgementThatAsksForIt) {
    runLink();
    m_line->send(Frames::frame(5044, {}, 0x9800));
    ASSERT_TRUE(waitForSentFrames(1));
    EXPECT_THAT(sentFrames(), ElementsAre(Frames::frame(5044, {}, 0x8800)));
    EXPECT_THAT(samples(), IsEmpty());
}

TEST_F(RovanIoReceiveTest, AFrameWithoutItsMarkerHoldsBackTheNextFrameFor100Ms) {
    m_line->answerWith(0x8A00);
    runLink();
    m_line->note("frame comes");
    sendAndWait(Frames::frame(8504, {1}, 0x0000));
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(9225), outcome.callback());
    EXPECT_THAT(outcome.texts(), ElementsAre("9225 success"));
    std::vector<std::string> journal = m_line->journal();
    journal.erase(journal.begin(), std::find(journal.begin(), journal.end(), "frame comes"));
    ASSERT_GE(journal.size(), 3u);
    EXPECT_EQ(journal[1], "sleep 100000000");
    EXPECT_EQ(journal[2], "write 9225 9010");
    EXPECT_THAT(sentFrames(), SizeIs(1));
}

TEST_F(RovanIoReceiveTest, AnAckGoesOutBeforeThePauseOfTheSameFrame) {
    runLink();
    m_line->note("frame comes");
    sendAndWait(Frames::frame(8504, {1}, 0x1000));
    ASSERT_TRUE(waitForSentFrames(1));
    ASSERT_TRUE(m_line->waitForEntry("write 8504 8800"));
    m_link->stop();
    std::vector<std::string> journal = m_line->journal();
    journal.erase(journal.begin(), std::find(journal.begin(), journal.end(), "frame comes"));
    ASSERT_GE(journal.size(), 2u);
    EXPECT_EQ(journal[1], "write 8504 8800");
}

TEST_F(RovanIoReceiveTest, AnAnswerToAnotherMessageIsConsumed) {
    runLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(8504), outcome.callback());
    ASSERT_TRUE(waitForSentFrames(1));
    m_line->send(Frames::frame(9225, {}, 0x8A00));
    EXPECT_THAT(outcome.texts(), ElementsAre("8504 failure"));
    EXPECT_THAT(samples(), IsEmpty());
}

TEST_F(RovanIoReceiveTest, HeaderOnlyAnswersAreNeverPublished) {
    runLink();
    for (const uint16_t flags :
         std::initializer_list<uint16_t>{0x8800, 0x8400, 0x8200, 0x8300, 0x8E00}) {
        m_line->send(Frames::frame(8504, {}, flags));
    }
    sendAndWait(Frames::frame(9225, {1}));
    EXPECT_EQ(samples()[0].data(), Frames::frame(9225, {1}));
    EXPECT_EQ(m_link->counters().rxMessages, 6u);
}

TEST_F(RovanIoReceiveTest, AHeaderOnlyFrameThatIsNoAnswerIsPublished) {
    runLink();
    const Bytes frame = Frames::frame(8504, {}, 0x8100);
    sendAndWait(frame);
    EXPECT_EQ(samples()[0].data(), frame);
    EXPECT_EQ(samples()[0].num_bytes(), 10);
}

TEST_F(RovanIoReceiveTest, AnAnswerWithDataEndsNoWaitAndIsPublished) {
    runLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(8504), outcome.callback());
    ASSERT_TRUE(waitForSentFrames(1));
    sendAndWait(Frames::frame(8504, {7}, 0x8A00));
    EXPECT_THAT(outcome.texts(), ElementsAre("8504 failure"));
    EXPECT_EQ(samples()[0].data(), Frames::frame(8504, {7}, 0x8A00));
}

TEST_F(RovanIoReceiveTest, CountsAndReportsChecksumErrors) {
    runLink();
    Bytes damaged = Frames::frame(8504, {1, 2, 3});
    damaged[11] ^= 0x40;
    CaptureStdout();
    m_line->send(damaged);
    m_line->send(damaged);
    sendAndWait(Frames::frame(9225, {1}));
    EXPECT_EQ(GetCapturedStdout(),
              "Rovan: readThreadFunction() GSSIP RX CHECKSUM ERROR (1)\n"
              "Rovan: readThreadFunction() GSSIP RX CHECKSUM ERROR (2)\n");
    EXPECT_EQ(m_link->counters().rxChecksumErrors, 2u);
    EXPECT_THAT(samples(), SizeIs(1));
}

TEST_F(RovanIoReceiveTest, ShowsReceivedFramesInDebug) {
    runLink(true);
    CaptureStdout();
    sendAndWait(Frames::frame(8504, {0xABCD}));
    // 81FF + 2138 + 0001 + 8000 = 12338; 10000 - ABCD = 5433
    EXPECT_THAT(GetCapturedStdout(),
                HasSubstr("R:Header:  81FF 2138 0001 8000 DCC8; msgId: 8504 Wdcnt:    1\n"
                          "Data:  0  ABCD \nDataCks:  5433\n"));
}

TEST_F(RovanIoReceiveTest, NamesAnUnexpectedReturnCodeInDebugAndReadsOn) {
    runLink(true);
    CaptureStdout();
    m_line->failReads({RC::NO_ACTION, RC::CONNECTION_CLOSED});
    sendAndWait(Frames::frame(8504, {1}));
    const std::string text = GetCapturedStdout();
    EXPECT_THAT(text, HasSubstr("RovanIo::readThreadFunction() received unexpected return code: "
                                "NO_ACTION\n"));
    EXPECT_THAT(text, HasSubstr("RovanIo::readThreadFunction() received unexpected return code: "
                                "CONNECTION_CLOSED\n"));
}

TEST_F(RovanIoReceiveTest, IsSilentAboutUnexpectedReturnCodesWithoutDebug) {
    runLink(false);
    CaptureStdout();
    m_line->failReads({RC::NO_ACTION, RC::CONNECTION_CLOSED, RC::NOT_AVAILABLE});
    sendAndWait(Frames::frame(8504, {1}));
    EXPECT_EQ(GetCapturedStdout(), "");
}

TEST_F(RovanIoReceiveTest, RestsWhenEmptyReadsComeBackAtOnce) {
    runLink();
    m_line->hangUp();
    const auto start = Clock::now();
    const size_t before = m_line->reads();
    ASSERT_TRUE(m_line->waitForReads(before + 4));
    EXPECT_GE(Clock::now() - start, 3 * 200ms);
}

TEST_F(RovanIoReceiveTest, ReportsAnExceptionAndReadsOn) {
    runLink();
    CaptureStdout();
    m_line->throwOnRead([] { throw std::runtime_error("line on fire"); });
    ASSERT_TRUE(m_line->waitForReads(m_line->reads() + 2));
    m_line->throwOnRead([] { throw 42; });
    ASSERT_TRUE(m_line->waitForReads(m_line->reads() + 2));
    sendAndWait(Frames::frame(8504, {1}));
    EXPECT_EQ(GetCapturedStdout(),
              "Rovan: readThreadFunction() EXCEPTION: line on fire\n"
              "Rovan: readThreadFunction() EXCEPTION: <unknown>\n");
}

TEST_F(RovanIoReceiveTest, AnExceptionOfTheCallbackLosesNoOtherFrame) {
    m_onSample = [](const GSSIP& sample) {
        if (sample.data()[2] == 1) {
            throw std::runtime_error("bad frame");
        }
    };
    runLink();
    CaptureStdout();
    Bytes frames;
    for (const uint16_t msgId :
         std::initializer_list<uint16_t>{1, 2, 1, 1, 3}) {  // all in one read
        frames = Frames::operator+(std::move(frames), Frames::frame(msgId, {7}));
    }
    m_line->send(frames);
    ASSERT_TRUE(waitForSamples(5));
    m_link->stop();
    std::vector<int> ids;
    for (const GSSIP& sample : samples()) {
        ids.push_back(sample.data()[2]);
    }
    EXPECT_THAT(ids, ElementsAre(1, 2, 1, 1, 3));
    EXPECT_EQ(GetCapturedStdout(),
              "Rovan: readThreadFunction() EXCEPTION: bad frame\n"
              "Rovan: readThreadFunction() EXCEPTION: bad frame\n"
              "Rovan: readThreadFunction() EXCEPTION: bad frame\n");
}

TEST_F(RovanIoReceiveTest, AFullWriteQueueLosesAcksAndNoFrames) {
    runLink();
    m_line->holdWrites(true);
    m_line->send(Frames::frame(1, {1}, 0x9000));
    ASSERT_TRUE(m_line->waitForEntry("write 1 8800"));
    for (int i = 0; i < 50; ++i) {
        m_line->send(Frames::frame(2, {1}, 0x9000));
    }
    ASSERT_TRUE(waitForSamples(51));
    m_line->holdWrites(false);
    ASSERT_TRUE(waitForSentFrames(33));  // the one that was held, and 32 of the queue
    m_link->stop();
    EXPECT_THAT(sentFrames(), SizeIs(33));
}

}  // namespace

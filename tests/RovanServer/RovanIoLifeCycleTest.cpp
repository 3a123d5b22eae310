// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "tests/ASPN/ReporterHelpers.h"
#include "tests/RovanServer/RovanIoFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

class RovanIoLifeCycleTest : public RovanIoFixture {
  protected:
    void makeConfiguredLink(bool debug = false) {
        makeLink(debug);
        m_link->configure(false, kBaud, 0);
    }
    std::string flushed() {
        CaptureStdout();
        m_link->flush();
        return GetCapturedStdout();
    }
};

TEST_F(RovanIoLifeCycleTest, StartSendsWhatWasQueuedBefore) {
    m_line->answerWith(0x8A00);
    makeLink();
    m_link->configure(false, kBaud, 0);
    RovanIoOutcome outcome;
    for (const uint16_t msgId : std::initializer_list<uint16_t>{8504, 9225, 5404}) {
        EXPECT_TRUE(m_link->messageQueue.emplace_back(request(msgId), outcome.callback()));
    }
    m_link->start();
    EXPECT_THAT(outcome.texts(3), ElementsAre("8504 success", "9225 success", "5404 success"));
}

TEST_F(RovanIoLifeCycleTest, StartDropsWhatTheLineHolds) {
    makeConfiguredLink();
    m_line->send(Frames::frame(8504, {1, 2, 3}));
    m_link->start();
    m_line->send(Frames::frame(9225, {4}));
    ASSERT_TRUE(waitForSamples(1));
    EXPECT_EQ(samples().size(), 1u);
    EXPECT_EQ(samples()[0].data(), Frames::frame(9225, {4}));
}

TEST_F(RovanIoLifeCycleTest, StartGivesTheReadThreadAHeadStart) {
    makeConfiguredLink();
    m_link->messageQueue.emplace_back(request(8504));
    m_link->start();
    ASSERT_TRUE(m_line->waitForEntry("write 8504 9010"));
    std::vector<std::string> journal = m_line->journal();
    journal.erase(journal.begin(), std::find(journal.begin(), journal.end(), "read 0"));
    ASSERT_GE(journal.size(), 3u);
    EXPECT_EQ(journal[0], "read 0");
    EXPECT_EQ(journal[1], "sleep 100000000");
    EXPECT_EQ(journal[2], "write 8504 9010");
}

TEST_F(RovanIoLifeCycleTest, StopForgetsWhatWasNotSentWithItsCallbacks) {
    runLink();
    RovanIoOutcome outcome;
    for (const uint16_t msgId : std::initializer_list<uint16_t>{1, 2, 3, 4}) {
        m_link->messageQueue.emplace_back(request(msgId), outcome.callback());
    }
    ASSERT_TRUE(waitForSentFrames(1));
    m_link->stop();  // the first is not answered: its two attempts end with the thread
    EXPECT_THAT(outcome.texts(), ElementsAre("1 failure"));
    const size_t sent = sentFrames().size();

    m_line->answerWith(0x8A00);
    m_link->start();
    m_link->messageQueue.emplace_back(request(5), outcome.callback());
    EXPECT_THAT(outcome.texts(2), ElementsAre("1 failure", "5 success"));
    EXPECT_EQ(sentFrames().size(), sent + 1);
}

TEST_F(RovanIoLifeCycleTest, StopForgetsFramesThatWereNotWritten) {
    runLink();
    m_line->holdWrites(true);
    for (int i = 0; i < 4; ++i) {
        m_line->send(Frames::frame(8504, {1}, 0x9000));
    }
    ASSERT_TRUE(waitForSamples(4));
    ASSERT_TRUE(m_line->waitForEntry("write 8504 8800"));
    std::thread release([this] { m_line->holdWrites(false); });
    m_link->stop();
    release.join();
    const size_t sent = sentFrames().size();
    m_link->start();
    m_line->send(Frames::frame(9225, {1}, 0x9000));
    ASSERT_TRUE(waitForSentFrames(sent + 1));
    EXPECT_EQ(sentFrames().back(), Frames::frame(9225, {}, 0x8800));
}

TEST_F(RovanIoLifeCycleTest, StopForgetsAPartialFrame) {
    runLink();
    const Bytes frame = Frames::frame(8504, {1, 2, 3});
    m_line->send(Bytes(frame.begin(), frame.end() - 4));
    ASSERT_TRUE(m_line->waitUntilAllIsRead());
    m_link->stop();
    m_link->start();
    m_line->send(Bytes(frame.end() - 4, frame.end()));
    m_line->send(Frames::frame(9225, {4}));
    ASSERT_TRUE(waitForSamples(1));
    EXPECT_THAT(samples(), SizeIs(1));
    EXPECT_EQ(samples()[0].data(), Frames::frame(9225, {4}));
    EXPECT_EQ(m_link->counters().rxChecksumErrors, 0u);
}

TEST_F(RovanIoLifeCycleTest, StopWithoutThreadsIsHarmlessAndKeepsTheQueue) {
    m_line->answerWith(0x8A00);
    makeConfiguredLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(8504), outcome.callback());
    m_link->stop();
    m_link->stop();
    m_link->start();
    EXPECT_THAT(outcome.texts(), ElementsAre("8504 success"));
    m_link->stop();
    m_link->stop();
}

TEST_F(RovanIoLifeCycleTest, StopOfAnIdleLinkTakesAtMostTheThreeTimeOuts) {
    runLink();
    const auto before = Clock::now();
    m_link->stop();
    EXPECT_LT(Clock::now() - before, 3 * 200ms + 2s);  // 2 s for a busy machine
}

TEST_F(RovanIoLifeCycleTest, StopIsPromptOnALineThatWasHungUp) {
    runLink();
    m_line->hangUp();
    ASSERT_TRUE(m_line->waitForReads(m_line->reads() + 1));
    const auto before = Clock::now();
    m_link->stop();
    EXPECT_LT(Clock::now() - before, 3 * 200ms + 2s);
}

TEST_F(RovanIoLifeCycleTest, ALinkThatWasNotConfiguredReportsInsteadOfDying) {
    makeLink();
    m_link->messageQueue.emplace_back(request(8504));
    reporter_test::CapturedStream console(STDOUT_FILENO);
    m_link->start();
    const auto deadline = Clock::now() + 10s;
    while (console.text().empty() && Clock::now() < deadline) {
        std::this_thread::yield();
    }
    m_link->stop();
    EXPECT_THAT(console.text(), HasSubstr("Rovan: protocolThreadFunction() EXCEPTION: "));
}

TEST_F(RovanIoLifeCycleTest, FlushCountsWhatItDrops) {
    makeConfiguredLink(true);
    m_line->send(Bytes(300, 0xFF));
    EXPECT_EQ(flushed(), "RovanIo::flush() number of bytes flushed: 300\n");
    EXPECT_EQ(flushed(), "RovanIo::flush() number of bytes flushed: 0\n");
}

TEST_F(RovanIoLifeCycleTest, FlushEndsWithATimeOutToo) {
    makeConfiguredLink(true);
    m_line->failReads({RC::TIMED_OUT});
    EXPECT_EQ(flushed(), "RovanIo::flush() number of bytes flushed: 0\n");
}

TEST_F(RovanIoLifeCycleTest, FlushEndsWithAnyOtherCodeAndNamesIt) {
    makeConfiguredLink(true);
    m_line->send({1, 2, 3});
    m_line->failReads({RC::CONNECTION_CLOSED});
    EXPECT_EQ(flushed(), "RovanIo::flush() received unexpected return code: CONNECTION_CLOSED\n");
    EXPECT_EQ(m_line->reads(), 1u);
}

TEST_F(RovanIoLifeCycleTest, FlushIsSilentWithoutDebug) {
    makeConfiguredLink(false);
    m_line->failReads({RC::CONNECTION_CLOSED});
    EXPECT_EQ(flushed(), "");
    EXPECT_EQ(flushed(), "");
}

}  // namespace

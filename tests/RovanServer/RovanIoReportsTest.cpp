// SPDX-License-Identifier: Apache-2.0
#include "ASPN/HealthReporter.h"
#include "aspn2_msgs/EventLog.h"
#include "tests/ASPN/ReporterHelpers.h"
#include "tests/RovanServer/RovanIoFixture.h"

namespace {

using aspn2_msgs::idl::EventLog;
using testing::ElementsAre;
using testing::MatchesRegex;

// What the link reports, as it goes out on the bus: type 3 (error), marked with its place.
class RovanIoReportsTest : public RovanIoFixture {
  protected:
    ~RovanIoReportsTest() override { HealthReporter::Instance().DoneHealthReporter(); }

    void runReportingLink() {
        runLink();
        HealthReporter::Instance().InitHealthReporter("Rovan", m_ids, m_transport, 7);
    }
    /// The first `count` events, as "<type> <text>".
    std::vector<std::string> events(size_t count) {
        EXPECT_TRUE(m_transport->receives(count));
        std::vector<std::string> texts;
        for (const EventLog& message : m_transport->messages()) {
            texts.push_back(std::to_string(message.event_log_type()) + ' ' + message.eventlog());
        }
        return texts;
    }

    const std::shared_ptr<reporter_test::RecordingTransport<EventLog>> m_transport =
        std::make_shared<reporter_test::RecordingTransport<EventLog>>();
};

TEST_F(RovanIoReportsTest, ChecksumErrorsOfTheReceiver) {
    runReportingLink();
    Bytes damaged = Frames::frame(8504, {1, 2, 3});
    damaged[11] ^= 0x40;
    m_line->send(damaged);
    EXPECT_THAT(events(1), ElementsAre(MatchesRegex(
                               "3 RovanIo[A-Za-z.]*\\[[0-9]+\\]:Rovan: readThreadFunction\\(\\) "
                               "GSSIP RX CHECKSUM ERROR \\(1\\)")));
}

TEST_F(RovanIoReportsTest, FailedWritesTimeOutsAndRejects) {
    runReportingLink();
    m_line->failWrites(RC::NO_ACTION);
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(8504), outcome.callback());
    EXPECT_THAT(
        events(3),
        ElementsAre(MatchesRegex("3 RovanIo[A-Za-z.]*\\[[0-9]+\\]:Rovan: WriteBytes\\(\\) GSSIP "
                                 "WRITE ERROR \\(1\\), msgid = 8504, wdcnt = 0, flagWord = 0x9010"),
                    MatchesRegex("3 RovanIo[A-Za-z.]*\\[[0-9]+\\]:Rovan: "
                                 "protocolThreadFunction\\(\\) GSSIP PROTOCOL TIMEOUT \\(8504\\) "
                                 "\\(1\\)"),
                    MatchesRegex("3 .*GSSIP WRITE ERROR \\(2\\).*")));
}

TEST_F(RovanIoReportsTest, NaksAndRejects) {
    m_line->onFrame([this](uint16_t msgId, uint16_t) {
        m_line->send(Frames::frame(msgId, {}, msgId == 1 ? 0x8400 : 0x8B00));
    });
    runReportingLink();
    RovanIoOutcome outcome;
    m_link->messageQueue.emplace_back(request(1), outcome.callback());
    m_link->messageQueue.emplace_back(request(2), outcome.callback());
    EXPECT_THAT(events(2), ElementsAre(MatchesRegex("3 .*\\]:Rovan: protocolThreadFunction\\(\\) "
                                                    "GSSIP TX CHECKSUM ERROR \\(1\\) \\(1\\)"),
                                       MatchesRegex("3 .*\\]:Rovan: protocolThreadFunction\\(\\) "
                                                    "GSSIP MSG REJECTED \\(2\\) \\(1\\)")));
}

TEST_F(RovanIoReportsTest, Exceptions) {
    m_line->answerWith(0x8A00);
    runReportingLink();
    m_line->throwOnRead([] { throw std::runtime_error("line on fire"); });
    EXPECT_THAT(events(1),
                ElementsAre(MatchesRegex("3 .*\\]:Rovan: readThreadFunction\\(\\) EXCEPTION: line "
                                         "on fire")));
}

}  // namespace

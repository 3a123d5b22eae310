// SPDX-License-Identifier: Apache-2.0
// A time data transfer on the receiver's port, at real speed: when the server commands the receiver
// back to continuous operation, and when it does not.
#include <algorithm>
#include <iterator>

#include "gssip/GssipFrame.h"
#include "simulator/Scenario.h"
#include "tests/end_to_end/Steering.h"

using namespace Simulator;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;
using Lines = std::vector<std::string>;

const std::string kIdle = " No work for thread   (TDTStatus)";
const std::string kCommand = "##  Command to Continuous  (TDTStatus)";
const char* const kContinuous = "5001/9000 mode 1";

std::string armed(int timer, int opMode, const std::string& isDtsCOM1) {
    return "In pThread2: Timer = " + std::to_string(timer) +
           ", OpMode = " + std::to_string(opMode) + ", DtsCOM1 = " + isDtsCOM1 +
           " , threadDoWork = true   (TDTStatus)";
}

class TimeDataTransferAtRealSpeed : public Steering {
  protected:
    TimeDataTransferAtRealSpeed() {
        // What the supervision follows, and the sign of life that keeps the watchdog quiet.
        m_deployment.setServer("PARAM_7", "253,5040,5042");
        m_deployment.setServer("Debug", "TRUE");
        m_unitOptions.paced = true;
    }

    /// What the supervision has told since the start, one line or two a second.
    Lines told() {
        Lines lines;
        for (const std::string& line : output()) {
            if (line == kIdle || line == kCommand || line.rfind("In pThread2:", 0) == 0) {
                lines.push_back(line);
            }
        }
        return lines;
    }
    std::size_t countTold(const std::string& line) {
        const Lines lines = told();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }
    bool waitForTold(const std::string& line, std::size_t count = 1) {
        return waitFor([&] { return countTold(line) >= count; }, seconds(40));
    }
    /// Lets the supervision make that many idle rounds, a second each.
    bool waitForIdleRounds(std::size_t count) {
        return waitForTold(kIdle, countTold(kIdle) + count);
    }

    void setTransfer(bool on, unsigned mode) {
        receiver().changeReports([on, mode](ReceiverReports& reports) {
            reports.dataTransfer = on;
            reports.operatingMode = mode;
        });
    }

    /// When the receiver first said a 5042 whose flag is that, of those from number `from` on.
    steady_clock::time_point timeSaid5042(bool transfer, std::uint64_t from) {
        const auto said = receiver().ledger().said().waitFor(
            [transfer](const SaidFrame& frame) {
                constexpr std::size_t kWord = Gssip::kWordData + 48;
                return frame.msgId() == 5042 && frame.bytes.size() > 2 * kWord &&
                       ((frameWord(frame.bytes, kWord) & 2) != 0) == transfer;
            },
            seconds(30), from);
        EXPECT_TRUE(said.has_value());
        return said ? said->at : steady_clock::time_point::max();
    }

    /// When the commands to go to continuous operation came, but the one of the setup.
    std::vector<steady_clock::time_point> timesCommanded() {
        std::vector<steady_clock::time_point> times;
        for (const HeardFrame& entry : heardFrames()) {
            if (entry.frame.msgId() == 5001) {
                times.push_back(entry.at);
            }
        }
        EXPECT_FALSE(times.empty());
        if (!times.empty()) {
            times.erase(times.begin());
        }
        return times;
    }
};

}  // namespace

TEST_F(TimeDataTransferAtRealSpeed, TheReceiverIsCommandedBackInTheFifthSecondAfterTheTransfer) {
    m_unitOptions.scenario = Scenario::read(std::string(ROVAN_SOURCE_DIR) +
                                            "/config/scenarios/time-data-transfer.scenario");
    startAndPing();
    const auto responses = bus().response.count();
    const auto commands = bus().command.count();

    ASSERT_TRUE(waitForTold(armed(0, 4, "1")));
    const auto events = bus().eventTexts();
    const auto over = timeSaid5042(false, receiver().ledger().said().count());
    ASSERT_TRUE(waitForTold(kCommand));
    ASSERT_TRUE(waitForHeard(kContinuous));
    ASSERT_TRUE(waitForIdleRounds(7));

    // While the transfer runs nothing counts; afterwards it is the fifth second.
    const Lines lines = told();
    const auto begin = std::find(lines.begin(), lines.end(), armed(0, 4, "1"));
    const auto first = std::find(begin, lines.end(), armed(0, 4, "0"));
    ASSERT_NE(first, lines.end());
    EXPECT_THAT(Lines(begin, first), Each(armed(0, 4, "1")));
    EXPECT_GE(first - begin, 5);
    ASSERT_GE(lines.end() - first, 6);
    EXPECT_THAT(Lines(first, first + 6),
                ElementsAre(armed(0, 4, "0"), armed(1, 4, "0"), armed(2, 4, "0"), armed(3, 4, "0"),
                            armed(4, 4, "0"), kCommand));
    // Then the receiver's word that it is back, and rest.
    const auto rest = std::find(first, lines.end(), kIdle);
    EXPECT_THAT(Lines(rest - 1, rest), Each(testing::HasSubstr(", OpMode = 0, DtsCOM1 = 0 ")));
    EXPECT_LT(rest - (first + 6), 5);  // or it would have been commanded again
    EXPECT_THAT(Lines(rest, lines.end()), Each(kIdle));

    // One frame, and four whole seconds between the report and it.
    EXPECT_THAT(newlyHeard(), ElementsAre(kContinuous));
    ASSERT_EQ(timesCommanded().size(), 1u);
    EXPECT_GE(timesCommanded()[0] - over, seconds(4));
    EXPECT_EQ(receiver().mode(), 1u);
    // It is between the server and the receiver: nobody else hears of it.
    EXPECT_EQ(bus().response.count(), responses);
    EXPECT_EQ(bus().command.count(), commands);
    EXPECT_THAT(bus().eventTexts(), Each(testing::AnyOfArray(events)));
    EXPECT_TRUE(terminate().good());
}

TEST_F(TimeDataTransferAtRealSpeed, AReceiverThatStaysInItsModeIsCommandedAgainFiveSecondsLater) {
    startAndPing();
    setTransfer(true, 4);
    ASSERT_TRUE(waitForTold(armed(0, 4, "1")));
    receiver().reject(2, 5001);  // it does nothing of what the command says
    setTransfer(false, 4);
    ASSERT_TRUE(waitFor([&] { return timesCommanded().size() >= 3; }, seconds(40)));
    ASSERT_TRUE(waitForIdleRounds(7));

    EXPECT_THAT(newlyHeard(), ElementsAre(kContinuous, kContinuous, kContinuous));
    const auto times = timesCommanded();
    ASSERT_EQ(times.size(), 3u);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], std::chrono::milliseconds(4'500)) << i;
        EXPECT_LE(times[i] - times[i - 1], seconds(9)) << i;
    }
    EXPECT_EQ(countTold(kCommand), 3u);
    // The link tells of the refusals; nobody is answered.
    EXPECT_THAT(output(),
                Contains("Rovan: protocolThreadFunction() GSSIP MSG REJECTED (5001) (2)"));
}

TEST_F(TimeDataTransferAtRealSpeed, WithoutATransferNothingIsCommandedWhateverTheMode) {
    startAndPing();
    for (const unsigned mode : {4u, 2u, 0u}) {
        setTransfer(false, mode);
        ASSERT_TRUE(waitForIdleRounds(7));
    }
    EXPECT_THAT(newlyHeard(), IsEmpty());
    EXPECT_THAT(told(), Each(kIdle));
}

TEST_F(TimeDataTransferAtRealSpeed, AfterATransferOnlyMode4CountsAndMode0EndsTheWork) {
    startAndPing();
    setTransfer(true, 2);
    ASSERT_TRUE(waitForTold(armed(0, 2, "1")));
    setTransfer(false, 2);
    ASSERT_TRUE(waitForTold(armed(0, 2, "0"), 7));
    setTransfer(false, 0);
    ASSERT_TRUE(waitForIdleRounds(7));
    EXPECT_THAT(newlyHeard(), IsEmpty());
    EXPECT_THAT(told(), testing::Not(Contains(kCommand)));
    EXPECT_EQ(told().back(), kIdle);
}

// SPDX-License-Identifier: Apache-2.0
// The receiver's sign of life, and what is reported of its silence.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/RovanServer/TestClock.h"
#include "tests/support/OwnBus.h"

using namespace processor_test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

const char* const kPresent = "2 ROVAN present and communicating.";

testing::Matcher<std::string> commError() {
    return MatchesRegex(
        "4 RovanProcessorWatchdog.cpp\\[[0-9]+\\]:Rovan: periodic253Checker\\(\\) ROVAN COMM "
        "ERROR!");
}

// A processor that runs by a clock that the test moves.
class WatchdogBus {
  public:
    WatchdogBus() { bus.processor.start(); }

    void hear253() { bus.processor.process253(Frame(253, 4).sample()); }
    /// Moves the clock, waits for the thread to look, and tells what was reported since.
    std::vector<std::string> eventsAfter(std::chrono::nanoseconds time) {
        clock.advance(time);
        clock.awaitChecks();
        return linesOf(bus.newEvents());
    }

  private:
    const test_support::OwnBus m_domain;

  public:
    TestClock clock;
    ProcessorOnBus bus{m_domain.number(), clock.function()};
};

}  // namespace

TEST(RovanProcessorWatchdog, ReportsSilenceAfter18SecondsThoughNothingWasEverHeard) {
    WatchdogBus watchdog;

    EXPECT_THAT(watchdog.eventsAfter(0ns), ElementsAre());
    EXPECT_THAT(watchdog.eventsAfter(18s), ElementsAre()) << "the limit itself is in time";
    EXPECT_THAT(watchdog.eventsAfter(1ns), ElementsAre(commError()));
    EXPECT_THAT(watchdog.eventsAfter(0ns), ElementsAre());
}

TEST(RovanProcessorWatchdog, RepeatsTheReportEvery18Seconds) {
    WatchdogBus watchdog;

    EXPECT_THAT(watchdog.eventsAfter(18s + 20ms), ElementsAre(commError()));
    EXPECT_THAT(watchdog.eventsAfter(18s), ElementsAre()) << "counted from the report";
    EXPECT_THAT(watchdog.eventsAfter(1ns), ElementsAre(commError()));
    EXPECT_THAT(watchdog.eventsAfter(90s), ElementsAre(commError())) << "nothing is made up for";
    EXPECT_THAT(watchdog.eventsAfter(18s), ElementsAre());
}

TEST(RovanProcessorWatchdog, ReportsTheReceiverOnceEachTimeItIsHeardAgain) {
    WatchdogBus watchdog;

    watchdog.hear253();
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(0ns), ElementsAre(kPresent));
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(18s + 1ns), ElementsAre(commError()));
    EXPECT_THAT(watchdog.eventsAfter(18s + 1ns), ElementsAre(commError()));
    watchdog.hear253();
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(0ns), ElementsAre(kPresent));
}

TEST(RovanProcessorWatchdog, CountsTheSilenceFromTheLatest253) {
    WatchdogBus watchdog;
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(17s), ElementsAre(kPresent));

    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(17s), ElementsAre());
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(18s), ElementsAre());
    EXPECT_THAT(watchdog.eventsAfter(1ns), ElementsAre(commError()));
}

TEST(RovanProcessorWatchdog, DoesNotLookAtTheContent) {
    WatchdogBus watchdog;

    watchdog.bus.processor.process253(sampleOf({}));
    EXPECT_THAT(watchdog.eventsAfter(17s), ElementsAre(kPresent));
    watchdog.bus.processor.process253(sampleOf(Bytes(7, 0xFF)));
    EXPECT_THAT(watchdog.eventsAfter(17s), ElementsAre());
    watchdog.bus.processor.process253(GSSIP());
    EXPECT_THAT(watchdog.eventsAfter(17s), ElementsAre());
}

// Other frames are no sign of life.
TEST(RovanProcessorWatchdog, GoesBy253Only) {
    WatchdogBus watchdog;
    watchdog.clock.advance(18s);

    watchdog.bus.processor.process8(Frame(8, 4).sample());
    watchdog.bus.processor.process7270(Frame(7270, 59).sample());
    watchdog.bus.processor.process8080(Frame(8080, 6).sample());

    EXPECT_THAT(watchdog.eventsAfter(1ns), ElementsAre(commError()));
}

TEST(RovanProcessorWatchdog, RestsWhileTheProcessorIsStoppedAndStartsAnew) {
    WatchdogBus watchdog;
    RovanProcessor& processor = watchdog.bus.processor;
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(17s), ElementsAre(kPresent));

    processor.stop();
    watchdog.clock.advance(100s);
    EXPECT_THAT(linesOf(watchdog.bus.newEvents()), ElementsAre());

    processor.start();
    EXPECT_THAT(watchdog.eventsAfter(18s), ElementsAre()) << "counted from the start";
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(0ns), ElementsAre(kPresent)) << "news after a start";
    processor.start();
    watchdog.hear253();
    EXPECT_THAT(watchdog.eventsAfter(0ns), ElementsAre(kPresent));
}

// What breaks is the look of one of the checks; in the next pass both are made again.
TEST(RovanProcessorWatchdog, SurvivesACheckThatThrows) {
    WatchdogBus watchdog;
    testing::internal::CaptureStdout();
    watchdog.clock.breakOnce();
    watchdog.clock.awaitChecks();
    watchdog.clock.awaitChecks();
    const std::string console = testing::internal::GetCapturedStdout();

    EXPECT_EQ(console, "Rovan: periodicThreadFunction() EXCEPTION: broken clock\n");
    EXPECT_THAT(linesOf(watchdog.bus.newEvents()),
                ElementsAre(MatchesRegex("3 RovanProcessorPeriodic.cpp\\[[0-9]+\\]:Rovan: "
                                         "periodicThreadFunction\\(\\) EXCEPTION: broken clock")));
    EXPECT_THAT(watchdog.eventsAfter(18s + 1ns), ElementsAre(commError()));
}

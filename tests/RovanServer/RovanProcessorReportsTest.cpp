// SPDX-License-Identifier: Apache-2.0
// What the processor reports: the receiver's state, publish errors, exceptions of its thread.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "RovanServer/RovanProcessorPeriodic.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "utility/WorkerThread.h"

using namespace processor_test;
using testing::ElementsAre;
using testing::MatchesRegex;

namespace {

GSSIP healthy() {
    return Frame(8504, 200).sample();
}
GSSIP failing() {
    return Frame(8504, 200).word(48, 0x0010).sample();
}

const char* const kOk = "2 ROVAN 8504 Receiver Ok.";
const char* const kFail =
    "4 RovanProcessor8504.cpp\\[[0-9]+\\]:Rovan: process8504\\(\\) ROVAN 8504 Receiver Fail.";
const char* const kFault = "4 Rovan\\[[0-9]+\\]:RCVR Fail Detected During BIT or Self Test";

}  // namespace

TEST(RovanProcessorReports, AGoodReceiverOnceAndAgainAfterMessage8) {
    ProcessorOnBus bus(207);

    bus.processor.process8504(healthy());
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre(kOk));
    bus.processor.process8504(healthy());
    bus.processor.process8504(healthy());
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre());

    bus.processor.process8(Frame(8, 5).sample());
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre());
    bus.processor.process8504(healthy());
    bus.processor.process8504(healthy());
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre(kOk));
    EXPECT_EQ(bus.maintenance.count(), 0u);
}

TEST(RovanProcessorReports, AFailingReceiverWithEveryFrameAndItsRecoveryOnce) {
    ProcessorOnBus bus(208);

    bus.processor.process8504(failing());
    bus.processor.process8504(failing());
    EXPECT_TRUE(bus.processor.getCurrentRcvrFail());
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre(MatchesRegex(kFault), MatchesRegex(kFail),
                                                      MatchesRegex(kFault), MatchesRegex(kFail)));
    EXPECT_EQ(bus.maintenance.count(), 2u);

    bus.processor.process8504(healthy());
    bus.processor.process8504(healthy());
    EXPECT_FALSE(bus.processor.getCurrentRcvrFail());
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre(kOk));

    // A failure that comes with the report that message 8 asks for is followed like any other.
    bus.processor.process8(Frame(8, 5).sample());
    bus.processor.process8504(failing());
    bus.processor.process8504(healthy());
    EXPECT_THAT(linesOf(bus.newEvents()),
                ElementsAre(MatchesRegex(kFault), MatchesRegex(kFail), kOk));
    EXPECT_EQ(bus.maintenance.count(), 3u);

    const MaintenanceEvent record = bus.maintenance.messages().front();
    EXPECT_STREQ(record.description().data(), "RCVR Fail Detected During BIT or Self Test");
    EXPECT_STREQ(record.identity().data(), "RCVR_FAILURE");
    EXPECT_EQ(record.criticality_id(), 4);
    EXPECT_EQ(record.outcome_id(), 3);
    EXPECT_EQ(record.location_id(), 39);
    EXPECT_EQ(record.category_id(), 7);
    EXPECT_EQ(record.repeat_in_seconds(), 0);
    const std::pair<int, int> sources[] = {{1, 4}, {2, 0}, {2, 16}, {1, 16}};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(record.fault_sources()[i].lru_id(), sources[i].first) << i;
        EXPECT_EQ(record.fault_sources()[i].component_id(), sources[i].second) << i;
    }
}

TEST(RovanProcessorReports, EachPublicationThatFailsAndGoesOnCounting) {
    ProcessorOnBus bus(209);
    bus.processor.process8504(healthy());
    bus.newEvents();

    // One topic fails: the others go out.
    auto rc = RC::NO_ERROR;
    bus.tss->Unregister_Sender(bus.id("ReceiverStatus"), rc);
    bus.processor.process8504(healthy());
    EXPECT_THAT(linesOf(bus.newEvents()),
                ElementsAre(publishError("process8504() ReceiverStatus", 1)));
    EXPECT_TRUE(transport_test::eventually([&] { return bus.channels.count() == 2; }));
    EXPECT_EQ(bus.positions.count(), 2u);
    EXPECT_EQ(bus.statuses.count(), 1u);

    // All fail: all are tried.
    bus.processor.Framework_Disconnect();
    bus.processor.process8504(healthy());
    EXPECT_THAT(linesOf(bus.newEvents()),
                ElementsAre(publishError("process8504() PositionVelocity", 2),
                            publishError("process8504() ReceiverStatus", 2),
                            publishError("process8504() ChannelStatus", 2)));

    // The numbers of the failed ones are not used again.
    bus.processor.Framework_Connect();
    bus.processor.process8504(healthy());
    EXPECT_TRUE(transport_test::eventually([&] { return bus.channels.count() == 3; }));
    EXPECT_EQ(bus.positions.messages().back().header().seq_num(), 3);
    EXPECT_EQ(bus.statuses.messages().back().header().seq_num(), 3);
    EXPECT_EQ(bus.channels.messages().back().header().seq_num(), 3);
    EXPECT_THAT(linesOf(bus.newEvents()), ElementsAre());
}

// The first pass throws an exception, the second something else; a pass that throws makes no
// further check, and the next one follows after the usual pause.
TEST(RovanProcessorReports, WhatTheChecksThrowAndGoesOn) {
    ProcessorOnBus bus(198);
    std::vector<std::chrono::steady_clock::time_point> passes;
    int secondChecks = 0;
    Utility::WorkerThread thread;
    testing::internal::CaptureStdout();
    thread.start([&] {
        runRovanProcessorChecks(thread, "Rovan",
                                {[&] {
                                     passes.push_back(std::chrono::steady_clock::now());
                                     if (passes.size() == 1) {
                                         throw std::runtime_error("broken");
                                     }
                                     if (passes.size() == 2) {
                                         throw 42;
                                     }
                                 },
                                 [&] {
                                     if (++secondChecks == 2) {
                                         thread.requestStop();
                                     }
                                 }});
    });
    thread.join();
    const std::string console = testing::internal::GetCapturedStdout();

    EXPECT_EQ(passes.size(), 4u) << "two that throw and two that do not";
    for (size_t i = 1; i < passes.size(); ++i) {
        EXPECT_GE(passes[i] - passes[i - 1], std::chrono::milliseconds(20));
    }
    EXPECT_EQ(console,
              "Rovan: periodicThreadFunction() EXCEPTION: broken\n"
              "Rovan: periodicThreadFunction() EXCEPTION: <unknown>\n");
    const std::string event =
        "3 RovanProcessorPeriodic.cpp\\[[0-9]+\\]:Rovan: periodicThreadFunction\\(\\) EXCEPTION: ";
    EXPECT_THAT(linesOf(bus.newEvents()),
                ElementsAre(MatchesRegex(event + "broken"), MatchesRegex(event + "<unknown>")));
}

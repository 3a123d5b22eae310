// SPDX-License-Identifier: Apache-2.0
// How 7270 frames are gathered and become messages on the bus. What one of them becomes is tested
// beside lineOfSightObservationOf.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "aspn2_msgs/GPSLineOfSightPubSubTypes.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/RovanServer/RovanProcessorSatellitesGolden.h"
#include "tests/RovanServer/TestClock.h"
#include "tests/support/OwnBus.h"

using namespace processor_test;
using namespace std::chrono_literals;
using aspn2_msgs::idl::GPSLineOfSight;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

namespace golden = SatellitesGolden;

/// A measurement of that epoch, known by its PRN.
GSSIP measurement(unsigned epoch, unsigned prn) {
    return Frame(7270, 59).word(5, epoch).word(6, prn << 10).sample();
}

/// The same with a time of validity and a time of arrival of its own.
GSSIP measurementAt(unsigned epoch, unsigned prn, int64_t validSec, int32_t arrivalNsec) {
    GSSIP sample = measurement(epoch, prn);
    sample.header().timestamp_valid().sec(validSec);
    sample.header().timestamp_arrival().nsec(arrivalNsec);
    return sample;
}

std::vector<int> prnsOf(const GPSLineOfSight& message) {
    EXPECT_EQ(message.num_measurements(), static_cast<int32_t>(message.obs().size()));
    std::vector<int> prns;
    for (const auto& obs : message.obs()) {
        prns.push_back(obs.prn());
    }
    return prns;
}

// A processor that runs by a clock that the test moves, and a subscriber.
class LineOfSightBus {
  private:
    const test_support::OwnBus m_domain;

  public:
    LineOfSightBus() { bus.processor.start(); }

    void hear(const GSSIP& sample) { bus.processor.process7270(sample); }
    void hear(unsigned epoch, unsigned prn) { hear(measurement(epoch, prn)); }

    /// Moves the clock, waits for the thread to look, and returns the messages since the last call:
    /// all of them, since a process hears its own messages on the publishing thread.
    std::vector<GPSLineOfSight> messagesAfter(std::chrono::nanoseconds time) {
        clock.advance(time);
        clock.awaitChecks();
        std::vector<GPSLineOfSight> all = messages.messages();
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(m_seen));
        m_seen += all.size();
        return all;
    }
    /// The one message that comes when the epoch is over.
    GPSLineOfSight closedEpoch() {
        const std::vector<GPSLineOfSight> all = messagesAfter(50ms + 1ns);
        if (all.size() != 1) {
            throw std::runtime_error(std::to_string(all.size()) + " messages");
        }
        return all.front();
    }

    TestClock clock;
    transport_test::Inbox<GPSLineOfSight> messages;
    ProcessorOnBus bus{m_domain.number(), clock.function()};

  private:
    const std::unique_ptr<transport_test::Face<GPSLineOfSight>> m_face =
        listen(bus, "GPSLineOfSight", messages);
    size_t m_seen = 0;
};

}  // namespace

TEST(RovanProcessorLineOfSight, BringsTheGoldenEpochToTheBus) {
    LineOfSightBus lineOfSight;
    lineOfSight.hear(1, 1);
    const GPSLineOfSight first = lineOfSight.closedEpoch();
    for (const Bytes& frame : golden::kFrames7270) {
        lineOfSight.hear(sampleOf(frame));
    }
    const GPSLineOfSight second = lineOfSight.closedEpoch();

    EXPECT_EQ(cdrOf<aspn2_msgs::idl::GPSLineOfSightPubSubType>(second), golden::kLineOfSightCdr);
    EXPECT_EQ(first.header().seq_num(), 0);
    EXPECT_EQ(first.header().device_id(), 0x03273200) << "system 3, server 39, code 50";
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre());
}

TEST(RovanProcessorLineOfSight, ClosesAnEpochAfterMoreThan50MsOfSilence) {
    LineOfSightBus lineOfSight;

    lineOfSight.hear(7, 1);
    EXPECT_THAT(lineOfSight.messagesAfter(0ns), SizeIs(0));
    EXPECT_THAT(lineOfSight.messagesAfter(50ms), SizeIs(0));
    const auto messages = lineOfSight.messagesAfter(1ns);
    ASSERT_THAT(messages, SizeIs(1));
    EXPECT_THAT(prnsOf(messages.front()), ElementsAre(1));
    EXPECT_THAT(lineOfSight.messagesAfter(10s), SizeIs(0)) << "nothing is sent twice";
}

TEST(RovanProcessorLineOfSight, KeepsAnEpochOpenWhoseFramesCome40MsApart) {
    LineOfSightBus lineOfSight;

    for (const unsigned prn : {1u, 2u, 3u, 4u}) {
        lineOfSight.hear(7, prn);
        EXPECT_THAT(lineOfSight.messagesAfter(40ms), SizeIs(0));
    }
    EXPECT_THAT(lineOfSight.messagesAfter(10ms), SizeIs(0)) << "50 ms after the last";
    const auto messages = lineOfSight.messagesAfter(1ns);
    ASSERT_THAT(messages, SizeIs(1));
    EXPECT_THAT(prnsOf(messages.front()), ElementsAre(1, 2, 3, 4));
}

TEST(RovanProcessorLineOfSight, TakesFramesWithoutAMeasurementForPartOfTheBurst) {
    const GSSIP others[] = {
        measurement(0, 9),
        Frame(7270, 58).word(5, 7).sample(),
        sampleOf({}),
        Frame(7270, 60).word(5, 8).sample(),
        Frame(8080, 6).sample(),
    };
    LineOfSightBus lineOfSight;
    lineOfSight.hear(7, 1);
    for (const GSSIP& other : others) {
        EXPECT_THAT(lineOfSight.messagesAfter(50ms), SizeIs(0));
        lineOfSight.hear(other);
    }
    EXPECT_THAT(lineOfSight.messagesAfter(50ms), SizeIs(0));
    lineOfSight.hear(7, 2);

    EXPECT_THAT(prnsOf(lineOfSight.closedEpoch()), ElementsAre(1, 2));
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre());
}

TEST(RovanProcessorLineOfSight, SendsNothingOfFramesWithoutAMeasurement) {
    LineOfSightBus lineOfSight;

    lineOfSight.hear(0, 1);
    lineOfSight.hear(Frame(7270, 58).word(5, 7).sample());

    EXPECT_THAT(lineOfSight.messagesAfter(10s), SizeIs(0));
}

TEST(RovanProcessorLineOfSight, StampsAnEpochWithItsFirstFrame) {
    LineOfSightBus lineOfSight;
    lineOfSight.hear(measurement(7, 1));
    lineOfSight.hear(measurementAt(7, 2, 1, 2));
    lineOfSight.hear(measurementAt(0, 3, 3, 4));
    expectGoldenStamps(lineOfSight.closedEpoch().header());

    lineOfSight.hear(measurementAt(8, 1, 5, 6));
    lineOfSight.hear(measurement(8, 2));
    const auto header = lineOfSight.closedEpoch().header();
    EXPECT_EQ(header.timestamp_valid().sec(), 5);
    EXPECT_EQ(header.timestamp_arrival().nsec(), 6);
    EXPECT_EQ(header.seq_num(), 1);
}

TEST(RovanProcessorLineOfSight, DropsWhatIsLeftOfAnEpochWhenTheNextBegins) {
    LineOfSightBus lineOfSight;
    lineOfSight.hear(measurementAt(7, 1, 1, 2));
    lineOfSight.hear(measurementAt(7, 2, 1, 2));
    EXPECT_THAT(lineOfSight.messagesAfter(50ms), SizeIs(0));
    lineOfSight.hear(measurement(8, 3));
    lineOfSight.hear(8, 4);

    const GPSLineOfSight message = lineOfSight.closedEpoch();

    EXPECT_THAT(prnsOf(message), ElementsAre(3, 4));
    expectGoldenStamps(message.header());
    EXPECT_EQ(message.header().seq_num(), 0);
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre());
}

TEST(RovanProcessorLineOfSight, TellsEpochsApartByAll16BitsOfTheTag) {
    LineOfSightBus lineOfSight;

    for (const unsigned epoch : {0x0001u, 0x8001u, 0x0101u, 0xFFFFu, 0x0001u}) {
        lineOfSight.hear(epoch, 1);
        EXPECT_THAT(prnsOf(lineOfSight.closedEpoch()), ElementsAre(1));
    }
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre()) << "none is a late frame";
}

TEST(RovanProcessorLineOfSight, ReportsALateFrameAndSendsItInAFurtherMessage) {
    const std::string text =
        "Rovan: process7270() multiple GPSLineOfSight messages for TOV = 5 TOAns = 6";
    LineOfSightBus lineOfSight;
    lineOfSight.hear(7, 1);
    lineOfSight.hear(7, 2);
    EXPECT_THAT(prnsOf(lineOfSight.closedEpoch()), ElementsAre(1, 2));

    testing::internal::CaptureStdout();
    lineOfSight.hear(measurementAt(7, 3, 5, 6));
    lineOfSight.hear(measurementAt(7, 4, 7, 8));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), text + "\n") << "once for each message";
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre("2 " + text));

    const GPSLineOfSight message = lineOfSight.closedEpoch();
    EXPECT_THAT(prnsOf(message), ElementsAre(3, 4));
    expectGoldenStamps(message.header());  // of the first frame of all
    EXPECT_EQ(message.header().seq_num(), 1);

    lineOfSight.hear(measurementAt(7, 5, 5, 6));
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre("2 " + text));
    EXPECT_THAT(prnsOf(lineOfSight.closedEpoch()), ElementsAre(5));
}

TEST(RovanProcessorLineOfSight, ForgetsTheEpochWhenItStarts) {
    LineOfSightBus lineOfSight;
    lineOfSight.hear(measurementAt(7, 1, 1, 2));
    lineOfSight.bus.processor.start();
    EXPECT_THAT(lineOfSight.messagesAfter(10s), SizeIs(0));

    // The same tag is a new epoch, before and after it is out.
    lineOfSight.hear(measurement(7, 2));
    const GPSLineOfSight message = lineOfSight.closedEpoch();
    EXPECT_THAT(prnsOf(message), ElementsAre(2));
    expectGoldenStamps(message.header());
    lineOfSight.bus.processor.start();
    lineOfSight.hear(7, 3);
    EXPECT_THAT(prnsOf(lineOfSight.closedEpoch()), ElementsAre(3));
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre());
}

TEST(RovanProcessorLineOfSight, ReportsAPublishThatFailsAndGoesOnCounting) {
    LineOfSightBus lineOfSight;
    auto rc = RC::NO_ERROR;
    lineOfSight.bus.tss->Unregister_Sender(lineOfSight.bus.id("GPSLineOfSight"), rc);
    ASSERT_EQ(rc, RC::NO_ERROR);

    lineOfSight.hear(7, 1);
    EXPECT_THAT(lineOfSight.messagesAfter(51ms), SizeIs(0));
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()),
                ElementsAre(publishError("periodic7270Checker() GPSLineOfSight", 0)));
    EXPECT_THAT(lineOfSight.messagesAfter(51ms), SizeIs(0));
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre()) << "it is not tried again";

    lineOfSight.bus.processor.stop();
    lineOfSight.bus.processor.Framework_Disconnect();
    lineOfSight.bus.processor.Framework_Connect();
    lineOfSight.bus.processor.start();
    lineOfSight.hear(8, 2);
    EXPECT_EQ(lineOfSight.closedEpoch().header().seq_num(), 1);
}

// A tag that is stuck in frames without a pause: what it gathers has a bound, and nothing is lost.
TEST(RovanProcessorLineOfSight, SendsWithoutSilenceWhatNoEpochCanHave) {
    LineOfSightBus lineOfSight;
    for (unsigned i = 0; i < 399; ++i) {
        lineOfSight.hear(7, i % 64);
    }
    EXPECT_THAT(lineOfSight.messagesAfter(0ns), SizeIs(0));
    lineOfSight.hear(7, 15);
    const auto messages = lineOfSight.messagesAfter(0ns);

    ASSERT_THAT(messages, SizeIs(1));
    std::vector<int> expected;
    for (int i = 0; i < 399; ++i) {
        expected.push_back(i % 64);
    }
    expected.push_back(15);
    EXPECT_EQ(prnsOf(messages.front()), expected);
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), ElementsAre());
    lineOfSight.hear(7, 16);
    EXPECT_THAT(linesOf(lineOfSight.bus.newEvents()), SizeIs(1)) << "what follows is late";
    EXPECT_THAT(prnsOf(lineOfSight.closedEpoch()), ElementsAre(16));
}

TEST(RovanProcessorLineOfSight, PutsNoMoreIntoAMessageThanItHasRoomFor) {
    LineOfSightBus lineOfSight;
    for (unsigned i = 0; i < 850; ++i) {
        lineOfSight.hear(7, i % 64);
    }

    std::vector<size_t> sizes;
    std::vector<int> received;
    for (const GPSLineOfSight& message : lineOfSight.messagesAfter(51ms)) {
        const std::vector<int> prns = prnsOf(message);
        sizes.push_back(prns.size());
        received.insert(received.end(), prns.begin(), prns.end());
    }

    EXPECT_THAT(sizes, ElementsAre(400, 400, 50));
    for (int i = 0; i < 850; ++i) {
        ASSERT_EQ(received.at(static_cast<size_t>(i)), i % 64);
    }
}

// Frames come on one thread while the other finds the epoch closed again and again.
TEST(RovanProcessorLineOfSight, LosesNoFrameBetweenItsThreads) {
    LineOfSightBus lineOfSight;
    testing::internal::CaptureStdout();
    int sent = 0;
    const auto enough = std::chrono::steady_clock::now() + 10s;
    while (lineOfSight.messages.count() < 8 && std::chrono::steady_clock::now() < enough) {
        lineOfSight.hear(7, static_cast<unsigned>(sent++ % 64));
        lineOfSight.clock.advance(51ms);
        std::this_thread::sleep_for(200us);
    }
    lineOfSight.messagesAfter(51ms);
    testing::internal::GetCapturedStdout();

    const auto messages = lineOfSight.messages.messages();
    EXPECT_GE(messages.size(), 8u);
    int received = 0;
    int64_t seqNum = 0;
    for (const GPSLineOfSight& message : messages) {
        EXPECT_EQ(message.header().seq_num(), seqNum++);
        for (const int prn : prnsOf(message)) {
            EXPECT_EQ(prn, received++ % 64);
        }
    }
    EXPECT_EQ(received, sent);
}

// SPDX-License-Identifier: Apache-2.0
// What 5047 and 5048 become on the bus. Time tags are PDP numbers, written down by hand: sign bit,
// 8 bits of exponent in excess 128, fraction behind a leading 1 that is not stored.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "aspn2_msgs/SVStatusPubSubTypes.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/RovanServer/RovanProcessorSatellitesGolden.h"
#include "tests/support/OwnBus.h"

using namespace processor_test;
using aspn2_msgs::idl::SVStatus;
using testing::ElementsAre;

namespace {

namespace golden = SatellitesGolden;

struct Tag {
    unsigned words[4];
};
const Tag kZero{{0, 0, 0, 0}};
const Tag kMinusOne{{0xC080, 0, 0, 0}};
const Tag kHalf{{0x4000, 0, 0, 0}};
const Tag kOne{{0x4080, 0, 0, 0}};
const Tag kOneAndAQuarter{{0x40A0, 0, 0, 0}};
const Tag kOneAndAHalf{{0x40C0, 0, 0, 0}};
const Tag kJustBelowOneAndAHalf{{0x40BF, 0xFFFF, 0xFFFF, 0xFFF8}};  // by 2 to the -52
const Tag kTwo{{0x4100, 0, 0, 0}};

struct Satellite {
    unsigned svid, health, azimuth, elevation, flags;
};

/// A half with those satellites in its first records; the words between the records are filled.
Frame half(uint16_t msgId, const std::vector<Satellite>& satellites = {}, const Tag& tag = kOne) {
    Frame frame(msgId, 100);
    for (unsigned i = 0; i < 4; ++i) {
        frame.word(i, tag.words[i]);
    }
    unsigned first = 4;
    for (const Satellite& s : satellites) {
        frame.word(first, s.svid).word(first + 1, s.health).word(first + 2, s.azimuth);
        frame.word(first + 3, s.elevation).word(first + 4, s.flags);
        for (unsigned i = 5; i < 16; ++i) {
            frame.word(first + i, 0xFFFF);
        }
        first += 16;
    }
    return frame;
}
Frame first(const Tag& tag) {
    return half(5047, {}, tag);
}
Frame second(const Tag& tag) {
    return half(5048, {}, tag);
}

/// A half of healthy satellites, rising at azimuth 10 and elevation 20.
Frame halfWith(uint16_t msgId, const std::vector<unsigned>& svids) {
    std::vector<Satellite> satellites;
    for (const unsigned svid : svids) {
        satellites.push_back({svid, 1, 10, 20, 1});
    }
    return half(msgId, satellites);
}

std::vector<int> svidsOf(const SVStatus& status) {
    EXPECT_EQ(status.num_svs(), static_cast<int32_t>(status.svs().size()));
    std::vector<int> svids;
    for (const auto& satellite : status.svs()) {
        svids.push_back(satellite.svid());
    }
    return svids;
}

// The bus with a subscriber to the satellites.
class SatellitesBus {
  private:
    const test_support::OwnBus m_domain;

  public:
    void hear5047(const Frame& frame) { bus.processor.process5047(frame.sample()); }
    void hear5048(const Frame& frame) { bus.processor.process5048(frame.sample()); }

    /// The messages since the last call: all of them, since a process hears its own messages on the
    /// publishing thread.
    std::vector<SVStatus> newStatuses() {
        std::vector<SVStatus> messages = statuses.messages();
        messages.erase(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(m_seen));
        m_seen += messages.size();
        return messages;
    }
    /// The one message since the last call.
    SVStatus newStatus() {
        const std::vector<SVStatus> messages = newStatuses();
        if (messages.size() != 1) {
            throw std::runtime_error(std::to_string(messages.size()) + " messages");
        }
        return messages.front();
    }

    transport_test::Inbox<SVStatus> statuses;
    ProcessorOnBus bus{m_domain.number()};

  private:
    const std::unique_ptr<transport_test::Face<SVStatus>> m_face =
        listen(bus, "SVStatus", statuses);
    size_t m_seen = 0;
};

}  // namespace

TEST(RovanProcessorSatellites, BringsTheGoldenPairToTheBus) {
    SatellitesBus satellites;
    satellites.bus.processor.process5047(sampleOf(golden::kFrame5047));
    satellites.bus.processor.process5048(sampleOf(golden::kFrame5048));
    const SVStatus status = satellites.newStatus();
    satellites.bus.processor.process5047(sampleOf(golden::kFrame5047));
    satellites.bus.processor.process5048(sampleOf(golden::kFrame5048));

    EXPECT_EQ(cdrOf<aspn2_msgs::idl::SVStatusPubSubType>(satellites.newStatus()),
              golden::kSVStatusCdr);
    EXPECT_EQ(status.header().seq_num(), 0);
    EXPECT_EQ(status.header().device_id(), 0x03273C00) << "system 3, server 39, code 60";
}

TEST(RovanProcessorSatellites, TranslatesEachFieldOfARecord) {
    struct Row {
        Satellite record;
        const char* expected;  // svid, system, healthy, azimuth, elevation, rising
    };
    const Row rows[] = {
        {{1, 0, 0, 0, 0}, "1 0 0 0 0 0"},
        {{0xFFFF, 0, 0, 0, 0}, "65535 0 0 0 0 0"},
        {{1, 1, 0, 0, 0}, "1 0 1 0 0 0"},
        {{1, 0x8000, 0, 0, 0}, "1 0 1 0 0 0"},
        {{1, 0, 0xFFFF, 0, 0}, "1 0 0 65535 0 0"},
        {{1, 0, 0, 0x7FFF, 0}, "1 0 0 0 32767 0"},
        {{1, 0, 0, 0x8000, 0}, "1 0 0 0 -32768 0"},
        {{1, 0, 0, 0xFFFF, 0}, "1 0 0 0 -1 0"},
        {{1, 0, 0, 0, 1}, "1 0 0 0 0 1"},
        {{1, 0, 0, 0, 0xFFFE}, "1 0 0 0 0 0"},
        {{1, 0xFFFF, 359, 90, 0xFFFF}, "1 0 1 359 90 1"},
    };
    SatellitesBus satellites;
    for (const Row& row : rows) {
        satellites.hear5047(half(5047, {row.record}));
        satellites.hear5048(half(5048, {row.record}));
        const SVStatus status = satellites.newStatus();

        EXPECT_EQ(status.num_svs(), 2);
        ASSERT_EQ(status.svs().size(), 2u);
        for (const auto& s : status.svs()) {
            EXPECT_EQ(std::to_string(s.svid()) + ' ' + std::to_string(s.rinex3_gnss_enum()) + ' ' +
                          std::to_string(s.healthy()) + ' ' + std::to_string(s.azimuth()) + ' ' +
                          std::to_string(s.elevation()) + ' ' + std::to_string(s.rising()),
                      row.expected);
        }
    }
}

TEST(RovanProcessorSatellites, ListsTheFirstHalfBeforeTheSecondAndSkipsEmptyRecords) {
    SatellitesBus satellites;

    satellites.hear5048(halfWith(5048, {7, 8, 9, 10, 11, 12}));
    satellites.hear5047(halfWith(5047, {1, 2, 3, 4, 5, 6}));
    EXPECT_THAT(svidsOf(satellites.newStatus()),
                ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));

    satellites.hear5047(halfWith(5047, {0, 2, 0, 0, 5, 0}));
    satellites.hear5048(halfWith(5048, {7, 0, 9, 0, 0, 12}));
    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre(2, 5, 7, 9, 12));

    satellites.hear5047(halfWith(5047, {0, 0, 0, 0, 0, 0}));
    satellites.hear5048(halfWith(5048, {0, 0, 0, 0, 0, 3}));
    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre(3));
}

TEST(RovanProcessorSatellites, PublishesAnEmptyListToo) {
    SatellitesBus satellites;

    satellites.hear5047(half(5047));
    satellites.hear5048(half(5048));

    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre());
}

TEST(RovanProcessorSatellites, StampsWithTheFrameThatCompletesThePair) {
    SatellitesBus satellites;
    const auto other = [](uint16_t msgId) {
        GSSIP sample = half(msgId).sample();
        sample.header().timestamp_valid().sec(1);
        sample.header().timestamp_arrival().sec(2);
        return sample;
    };

    satellites.bus.processor.process5047(other(5047));
    satellites.hear5048(half(5048));
    expectGoldenStamps(satellites.newStatus().header());

    satellites.bus.processor.process5048(other(5048));
    satellites.hear5047(half(5047));
    const SVStatus status = satellites.newStatus();
    expectGoldenStamps(status.header());
    EXPECT_EQ(status.header().seq_num(), 1);
}

TEST(RovanProcessorSatellites, TakesTheLatestOfEachHalf) {
    SatellitesBus satellites;

    satellites.hear5047(halfWith(5047, {1, 2}));
    satellites.hear5047(halfWith(5047, {3}));
    EXPECT_TRUE(satellites.newStatuses().empty());
    satellites.hear5048(halfWith(5048, {4}));
    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre(3, 4));

    satellites.hear5048(halfWith(5048, {5}));
    satellites.hear5048(halfWith(5048, {6}));
    EXPECT_TRUE(satellites.newStatuses().empty()) << "a half serves one pair only";
    satellites.hear5047(halfWith(5047, {7}));
    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre(7, 6));
}

TEST(RovanProcessorSatellites, GoesByTheTagOfTheLatestOfEachHalf) {
    SatellitesBus satellites;

    satellites.hear5047(first(kZero));
    satellites.hear5047(first(kTwo));
    satellites.hear5048(second(kTwo));

    EXPECT_EQ(satellites.newStatuses().size(), 1u);
}

TEST(RovanProcessorSatellites, JoinsHalvesWhoseTagsDifferByLessThanAHalf) {
    struct Row {
        Tag first;
        Tag second;
        bool pair;
    };
    const Row rows[] = {
        {kOne, kOne, true},
        {kZero, kZero, true},
        {kMinusOne, kMinusOne, true},
        {kOne, kOneAndAQuarter, true},
        {kOneAndAQuarter, kOne, true},
        {kOne, kJustBelowOneAndAHalf, true},
        {kJustBelowOneAndAHalf, kOne, true},
        {kOne, kOneAndAHalf, false},
        {kOneAndAHalf, kOne, false},
        {kZero, kHalf, false},
        {kOne, kTwo, false},
        {kTwo, kOne, false},
        {kMinusOne, kOne, false},
        {kOneAndAHalf, kTwo, false},
        {kJustBelowOneAndAHalf, kTwo, false},
    };
    SatellitesBus satellites;
    for (const Row& row : rows) {
        satellites.hear5047(first(row.first));
        satellites.hear5048(second(row.second));
        EXPECT_EQ(satellites.newStatuses().size(), row.pair ? 1u : 0u);
        satellites.hear5048(second(row.second));
        satellites.hear5047(first(row.first));
        EXPECT_EQ(satellites.newStatuses().size(), row.pair ? 1u : 0u);
    }
    EXPECT_THAT(linesOf(satellites.bus.newEvents()), ElementsAre());
}

TEST(RovanProcessorSatellites, DropsBothHalvesOfAPairThatIsNone) {
    SatellitesBus satellites;

    satellites.hear5047(first(kOne));
    satellites.hear5048(second(kTwo));
    satellites.hear5047(first(kTwo));
    EXPECT_TRUE(satellites.newStatuses().empty()) << "the second half is gone";
    satellites.hear5048(second(kTwo));
    EXPECT_EQ(satellites.newStatus().header().seq_num(), 0) << "a new pair";
}

TEST(RovanProcessorSatellites, JoinsHalvesAcrossARestart) {
    SatellitesBus satellites;

    satellites.hear5047(halfWith(5047, {1}));
    satellites.bus.processor.start();
    satellites.bus.processor.stop();
    satellites.bus.processor.start();
    satellites.hear5048(halfWith(5048, {2}));

    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre(1, 2));
}

TEST(RovanProcessorSatellites, NamesOneHalfWhicheverMakesThePublishFail) {
    SatellitesBus satellites;
    satellites.bus.processor.Framework_Disconnect();

    satellites.hear5047(half(5047));
    satellites.hear5048(half(5048));
    satellites.hear5048(half(5048));
    satellites.hear5047(half(5047));

    EXPECT_THAT(linesOf(satellites.bus.newEvents()),
                ElementsAre(publishError("process5047() SVStatus", 0),
                            publishError("process5047() SVStatus", 1)));
    satellites.bus.processor.Framework_Connect();
    satellites.hear5047(half(5047));
    satellites.hear5048(half(5048));
    EXPECT_EQ(satellites.newStatus().header().seq_num(), 2);
}

TEST(RovanProcessorSatellites, DropsFramesOfAnotherLengthInSilence) {
    SatellitesBus satellites;
    RovanProcessor& processor = satellites.bus.processor;

    satellites.hear5047(halfWith(5047, {1}));
    processor.process5047(Frame(5047, 99).sample());
    processor.process5047(Frame(5047, 101).sample());
    processor.process5047(sampleOf({}));
    processor.process5048(Frame(5048, 99).sample());
    processor.process5048(Frame(5048, 101).sample());
    processor.process5048(sampleOf(Bytes(10)));
    EXPECT_TRUE(satellites.newStatuses().empty());
    EXPECT_THAT(linesOf(satellites.bus.newEvents()), ElementsAre());

    satellites.hear5048(halfWith(5048, {2}));
    EXPECT_THAT(svidsOf(satellites.newStatus()), ElementsAre(1, 2)) << "what was latched stays";
}

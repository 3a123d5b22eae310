// SPDX-License-Identifier: Apache-2.0
// What an 8504 frame becomes on the bus.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "aspn2_msgs/ChannelStatusPubSubTypes.h"
#include "aspn2_msgs/PositionVelocityPubSubTypes.h"
#include "aspn2_msgs/ReceiverStatusPubSubTypes.h"
#include "tests/RovanServer/RovanProcessorBus.h"

using namespace processor_test;

namespace {

namespace golden = RovanProcessorGolden;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr unsigned kFlags = 48;        // data word
constexpr unsigned kCorrections = 58;  // data word

Frame report() {
    return Frame(8504, 200);
}

// Sends one frame to the bus and gives what came of it.
struct Translation {
    Translation(ProcessorOnBus& bus, const GSSIP& sample) {
        const size_t before = bus.channels.count();
        bus.processor.process8504(sample);
        if (!transport_test::eventually([&] {
                return bus.positions.count() == before + 1 && bus.statuses.count() == before + 1 &&
                       bus.channels.count() == before + 1;
            })) {
            throw std::runtime_error("not all three messages came");
        }
        position = bus.positions.messages().back();
        status = bus.statuses.messages().back();
        channels = bus.channels.messages().back();
    }
    Translation(ProcessorOnBus& bus, const Frame& frame) : Translation(bus, frame.sample()) {}

    PositionVelocity position;
    ReceiverStatus status;
    ChannelStatus channels;
};

std::array<double, 6> diagonalOf(const PositionVelocity& message) {
    std::array<double, 6> diagonal{};
    for (size_t row = 0; row < 6; ++row) {
        for (size_t column = 0; column < 6; ++column) {
            if (row == column) {
                diagonal[row] = message.covariance()[row][column];
            } else {
                EXPECT_EQ(message.covariance()[row][column], 0.0) << row << ", " << column;
            }
        }
    }
    return diagonal;
}

}  // namespace

TEST(RovanProcessor8504, BringsTheGoldenFrameToTheBus) {
    ProcessorOnBus bus(197);
    const Translation first(bus, sampleOf(golden::kFrame));
    const Translation got(bus, sampleOf(golden::kFrame));

    // System 3, server 39, then message code and sub id.
    EXPECT_EQ(got.position.header().device_id(), 0x03272001);
    EXPECT_EQ(got.status.header().device_id(), 0x03273000);
    EXPECT_EQ(got.channels.header().device_id(), 0x03272400);
    for (const auto* header :
         {&got.position.header(), &got.status.header(), &got.channels.header()}) {
        expectGoldenStamps(*header);
        EXPECT_EQ(header->seq_num(), 1);
    }
    for (const auto* header :
         {&first.position.header(), &first.status.header(), &first.channels.header()}) {
        EXPECT_EQ(header->seq_num(), 0);
    }

    EXPECT_EQ(got.position.position().latitude(), golden::kLatitude);
    EXPECT_EQ(got.position.position().longitude(), golden::kLongitude);
    EXPECT_EQ(got.position.position().altitude(), golden::kAltitude);
    EXPECT_THAT(got.position.velocity(), testing::ElementsAreArray(golden::kVelocity));
    EXPECT_THAT(diagonalOf(got.position), testing::ElementsAreArray(golden::kVariances));

    EXPECT_TRUE(got.status.rcvr_fail());
    EXPECT_EQ(got.status.num_satellites_avail(), golden::kAvailable);
    EXPECT_EQ(got.status.num_satellites_used(), golden::kUsed);
    EXPECT_EQ(got.status.pdop(), golden::kPdop);
    EXPECT_EQ(got.status.tdop(), golden::kTdop);

    EXPECT_EQ(got.channels.num_channels(), 32);
    ASSERT_EQ(got.channels.channels().size(), 32u);
    for (size_t i = 0; i < 32; ++i) {
        const auto& channel = got.channels.channels()[i];
        const auto& expected = golden::kObservations[i];
        EXPECT_EQ(channel.prn(), expected.prn) << i;
        EXPECT_EQ(channel.channel(), expected.channel) << i;
        EXPECT_EQ(channel.rinex3_satellite_system(), expected.satelliteSystem) << i;
        EXPECT_EQ(channel.rinex3_band(), expected.band) << i;
        EXPECT_EQ(channel.rinex3_attribute(), expected.attribute) << i;
        EXPECT_EQ(channel.gnss_tracking_status(), expected.trackingStatus) << i;
        EXPECT_EQ(channel.carrier_to_noise(), expected.carrierToNoise) << i;
        EXPECT_EQ(channel.jammer_to_signal(), expected.jammerToSignal) << i;
        EXPECT_EQ(channel.used_in_solution(), expected.usedInSolution) << i;
        EXPECT_EQ(channel.gnss_corrections_used(), expected.corrections) << i;
        EXPECT_EQ(channel.assurance_level(), expected.assurance) << i;
    }

    using namespace aspn2_msgs::idl;
    EXPECT_EQ(cdrOf<PositionVelocityPubSubType>(got.position), golden::kPositionVelocityCdr);
    EXPECT_EQ(cdrOf<ReceiverStatusPubSubType>(got.status), golden::kReceiverStatusCdr);
    EXPECT_EQ(cdrOf<ChannelStatusPubSubType>(got.channels), golden::kChannelStatusCdr);
}

TEST(RovanProcessor8504, PublishesPositionThenStatusThenChannels) {
    const transport_test::ConnectionsFile file(containers(199));
    std::mutex mutex;
    std::string order;
    const auto note = [&](char letter) {
        const std::lock_guard<std::mutex> lock(mutex);
        order += letter;
    };
    const auto tss = transport_test::join(file);
    transport_test::Face<PositionVelocity> position(tss);
    transport_test::Face<ReceiverStatus> status(tss);
    transport_test::Face<ChannelStatus> channels(tss);
    // A process hears its own messages on the publishing thread, so that they come in their order.
    position.registerCallback(transport_test::connect(*tss, "PositionVelocity"),
                              [&](auto&&...) { note('P'); });
    status.registerCallback(transport_test::connect(*tss, "ReceiverStatus"),
                            [&](auto&&...) { note('S'); });
    channels.registerCallback(transport_test::connect(*tss, "ChannelStatus"),
                              [&](auto&&...) { note('C'); });
    RovanProcessor processor("Rovan", tss, ASPN2::DeviceIdFactory("TessalyPlus", 39), false);
    processor.Framework_Connect();

    processor.process8504(report().sample());
    processor.process8504(report().sample());

    const auto noted = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return order;
    };
    EXPECT_TRUE(transport_test::eventually([&] { return noted().size() == 6; }));
    EXPECT_EQ(noted(), "PSCPSC");
}

TEST(RovanProcessor8504, TranslatesPositionAndStatus) {
    ProcessorOnBus bus(200);

    // An all-zero frame is a solution at zero.
    Translation got(bus, report());
    EXPECT_EQ(got.position.position().latitude(), 0.0);
    EXPECT_EQ(got.position.position().longitude(), 0.0);
    EXPECT_EQ(got.position.position().altitude(), 0.0);
    EXPECT_THAT(got.position.velocity(), testing::Each(0.0));
    EXPECT_THAT(diagonalOf(got.position), testing::Each(0.0));
    EXPECT_FALSE(got.status.rcvr_fail());
    EXPECT_EQ(got.status.pdop(), 0.0);
    EXPECT_EQ(got.status.tdop(), 0.0);

    // Numbers by hand: PDP singles of 1, 2 and 3 are 4080, 4100 and 4140 hex; error estimates 4 m,
    // 6 m, 64 / 32 = 2 m/s and 96 / 32 = 3 m/s; dilutions 3 and 4 give 5.
    got = Translation(bus, report()
                               .word(30, 0x4080)
                               .word(32, 0x4100)
                               .word(34, 0x4140)
                               .word(44, 4)
                               .word(45, 6)
                               .word(46, 64)
                               .word(47, 96)
                               .word(55, 30)
                               .word(56, 40)
                               .word(57, 25));
    EXPECT_THAT(got.position.velocity(), testing::ElementsAre(2.0, 1.0, -3.0));
    EXPECT_THAT(diagonalOf(got.position), testing::ElementsAre(8.0, 8.0, 36.0, 2.0, 2.0, 9.0));
    EXPECT_EQ(got.status.pdop(), 5.0);
    EXPECT_EQ(got.status.tdop(), 2.5);

    // The largest estimates.
    got = Translation(bus, report().word(44, 0xFFFF).word(45, 0xFFFF).word(46, 0xFFFF));
    EXPECT_THAT(
        diagonalOf(got.position),
        testing::ElementsAre(65535.0 * 65535.0 / 2, 65535.0 * 65535.0 / 2, 65535.0 * 65535.0,
                             65535.0 / 32 * 65535.0 / 64, 65535.0 / 32 * 65535.0 / 64, 0.0));
}

TEST(RovanProcessor8504, HidesPositionAndDilutionsWithoutASolution) {
    ProcessorOnBus bus(201);
    Bytes bytes = golden::kFrame;
    bytes[10 + 96] = static_cast<uint8_t>(bytes[10 + 96] | 0x20);

    const Translation got(bus, sampleOf(bytes));

    EXPECT_EQ(got.position.position().latitude(), 0.0);
    EXPECT_EQ(got.position.position().longitude(), 0.0);
    EXPECT_EQ(got.position.position().altitude(), 0.0);
    EXPECT_THAT(got.position.velocity(), testing::Each(0.0));
    EXPECT_THAT(diagonalOf(got.position), testing::Each(kInfinity));
    EXPECT_EQ(got.status.pdop(), 0.0);
    EXPECT_EQ(got.status.tdop(), 0.0);
    // The rest is as true as ever.
    EXPECT_EQ(got.position.header().device_id(), 0x03272001);
    EXPECT_TRUE(got.status.rcvr_fail());
    EXPECT_EQ(got.status.num_satellites_avail(), golden::kAvailable);
    EXPECT_EQ(got.status.num_satellites_used(), golden::kUsed);
    EXPECT_EQ(got.channels.num_channels(), 32);
    ASSERT_EQ(got.channels.channels().size(), 32u);
    EXPECT_EQ(got.channels.channels()[31].prn(), golden::kObservations[31].prn);
}

TEST(RovanProcessor8504, SelectsTheSecondDeviceIdByBit6Or7) {
    ProcessorOnBus bus(202);
    for (unsigned flags = 0; flags < 16; ++flags) {
        // Bits 4 to 7, among them the failure and the solution bit, in all combinations; the bits
        // round them the other way.
        const Translation got(bus, report().word(kFlags, flags << 4 | (flags == 0 ? 0xFF0Fu : 0u)));

        EXPECT_EQ(got.position.header().device_id(), flags >= 4 ? 0x03272000 : 0x03272001) << flags;
        EXPECT_EQ(got.status.rcvr_fail(), (flags & 1) != 0) << flags;
        EXPECT_EQ(diagonalOf(got.position)[0], (flags & 2) != 0 ? kInfinity : 0.0) << flags;
        EXPECT_EQ(got.position.header().seq_num(), flags) << "one numbering for both ids";
    }
}

TEST(RovanProcessor8504, TranslatesEveryValueOfAChannelField) {
    ProcessorOnBus bus(203);
    Frame frame = report();
    const auto value = [](unsigned i) { return i % 16; };
    // Channels 0 to 15 count through signal code, frequency and tracking status; 16 to 31 do the
    // same with all bits round them set.
    for (unsigned i = 0; i < 32; ++i) {
        const bool set = i >= 16;
        const unsigned word1 = (set ? 0xF870u : 0u) | value(i) | value(i) << 7;
        frame.recordByte(i, 2, word1 & 0xFF).recordByte(i, 3, word1 >> 8);
        frame.recordByte(i, 7, (set ? 0xF0 : 0u) | value(i));
    }

    const Translation got(bus, frame);

    const unsigned attributes[16] = {15, 15, 1, 0, 3, 4, 4, 15, 15, 15, 15, 15, 15, 15, 15, 15};
    for (unsigned i = 0; i < 32; ++i) {
        const auto& channel = got.channels.channels()[i];
        const unsigned v = value(i);
        EXPECT_EQ(channel.rinex3_attribute(), attributes[v]) << i;
        EXPECT_EQ(channel.rinex3_band(), v == 1 ? 0u : v == 2 ? 1u : 7u) << i;
        EXPECT_EQ(channel.gnss_tracking_status(), v >= 1 && v <= 7 ? v : 0u) << i;
        EXPECT_EQ(channel.assurance_level(), i >= 16 ? 1u : 2u) << i;
        EXPECT_EQ(channel.prn(), 0) << i;
        EXPECT_FALSE(channel.used_in_solution()) << i;
    }
    EXPECT_EQ(got.status.num_satellites_avail(), 6) << "3, 4 and 5, twice";
    EXPECT_EQ(got.status.num_satellites_used(), 0);
}

TEST(RovanProcessor8504, TranslatesAChannelRecordOfZeros) {
    ProcessorOnBus bus(204);

    const Translation got(bus, report());

    for (const auto& channel : got.channels.channels()) {
        EXPECT_EQ(channel.prn(), 0);
        EXPECT_EQ(channel.channel(), 0);
        EXPECT_EQ(channel.rinex3_band(), 7u);
        EXPECT_EQ(channel.rinex3_attribute(), 15u);
        EXPECT_EQ(channel.gnss_tracking_status(), 0u);
        EXPECT_EQ(channel.carrier_to_noise(), 0.0f);
        EXPECT_EQ(channel.jammer_to_signal(), 0.0f);
        EXPECT_FALSE(channel.used_in_solution());
        EXPECT_EQ(channel.gnss_corrections_used(), 0u);
        EXPECT_EQ(channel.assurance_level(), 2u);
    }
    EXPECT_EQ(got.status.num_satellites_avail(), 0);
}

TEST(RovanProcessor8504, TranslatesTheCorrectionFlags) {
    ProcessorOnBus bus(205);
    for (unsigned flags = 0; flags < 16; ++flags) {
        // Bits 9 to 12 of the word are bits 1 to 4 of its high byte.
        const Translation got(bus, report().word(kCorrections, flags << 9));
        const unsigned expected = flags >> 2 == 2 ? 8 : (flags & 3) != 0 ? 7 : 0;
        for (const auto& channel : got.channels.channels()) {
            ASSERT_EQ(channel.gnss_corrections_used(), expected) << flags;
        }
    }
    const Translation others(bus, report().word(kCorrections, 0xE1FF));
    EXPECT_EQ(others.channels.channels()[0].gnss_corrections_used(), 0u);
}

TEST(RovanProcessor8504, DropsFramesOfAnotherLengthInSilence) {
    ProcessorOnBus bus(206);

    bus.processor.process8504(Frame(8504, 199).word(kFlags, 0x0010).sample());
    bus.processor.process8504(Frame(8504, 201).word(kFlags, 0x0010).sample());
    bus.processor.process8504(sampleOf({}));
    bus.processor.process8504(sampleOf(Bytes(10)));

    EXPECT_FALSE(bus.processor.getCurrentRcvrFail());
    EXPECT_TRUE(bus.newEvents().empty());
    EXPECT_EQ(bus.maintenance.count(), 0u);
    // The first frame that is taken still has number 0.
    const Translation got(bus, report());
    EXPECT_EQ(got.position.header().seq_num(), 0);
}

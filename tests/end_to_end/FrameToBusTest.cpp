// SPDX-License-Identifier: Apache-2.0
// What the receiver says on the line, and what comes of it on the bus and on the queue device.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <thread>

#include "gssip/GssipFrame.h"
#include "simulator/ReceiverMessages.h"
#include "tests/end_to_end/EndToEnd.h"

using namespace Simulator;
using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

/// FPGA ticks as nanoseconds on the bus: 58,982,400 a second, less 8 ns. The product needs more
/// than 64 bits for a counter that has run for weeks.
std::int64_t nanoseconds(std::uint64_t ticks) {
    __extension__ using Wide = __int128;
    return static_cast<std::int64_t>(Wide{ticks} * 1'000'000'000 / 58'982'400) - 8;
}

std::int64_t nanoseconds(const aspn2_msgs::idl::timestamp& stamp) {
    return stamp.sec() * 1'000'000'000 + stamp.nsec();
}

class FrameToBus : public EndToEnd {
  protected:
    explicit FrameToBus(const std::string& variant = "udp") : EndToEnd(variant) {}

    /// Starts the unit and sends frames until one of each message has come through: on some
    /// transports it takes seconds until both ends know each other.
    void startAndMeet(const std::filesystem::path& listenerConnections = {}) {
        startUnit(listenerConnections);
        ASSERT_TRUE(waitFor(
            [&] {
                receiver().send(frame8504(kProbe));
                receiver().waitUntilQuiet(std::chrono::seconds(10));
                return bus().position.count() > 0 && bus().receiverStatus.count() > 0 &&
                       bus().channelStatus.count() > 0;
            },
            std::chrono::seconds(60)));
        ASSERT_TRUE(waitUntilSetUp());
        // Frames stay in order, so that behind this one nothing is on its way any more.
        receiver().send(frame8504(kLastProbe));
        ASSERT_TRUE(waitFor([&] {
            return bus().position.samples().back().position().altitude() ==
                       frameAltitude(kLastProbe) &&
                   settled();
        }));
        m_positionsBefore = bus().position.count();
        m_statusesBefore = bus().receiverStatus.count();
        m_channelsBefore = bus().channelStatus.count();
    }

    /// Sends frames and keeps pace with the bus: never more on their way than the bus keeps.
    void sendFrames(unsigned count, const std::function<void(Bytes&)>& damage = {}) {
        constexpr std::size_t kAhead = 24;
        for (unsigned number = 0; number < count; ++number) {
            Bytes frame = frame8504(number);
            if (damage) {
                damage(frame);
            }
            if (isIntact(frame)) {
                m_intact.push_back(number);
            }
            receiver().send(frame);
            ASSERT_TRUE(waitFor([&] {
                return bus().channelStatus.count() + kAhead > m_channelsBefore + m_intact.size();
            })) << "frame "
                << number;
        }
        ASSERT_TRUE(receiver().waitUntilQuiet(std::chrono::seconds(30)));
    }

    /// Each intact frame became one sample of each of the three messages, in order, and nothing
    /// else did.
    void expectEachIntactFrameOnTheBus() {
        const auto sum = [](std::size_t before, const auto& topic) {
            return topic.count() - before;
        };
        waitFor([&] {
            return sum(m_positionsBefore, bus().position) >= m_intact.size() &&
                   sum(m_statusesBefore, bus().receiverStatus) >= m_intact.size() &&
                   sum(m_channelsBefore, bus().channelStatus) >= m_intact.size() && settled();
        });
        expectInOrder(bus().position.samples(), m_positionsBefore);
        expectInOrder(bus().receiverStatus.samples(), m_statusesBefore);
        expectInOrder(bus().channelStatus.samples(), m_channelsBefore);
        // The frame's number is in its position.
        const auto positions = bus().position.samples();
        ASSERT_EQ(positions.size(), m_positionsBefore + m_intact.size());
        for (std::size_t i = 0; i < m_intact.size(); ++i) {
            ASSERT_NEAR(positions.at(m_positionsBefore + i).position().latitude(),
                        0.5 + m_intact[i] * 1e-6, 1e-9);
        }
    }

    std::vector<unsigned> m_intact;  // numbers of the intact frames sent
    std::size_t m_positionsBefore = 0;
    std::size_t m_statusesBefore = 0;
    std::size_t m_channelsBefore = 0;

  private:
    static constexpr unsigned kProbe = 1;
    static constexpr unsigned kLastProbe = 2;

    /// The latest samples of the three messages are of one frame: none is on its way any more.
    bool settled() {
        const auto last = [](const auto& samples) { return samples.back().header().seq_num(); };
        const auto position = last(bus().position.samples());
        return position == last(bus().receiverStatus.samples()) &&
               position == last(bus().channelStatus.samples());
    }

    template <typename T>
    void expectInOrder(const std::vector<T>& samples, std::size_t before) {
        ASSERT_EQ(samples.size() - before, m_intact.size());
        for (std::size_t i = before; i < samples.size(); ++i) {
            ASSERT_EQ(samples[i].header().seq_num(),
                      samples[before].header().seq_num() + static_cast<std::int64_t>(i - before));
        }
    }
};

class EachTransport : public FrameToBus,
                      public testing::WithParamInterface<std::pair<const char*, const char*>> {
  protected:
    EachTransport() : FrameToBus(GetParam().first) {}
};

/// What a process has used so far, by all its threads.
std::chrono::milliseconds processorTime(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(stat)), {});
    // Fields 14 and 15, counted behind the name in brackets, in clock ticks.
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string skipped;
    for (int i = 3; i < 14; ++i) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return std::chrono::milliseconds((user + system) * 1000 / sysconf(_SC_CLK_TCK));
}

}  // namespace

TEST_F(FrameToBus, A8504BecomesPositionStatusAndChannels) {
    startAndMeet();
    receiver().send(frame8504(7));
    ASSERT_TRUE(waitFor([&] { return bus().channelStatus.count() == m_channelsBefore + 1; }));

    // The values of frame8504(7) to the resolution of their place in the frame; velocities are
    // north, east, down.
    const auto position = bus().position.samples().back();
    EXPECT_NEAR(position.position().latitude(), 0.500007, 1e-11);
    EXPECT_NEAR(position.position().longitude(), -1.249993, 1e-11);
    EXPECT_EQ(position.position().altitude(), 107.0);
    EXPECT_EQ(position.velocity(), (std::array<double, 3>{-4.0, 3.0, -0.5}));
    // Horizontal error 2 m, vertical 3 m, velocities 0.25 and 0.5 m/s.
    const std::array<double, 6> diagonal{2.0, 2.0, 9.0, 0.03125, 0.03125, 0.25};
    for (std::size_t row = 0; row < 6; ++row) {
        for (std::size_t column = 0; column < 6; ++column) {
            EXPECT_EQ(position.covariance()[row][column], row == column ? diagonal[row] : 0.0);
        }
    }

    const auto status = bus().receiverStatus.samples().back();
    EXPECT_FALSE(status.rcvr_fail());
    EXPECT_EQ(status.num_satellites_avail(), 12);
    EXPECT_EQ(status.num_satellites_used(), 9);
    EXPECT_NEAR(status.pdop(), std::sqrt(1.1 * 1.1 + 1.7 * 1.7), 1e-12);
    EXPECT_NEAR(status.tdop(), 0.9, 1e-12);

    const auto channels = bus().channelStatus.samples().back();
    ASSERT_EQ(channels.num_channels(), 32);
    ASSERT_EQ(channels.channels().size(), 32u);
    EXPECT_EQ(channels.channels()[11].prn(), 12);
    EXPECT_EQ(channels.channels()[11].channel(), 11);
    EXPECT_EQ(channels.channels()[11].gnss_tracking_status(), 5u);
    EXPECT_EQ(channels.channels()[11].carrier_to_noise(), 40.0f);
    EXPECT_TRUE(channels.channels()[8].used_in_solution());
    EXPECT_FALSE(channels.channels()[9].used_in_solution());
    EXPECT_EQ(channels.channels()[31].prn(), 0);
}

TEST_F(FrameToBus, EachSampleCarriesTheRegistersOfItsFrame) {
    // No pulse of the receiver's own comes in between.
    m_unitOptions.receiver.epoch = std::chrono::hours(1);
    startAndMeet();
    std::mt19937_64 random(1);
    // Up to some 23 days of counting, beyond which the tick rule leaves its range.
    std::uniform_int_distribution<std::uint64_t> ticks(1, 118'000'000'000'000);
    std::vector<FrameStamps> stamps;
    for (unsigned i = 0; i < 50; ++i) {
        stamps.push_back({ticks(random), ticks(random)});
        receiver().send(frame8504(i), stamps.back());
        // The registers hold the latest frame's stamps only.
        ASSERT_TRUE(waitFor(
            [&] { return bus().channelStatus.count() >= m_channelsBefore + stamps.size(); }));
    }

    const auto check = [&](const auto& all, std::size_t before) {
        ASSERT_EQ(all.size(), before + stamps.size());
        for (std::size_t i = 0; i < stamps.size(); ++i) {
            const auto& header = all[before + i].header();
            EXPECT_EQ(nanoseconds(header.timestamp_arrival()), nanoseconds(*stamps[i].uart)) << i;
            EXPECT_EQ(nanoseconds(header.timestamp_valid()), nanoseconds(*stamps[i].pulse)) << i;
            EXPECT_EQ(header.timestamp_arrival().time_code(), 100);
        }
    };
    check(bus().position.samples(), m_positionsBefore);
    check(bus().receiverStatus.samples(), m_statusesBefore);
    check(bus().channelStatus.samples(), m_channelsBefore);
}

TEST_P(EachTransport, CarriesEveryFrame) {
    startAndMeet(m_deployment.connectionsFileOf(GetParam().second));
    sendFrames(200);
    expectEachIntactFrameOnTheBus();
    EXPECT_EQ(m_intact.size(), 200u);
}

// The variant of the server, and that of the listener.
INSTANTIATE_TEST_SUITE_P(FrameToBus, EachTransport,
                         testing::Values(std::pair("shm", "shm"), std::pair("udp", "udp"),
                                         std::pair("tcp-server", "tcp-client"),
                                         std::pair("tcp-client", "tcp-server")),
                         [](const auto& test) {
                             std::string name = test.param.first;
                             name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                             return name;
                         });

TEST_F(FrameToBus, EveryFrameWhoseChecksumsHoldReachesTheBusOnceBetweenDamagedOnes) {
    startAndMeet();
    std::mt19937 random(20'240'918);
    std::uniform_int_distribution<unsigned> oneIn2000(0, 1999);
    std::uniform_int_distribution<unsigned> bit(0, 7);
    unsigned damaged = 0;
    sendFrames(10'000, [&](Bytes& frame) {
        for (std::uint8_t& byte : frame) {
            if (oneIn2000(random) == 0) {
                byte = static_cast<std::uint8_t>(byte ^ (1u << bit(random)));
                ++damaged;
            }
        }
    });
    expectEachIntactFrameOnTheBus();
    // 10,000 frames of 412 bytes: some 2,060 damaged bytes in some 1,860 frames.
    EXPECT_NEAR(damaged, 2060, 300);
    EXPECT_NEAR(static_cast<double>(m_intact.size()), 8140, 300);
}

TEST_F(FrameToBus, NoiseOnTheLineCostsNoFrame) {
    startAndMeet();
    for (int round = 0; round < 20; ++round) {
        receiver().garbage(1000);
        sendFrames(3);
        expectEachIntactFrameOnTheBus();
    }
}

TEST_F(FrameToBus, FramesOfWrongLengthsForEveryMessageAreDroppedAndTheServerGoesOn) {
    startAndMeet();
    const std::pair<std::uint16_t, unsigned> known[] = {
        {8, 4},      {253, 4},   {5040, 88},  {5042, 100}, {5044, 21}, {5047, 100},
        {5048, 100}, {5404, 60}, {7270, 59},  {8040, 25},  {8080, 6},  {8504, 200},
        {9225, 416}, {9391, 84}, {9405, 104}, {9409, 32},  {30409, 32}};
    unsigned frames = 0;
    for (const auto& [msgId, words] : known) {
        for (const unsigned length : {0u, 1u, 2u, words - 1, words + 1, words + 2, 500u, 5000u}) {
            receiver().send(makeFrame(msgId, Gssip::kFlagFrameMarker, Words(length, 0xFFFF)));
            ++frames;
        }
    }
    EXPECT_EQ(frames, 17u * 8u);
    sendFrames(1);
    expectEachIntactFrameOnTheBus();
    EXPECT_TRUE(terminate().good());
}

TEST_F(FrameToBus, AFrameThatAsksForItIsAcknowledged) {
    startAndMeet();
    Bytes frame = frame8504(1);
    const Words data = [&] {
        Words words;
        for (std::size_t i = Gssip::kWordData; i < frame.size() / 2 - 1; ++i) {
            words.push_back(frameWord(frame, i));
        }
        return words;
    }();
    receiver().send(makeFrame(8504, Gssip::kFlagsTypedMessage, data));
    EXPECT_TRUE(receiver()
                    .ledger()
                    .heard()
                    .waitFor(
                        [](const HeardFrame& entry) {
                            return entry.frame.msgId() == 8504 &&
                                   entry.frame.flags() == Gssip::kFlagsAckAnswer;
                        },
                        std::chrono::seconds(10))
                    .has_value());
}

TEST_F(FrameToBus, PutsEachFrameOnTheQueueDeviceAsItCame) {
    m_deployment.setServer("PARAM_9", "9391");
    startAndMeet();
    const Bytes excluded = makeFrame(9391, Gssip::kFlagFrameMarker, Words(84, 1));
    const Bytes unknown = makeFrame(12345, Gssip::kFlagFrameMarker, Words(3, 2));
    receiver().send(excluded);
    receiver().send(unknown);
    EXPECT_TRUE(m_unit->queues()
                    .samples()
                    .waitFor([&](const GssipSample& sample) { return sample.frame == unknown; },
                             std::chrono::seconds(10))
                    .has_value());
    for (const GssipSample& sample : m_unit->queues().samples().entries()) {
        EXPECT_NE(sample.frame, excluded);
    }
    EXPECT_EQ(m_unit->queues().malformed(), 0u);
}

TEST_F(FrameToBus, AfterThePlugWasOutTheFramesFlowAgain) {
    startAndMeet();
    m_unit->line().unplug();
    for (unsigned i = 0; i < 5; ++i) {
        receiver().send(frame8504(i));
    }
    ASSERT_TRUE(receiver().waitUntilQuiet(std::chrono::seconds(10)));
    m_unit->line().plug();
    sendFrames(5);
    expectEachIntactFrameOnTheBus();
}

TEST_F(FrameToBus, AHungUpLineTakesNoProcessorAndTheServerStillStops) {
    startAndMeet();
    m_unit->line().hangUp();
    const auto before = processorTime(server().pid());
    std::this_thread::sleep_for(std::chrono::seconds(2));
    // A loop that never waits would take most of these two seconds.
    EXPECT_LT(processorTime(server().pid()) - before, std::chrono::milliseconds(700));
    EXPECT_TRUE(terminate().good());
}

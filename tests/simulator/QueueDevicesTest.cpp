// SPDX-License-Identifier: Apache-2.0
#include "simulator/QueueDevices.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::Bytes;
using Simulator::FileDescriptor;
using Simulator::GssipSample;
using Simulator::QueueDevices;
using SimulatorTest::eventually;
using SimulatorTest::kSoon;

GssipSample sample(std::int64_t number, std::size_t frameBytes) {
    GssipSample result;
    result.sequenceNumber = number;
    result.frame = Bytes(frameBytes, static_cast<std::uint8_t>(number));
    return result;
}

class QueueDevicesTest : public testing::Test {
  protected:
    QueueDevicesTest() { m_queues.start(); }
    ~QueueDevicesTest() override { m_queues.stop(); }

    static void write(const FileDescriptor& device, const Bytes& bytes) {
        ASSERT_EQ(::write(device.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    static Bytes read(const FileDescriptor& device) {
        pollfd entry{device.get(), POLLIN, 0};
        Bytes bytes(8192);
        if (poll(&entry, 1, 5000) <= 0) {
            return {};
        }
        const ssize_t count = ::read(device.get(), bytes.data(), bytes.size());
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

    QueueDevices m_queues{20, 21};
};

TEST_F(QueueDevicesTest, KeepsTheSamplesThatTheServerPutsOnRovanKd) {
    const FileDescriptor server(open("/dev/mcs20", O_RDWR | O_NOCTTY));
    ASSERT_TRUE(server);
    Bytes two = sample(1, 412).encode();
    const Bytes second = sample(2, 10).encode();
    two.insert(two.end(), second.begin(), second.end());
    write(server, two);
    ASSERT_TRUE(eventually([&] { return m_queues.samples().count() == 2; }));
    const auto samples = m_queues.samples().entries();
    EXPECT_EQ(samples[0].sequenceNumber, 1);
    EXPECT_EQ(samples[0].frame, Bytes(412, 1));
    EXPECT_EQ(samples[1].sequenceNumber, 2);
    EXPECT_EQ(samples[1].frame, Bytes(10, 2));
    EXPECT_EQ(m_queues.malformed(), 0u);
}

TEST_F(QueueDevicesTest, PutsTogetherASampleThatComesInPieces) {
    const FileDescriptor server(open("/dev/mcs20", O_RDWR | O_NOCTTY));
    const Bytes whole = sample(3, 100).encode();
    write(server, Bytes(whole.begin(), whole.begin() + 30));
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_EQ(m_queues.samples().count(), 0u);
    write(server, Bytes(whole.begin() + 30, whole.end()));
    EXPECT_TRUE(eventually([&] { return m_queues.samples().count() == 1; }));
}

TEST_F(QueueDevicesTest, TheServerNeverReadsItsOwnSamplesBack) {
    const FileDescriptor server(open("/dev/mcs20", O_RDWR | O_NOCTTY));
    write(server, sample(4, 10).encode());
    ASSERT_TRUE(eventually([&] { return m_queues.samples().count() == 1; }));
    pollfd entry{server.get(), POLLIN, 0};
    EXPECT_EQ(poll(&entry, 1, 50), 0);
}

TEST_F(QueueDevicesTest, CountsWhatIsNoSampleAndGoesOn) {
    const FileDescriptor server(open("/dev/mcs20", O_RDWR | O_NOCTTY));
    write(server, Bytes(100, 0x77));
    ASSERT_TRUE(eventually([&] { return m_queues.malformed() == 1; }));
    write(server, sample(5, 10).encode());
    EXPECT_TRUE(eventually([&] { return m_queues.samples().count() == 1; }));
}

TEST_F(QueueDevicesTest, PassesAFrameThroughAsOneSample) {
    const FileDescriptor server(open("/dev/mcs21", O_RDONLY | O_NONBLOCK));
    ASSERT_TRUE(server);
    const Bytes frame(2012, 0x5A);
    ASSERT_TRUE(m_queues.passThrough(frame));
    const Bytes bytes = read(server);
    ASSERT_EQ(bytes.size(), frame.size() + 56);
    const auto decoded = GssipSample::decode(bytes.data(), bytes.size());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->frame, frame);
}

TEST_F(QueueDevicesTest, AFullQueueRefusesAndDoesNotBlock) {
    int taken = 0;
    while (taken < 10'000 && m_queues.passThrough(Bytes(2012))) {
        ++taken;
    }
    EXPECT_GT(taken, 10);
    EXPECT_LT(taken, 10'000);
}

TEST_F(QueueDevicesTest, AnotherProcessCanWriteWhatTheServerReadsFromRovanKd) {
    const FileDescriptor server(open("/dev/mcs20", O_RDWR | O_NOCTTY));
    const Bytes bytes = sample(6, 40).encode();
    ASSERT_TRUE(m_queues.writeRovanKd(bytes));
    EXPECT_EQ(read(server), bytes);
}

TEST(QueueDevices, AreAPseudoTerminalAndAFifoAndGoWithTheirOwner) {
    struct stat node {};
    {
        const QueueDevices queues(30, 31);
        ASSERT_EQ(stat("/dev/mcs30", &node), 0);
        EXPECT_TRUE(S_ISCHR(node.st_mode));
        ASSERT_EQ(stat("/dev/mcs31", &node), 0);
        EXPECT_TRUE(S_ISFIFO(node.st_mode));
    }
    EXPECT_NE(lstat("/dev/mcs30", &node), 0);
    EXPECT_NE(lstat("/dev/mcs31", &node), 0);
}

}  // namespace

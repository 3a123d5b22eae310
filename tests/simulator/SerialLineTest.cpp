// SPDX-License-Identifier: Apache-2.0
#include "simulator/SerialLine.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <mutex>
#include <string>

#include "simulator/FileDescriptor.h"
#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::FileDescriptor;
using Simulator::SerialLine;
using SimulatorTest::eventually;
using std::chrono::milliseconds;

// The server's end is opened by its device name, as the server does it.
class SerialLineTest : public testing::Test {
  protected:
    SerialLineTest() {
        m_line.start([this](const std::uint8_t* bytes, std::size_t count) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_heard.append(reinterpret_cast<const char*>(bytes), count);
        });
    }
    ~SerialLineTest() override { m_line.stop(); }

    static FileDescriptor openServerEnd() {
        return FileDescriptor(open("/dev/ttyS3", O_RDWR | O_NOCTTY));
    }
    static void setSpeed(const FileDescriptor& end, speed_t speed) {
        termios settings{};
        ASSERT_EQ(tcgetattr(end.get(), &settings), 0);
        cfsetispeed(&settings, speed);
        cfsetospeed(&settings, speed);
        ASSERT_EQ(tcsetattr(end.get(), TCSANOW, &settings), 0);
    }
    bool say(const std::string& text, int speed = 115200) {
        return m_line.say(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), speed);
    }
    static std::string readSome(const FileDescriptor& end, milliseconds timeout) {
        pollfd entry{end.get(), POLLIN, 0};
        char buffer[4096];
        if (poll(&entry, 1, static_cast<int>(timeout.count())) <= 0) {
            return "";
        }
        const ssize_t count = read(end.get(), buffer, sizeof buffer);
        return count > 0 ? std::string(buffer, static_cast<std::size_t>(count)) : "";
    }
    static std::string readAll(const FileDescriptor& end, std::size_t count) {
        std::string text;
        while (text.size() < count) {
            const std::string more = readSome(end, milliseconds(5000));
            if (more.empty()) {
                break;
            }
            text += more;
        }
        return text;
    }
    std::string heard() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_heard;
    }
    static void write(const FileDescriptor& end, const std::string& text) {
        ASSERT_EQ(::write(end.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    SerialLine m_line{3};
    std::mutex m_mutex;
    std::string m_heard;
};

const std::string kAllBytes = [] {
    std::string bytes;
    for (int i = 0; i < 256; ++i) {
        bytes += static_cast<char>(i);
    }
    return bytes;
}();

TEST_F(SerialLineTest, CarriesEveryByteAsItIsInBothDirections) {
    const FileDescriptor server = openServerEnd();
    ASSERT_TRUE(server);
    write(server, kAllBytes);
    EXPECT_TRUE(eventually([&] { return heard() == kAllBytes; }));
    EXPECT_TRUE(say(kAllBytes));
    EXPECT_EQ(readAll(server, 256), kAllBytes);
    EXPECT_EQ(readSome(server, milliseconds(20)), "") << "an echo";
}

TEST_F(SerialLineTest, SeesTheSpeedThatTheServerSets) {
    const FileDescriptor server = openServerEnd();
    setSpeed(server, B9600);
    EXPECT_EQ(m_line.serverSpeed(), 9600);
    setSpeed(server, B921600);
    EXPECT_EQ(m_line.serverSpeed(), 921600);
}

TEST_F(SerialLineTest, OutlastsAServerThatClosesAndOpensTheDevice) {
    openServerEnd().reset();
    const FileDescriptor server = openServerEnd();
    EXPECT_TRUE(say("again"));
    EXPECT_EQ(readAll(server, 5), "again");
    write(server, "yes");
    EXPECT_TRUE(eventually([&] { return heard() == "yes"; }));
}

TEST_F(SerialLineTest, TakesTheLinesTimeWhenItIsPaced) {
    const FileDescriptor server = openServerEnd();
    m_line.setPaced(true);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(say(kAllBytes, 115200));
    const auto took = std::chrono::steady_clock::now() - begin;
    // 256 characters of 10 bits at 115200 bits a second are 22.2 ms.
    EXPECT_GE(took, milliseconds(22));
    EXPECT_EQ(readAll(server, 256), kAllBytes);
}

TEST_F(SerialLineTest, UnpluggedNothingComesThroughAndBothEndsStayOpen) {
    const FileDescriptor server = openServerEnd();
    m_line.unplug();
    EXPECT_FALSE(say("lost"));
    write(server, "lost");
    EXPECT_EQ(readSome(server, milliseconds(50)), "");
    EXPECT_EQ(heard(), "");
    m_line.plug();
    EXPECT_TRUE(say("here"));
    EXPECT_EQ(readAll(server, 4), "here");
    write(server, "there");
    EXPECT_TRUE(eventually([&] { return heard() == "there"; }));
}

TEST_F(SerialLineTest, AHangUpKillsTheServersEndAndRemovesTheDevice) {
    const FileDescriptor server = openServerEnd();
    m_line.hangUp();
    char byte = 0;
    EXPECT_LE(read(server.get(), &byte, 1), 0);
    EXPECT_FALSE(openServerEnd());
    EXPECT_EQ(m_line.serverSpeed(), 0);
    EXPECT_FALSE(say("nobody"));
}

TEST_F(SerialLineTest, AfterAHangUpThereIsANewLineUnderTheOldName) {
    m_line.hangUp();
    m_line.plug();
    const FileDescriptor server = openServerEnd();
    ASSERT_TRUE(server);
    EXPECT_TRUE(say("new"));
    EXPECT_EQ(readAll(server, 3), "new");
    write(server, "line");
    EXPECT_TRUE(eventually([&] { return heard() == "line"; }));
}

TEST_F(SerialLineTest, LosesWhatNobodyReadsInsteadOfWaitingForEver) {
    const FileDescriptor server = openServerEnd();
    const std::string much(1'000'000, 'x');
    EXPECT_FALSE(say(much));
    EXPECT_FALSE(say("more"));
    tcflush(server.get(), TCIFLUSH);
    EXPECT_TRUE(eventually([&] { return say("room again"); }));
}

}  // namespace

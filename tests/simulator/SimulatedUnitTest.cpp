// SPDX-License-Identifier: Apache-2.0
// The unit as a whole; the test plays the server on its devices.
#include "simulator/SimulatedUnit.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using namespace Simulator;
using SimulatorTest::eventually;
using SimulatorTest::kSoon;
using SimulatorTest::TemporaryDirectory;
using std::chrono::milliseconds;

UnitOptions quickOptions() {
    UnitOptions options;
    options.configFile = ROVAN_SOURCE_DIR "/config/udp/rovan.xml";
    options.receiver.bootTime = milliseconds(30);
    options.receiver.epoch = milliseconds(50);
    return options;
}

// The server's end of the line at the speed of the deployment.
FileDescriptor openLine() {
    FileDescriptor line(open("/dev/ttyS0", O_RDWR | O_NOCTTY));
    termios settings{};
    tcgetattr(line.get(), &settings);
    cfmakeraw(&settings);
    cfsetispeed(&settings, B115200);
    cfsetospeed(&settings, B115200);
    tcsetattr(line.get(), TCSANOW, &settings);
    return line;
}

void write(const FileDescriptor& line, const Bytes& bytes) {
    ASSERT_EQ(::write(line.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

// The next frame with this id that is no answer.
ScannedFrame readFrame(const FileDescriptor& line, std::uint16_t msgId) {
    FrameScanner scanner;
    for (int reads = 0; reads < 1000; ++reads) {
        pollfd entry{line.get(), POLLIN, 0};
        std::uint8_t byte = 0;
        if (poll(&entry, 1, 5000) <= 0 || read(line.get(), &byte, 1) != 1) {
            break;
        }
        for (const ScannedFrame& frame : scanner.feed(&byte, 1)) {
            if (frame.msgId() == msgId && (frame.flags() & 0x0E00) == 0) {
                return frame;
            }
        }
    }
    return {ScannedFrame::Kind::Stray, {}};
}

TEST(SimulatedUnit, SpeaksWithWhoeverOpensItsLine) {
    SimulatedUnit unit(quickOptions());
    unit.start();
    const FileDescriptor line = openLine();
    write(line, makeFrame(9405, 0x9040));
    EXPECT_EQ(readFrame(line, 9405).kind, ScannedFrame::Kind::Intact);
    EXPECT_THAT(unit.receiver().connected(), testing::ElementsAre(9405));
    EXPECT_EQ(unit.stop(), std::nullopt);
}

TEST(SimulatedUnit, AFrameFindsItsStampsInTheRegistersOfTheDeployment) {
    SimulatedUnit unit(quickOptions());
    unit.start();
    const MemoryRegion timeStamp = unit.memory().map(0x40030000, 0x400);
    const FileDescriptor line = openLine();
    for (std::uint64_t i = 1; i <= 5; ++i) {
        FrameStamps stamps;
        stamps.uart = 1000 * i;
        stamps.pulse = 999 * i;
        unit.receiver().send(makeFrame(253, 0x8000, Words(4)), stamps);
        ASSERT_EQ(readFrame(line, 253).kind, ScannedFrame::Kind::Intact);
        EXPECT_EQ(timeStamp.read64(512), 1000 * i);
    }
    unit.receiver().send(makeFrame(253, 0x8000, Words(4)));
    ASSERT_EQ(readFrame(line, 253).kind, ScannedFrame::Kind::Intact);
    EXPECT_GT(timeStamp.read64(512), 5000u) << "the time base's own without others";
}

TEST(SimulatedUnit, PulsesInEveryEpoch) {
    SimulatedUnit unit(quickOptions());
    const MemoryRegion timeStamp = unit.memory().map(0x40030000, 0x400);
    unit.start();
    const std::uint64_t first = timeStamp.read64(136);
    std::uint64_t second = first;
    ASSERT_TRUE(eventually([&] { return (second = timeStamp.read64(136)) != first; }));
    ASSERT_TRUE(eventually([&] { return timeStamp.read64(136) != second; }));
}

TEST(SimulatedUnit, PlaysItsScenarioFromTheStart) {
    UnitOptions options = quickOptions();
    options.scenario = Scenario::parse("rerad on\non power-off reject 9405");
    SimulatedUnit unit(options);
    unit.start();
    EXPECT_EQ(unit.scenario().played().count(), 1u);
    const FileDescriptor line = openLine();
    write(line, makeFrame(9405, 0x9010));
    EXPECT_EQ(readFrame(line, 9405).data(86), 0x4000);
    unit.memory().map(0x40000460, 4).write32(0, 0);
    EXPECT_TRUE(eventually([&] { return unit.scenario().played().count() == 2; }));
}

TEST(SimulatedUnit, TheDevmemCommandSwitchesTheReceiver) {
    SimulatedUnit unit(quickOptions());
    unit.start();
    setenv("PATH", unit.devmem().inFrontOf(std::getenv("PATH")).c_str(), 1);
    const FileDescriptor line = openLine();
    EXPECT_EQ(std::system("devmem 0x4000045C 32 1"), 0);
    EXPECT_TRUE(eventually([&] { return !unit.receiver().running(); }));
    EXPECT_EQ(std::system("devmem 0x40000460 32 0"), 0);
    EXPECT_EQ(std::system("devmem 0x40000460 32 1"), 0);
    EXPECT_EQ(std::system("devmem 0x4000045C 32 0"), 0);
    EXPECT_EQ(readFrame(line, 8).kind, ScannedFrame::Kind::Intact);
    EXPECT_TRUE(unit.receiver().running());
    EXPECT_THAT(unit.devmem().calls(), testing::ElementsAre("0x4000045C 32 1", "0x40000460 32 0",
                                                            "0x40000460 32 1", "0x4000045C 32 0"));
}

TEST(SimulatedUnit, StartsTheServerWhereItsFileIsAndWithItsDevmemInFront) {
    const TemporaryDirectory directory;
    UnitOptions options = quickOptions();
    options.server = directory.script("server",
                                      "trap 'exit 0' TERM\n"
                                      "echo $(command -v devmem) $1 $(basename $(pwd))\n"
                                      "while :; do sleep 0.01; done\n");
    SimulatedUnit unit(options);
    unit.start();
    EXPECT_TRUE(unit.server()->console().waitFor(
        [](const ConsoleLine& line) {
            return line.text == "/dev/simulated-unit/bin/devmem rovan.xml udp";
        },
        kSoon));
    const auto end = unit.stop();
    ASSERT_TRUE(end);
    EXPECT_TRUE(end->good()) << end->text();
}

TEST(SimulatedUnit, LeavesNoDeviceBehindAndCanBeMadeAgain) {
    {
        SimulatedUnit unit(quickOptions());
        unit.start();
        unit.stop();
        unit.stop();
    }
    for (const char* const device :
         {"/dev/mem", "/dev/ttyS0", "/dev/mcs10", "/dev/mcs11", "/dev/simulated-unit/bin"}) {
        EXPECT_NE(access(device, F_OK), 0) << device;
    }
    SimulatedUnit again(quickOptions());
    again.start();
}

TEST(SimulatedUnit, ADestroyedUnitThatWasNeverStartedIsHarmless) {
    const SimulatedUnit unit(quickOptions());
}

TEST(SimulatedUnit, SaysWhatIsWrongWithItsFiles) {
    UnitOptions options = quickOptions();
    options.configFile = "/nowhere/rovan.xml";
    EXPECT_THROW(SimulatedUnit unit(options), std::runtime_error);
    options = quickOptions();
    options.server = "/nowhere/server";
    SimulatedUnit unit(options);
    EXPECT_THROW(unit.start(), std::runtime_error);
}

}  // namespace

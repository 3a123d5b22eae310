// SPDX-License-Identifier: Apache-2.0
// Every fault of the unit by its name, and what the server's end of it sees.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "gssip/GssipFrame.h"
#include "simulator/SimulatedUnit.h"
#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using namespace Simulator;
using SimulatorTest::eventually;
using SimulatorTest::kSoon;
using std::chrono::milliseconds;

// The server's end of the line, which keeps the latest bytes that came.
class ServerEnd {
  public:
    ServerEnd() : m_fd(open("/dev/ttyS0", O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        termios settings{};
        tcgetattr(m_fd.get(), &settings);
        cfmakeraw(&settings);
        cfsetispeed(&settings, B115200);
        cfsetospeed(&settings, B115200);
        tcsetattr(m_fd.get(), TCSANOW, &settings);
    }

    void write(const Bytes& bytes) const {
        ASSERT_EQ(::write(m_fd.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    /// A message that asks for an ACK and a reply.
    void send(std::uint16_t msgId) const {
        write(makeFrame(msgId, Gssip::kFlagFrameMarker | Gssip::kFlagAckRequest, {0}));
    }
    /// From now on the receiver says this report in every epoch.
    void connect(std::uint16_t msgId) const {
        write(makeFrame(msgId, Gssip::kFlagFrameMarker | Gssip::kFlagConnect));
    }

    /// Takes what has come since; damaged and stray bytes count too.
    void take() {
        std::uint8_t buffer[4096];
        for (ssize_t count = 0; (count = read(m_fd.get(), buffer, sizeof buffer)) > 0;) {
            m_bytes.insert(m_bytes.end(), buffer, buffer + count);
            for (ScannedFrame& frame : m_scanner.feed(buffer, static_cast<std::size_t>(count))) {
                m_frames.push_back(std::move(frame));
            }
        }
    }
    void forget() {
        take();
        m_bytes.clear();
        m_frames.clear();
        m_scanner.reset();
    }
    const Bytes& bytes() const { return m_bytes; }

    std::ptrdiff_t count(std::uint16_t msgId, std::uint16_t flags) {
        take();
        return std::count_if(m_frames.begin(), m_frames.end(), [&](const ScannedFrame& frame) {
            return frame.kind == ScannedFrame::Kind::Intact && frame.msgId() == msgId &&
                   frame.flags() == flags;
        });
    }
    std::ptrdiff_t countNotIntact() {
        take();
        return std::count_if(m_frames.begin(), m_frames.end(), [](const ScannedFrame& frame) {
            return frame.kind != ScannedFrame::Kind::Intact;
        });
    }

  private:
    const FileDescriptor m_fd;
    FrameScanner m_scanner;
    Bytes m_bytes;
    std::vector<ScannedFrame> m_frames;
};

constexpr std::uint16_t kReport = Gssip::kFlagFrameMarker;
constexpr std::uint16_t kReply = Gssip::kFlagFrameMarker | Gssip::kFlagReply;
constexpr std::uint16_t kReject = kReply | Gssip::kFlagReject;

UnitOptions quickOptions() {
    UnitOptions options;
    options.configFile = ROVAN_SOURCE_DIR "/config/udp/rovan.xml";
    options.receiver.bootTime = milliseconds(30);
    options.receiver.epoch = milliseconds(10);
    return options;
}

// A unit without a server. What lasts is ordered first and undone by its own second word, as
// somebody does who types.
class Faults : public testing::Test {
  protected:
    Faults() : m_unit(quickOptions()) { m_unit.start(); }

    /// Carries the order out, and comes back when it has been.
    void order(const std::string& text) {
        const auto played = m_unit.scenario().played().count();
        m_unit.scenario().order(ScenarioStatement::parse("test", text));
        ASSERT_TRUE(eventually([&] { return m_unit.scenario().played().count() > played; }));
    }
    bool reportsFlow() {
        m_end.forget();
        return eventually([&] { return m_end.count(8080, kReport) >= 3; });
    }
    /// None comes in what is some twenty epochs and more.
    bool reportsStay() {
        EXPECT_TRUE(m_unit.receiver().waitUntilQuiet(kSoon));
        m_end.forget();
        const auto before = m_unit.receiver().ledger().totals();
        std::this_thread::sleep_for(milliseconds(200));
        const auto after = m_unit.receiver().ledger().totals();
        EXPECT_EQ(after.saidIntact, before.saidIntact);
        return m_end.count(8080, kReport) == 0;
    }

    SimulatedUnit m_unit;
    ServerEnd m_end;
};

TEST_F(Faults, BitErrorsDamageFramesInBothDirections) {
    m_end.connect(8080);
    ASSERT_TRUE(reportsFlow());
    // A 8080 frame is 24 bytes: four in five come damaged.
    order("bit-errors 0.01");
    EXPECT_TRUE(eventually([&] { return m_end.countNotIntact() >= 10; }));
    EXPECT_TRUE(eventually([&] {
        m_end.send(5402);
        return m_unit.receiver().ledger().totals().heardDamaged > 0;
    }));
    order("bit-errors 0");
    // Looked at from between two frames on.
    order("silence");
    ASSERT_TRUE(m_unit.receiver().waitUntilQuiet(kSoon));
    m_end.forget();
    order("speak");
    EXPECT_TRUE(eventually([&] { return m_end.count(8080, kReport) >= 3; }));
    EXPECT_EQ(m_end.countNotIntact(), 0);
}

TEST_F(Faults, BurstsDamageBytesInARow) {
    m_end.connect(8080);
    ASSERT_TRUE(reportsFlow());
    const auto before = m_unit.receiver().ledger().totals();
    order("bursts 20 20ms");
    EXPECT_TRUE(eventually(
        [&] { return m_unit.receiver().ledger().totals().saidDamaged >= before.saidDamaged + 5; }));
    EXPECT_GT(m_end.countNotIntact(), 0);
    order("bursts 0");
    EXPECT_TRUE(reportsFlow());
}

TEST_F(Faults, AnswersAreDroppedDelayedOrTurnedAround) {
    order("drop-ack 5402");
    m_end.send(5402);
    ASSERT_TRUE(eventually([&] { return m_end.count(5402, kReply) == 1; }));
    EXPECT_EQ(m_end.count(5402, Gssip::kFlagsAckAnswer), 0);

    m_end.forget();
    order("drop-reply 5402");
    m_end.send(5402);
    m_end.send(5331);
    ASSERT_TRUE(eventually([&] { return m_end.count(5331, kReply) == 1; }));
    EXPECT_EQ(m_end.count(5402, Gssip::kFlagsAckAnswer), 1);
    EXPECT_EQ(m_end.count(5402, kReply), 0);

    m_end.forget();
    order("nak 5402");
    order("reject 5331");
    m_end.send(5402);
    m_end.send(5331);
    EXPECT_TRUE(eventually([&] { return m_end.count(5331, kReject) == 1; }));
    EXPECT_EQ(m_end.count(5402, Gssip::kFlagsNakAnswer), 1);

    m_end.forget();
    order("delay-ack 100ms 5402");
    m_end.send(5402);
    EXPECT_TRUE(eventually([&] { return m_end.count(5402, kReply) == 1; }));
    EXPECT_EQ(m_end.count(5402, Gssip::kFlagsAckAnswer), 0);
    EXPECT_TRUE(eventually([&] { return m_end.count(5402, Gssip::kFlagsAckAnswer) == 1; }));
}

TEST_F(Faults, SilenceLastsForItsTime) {
    m_end.connect(8080);
    ASSERT_TRUE(reportsFlow());
    order("silence for 300ms");
    EXPECT_EQ(m_unit.scenario().played().entries().back().ended, false);
    ASSERT_TRUE(eventually([&] { return m_unit.scenario().played().count() == 2; }));
    const PlayedStatement end = m_unit.scenario().played().entries().back();
    EXPECT_TRUE(end.ended);
    EXPECT_GE(end.at - m_unit.scenario().played().entries().front().at, milliseconds(300));
    EXPECT_TRUE(reportsFlow());
    order("silence");
    EXPECT_TRUE(reportsStay());
}

TEST_F(Faults, AResetIsSaidByMessage8) {
    order("reset");
    EXPECT_TRUE(eventually([&] { return m_end.count(8, kReport | Gssip::kFlagAckRequest) == 1; }));
}

TEST_F(Faults, AStuckLineRepeatsItsByteAndStillHears) {
    m_end.connect(8080);
    ASSERT_TRUE(reportsFlow());
    order("line stuck 85");
    ASSERT_TRUE(m_unit.receiver().waitUntilQuiet(kSoon));
    m_end.forget();
    ASSERT_TRUE(eventually([&] {
        m_end.take();
        return m_end.bytes().size() > 1000;
    }));
    EXPECT_TRUE(std::all_of(m_end.bytes().begin(), m_end.bytes().end(),
                            [](std::uint8_t byte) { return byte == 85; }));
    const auto heard = m_unit.receiver().ledger().totals().heardIntact;
    m_end.send(5402);
    EXPECT_TRUE(
        eventually([&] { return m_unit.receiver().ledger().totals().heardIntact == heard + 1; }));
    order("line plugged");
    EXPECT_TRUE(reportsFlow());
}

TEST_F(Faults, ABreakIsOneZeroAndThenNothing) {
    order("line break");
    ASSERT_TRUE(eventually([&] {
        m_end.take();
        return !m_end.bytes().empty();
    }));
    m_end.connect(8080);
    EXPECT_TRUE(reportsStay());
    EXPECT_TRUE(m_end.bytes().empty());
    order("line plugged");
    EXPECT_TRUE(reportsFlow());
}

TEST_F(Faults, AnUnpluggedLineCarriesNothingEitherWay) {
    m_end.connect(8080);
    ASSERT_TRUE(reportsFlow());
    order("line unplugged");
    EXPECT_TRUE(reportsStay());
    const auto heard = m_unit.receiver().ledger().totals();
    m_end.send(5402);
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_EQ(m_unit.receiver().ledger().totals().heardIntact, heard.heardIntact);
    order("line plugged");
    EXPECT_TRUE(reportsFlow());
}

TEST_F(Faults, AHungUpLineIsDeadAndThereIsANewOneAfterwards) {
    order("line hung-up");
    EXPECT_NE(access("/dev/ttyS0", F_OK), 0);
    order("line plugged");
    ServerEnd fresh;
    fresh.connect(8080);
    EXPECT_TRUE(eventually([&] { return fresh.count(8080, kReport) >= 3; }));
}

TEST_F(Faults, AtTheWrongSpeedNeitherEndUnderstandsTheOther) {
    m_end.connect(8080);
    ASSERT_TRUE(reportsFlow());
    order("baud 9600");
    EXPECT_EQ(m_unit.receiver().lineSpeed(), 9600);
    ASSERT_TRUE(m_unit.receiver().waitUntilQuiet(kSoon));
    m_end.forget();
    EXPECT_TRUE(eventually([&] { return m_end.countNotIntact() > 0; }));
    EXPECT_EQ(m_end.count(8080, kReport), 0);
    order("baud right");
    EXPECT_EQ(m_unit.receiver().lineSpeed(), 115200);
    EXPECT_TRUE(reportsFlow());
}

TEST_F(Faults, TheCounterStandsJumpsAndRunsOn) {
    FpgaRegisters& fpga = m_unit.fpga();
    order("counter frozen");
    const std::uint64_t frozen = fpga.systemCount();
    order("counter ahead 10");
    EXPECT_EQ(fpga.systemCount(), frozen + 589'824'000);
    order("counter back 20s");
    EXPECT_EQ(fpga.systemCount(), frozen - 589'824'000);
    order("counter runs");
    EXPECT_TRUE(eventually([&] { return fpga.systemCount() > frozen - 589'824'000; }));
}

TEST_F(Faults, AFullQueueDeviceTakesNoMoreAndADrainedOneAgain) {
    const FileDescriptor device(open("/dev/mcs10", O_RDWR | O_NOCTTY | O_NONBLOCK));
    ASSERT_TRUE(device);
    GssipSample sample;
    sample.frame = makeFrame(8080, kReport, Words(100, 1));
    const Bytes bytes = sample.encode();
    const auto put = [&] {
        return write(device.get(), bytes.data(), bytes.size()) ==
               static_cast<ssize_t>(bytes.size());
    };
    order("queue rovan-kd full");
    EXPECT_TRUE(eventually([&] { return !put(); }));
    order("queue rovan-kd back");
    const auto before = m_unit.queues().samples().count();
    EXPECT_TRUE(eventually(put));
    EXPECT_TRUE(eventually([&] { return m_unit.queues().samples().count() > before; }));
}

TEST_F(Faults, AQueueDeviceGoesAndComesBack) {
    const FileDescriptor reader(open("/dev/mcs11", O_RDONLY | O_NONBLOCK));
    ASSERT_TRUE(reader);
    char byte = 0;
    order("queue kd-rovan gone");
    EXPECT_EQ(read(reader.get(), &byte, 1), 0);
    EXPECT_FALSE(m_unit.queues().passThrough(makeFrame(5402, kReport)));
    order("queue kd-rovan back");
    EXPECT_TRUE(m_unit.queues().passThrough(makeFrame(5402, kReport)));
    EXPECT_EQ(read(reader.get(), &byte, 1), 1);

    order("queue rovan-kd gone");
    EXPECT_NE(access("/dev/mcs10", F_OK), 0);
    order("queue rovan-kd back");
    EXPECT_EQ(access("/dev/mcs10", F_OK), 0);
}

TEST_F(Faults, AnOrderMayWaitForAMessage) {
    m_unit.scenario().order(ScenarioStatement::parse("test", "on 5402 once reject"));
    m_end.send(5402);
    EXPECT_TRUE(eventually([&] { return m_end.count(5402, kReject) == 1; }));
    m_end.send(5402);
    EXPECT_TRUE(eventually([&] { return m_end.count(5402, kReply) == 1; }));
}

TEST_F(Faults, OrdersWithoutEndAreRefusedInTheEnd) {
    const auto statement = ScenarioStatement::parse("test", "on 5402 reject");
    std::size_t taken = 0;
    try {
        for (; taken < 100'000; ++taken) {
            m_unit.scenario().order(statement);
        }
    } catch (const ScenarioError& error) {
        EXPECT_STREQ(error.what(), "test: too many statements wait already");
    }
    EXPECT_EQ(taken, 1000u);
}

TEST(FaultOption, IsAStatementWithoutBlanks) {
    EXPECT_EQ(ScenarioStatement::parseOption("drop-ack=5001,2").text, "drop-ack 5001 2");
    EXPECT_EQ(ScenarioStatement::parseOption("line=unplugged,for,2.5").lasts, milliseconds(2500));
    EXPECT_EQ(ScenarioStatement::parseOption("at 10 line stuck=0 for 5").trigger.at,
              std::chrono::seconds(10));
    EXPECT_EQ(ScenarioStatement::parseOption("event=17,\"A=B,C\"").text, "event 17 \"A=B,C\"");
    for (const char* text :
         {"", "=", "reset for 5", "bit-errors=2", "bit-errors=-1", "bit-errors=nan", "bursts=5",
          "line", "line=stuck", "line=stuck,256", "baud=wrong", "counter=ahead",
          "queue=kd-rovan,full", "speak=for,1", "silence\nreset"}) {
        EXPECT_THROW(ScenarioStatement::parseOption(text), ScenarioError) << text;
    }
}

}  // namespace

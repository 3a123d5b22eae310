// SPDX-License-Identifier: Apache-2.0
#include "simulator/Receiver.h"

#include <gmock/gmock.h>

#include <atomic>
#include <iterator>
#include <map>
#include <mutex>
#include <set>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using namespace Simulator;
using SimulatorTest::eventually;
using SimulatorTest::kSoon;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

// The other end of the line: keeps the bytes and how they came.
class FakeLine : public IReceiverLine {
  public:
    bool say(const std::uint8_t* bytes, std::size_t count, int bitsPerSecond) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bytes.insert(m_bytes.end(), bytes, bytes + count);
        m_speeds.insert(bitsPerSecond);
        return m_delivers;
    }
    int serverSpeed() const override { return m_serverSpeed; }

    Bytes bytes() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_bytes;
    }
    std::set<int> speeds() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_speeds;
    }

    std::atomic<int> m_serverSpeed{115200};
    std::atomic<bool> m_delivers{true};

  private:
    mutable std::mutex m_mutex;
    Bytes m_bytes;
    std::set<int> m_speeds;
};

// Notes the stamps, and how many bytes were on the line when they were set.
class FakeStamps : public IFrameStamps {
  public:
    struct Noted {
        FrameStamps stamps;
        std::size_t bytesBefore;
    };
    explicit FakeStamps(FakeLine& line) : m_line(line) {}
    void onPulse() override { ++m_pulses; }
    void onLastByte(const FrameStamps& stamps) override {
        m_noted.add({stamps, m_line.bytes().size()});
    }

    std::atomic<int> m_pulses{0};
    BoundedLog<Noted> m_noted{1000};

  private:
    FakeLine& m_line;
};

ReceiverSettings quickSettings() {
    ReceiverSettings settings;
    settings.bootTime = milliseconds(30);
    settings.selfTestTime = milliseconds(30);
    settings.zeroizeTime = milliseconds(10);
    settings.epoch = milliseconds(20);
    return settings;
}

// An id and a flag word, for comparison and for the failure's text.
struct Header {
    unsigned msgId;
    unsigned flags;
    bool operator==(const Header& other) const {
        return msgId == other.msgId && flags == other.flags;
    }
};
void PrintTo(const Header& header, std::ostream* out) {
    *out << header.msgId << " 0x" << std::hex << header.flags << std::dec;
}

class ReceiverTest : public testing::Test {
  protected:
    explicit ReceiverTest(const ReceiverSettings& settings = quickSettings())
        : m_receiver(m_line, m_stamps, settings) {
        m_receiver.start();
    }

    void hear(const Bytes& bytes) { m_receiver.hear(bytes.data(), bytes.size()); }
    void connect(std::uint16_t msgId) { hear(makeFrame(msgId, 0x8040)); }
    void command(unsigned number) {
        Words data(31);
        data[4] = static_cast<std::uint16_t>(number);
        hear(makeFrame(5001, 0x9000, data));
    }

    /// What it said so far, once nothing is due any more.
    std::vector<Header> said() {
        EXPECT_TRUE(m_receiver.waitUntilQuiet(kSoon));
        std::vector<Header> headers;
        for (const SaidFrame& frame : m_receiver.ledger().said().entries()) {
            headers.push_back({frame.msgId(), frame.flags()});
        }
        return headers;
    }
    /// The first intact frame with this id and with data; an empty one when it does not come.
    SaidFrame waitForReport(std::uint16_t msgId, std::uint64_t from = 0) {
        const auto found = m_receiver.ledger().said().waitFor(
            [&](const SaidFrame& frame) {
                return frame.msgId() == msgId && frame.intact && frame.bytes.size() > 10;
            },
            kSoon, from);
        return found.value_or(SaidFrame{});
    }

    FakeLine m_line;
    FakeStamps m_stamps{m_line};
    Receiver m_receiver;
};

// Answers.

TEST_F(ReceiverTest, AnswersACommandWithAckAndReply) {
    command(1);
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8800}, Header{5001, 0x8200}));
    EXPECT_EQ(m_line.bytes().size(), 20u);
}

TEST_F(ReceiverTest, AnswersEveryKindOfMessageThatTheServerSends) {
    const std::pair<std::uint16_t, std::size_t> messages[] = {
        {5001, 31}, {5331, 50}, {5402, 67}, {5313, 100}};
    std::vector<Header> expected;
    for (const auto& [msgId, words] : messages) {
        hear(makeFrame(msgId, 0x9000, Words(words)));
        expected.push_back({msgId, 0x8800});
        expected.push_back({msgId, 0x8200});
    }
    for (const unsigned kind : {0x9040u, 0x9020u, 0x9010u}) {
        const auto flags = static_cast<std::uint16_t>(kind);
        hear(makeFrame(5041, flags));
        expected.push_back({5041, 0x8800});
        expected.push_back({5041, 0x8200});
    }
    EXPECT_EQ(said(), expected);
}

TEST_F(ReceiverTest, AcknowledgesOnlyWhatAsksForIt) {
    hear(makeFrame(5001, 0x8000, Words(31)));
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8200}));
}

TEST_F(ReceiverTest, Sends2501NoReply) {
    hear(makeFrame(2501, 0x9000, Words(4)));
    EXPECT_THAT(said(), ElementsAre(Header{2501, 0x8800}));
}

TEST_F(ReceiverTest, AnswersNoAnswer) {
    hear(makeFrame(8504, 0x8800));
    hear(makeFrame(8504, 0x9200));
    EXPECT_THAT(said(), IsEmpty());
    EXPECT_EQ(m_receiver.ledger().totals().heardIntact, 2u);
}

TEST_F(ReceiverTest, SaysNakOfADamagedFrameAndDoesNothingOfWhatItSays) {
    Bytes damaged = makeFrame(5001, 0x9000, Words(31));
    damaged[18] ^= 0x05;
    hear(damaged);
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8400}));
    EXPECT_EQ(m_receiver.mode(), 1u);
    EXPECT_EQ(m_receiver.ledger().totals().heardDamaged, 1u);
}

TEST_F(ReceiverTest, KeepsSilentAboutADamagedHeader) {
    Bytes damaged = makeFrame(5001, 0x9010);
    damaged[3] ^= 0x01;
    hear(damaged);
    EXPECT_THAT(said(), IsEmpty());
    EXPECT_EQ(m_receiver.ledger().totals().strayBytes, 10u);
}

TEST_F(ReceiverTest, GivesUpAFrameThatStopsInTheMiddle) {
    const Bytes frame = makeFrame(5001, 0x9000, Words(31));
    hear(Bytes(frame.begin(), frame.begin() + 40));
    std::this_thread::sleep_for(milliseconds(520));
    hear(makeFrame(5041, 0x9010));
    EXPECT_THAT(said(), ElementsAre(Header{5041, 0x8800}, Header{5041, 0x8200}));
}

// Connections.

TEST_F(ReceiverTest, SendsNothingThatIsNotConnected) {
    ASSERT_TRUE(eventually([&] { return m_stamps.m_pulses > 6; }));
    EXPECT_THAT(said(), IsEmpty());
}

TEST_F(ReceiverTest, SendsConnectedReportsInEveryEpoch) {
    connect(8504);
    connect(9391);
    connect(9405);
    EXPECT_THAT(m_receiver.connected(), ElementsAre(8504, 9391, 9405));
    ASSERT_TRUE(eventually([&] { return m_receiver.ledger().saidById()[9405] >= 3; }));
    EXPECT_EQ(waitForReport(8504).bytes.size(), 412u);
    EXPECT_EQ(waitForReport(8504).flags(), 0x8000);
    EXPECT_EQ(waitForReport(9391).bytes.size(), 180u);
    EXPECT_EQ(waitForReport(9405).bytes.size(), 220u);
    EXPECT_THAT(m_line.speeds(), ElementsAre(115200));
}

TEST_F(ReceiverTest, SendsTheLifeSignInEveryFifthEpoch) {
    connect(253);
    connect(8504);
    ASSERT_TRUE(eventually([&] { return m_receiver.ledger().saidById()[253] >= 3; }));
    auto counts = m_receiver.ledger().saidById();
    // Between two life signs lie five epochs; a busy machine may have lost one or the other.
    EXPECT_GE(counts[8504], counts[253] * 3);
    EXPECT_LE(counts[8504], counts[253] * 5 + 5);
}

// GPS time begins with the first epoch, so that the time in a message tells its epoch.
class ReceiverPeriods : public ReceiverTest {
  protected:
    static constexpr int kMostEpochs = 5000;

    ReceiverPeriods() : ReceiverTest(settings()) {
        for (int epoch = 0; epoch < kMostEpochs; ++epoch) {
            m_epochs[messageTimeOnly(epoch * 0.02)] = epoch;
        }
    }
    static ReceiverSettings settings() {
        ReceiverSettings settings = quickSettings();
        settings.gpsStart = 0.0;
        return settings;
    }
    int epochOf(const SaidFrame& frame) const {
        const Words time = {frameWord(frame.bytes, 5), frameWord(frame.bytes, 6),
                            frameWord(frame.bytes, 7), frameWord(frame.bytes, 8)};
        const auto found = m_epochs.find(time);
        return found == m_epochs.end() ? -1 : found->second;
    }

  private:
    std::map<Words, int> m_epochs;
};

TEST_F(ReceiverPeriods, SendsEachReportInItsPeriodAndTheMeasurementsInABurst) {
    const std::pair<std::uint16_t, int> periods[] = {{253, 5},   {5040, 10}, {8040, 10}, {5047, 30},
                                                     {5048, 30}, {8504, 1},  {8080, 1},  {9391, 1},
                                                     {9405, 1},  {7270, 1},  {30409, 60}};
    for (const auto& [msgId, period] : periods) {
        connect(msgId);
    }
    ASSERT_TRUE(eventually([&] { return m_receiver.ledger().saidById()[30409] >= 3; }));

    std::map<std::uint16_t, std::map<int, unsigned>> frames;  // by message and epoch
    std::set<int> epochs;
    for (const SaidFrame& frame : m_receiver.ledger().said().entries()) {
        if (frame.bytes.size() > 10) {
            ++frames[frame.msgId()][epochOf(frame)];
            epochs.insert(epochOf(frame));
        }
    }
    // The first epoch with measurements had everything connected, the last may not be over.
    epochs.erase(epochs.begin(), epochs.upper_bound(frames[7270].begin()->first));
    epochs.erase(std::prev(epochs.end()));
    EXPECT_GE(epochs.size(), 50u);
    for (const int epoch : epochs) {
        for (const auto& [msgId, period] : periods) {
            const unsigned inTime = msgId == 7270 ? 12 : 1;
            EXPECT_EQ(frames[msgId][epoch], epoch % period == 0 ? inTime : 0)
                << msgId << " in epoch " << epoch;
        }
    }
}

TEST_F(ReceiverPeriods, GoesOnFromTheTimeThatItIsSetTo) {
    connect(253);
    m_receiver.setGpsTime(50.0);  // epoch 2500
    const auto later = [&](const SaidFrame& frame) {
        return frame.msgId() == 253 && frame.bytes.size() > 10 && epochOf(frame) >= 2500;
    };
    const auto found = m_receiver.ledger().said().waitFor(later, kSoon);
    ASSERT_TRUE(found);
    EXPECT_LT(epochOf(*found), 4000);
}

TEST_F(ReceiverPeriods, TellsKeysAndUtcParametersAtOnceWhenTheyChange) {
    constexpr std::uint16_t kTold[] = {5040, 8040, 30409};
    for (const std::uint16_t msgId : kTold) {
        connect(msgId);
        ASSERT_FALSE(waitForReport(msgId).bytes.empty());
    }
    std::map<std::uint16_t, bool> outOfTurn;
    for (unsigned change = 1; change <= 10; ++change) {
        const std::uint64_t before = m_receiver.ledger().said().count();
        m_receiver.changeReports([&](ReceiverReports& reports) {
            reports.truth.keys.keys[0].remainingTime = 30 + change;
            reports.truth.utc.a0 = change;
        });
        const auto told = [&](std::uint16_t msgId, std::size_t word, unsigned value) {
            const auto found = m_receiver.ledger().said().waitFor(
                [&](const SaidFrame& frame) {
                    return frame.msgId() == msgId && frame.bytes.size() > 10 &&
                           frameWord(frame.bytes, 5 + word) == value;
                },
                kSoon, before);
            ASSERT_TRUE(found) << msgId;
            outOfTurn[msgId] |= epochOf(*found) % 10 != 0;
        };
        told(5040, 75, 30 + change);
        told(8040, 4, 0x3001 | (30 + change) << 2);
        constexpr unsigned kTopWords[] = {0x3FF0, 0x4000, 0x4008, 0x4010, 0x4014,
                                          0x4018, 0x401C, 0x4020, 0x4022, 0x4024};
        told(30409, 19, kTopWords[change - 1]);  // of the doubles 1 to 10
    }
    for (const std::uint16_t msgId : kTold) {
        EXPECT_TRUE(outOfTurn[msgId]) << msgId << " only came in its period";
    }
}

TEST_F(ReceiverTest, ADisconnectEndsOneMessageAndWithZeroAll) {
    connect(8504);
    connect(9391);
    connect(9405);
    hear(makeFrame(9391, 0x9020));
    EXPECT_THAT(m_receiver.connected(), ElementsAre(8504, 9405));
    hear(makeFrame(0, 0x9020));
    EXPECT_THAT(m_receiver.connected(), IsEmpty());
    EXPECT_TRUE(m_receiver.waitUntilQuiet(kSoon));
    const std::uint64_t before = m_receiver.ledger().said().count();
    const int pulses = m_stamps.m_pulses;
    ASSERT_TRUE(eventually([&] { return m_stamps.m_pulses > pulses + 3; }));
    EXPECT_EQ(m_receiver.ledger().said().count(), before);
}

TEST_F(ReceiverTest, SendsItsVersionsWhenConnectedAndWhenRequestedAndWantsAnAck) {
    connect(9225);
    EXPECT_EQ(waitForReport(9225).bytes.size(), 844u);
    EXPECT_THAT(said(), ElementsAre(Header{9225, 0x8200}, Header{9225, 0x9000}));
    hear(makeFrame(9225, 0x9010));
    EXPECT_THAT(said(),
                ElementsAre(Header{9225, 0x8200}, Header{9225, 0x9000}, Header{9225, 0x8800},
                            Header{9225, 0x8200}, Header{9225, 0x9000}));
}

TEST_F(ReceiverTest, ARequestBringsTheMessageOnceOnly) {
    hear(makeFrame(8504, 0x9010));
    const int pulses = m_stamps.m_pulses;
    ASSERT_TRUE(eventually([&] { return m_stamps.m_pulses > pulses + 3; }));
    EXPECT_THAT(said(),
                ElementsAre(Header{8504, 0x8800}, Header{8504, 0x8200}, Header{8504, 0x8000}));
    EXPECT_THAT(m_receiver.connected(), IsEmpty());
}

// Books.

TEST_F(ReceiverTest, MissesTheAcksThatTheServerDoesNotSend) {
    hear(makeFrame(9225, 0x9010));
    hear(makeFrame(9225, 0x9010));
    said();
    EXPECT_THAT(m_receiver.ledger().unacknowledged(),
                ElementsAre(std::pair<const std::uint16_t, std::uint64_t>(9225, 2)));
    hear(makeFrame(9225, 0x8800));
    hear(makeFrame(9225, 0x8800));
    EXPECT_THAT(m_receiver.ledger().unacknowledged(), IsEmpty());
    EXPECT_EQ(m_receiver.ledger().totals().acksHeard, 2u);
}

TEST_F(ReceiverTest, KeepsWhatItHeardWithItsBytes) {
    const Bytes frame = makeFrame(5313, 0x9000, Words(100, 7));
    hear(frame);
    const auto heard = m_receiver.ledger().heard().entries();
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0].frame.bytes, frame);
    EXPECT_EQ(heard[0].frame.data(99), 7);
    EXPECT_EQ(m_receiver.ledger().heardById()[5313], 1u);
}

TEST_F(ReceiverTest, BooksAFrameThatTheLineLostAsDamaged) {
    m_line.m_delivers = false;
    m_receiver.send(makeFrame(253, 0x8000, Words(4)));
    said();
    EXPECT_EQ(m_receiver.ledger().totals().saidDamaged, 1u);
    EXPECT_THAT(m_receiver.ledger().saidById(), IsEmpty());
}

// Stamps.

TEST_F(ReceiverTest, HasTheStampsNotedJustBeforeTheLastByte) {
    FrameStamps stamps;
    stamps.uart = 111;
    stamps.pulse = 222;
    m_receiver.send(makeFrame(253, 0x8000, Words(4)), stamps);
    said();
    const auto noted = m_stamps.m_noted.entries();
    ASSERT_EQ(noted.size(), 1u);
    EXPECT_EQ(noted[0].bytesBefore, 19u);
    EXPECT_EQ(noted[0].stamps.uart, 111u);
    EXPECT_EQ(noted[0].stamps.pulse, 222u);
    EXPECT_EQ(m_line.bytes().size(), 20u);
}

// Commands.

TEST_F(ReceiverTest, HasNoSolutionInStandby) {
    command(5);
    hear(makeFrame(8504, 0x8010));
    EXPECT_EQ(m_receiver.mode(), 5u);
    const auto flags = [&](std::uint64_t from) {
        const auto frame = m_receiver.ledger().said().waitFor(
            [](const SaidFrame& said) { return said.bytes.size() == 412; }, kSoon, from);
        return frame ? frameWord(frame->bytes, 5 + 48) : 0xFFFFu;
    };
    EXPECT_EQ(flags(0), 0x0020u);
    said();
    const std::uint64_t before = m_receiver.ledger().said().count();
    command(1);
    hear(makeFrame(8504, 0x8010));
    EXPECT_EQ(m_receiver.mode(), 1u);
    EXPECT_EQ(flags(before), 0u);
}

TEST_F(ReceiverTest, RestartsAfterTheSelfTestCommand) {
    command(0);
    EXPECT_EQ(waitForReport(8).flags(), 0x9000);
    EXPECT_EQ(waitForReport(8).bytes.size(), 20u);
}

TEST_F(ReceiverTest, TellsByEventsThatItHasZeroized) {
    connect(5044);
    const auto eventId = [&](std::uint64_t from) {
        const auto frame = m_receiver.ledger().said().waitFor(
            [](const SaidFrame& said) { return said.bytes.size() == 54; }, kSoon, from);
        return frame ? frameWord(frame->bytes, 5 + 4) : 0;
    };
    const auto eventAfter = [&](const std::function<void()>& action) {
        said();
        const std::uint64_t before = m_receiver.ledger().said().count();
        action();
        return eventId(before);
    };
    EXPECT_EQ(eventAfter([&] { command(8); }), 3);
    EXPECT_EQ(eventAfter([&] { command(7); }), 17);
    Words setup(67);
    setup[4] = 0x0001;
    setup[5] = 0x0020;
    EXPECT_EQ(eventAfter([&] { hear(makeFrame(5402, 0x9000, setup)); }), 34);
    setup[4] = 0x0010;
    setup[5] = 0x0001;
    EXPECT_EQ(eventAfter([&] { hear(makeFrame(5402, 0x9000, setup)); }), 3);
}

TEST_F(ReceiverTest, SaysThatTheIpDataAreClearAfterTheIpZeroize) {
    connect(5404);
    Words setup(67);
    setup[4] = 0x0001;
    setup[5] = 0x0020;
    hear(makeFrame(5402, 0x9000, setup));
    const auto status = [&](unsigned value) {
        return m_receiver.ledger().said().waitFor(
            [&](const SaidFrame& said) {
                return said.bytes.size() == 132 && frameWord(said.bytes, 5 + 5) == value << 4;
            },
            kSoon);
    };
    EXPECT_TRUE(status(2));
    EXPECT_TRUE(status(0));
}

TEST_F(ReceiverTest, CanFailToZeroizeOrKeepSilentAboutIt) {
    connect(5044);
    connect(5404);
    Words ipZeroize(67);
    ipZeroize[4] = 0x0001;
    ipZeroize[5] = 0x0020;
    m_receiver.changeReports([](ReceiverReports& reports) {
        reports.cvZeroize = ZeroizeOutcome::Silence;
        reports.emergencyZeroize = ZeroizeOutcome::Failure;
        reports.ipZeroize = ZeroizeOutcome::Failure;
    });
    command(8);
    command(7);
    hear(makeFrame(5402, 0x9000, ipZeroize));
    const auto event = [&](unsigned id) {
        return m_receiver.ledger().said().waitFor(
            [id](const SaidFrame& said) {
                return said.bytes.size() == 54 && frameWord(said.bytes, 5 + 4) == id;
            },
            kSoon);
    };
    EXPECT_TRUE(event(18));
    EXPECT_TRUE(event(35));
    said();
    std::vector<unsigned> statuses;
    for (const SaidFrame& frame : m_receiver.ledger().said().entries()) {
        if (frame.bytes.size() == 132) {
            statuses.push_back(frameWord(frame.bytes, 5 + 5) >> 4);
        }
    }
    EXPECT_THAT(statuses, ElementsAre(2, 1)) << "the IP data are not clear";
    EXPECT_EQ(m_receiver.ledger().saidById()[5044], 2u) << "nothing about the CV zeroize";
}

TEST_F(ReceiverTest, AfterAZeroizeTheKeysAreGoneOrToldToBeThereStill) {
    m_receiver.changeReports(
        [](ReceiverReports& reports) { reports.emergencyZeroize = ZeroizeOutcome::Failure; });
    const auto firstKey = [&] {
        const std::uint64_t before = m_receiver.ledger().said().count();
        m_receiver.sendReport(8040);
        return frameWord(waitForReport(8040, before).bytes, 5 + 4);
    };
    EXPECT_EQ(firstKey(), 0x3000 | 30 << 2 | 1);
    command(7);
    EXPECT_EQ(firstKey(), 0x2000 | 30 << 2 | 1) << "failed";
    command(8);
    EXPECT_EQ(firstKey(), 0x1000) << "done";
}

TEST_F(ReceiverTest, TellsItsOperatingModeAndGoesBackToZeroWhenCommandedToContinuous) {
    connect(5040);
    m_receiver.changeReports([](ReceiverReports& reports) { reports.operatingMode = 4; });
    const auto tells = [&](unsigned mode, std::uint64_t from) {
        return m_receiver.ledger().said().waitFor(
            [mode](const SaidFrame& said) {
                return said.bytes.size() == 188 && frameWord(said.bytes, 5 + 49) == mode;
            },
            kSoon, from);
    };
    EXPECT_TRUE(tells(4, 0));
    command(1);
    EXPECT_TRUE(tells(0, m_receiver.ledger().said().count()));
}

TEST_F(ReceiverTest, TellsWhetherATimeDataTransferRuns) {
    m_receiver.changeReports([](ReceiverReports& reports) { reports.dataTransfer = true; });
    m_receiver.sendReport(5042);
    EXPECT_EQ(frameWord(waitForReport(5042).bytes, 5 + 48), 0x0002);
    m_receiver.resetReceiver();
    const std::uint64_t before = m_receiver.ledger().said().count();
    waitForReport(8, before);
    m_receiver.sendReport(5042);
    EXPECT_EQ(frameWord(waitForReport(5042, before).bytes, 5 + 48), 0x0000) << "without power";
}

// Line speed.

Bytes portSetup(unsigned port, unsigned validity, unsigned code) {
    Words data(50);
    data[4] = static_cast<std::uint16_t>(validity);
    data[6] = static_cast<std::uint16_t>(port);
    data[8] = static_cast<std::uint16_t>(code);
    data[11] = static_cast<std::uint16_t>(code);
    return makeFrame(5331, 0x9000, data);
}

TEST_F(ReceiverTest, ChangesItsSpeedOnceAckAndReplyAreOut) {
    hear(portSetup(0, 0xC000, 14));
    ASSERT_TRUE(eventually([&] { return m_receiver.lineSpeed() == 921600; }));
    EXPECT_THAT(said(), ElementsAre(Header{5331, 0x8800}, Header{5331, 0x8200}));
    EXPECT_THAT(m_line.speeds(), ElementsAre(115200));
}

TEST_F(ReceiverTest, KnowsEverySpeedCode) {
    const std::pair<unsigned, int> codes[] = {
        {1, 300},    {2, 600},     {3, 1200},    {4, 2400},    {5, 4800},    {6, 19200}, {7, 76800},
        {10, 38400}, {11, 115200}, {12, 230400}, {13, 460800}, {14, 921600}, {0, 9600}};
    for (const auto& [code, speed] : codes) {
        m_line.m_serverSpeed = m_receiver.lineSpeed();
        hear(portSetup(0, 0xC000, code));
        EXPECT_TRUE(eventually([&, wanted = speed] { return m_receiver.lineSpeed() == wanted; }))
            << "code " << code;
    }
}

TEST_F(ReceiverTest, KeepsItsSpeedForOtherPortsAndOtherSettings) {
    hear(portSetup(2, 0xC000, 14));
    hear(portSetup(0, 0x0200, 14));
    hear(portSetup(0, 0xC000, 8));
    said();
    EXPECT_EQ(m_receiver.lineSpeed(), 115200);
}

TEST_F(ReceiverTest, AtAnotherSpeedNeitherSideUnderstandsTheOther) {
    m_line.m_serverSpeed = 9600;
    command(5);
    EXPECT_EQ(m_receiver.mode(), 1u);
    EXPECT_EQ(m_receiver.ledger().totals().strayBytes, 74u);
    m_receiver.send(makeFrame(253, 0x8000, Words(4)));
    said();
    EXPECT_EQ(m_receiver.ledger().totals().saidDamaged, 1u);
    EXPECT_EQ(m_line.bytes().size(), 20u);
    m_line.m_serverSpeed = 115200;
    command(5);
    EXPECT_EQ(m_receiver.mode(), 5u);
}

// Power.

TEST_F(ReceiverTest, WithoutPowerItIsSilentAndDeafAndForgetsItsSpeedAndMode) {
    command(5);
    hear(portSetup(0, 0xC000, 14));
    ASSERT_TRUE(eventually([&] { return m_receiver.lineSpeed() == 921600; }));
    m_line.m_serverSpeed = 921600;
    said();
    const std::uint64_t before = m_receiver.ledger().said().count();
    m_receiver.setPower(false);
    EXPECT_FALSE(m_receiver.running());
    EXPECT_EQ(m_receiver.lineSpeed(), 115200);
    EXPECT_EQ(m_receiver.mode(), 1u);
    m_line.m_serverSpeed = 115200;
    command(5);
    m_receiver.send(makeFrame(253, 0x8000, Words(4)));
    said();
    EXPECT_EQ(m_receiver.ledger().said().count(), before);
    EXPECT_EQ(m_receiver.mode(), 1u);
}

TEST_F(ReceiverTest, SaysSoWhenItHasStartedAndGoesOnReporting) {
    connect(8504);
    m_receiver.setPower(false);
    said();
    const std::uint64_t before = m_receiver.ledger().said().count();
    const auto switchedOn = std::chrono::steady_clock::now();
    m_receiver.setPower(true);
    const SaidFrame restart = waitForReport(8, before);
    EXPECT_EQ(restart.flags(), 0x9000);
    EXPECT_GE(restart.at - switchedOn, milliseconds(30));
    EXPECT_EQ(waitForReport(8504, before).bytes.size(), 412u);
    EXPECT_TRUE(m_receiver.running());
}

class ForgetfulReceiverTest : public ReceiverTest {
  protected:
    ForgetfulReceiverTest() : ReceiverTest(settings()) {}
    static ReceiverSettings settings() {
        ReceiverSettings settings = quickSettings();
        settings.keepsConnections = false;
        return settings;
    }
};

TEST_F(ForgetfulReceiverTest, LosesItsConnectionsWithItsPower) {
    connect(8504);
    m_receiver.resetReceiver();
    EXPECT_THAT(m_receiver.connected(), IsEmpty());
    EXPECT_EQ(waitForReport(8).bytes.size(), 20u);
}

// Wrongs.

TEST_F(ReceiverTest, CanDropAcks) {
    m_receiver.dropAck(2, 5001);
    hear(makeFrame(5041, 0x9010));
    command(1);
    command(1);
    command(1);
    EXPECT_THAT(said(),
                ElementsAre(Header{5041, 0x8800}, Header{5041, 0x8200}, Header{5001, 0x8200},
                            Header{5001, 0x8200}, Header{5001, 0x8800}, Header{5001, 0x8200}));
}

TEST_F(ReceiverTest, CanDelayAnAckSoThatTheReplyOvertakesIt) {
    m_receiver.delayAck(milliseconds(50));
    const auto begin = std::chrono::steady_clock::now();
    command(1);
    const auto ack = m_receiver.ledger().said().waitFor(
        [](const SaidFrame& frame) { return frame.flags() == 0x8800; }, kSoon);
    ASSERT_TRUE(ack);
    EXPECT_GE(ack->at - begin, milliseconds(50));
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8200}, Header{5001, 0x8800}));
}

TEST_F(ReceiverTest, CanSayNakOfAnIntactFrame) {
    m_receiver.nak();
    command(5);
    EXPECT_EQ(m_receiver.mode(), 1u);
    command(5);
    EXPECT_EQ(m_receiver.mode(), 5u);
    EXPECT_THAT(said(),
                ElementsAre(Header{5001, 0x8400}, Header{5001, 0x8800}, Header{5001, 0x8200}));
}

TEST_F(ReceiverTest, CanRejectAMessage) {
    m_receiver.reject(1, 5001);
    command(5);
    EXPECT_EQ(m_receiver.mode(), 1u);
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8800}, Header{5001, 0x8300}));
}

TEST_F(ReceiverTest, CanDropReplies) {
    m_receiver.dropReply();
    command(5);
    EXPECT_EQ(m_receiver.mode(), 5u);
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8800}));
}

TEST_F(ReceiverTest, CanDamageAByteOfTheFramesThatReachSoFar) {
    const Bytes frame = makeFrame(253, 0x8000, Words(4, 9));
    m_receiver.corruptByte(12);
    m_receiver.send(makeFrame(5041, 0x8000));
    m_receiver.send(frame);
    m_receiver.send(frame);
    said();
    const auto all = m_receiver.ledger().said().entries();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_TRUE(all[0].intact);
    EXPECT_FALSE(all[1].intact);
    EXPECT_NE(all[1].bytes[12], frame[12]);
    EXPECT_TRUE(all[2].intact);
    EXPECT_EQ(m_receiver.ledger().totals().saidDamaged, 1u);
}

TEST_F(ReceiverTest, CanSayGarbage) {
    m_receiver.garbage(300);
    said();
    EXPECT_EQ(m_line.bytes().size(), 300u);
    EXPECT_EQ(m_receiver.ledger().totals().saidDamaged, 1u);
    EXPECT_EQ(m_receiver.ledger().totals().saidIntact, 0u);
}

TEST_F(ReceiverTest, CanBeSilentForAWhile) {
    m_receiver.silence();
    command(5);
    m_receiver.send(makeFrame(253, 0x8000, Words(4)));
    EXPECT_THAT(said(), IsEmpty());
    EXPECT_EQ(m_receiver.mode(), 5u) << "it hears and obeys";
    m_receiver.speak();
    command(1);
    EXPECT_THAT(said(), ElementsAre(Header{5001, 0x8800}, Header{5001, 0x8200}));
}

TEST_F(ReceiverTest, CanTellWhateverATestWants) {
    m_receiver.changeReports([](ReceiverReports& reports) {
        reports.receiverFailure = true;
        reports.connection.cableLost = true;
        reports.versions.fcmId = "OTHER";
    });
    hear(makeFrame(8504, 0x8010));
    hear(makeFrame(9405, 0x8010));
    hear(makeFrame(9225, 0x8010));
    said();
    for (const SaidFrame& frame : m_receiver.ledger().said().entries()) {
        if (frame.bytes.size() == 412) {
            EXPECT_EQ(frameWord(frame.bytes, 5 + 48), 0x0010);
        } else if (frame.bytes.size() == 220) {
            EXPECT_EQ(frameWord(frame.bytes, 5 + 26), 0x0004);
        } else if (frame.bytes.size() == 844) {
            EXPECT_EQ(frameWord(frame.bytes, 5 + 410), 0x544F);  // "OT"
        }
    }
    EXPECT_EQ(m_receiver.ledger().said().count(), 6u);
}

TEST(Receiver, CanBeStoppedAndStartedAgain) {
    FakeLine line;
    FakeStamps stamps(line);
    Receiver receiver(line, stamps, quickSettings());
    receiver.start();
    receiver.stop();
    receiver.stop();
    receiver.send(makeFrame(253, 0x8000, Words(4)));
    EXPECT_FALSE(receiver.waitUntilQuiet(milliseconds(20)));
    receiver.start();
    EXPECT_TRUE(receiver.waitUntilQuiet(kSoon));
    EXPECT_EQ(line.bytes().size(), 20u);
}

}  // namespace

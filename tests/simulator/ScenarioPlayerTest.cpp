// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioPlayer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using namespace Simulator;
using SimulatorTest::eventually;
using SimulatorTest::kSoon;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

class AnyLine : public IReceiverLine {
  public:
    bool say(const std::uint8_t*, std::size_t, int) override { return true; }
    int serverSpeed() const override { return 115200; }
};

class NoStamps : public IFrameStamps {
  public:
    void onPulse() override {}
    void onLastByte(const FrameStamps&) override {}
};

ReceiverSettings quickSettings() {
    ReceiverSettings settings;
    settings.bootTime = milliseconds(30);
    settings.selfTestTime = milliseconds(30);
    settings.zeroizeTime = milliseconds(5);
    settings.epoch = milliseconds(20);
    return settings;
}

class ScenarioPlayerTest : public testing::Test {
  protected:
    ~ScenarioPlayerTest() override {
        m_receiver.stop();
        m_player.reset();
    }

    /// Starts the scenario, and then the receiver.
    void play(const std::string& text) {
        m_player = std::make_unique<ScenarioPlayer>(Scenario::parse(text), m_receiver);
        m_player->start();
        m_receiver.start();
    }
    void hear(std::uint16_t msgId, const Words& data = {}, std::uint16_t flags = 0x9000) {
        const Bytes frame = makeFrame(msgId, flags, data);
        m_receiver.hear(frame.data(), frame.size());
    }
    void connect(std::uint16_t msgId) { hear(msgId, {}, 0x8040); }
    void command(unsigned number) {
        Words data(31);
        data[4] = static_cast<std::uint16_t>(number);
        hear(5001, data);
    }
    void ipZeroize() {
        Words data(67);
        data[4] = 0x0001;
        data[5] = 0x0020;
        hear(5402, data);
    }

    /// Waits until so many statements have been carried out.
    bool played(std::size_t count) {
        return eventually([&] { return m_player->played().count() >= count; });
    }
    /// Every "id/flags" that it said, once nothing is due any more.
    std::vector<std::string> said() {
        EXPECT_TRUE(m_receiver.waitUntilQuiet(kSoon));
        std::vector<std::string> frames;
        for (const SaidFrame& frame : m_receiver.ledger().said().entries()) {
            char text[16];
            std::snprintf(text, sizeof text, "%u/%04X", static_cast<unsigned>(frame.msgId()),
                          static_cast<unsigned>(frame.flags()));
            frames.emplace_back(text);
        }
        return frames;
    }
    /// Waits for a frame of this id that has `value` in the bits `mask` of a data word.
    bool tells(std::uint16_t msgId, std::size_t word, unsigned mask, unsigned value,
               std::uint64_t from = 0) {
        return m_receiver.ledger()
            .said()
            .waitFor(
                [&](const SaidFrame& frame) {
                    return frame.msgId() == msgId && frame.bytes.size() > 10 &&
                           (frameWord(frame.bytes, 5 + word) & mask) == value;
                },
                kSoon, from)
            .has_value();
    }
    std::uint64_t saidSoFar() const { return m_receiver.ledger().said().count(); }

    AnyLine m_line;
    NoStamps m_stamps;
    Receiver m_receiver{m_line, m_stamps, quickSettings()};
    std::unique_ptr<ScenarioPlayer> m_player;
};

TEST_F(ScenarioPlayerTest, HasDoneWhatIsDueAtTheStartWhenTheReceiverStarts) {
    m_player =
        std::make_unique<ScenarioPlayer>(Scenario::parse("rerad on\nat 0 mode 4"), m_receiver);
    m_player->start();
    EXPECT_EQ(m_player->played().count(), 2u);
    m_receiver.changeReports([](const ReceiverReports& reports) {
        EXPECT_TRUE(reports.connection.rerad);
        EXPECT_EQ(reports.operatingMode, 4u);
    });
}

TEST_F(ScenarioPlayerTest, KeepsTheTimesAndTheirOrder) {
    play("at 60ms mode 3\nat 20ms mode 1\nat 40ms mode 2\nat 40ms mode 5");
    ASSERT_TRUE(played(4));
    std::vector<std::string> texts;
    for (const PlayedStatement& statement : m_player->played().entries()) {
        EXPECT_GE(statement.at, statement.statement->trigger.at);
        texts.push_back(statement.statement->text);
    }
    EXPECT_THAT(
        texts, ElementsAre("at 20ms mode 1", "at 40ms mode 2", "at 40ms mode 5", "at 60ms mode 3"));
}

TEST_F(ScenarioPlayerTest, RejectsTheVeryMessageThatSetsItOff) {
    play("on 5402 once reject");
    command(5);
    ipZeroize();
    ipZeroize();
    EXPECT_THAT(said(), ElementsAre("5001/8800", "5001/8200", "5402/8800", "5402/8300", "5402/8800",
                                    "5402/8200"));
}

TEST_F(ScenarioPlayerTest, RejectsEachTimeWithoutALimit) {
    play("on 5001:7 reject");
    command(7);
    command(5);
    command(7);
    EXPECT_THAT(said(), ElementsAre("5001/8800", "5001/8300", "5001/8800", "5001/8200", "5001/8800",
                                    "5001/8300"));
    EXPECT_EQ(m_receiver.mode(), 5u);
}

TEST_F(ScenarioPlayerTest, StrikesSoManyTimes) {
    play("on 5001 2 times nak");
    command(1);
    command(1);
    command(1);
    EXPECT_THAT(said(), ElementsAre("5001/8400", "5001/8400", "5001/8800", "5001/8200"));
}

TEST_F(ScenarioPlayerTest, DoesEveryWrong) {
    play(
        "drop-ack 5001\non 5402 once drop-reply\non 5331 delay-ack 20ms\n"
        "on 5313 corrupt-byte 4");
    command(1);
    EXPECT_THAT(said(), ElementsAre("5001/8200"));
    ipZeroize();
    hear(5331, Words(50));
    ASSERT_TRUE(eventually([&] { return m_receiver.ledger().said().count() == 4; }));
    EXPECT_THAT(said(), ElementsAre("5001/8200", "5402/8800", "5331/8200", "5331/8800"));
    hear(5313, Words(100));
    said();
    EXPECT_EQ(m_receiver.ledger().totals().saidDamaged, 1u);
}

TEST_F(ScenarioPlayerTest, ModeMeansTheCommandOfAMessageWithData) {
    play("on 5001:0 reject");
    hear(5001, {}, 0x9010);
    EXPECT_THAT(said(), ElementsAre("5001/8800", "5001/8200"));
}

TEST_F(ScenarioPlayerTest, ReportsAnEventOnceTheMessageIsAnswered) {
    connect(5044);
    play("zeroize emergency silent\non 5001:7 event 17 \"DONE\" after 30ms");
    const auto begin = std::chrono::steady_clock::now();
    command(7);
    ASSERT_TRUE(tells(5044, 4, 0xFFFF, 17));
    EXPECT_GE(m_receiver.ledger().said().entries().back().at - begin, milliseconds(30));
    EXPECT_TRUE(tells(5044, 5, 0xFFFF, 0x444F)) << "DO";
    EXPECT_THAT(said(), ElementsAre("5044/8200", "5001/8800", "5001/8200", "5044/9000"));
}

TEST_F(ScenarioPlayerTest, AnAnswerComesBeforeWhatItsMessageSetsOff) {
    connect(5044);
    play("on 5331 event 40");
    hear(5331, Words(50));
    ASSERT_TRUE(tells(5044, 4, 0xFFFF, 40));
    EXPECT_THAT(said(), ElementsAre("5044/8200", "5331/8800", "5331/8200", "5044/9000"));
}

TEST_F(ScenarioPlayerTest, SilenceBeginsBeforeTheAnswerAndEndsWithSpeak) {
    play("on 5001:5 silence\non 5001:1 speak");
    command(5);
    EXPECT_THAT(said(), IsEmpty());
    EXPECT_EQ(m_receiver.mode(), 5u);
    command(1);
    EXPECT_THAT(said(), ElementsAre("5001/8800", "5001/8200"));
}

TEST_F(ScenarioPlayerTest, TellsFaultsAndCablesAndRerad) {
    play(
        "fault fpga-power on\nat 10ms fault bci-power on\nat 10ms bci-cable off\n"
        "at 10ms fault fpga-signal on\nat 10ms fault bci-clock on\nat 10ms serial-cable off\n"
        "at 10ms rerad on");
    connect(9405);
    EXPECT_TRUE(tells(9405, 26, 0xFFFF, 0x001F));
    EXPECT_TRUE(tells(9405, 27, 0xFFFF, 0x0001));
    EXPECT_TRUE(tells(9405, 86, 0xFFFF, 0x4000));
}

TEST_F(ScenarioPlayerTest, TakesFaultsAndCablesBack) {
    play(
        "fault fpga-power on\nbci-cable off\nserial-cable off\nrerad on\n"
        "on 5331 fault fpga-power off\non 5331 bci-cable on\non 5331 serial-cable on\n"
        "on 5331 rerad off");
    connect(9405);
    EXPECT_TRUE(tells(9405, 26, 0xFFFF, 0x0005));
    hear(5331, Words(50));
    ASSERT_TRUE(played(8));
    const std::uint64_t from = saidSoFar();
    EXPECT_TRUE(tells(9405, 26, 0xFFFF, 0, from));
    EXPECT_TRUE(tells(9405, 27, 0xFFFF, 0, from));
    EXPECT_TRUE(tells(9405, 86, 0xFFFF, 0, from));
}

TEST_F(ScenarioPlayerTest, TellsAFailedReceiverAndAMissingSolution) {
    play("fault receiver on\nsolution off");
    connect(8504);
    EXPECT_TRUE(tells(8504, 48, 0x0030, 0x0030));
}

TEST_F(ScenarioPlayerTest, RunsATimeDataTransfer) {
    play("at 10ms transfer on\nat 10ms mode 4\non 5402 transfer off");
    connect(5040);
    connect(5042);
    EXPECT_TRUE(tells(5040, 49, 0x000F, 4));
    EXPECT_TRUE(tells(5042, 48, 0x0002, 2));
    ipZeroize();
    ASSERT_TRUE(played(3));
    EXPECT_TRUE(tells(5042, 48, 0x0002, 0, saidSoFar()));
    command(1);
    EXPECT_TRUE(tells(5040, 49, 0x000F, 0, saidSoFar()));
}

TEST_F(ScenarioPlayerTest, SaysAReportThatNobodyHasConnected) {
    play("at 5ms report 8");
    ASSERT_TRUE(played(1));
    EXPECT_THAT(said(), ElementsAre("8/9000"));
}

TEST_F(ScenarioPlayerTest, SaysItsZeroizeStatusAtOnceIfThatIsConnected) {
    play("zeroize-status 3\non 5331 zeroize-status 1");
    EXPECT_THAT(said(), IsEmpty());
    connect(5404);
    EXPECT_TRUE(tells(5404, 5, 0x0030, 0x0030));
    hear(5331, Words(50));
    EXPECT_TRUE(tells(5404, 5, 0x0030, 0x0010));
}

TEST_F(ScenarioPlayerTest, SetsWhatZeroizeCommandsComeTo) {
    play("zeroize emergency fails\nzeroize ip fails\nzeroize cv fails");
    connect(5044);
    command(7);
    command(8);
    ipZeroize();
    for (const unsigned eventId : {18u, 4u, 35u}) {
        EXPECT_TRUE(tells(5044, 4, 0xFFFF, eventId)) << eventId;
    }
}

TEST_F(ScenarioPlayerTest, SetsTheBootFlag) {
    play("boot-flag abnormal");
    hear(9225, {}, 0x9010);
    EXPECT_TRUE(tells(9225, 298, 0xFFFF, 0));
}

TEST_F(ScenarioPlayerTest, FollowsThePowerAndTheStart) {
    play("on power-off mode 7\non power-on fault receiver on\non boot-done event 9");
    connect(5044);
    connect(8504);
    m_receiver.setPower(false);
    m_receiver.setPower(false);
    ASSERT_TRUE(played(1));
    m_receiver.setPower(true);
    ASSERT_TRUE(played(3));
    std::vector<std::string> texts;
    for (const PlayedStatement& statement : m_player->played().entries()) {
        texts.push_back(statement.statement->text);
    }
    EXPECT_THAT(texts, ElementsAre("on power-off mode 7", "on power-on fault receiver on",
                                   "on boot-done event 9"));
    EXPECT_TRUE(tells(5044, 4, 0xFFFF, 9));
    EXPECT_TRUE(tells(8504, 48, 0x0010, 0x0010));
}

TEST_F(ScenarioPlayerTest, AReceiverThatIsSilentFromPowerOnNeverSaysThatItHasStarted) {
    play("on power-on silence\non boot-done report 253");
    m_receiver.resetReceiver();
    ASSERT_TRUE(played(2));
    EXPECT_THAT(said(), IsEmpty());
    EXPECT_TRUE(m_receiver.running());
}

TEST_F(ScenarioPlayerTest, OnPowerOnAWrongAwaitsItsMessage) {
    play("on power-on reject 5001");
    m_receiver.resetReceiver();
    ASSERT_TRUE(tells(8, 0, 0, 0));
    ipZeroize();
    command(5);
    command(5);
    EXPECT_THAT(said(), ElementsAre("8/9000", "5402/8800", "5402/8200", "5001/8800", "5001/8300",
                                    "5001/8800", "5001/8200"));
}

TEST_F(ScenarioPlayerTest, SaysMessage8AgainAfterTheSelfTestCommand) {
    play("on 5001:0 event 1");
    m_receiver.resetReceiver();
    ASSERT_TRUE(tells(8, 0, 0, 0));
    const std::uint64_t from = saidSoFar();
    command(0);
    EXPECT_TRUE(tells(8, 0, 0, 0, from));
}

TEST_F(ScenarioPlayerTest, AStatementThatSetsItselfOffGoesOnWithoutHarm) {
    play("on power-on reset\nat 5ms reset");
    ASSERT_TRUE(played(50));
}

TEST_F(ScenarioPlayerTest, SaysGarbage) {
    play("at 5ms garbage 300");
    ASSERT_TRUE(played(1));
    said();
    EXPECT_EQ(m_receiver.ledger().totals().saidDamaged, 1u);
}

TEST_F(ScenarioPlayerTest, NothingHappensAfterStop) {
    play("on 5001 event 1 after 60\nat 60 event 2");
    command(1);
    m_receiver.stop();
    const auto begin = std::chrono::steady_clock::now();
    m_player->stop();
    m_player->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, kSoon);
    command(1);
    EXPECT_EQ(m_player->played().count(), 0u);
}

TEST_F(ScenarioPlayerTest, CanBeStartedAnew) {
    play("mode 3\non 5331 once mode 4");
    for (int i = 0; i < 2; ++i) {
        hear(5331, Words(50));
        ASSERT_TRUE(played(2 + 2 * static_cast<std::size_t>(i)));
        m_receiver.stop();
        m_player->stop();
        m_player->start();
        m_receiver.start();
        ASSERT_TRUE(played(3 + 2 * static_cast<std::size_t>(i)));
    }
}

}  // namespace

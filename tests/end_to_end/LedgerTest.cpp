// SPDX-License-Identifier: Apache-2.0
// The ledger of the simulated unit against the real server: it balances after every fault, and does
// not when something is lost.
#include <csignal>
#include <utility>

#include "simulator/BusLedger.h"
#include "simulator/LedgerText.h"
#include "tests/end_to_end/EndToEnd.h"

using namespace Simulator;
using std::chrono::milliseconds;

namespace {

class Ledger : public EndToEnd {
  protected:
    Ledger() {
        m_deployment.setServer("PARAM_7", "253,5040,7270,8040,8080,8504,9391,9405,30409");
        m_unitOptions.configFile = m_deployment.topLevelFile();
        m_unitOptions.server = serverProgram();
        m_unitOptions.receiver.epoch = milliseconds(100);
        m_unitOptions.receiver.bootTime = milliseconds(200);
    }
    ~Ledger() override { m_ledger.reset(); }

    /// Starts the unit with its ledger, and waits until samples come in.
    void startUnitWithLedger() {
        m_unit = std::make_unique<SimulatedUnit>(m_unitOptions);
        m_ledger = std::make_unique<BusLedger>(*m_unit);
        m_unit->start();
        ASSERT_TRUE(moreComesOut("PositionVelocity", 5));
        ASSERT_TRUE(waitUntilSetUp());
    }
    TopicBalance topic(const std::string& name) {
        m_ledger->collect();
        for (const TopicBalance& balance : m_ledger->balance().topics) {
            if (balance.topic == name) {
                return balance;
            }
        }
        ADD_FAILURE() << name;
        return {};
    }
    bool moreComesOut(const std::string& name, std::size_t samples = 5) {
        const std::size_t before = topic(name).samples;
        return waitFor([&] { return topic(name).samples >= before + samples; });
    }
    void order(const std::string& text) {
        const auto played = m_unit->scenario().played().count();
        m_unit->scenario().order(ScenarioStatement::parse("test", text));
        ASSERT_TRUE(waitFor([&] { return m_unit->scenario().played().count() > played; }));
    }
    FrameLedger::Totals said() { return receiver().ledger().totals(); }

    /// The server stops in order, and everything that it got came out once.
    void expectBalance() {
        const LedgerBalance balance = m_ledger->close(std::chrono::seconds(30));
        EXPECT_TRUE(balance.balances()) << ledgerText(balance, false);
        EXPECT_TRUE(terminate().good());
    }

    std::unique_ptr<BusLedger> m_ledger;
};

TEST_F(Ledger, BalancesOnAGoodLine) {
    startUnitWithLedger();
    ASSERT_TRUE(moreComesOut("GPSTime"));
    // Each measurement comes out, too.
    const LedgerBalance balance = m_ledger->close(std::chrono::seconds(30));
    EXPECT_TRUE(balance.balances()) << ledgerText(balance, false);
    EXPECT_GE(balance.measurementFrames, 12u);
    EXPECT_EQ(balance.damaged + balance.undelivered + balance.unseen, 0u);
    EXPECT_TRUE(terminate().good());
}

TEST_F(Ledger, WhatIsDamagedDoesNotComeOutAndTheRestOnce) {
    startUnitWithLedger();
    // An 8504 has 3,296 bits: one in three is damaged.
    order("bit-errors 1e-4");
    ASSERT_TRUE(waitFor([&] { return said().saidDamaged >= 20; }));
    order("bit-errors 0");
    ASSERT_TRUE(moreComesOut("PositionVelocity"));
    order("bursts 30 250ms");
    const auto damaged = said().saidDamaged;
    ASSERT_TRUE(waitFor([&] { return said().saidDamaged >= damaged + 5; }));
    order("bursts 0");
    ASSERT_TRUE(moreComesOut("PositionVelocity"));
    expectBalance();
}

TEST_F(Ledger, FramesFlowAgainAfterEachFaultOfTheLine) {
    constexpr std::pair<const char*, const char*> kFaults[] = {{"line unplugged", "line plugged"},
                                                               {"line stuck 0", "line plugged"},
                                                               {"line stuck 129", "line plugged"},
                                                               {"line break", "line plugged"},
                                                               {"baud 9600", "baud right"}};
    startUnitWithLedger();
    for (const auto& [fault, end] : kFaults) {
        SCOPED_TRACE(fault);
        order(fault);
        // Several epochs, of which nothing gets through.
        ASSERT_TRUE(receiver().waitUntilQuiet(std::chrono::seconds(30)));
        const auto intact = receiver().ledger().saidById()[9391];
        const auto lost = said().saidDamaged;
        while (said().saidDamaged < lost + 20) {
            ASSERT_TRUE(receiver().ledger().said().waitFor([](const SaidFrame&) { return true; },
                                                           std::chrono::seconds(30),
                                                           receiver().ledger().said().count()));
        }
        EXPECT_EQ(receiver().ledger().saidById()[9391], intact);
        order(end);
        ASSERT_TRUE(moreComesOut("PositionVelocity"));
        ASSERT_TRUE(moreComesOut("ChallengedEnvironment"));
    }
    order("garbage 3000");
    ASSERT_TRUE(moreComesOut("PositionVelocity"));
    order("silence for 500ms");
    ASSERT_TRUE(moreComesOut("PositionVelocity"));
    expectBalance();
}

TEST_F(Ledger, FramesFlowWhateverBecomesOfTheTimeBaseAndTheQueues) {
    startUnitWithLedger();
    for (const char* fault :
         {"counter frozen", "counter ahead 100000", "counter back 200000", "counter runs",
          "queue rovan-kd full", "queue rovan-kd back", "queue kd-rovan gone",
          "queue kd-rovan back", "queue rovan-kd gone", "queue rovan-kd back"}) {
        SCOPED_TRACE(fault);
        order(fault);
        ASSERT_TRUE(moreComesOut("PositionVelocity", 10));
    }
    expectBalance();
}

TEST_F(Ledger, BalancesWhenTheSetupMetEveryWrongAnswer) {
    m_unitOptions.scenario = Scenario::parse(
        "drop-ack 8504\ndelay-ack 80ms 9391\nnak 8080\ndrop-reply 30409\non 5402 reject\n");
    startUnitWithLedger();
    ASSERT_TRUE(moreComesOut("ChallengedEnvironment"));
    auto heard = receiver().ledger().heardById();
    for (const std::uint16_t twice :
         {std::uint16_t{8504}, std::uint16_t{8080}, std::uint16_t{30409}}) {
        EXPECT_EQ(heard[twice], 2u) << twice;
    }
    EXPECT_EQ(heard[9391], 1u);
    expectBalance();
}

TEST_F(Ledger, AResetReceiverIsHeardAgain) {
    startUnitWithLedger();
    order("reset");
    ASSERT_TRUE(receiver()
                    .ledger()
                    .said()
                    .waitFor([](const SaidFrame& frame) { return frame.msgId() == 8; },
                             std::chrono::seconds(30))
                    .has_value());
    ASSERT_TRUE(moreComesOut("PositionVelocity"));
    expectBalance();
}

TEST_F(Ledger, TellsWhatAServerThatWasKilledDidNotSay) {
    startUnitWithLedger();
    server().signal(SIGKILL);
    EXPECT_FALSE(waitForEnd().good());
    const auto before = receiver().ledger().saidById()[9391];
    ASSERT_TRUE(waitFor([&] { return receiver().ledger().saidById()[9391] >= before + 5; }));
    const LedgerBalance balance = m_ledger->close(milliseconds(500));
    EXPECT_FALSE(balance.balances());
    EXPECT_TRUE(balance.started.has_value());
    for (const TopicBalance& topic : balance.topics) {
        if (topic.topic == "GPSTime" || topic.topic == "PositionVelocity") {
            EXPECT_GE(topic.missing.size(), 5u) << topic.topic;
            EXPECT_TRUE(topic.surplus.empty()) << topic.topic;
        }
    }
}

}  // namespace

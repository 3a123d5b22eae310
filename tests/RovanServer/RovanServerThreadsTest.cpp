// SPDX-License-Identifier: Apache-2.0
// The server's own threads: their rhythm, and when they end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/RovanServer/BenchServer.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using transport_test::eventually;

namespace {

using std::chrono::steady_clock;
using Lines = std::vector<std::string>;

const char kQuery[] = "QUERY_PASSTHROUGH_STATE";

class RovanServerThreads : public testing::Test {
  protected:
    RovanServerThreads() { m_server.run(); }

    void startPeriodicThread() {
        m_server.m_periodicThread.start([this] { m_server.periodicThreadFunction(); });
    }
    /// Collects what `take` gives until there are `count` lines.
    template <typename Take>
    static Lines collect(std::size_t count, Take take) {
        Lines lines;
        EXPECT_TRUE(eventually([&] {
            for (const std::string& line : take()) {
                lines.push_back(line);
            }
            return lines.size() >= count;
        }));
        return lines;
    }
    Lines collectQueued(std::size_t count) {
        return collect(count, [this] { return m_server.takeQueued(); });
    }
    Lines collectCommands(std::size_t count) {
        return collect(count, [this] { return m_server.takeCommands(); });
    }

    ServerBus m_bus;
    BenchServer m_server{m_bus, "SYSTEM_ENV_RERAD"};
};

}  // namespace

TEST_F(RovanServerThreads, TheZeroizeThreadDrivesADestroyAndAStopLeavesItPending) {
    m_server.m_zeroizeThread.start([this] { m_server.zeroizeThreadFunction(); });
    m_server.cbCmd(numberedCommand(3, "ROVAN_DESTROY"));
    EXPECT_EQ(collectQueued(6).size(), 6u);
    const auto connected = steady_clock::now();
    // Reports that ask for an IP zeroize alone: two passes away, each after a tenth of a second.
    m_server.m_zeroize.onVersionRecord(true, false, false);
    m_server.m_zeroize.onIpZeroizeStatus(Rovan_5404_Msg::e5404_IPZeroize_3);
    m_server.m_zeroize.onReportReceived(5404);
    m_server.m_zeroize.onReportReceived(5044);
    EXPECT_THAT(collectQueued(1), ElementsAre("5402, tracked"));
    EXPECT_GE(steady_clock::now() - connected, 100ms);

    m_server.m_zeroizeThread.stop();
    m_server.m_zeroize.handleZeroize(34);
    EXPECT_TRUE(m_server.m_zeroize.isPending());
    EXPECT_THAT(m_server.takeAnswers(), IsEmpty());
    // A thread that is started again goes on with it.
    m_server.m_zeroizeThread.start([this] { m_server.zeroizeThreadFunction(); });
    EXPECT_THAT(collect(1, [this] { return m_server.takeAnswers(); }),
                ElementsAre("COMPONENT_DESTROY_FAIL to 3"));
}

TEST_F(RovanServerThreads, InAReradSetupTheQueryGoesOutOnceASecondUntilPassthroughIsGranted) {
    const auto begin = steady_clock::now();
    startPeriodicThread();
    EXPECT_THAT(collectCommands(2), ElementsAre(kQuery, kQuery));
    EXPECT_GE(steady_clock::now() - begin, 2s);
    EXPECT_THAT(m_server.takeQueued(), IsEmpty());
    EXPECT_FALSE(m_server.m_periodicThread.finished());

    m_server.m_passthroughQuery->enable();
    ASSERT_TRUE(eventually([this] { return m_server.m_periodicThread.finished(); }));
    EXPECT_THAT(m_server.takeQueued(), ElementsAre("5001 mist 3", "5001 mode 1"));
    EXPECT_THAT(m_server.takeCommands(), ElementsAre(kQuery));
}

TEST_F(RovanServerThreads, OutsideAReradSetupThePeriodicThreadEndsAfterItsFirstSecond) {
    BenchServer server(m_bus, "SYSTEM_ENV_LIVE");
    server.run();
    server.m_passthroughQuery->enable();
    const auto begin = steady_clock::now();
    server.m_periodicThread.start([&] { server.periodicThreadFunction(); });
    ASSERT_TRUE(eventually([&] { return server.m_periodicThread.finished(); }));
    EXPECT_GE(steady_clock::now() - begin, 1s);
    EXPECT_THAT(server.takeCommands(), IsEmpty());
    EXPECT_THAT(server.takeQueued(), IsEmpty());
}

TEST_F(RovanServerThreads, DuringABuiltInTestNobodyIsAskedForPassthrough) {
    m_server.m_bit.begin(numberedCommand(2, "REQUEST_COMPONENT_CBIT"));
    startPeriodicThread();
    // Its first seconds pass in the test.
    EXPECT_FALSE(eventually([this] { return !m_server.takeCommands().empty(); }, 2s));
    EXPECT_FALSE(m_server.m_periodicThread.finished());
    // The test ends without a report, and the queries begin.
    m_server.wait(181s);
    m_server.m_bit.handleCommandedBIT();
    EXPECT_THAT(collectCommands(1), ElementsAre(kQuery));
}

TEST_F(RovanServerThreads, ABuiltInTestHasAThreadThatEndsWithItAndTheNextOneGetsItsOwn) {
    m_server.cbCmd(numberedCommand(3, "REQUEST_COMPONENT_CBIT"));
    ASSERT_TRUE(eventually([this] { return m_server.m_bit.bitState() == 1; }));
    EXPECT_FALSE(m_server.m_serverThread.finished());
    // Three minutes without a report are its end.
    m_server.wait(181s);
    m_server.m_bit.handleCommandedBIT();
    ASSERT_TRUE(eventually([this] { return m_server.m_serverThread.finished(); }));
    EXPECT_THAT(m_server.takeAnswers(), ElementsAre("REQUEST_COMPONENT_CBIT_FAIL to 3"));
    EXPECT_THAT(m_server.takeQueued(), ElementsAre("5001 mode 1"));
    EXPECT_THAT(m_server.takeDone(), ElementsAre("event 3 ROVAN Commanded BIT Incomplete"));

    m_server.cbCmd(numberedCommand(4, "REQUEST_COMPONENT_CBIT"));
    EXPECT_TRUE(m_server.m_bit.isRunning());
    EXPECT_TRUE(m_server.m_serverThread.joinable());
    EXPECT_FALSE(m_server.m_serverThread.finished());
    // Stopped before its end, it is neither answered nor over.
    m_server.m_serverThread.stop();
    EXPECT_TRUE(m_server.m_bit.isRunning());
    EXPECT_THAT(m_server.takeAnswers(), IsEmpty());
    EXPECT_THAT(m_server.takeDone(), IsEmpty());
}

TEST_F(RovanServerThreads, TheTimeDataThreadTicksOnceASecond) {
    m_server.m_timeDataTransfer->on5040(4);
    m_server.m_timeDataTransfer->on5042(true);
    m_server.m_timeDataTransfer->on5042(false);
    const auto begin = steady_clock::now();
    m_server.m_timeDataThread.start([this] { m_server.timeDataWorkerThreadFunction(); });
    EXPECT_THAT(collectQueued(1), ElementsAre("5001 mode 1"));
    EXPECT_GE(steady_clock::now() - begin, 5s);
    m_server.m_timeDataThread.stop();
    EXPECT_TRUE(m_server.m_timeDataThread.finished());
}

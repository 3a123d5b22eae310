// SPDX-License-Identifier: Apache-2.0
// Shell scripts stand for the server.
#include "simulator/ServerProcess.h"

#include <gmock/gmock.h>
#include <signal.h>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::ConsoleLine;
using Simulator::ProcessEnd;
using Simulator::ServerProcess;
using SimulatorTest::kSoon;
using SimulatorTest::TemporaryDirectory;
using std::chrono::milliseconds;

class ServerProcessTest : public testing::Test {
  protected:
    ServerProcess::Options options(const std::string& script) {
        ServerProcess::Options options;
        options.program = m_directory.script("server", script);
        options.argument = "rovan.xml";
        options.directory = m_directory.path();
        return options;
    }
    static bool printed(const ServerProcess& server, const std::string& text) {
        return server.console()
            .waitFor([&](const ConsoleLine& line) { return line.text == text; }, kSoon)
            .has_value();
    }

    const TemporaryDirectory m_directory;
};

TEST_F(ServerProcessTest, RunsInTheDirectoryWithItsOneArgument) {
    ServerProcess server(options("echo $# $1; pwd -P"));
    server.start();
    EXPECT_TRUE(printed(server, "1 rovan.xml"));
    EXPECT_TRUE(printed(server, std::filesystem::canonical(m_directory.path()).string()));
    const auto end = server.waitFor(kSoon);
    ASSERT_TRUE(end);
    EXPECT_TRUE(end->good());
    EXPECT_EQ(end->text(), "exit status 0");
    EXPECT_FALSE(server.running());
}

TEST_F(ServerProcessTest, GetsTheEnvironmentWithItsChanges) {
    setenv("SIMULATOR_TEST_KEPT", "kept", 1);
    setenv("SIMULATOR_TEST_CHANGED", "before", 1);
    ServerProcess::Options changed =
        options("echo $SIMULATOR_TEST_KEPT $SIMULATOR_TEST_CHANGED $SIMULATOR_TEST_NEW");
    changed.environment = {{"SIMULATOR_TEST_CHANGED", "after"}, {"SIMULATOR_TEST_NEW", "new"}};
    ServerProcess server(std::move(changed));
    server.start();
    EXPECT_TRUE(printed(server, "kept after new"));
}

TEST_F(ServerProcessTest, KeepsBothStreamsLineByLine) {
    ServerProcess server(options("echo out; echo err >&2; printf unended"));
    server.start();
    ASSERT_TRUE(server.waitFor(kSoon));
    server.stop(kSoon);
    std::vector<std::string> output;
    std::vector<std::string> errors;
    for (const ConsoleLine& line : server.console().entries()) {
        (line.error ? errors : output).push_back(line.text);
    }
    EXPECT_THAT(output, testing::ElementsAre("out", "unended"));
    EXPECT_THAT(errors, testing::ElementsAre("err"));
}

TEST_F(ServerProcessTest, PassesItsConsoleThroughWhenAsked) {
    ServerProcess::Options loud = options("echo heard; echo complaint >&2");
    loud.passThrough = true;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    {
        ServerProcess server(std::move(loud));
        server.start();
        server.waitFor(kSoon);
        server.stop(kSoon);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "heard\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "complaint\n");
}

TEST_F(ServerProcessTest, TellsHowItEnded) {
    ServerProcess failing(options("exit 3"));
    failing.start();
    auto end = failing.waitFor(kSoon);
    ASSERT_TRUE(end);
    EXPECT_FALSE(end->good());
    EXPECT_EQ(end->code, 3);

    ServerProcess crashing(options("kill -ABRT $$"));
    crashing.start();
    end = crashing.waitFor(kSoon);
    ASSERT_TRUE(end);
    EXPECT_TRUE(end->bySignal);
    EXPECT_EQ(end->code, SIGABRT);
    EXPECT_EQ(end->text(), "ended by signal 6 (Aborted)");
}

TEST_F(ServerProcessTest, StopsByTermAndGivesItTheTimeToEnd) {
    ServerProcess server(
        options("trap 'echo stopping; exit 0' TERM; echo up; while :; do sleep 0.01; done"));
    server.start();
    ASSERT_TRUE(printed(server, "up"));
    EXPECT_TRUE(server.running());
    EXPECT_EQ(server.waitFor(milliseconds(10)), std::nullopt);
    const auto end = server.stop(kSoon);
    ASSERT_TRUE(end);
    EXPECT_TRUE(end->good());
    EXPECT_TRUE(printed(server, "stopping"));
}

TEST_F(ServerProcessTest, KillsWhatDoesNotEnd) {
    ServerProcess server(options("trap '' TERM; echo up; while :; do sleep 0.01; done"));
    server.start();
    ASSERT_TRUE(printed(server, "up"));
    const auto end = server.stop(milliseconds(50));
    ASSERT_TRUE(end);
    EXPECT_TRUE(end->bySignal);
    EXPECT_EQ(end->code, SIGKILL);
}

TEST_F(ServerProcessTest, SignalsReachARunningServerOnly) {
    ServerProcess server(options("trap 'echo hup' HUP; echo up; while :; do sleep 0.01; done"));
    EXPECT_FALSE(server.signal(SIGHUP));
    server.start();
    ASSERT_TRUE(printed(server, "up"));
    EXPECT_TRUE(server.signal(SIGHUP));
    EXPECT_TRUE(printed(server, "hup"));
    server.stop(milliseconds(10));
    EXPECT_FALSE(server.signal(SIGHUP));
}

TEST_F(ServerProcessTest, StartsWithoutTheSignalsThatThisProcessIgnoresOrBlocks) {
    ::signal(SIGINT, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, nullptr);
    ServerProcess server(options("grep -E 'Sig(Blk|Ign)' /proc/self/status"));
    server.start();
    EXPECT_TRUE(printed(server, "SigBlk:\t0000000000000000"));
    EXPECT_TRUE(printed(server, "SigIgn:\t0000000000000000"));
}

TEST_F(ServerProcessTest, CanBeStartedAgainAfterItsEnd) {
    ServerProcess server(options("echo once"));
    server.start();
    ASSERT_TRUE(server.waitFor(kSoon));
    server.start();
    ASSERT_TRUE(server.waitFor(kSoon));
    server.stop(kSoon);
    EXPECT_EQ(server.console().count(), 2u);
}

TEST_F(ServerProcessTest, SaysThatThereIsNoProgram) {
    ServerProcess::Options missing;
    missing.program = m_directory.path() / "nothing";
    ServerProcess server(missing);
    EXPECT_THROW(server.start(), std::runtime_error);
    EXPECT_EQ(server.stop(kSoon), std::nullopt);
}

}  // namespace

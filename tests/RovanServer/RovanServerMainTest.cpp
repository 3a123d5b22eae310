// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanServerMain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/RovanServer/TemporaryDirectory.h"
#include "tests/RovanServer/TopLevelFile.h"

using FACE::RETURN_CODE_TYPE;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

int runMain(std::vector<std::string> arguments) {
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    return RovanServerMain(argc, argv.data());
}

/// How often a call is made that is IN_PROGRESS `busy` times and then gives `last`.
int triesOf(int busy, RETURN_CODE_TYPE::Value last, RETURN_CODE_TYPE::Value& rc) {
    int tries = 0;
    callOnceTransactionally(
        [&](RETURN_CODE_TYPE::Value& code) {
            EXPECT_EQ(code, RETURN_CODE_TYPE::IN_PROGRESS);
            code = tries++ < busy ? RETURN_CODE_TYPE::IN_PROGRESS : last;
        },
        rc);
    return tries;
}

}  // namespace

TEST(RovanServerMain, PrintsTheUsageWithoutAnArgument) {
    CaptureStdout();
    EXPECT_EQ(runMain({"./RovanServer"}), 1);
    EXPECT_EQ(GetCapturedStdout(), "Usage: ./RovanServer <top-level-config-file> \n");
}

TEST(RovanServerMain, PrintsTheUsageForTwoArguments) {
    CaptureStdout();
    EXPECT_EQ(runMain({"RovanServer", "a.xml", "b.xml"}), 1);
    EXPECT_EQ(GetCapturedStdout(), "Usage: RovanServer <top-level-config-file> \n");
}

TEST(RovanServerMain, RaisesWhenTheFileCannotBeRead) {
    const TemporaryDirectory directory;
    CaptureStdout();
    try {
        runMain({"RovanServer", directory.path("absent.xml")});
        ADD_FAILURE() << "nothing was raised";
    } catch (const std::runtime_error& e) {
        EXPECT_THAT(e.what(),
                    testing::MatchesRegex(
                        ".*RovanServerMain.cpp.[0-9]+.:INVALID_CONFIG Configure.. failed"));
        EXPECT_EQ(GetCapturedStdout(), std::string(e.what()) + "\n");
    }
}

TEST(RovanServerMain, RaisesWhenTheServicesCannotBeConnected) {
    // Neither second-level file exists, so no device is reached.
    const TemporaryDirectory directory;
    TopLevelFile file;
    TopLevelFile::set(file.server, "Connections", directory.path("no-connections.xml"));
    TopLevelFile::set(file.server, "IODevices", directory.path("no-devices.xml"));
    CaptureStdout();
    EXPECT_THROW(runMain({"RovanServer", directory.write("rovan.xml", file.text())}),
                 std::runtime_error);
    EXPECT_THAT(GetCapturedStdout(),
                testing::HasSubstr("]:INVALID_CONFIG Framework_Connect() failed\n"));
}

TEST(RovanServerMain, CallsAgainEvery200MillisecondsWhileInProgress) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    const auto start = steady_clock::now();
    EXPECT_EQ(triesOf(3, RETURN_CODE_TYPE::NO_ACTION, rc), 4);
    EXPECT_GE(steady_clock::now() - start, milliseconds(600));
    EXPECT_EQ(rc, RETURN_CODE_TYPE::NO_ACTION);
}

TEST(RovanServerMain, CallsOnceWhenTheFirstCallIsDone) {
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    EXPECT_EQ(triesOf(0, RETURN_CODE_TYPE::INVALID_MODE, rc), 1);
    EXPECT_EQ(rc, RETURN_CODE_TYPE::INVALID_MODE);
}

TEST(RovanServerMain, CallsAgainWithoutSleepingWhenThePollPeriodIsNotPositive) {
    for (const int period : {0, -5}) {
        transactionPollMs = period;
        auto rc = RETURN_CODE_TYPE::NO_ERROR;
        const auto start = steady_clock::now();
        EXPECT_EQ(triesOf(100, RETURN_CODE_TYPE::NO_ERROR, rc), 101);
        EXPECT_LT(steady_clock::now() - start, milliseconds(100 * 200));
    }
}

TEST(RovanServerMain, TheHandlerNotesTheSignalAndAsksForTheEnd) {
    EXPECT_FALSE(exitFlag);
    EXPECT_EQ(exitSignal, 0);
    SignalHandler(SIGQUIT);
    EXPECT_TRUE(exitFlag);
    EXPECT_EQ(exitSignal, SIGQUIT);
}

TEST(RovanServerMain, CatchesNineSignalsWithAnEmptyMaskAndNoFlags) {
    SetupSignalHandler();
    const std::vector<int> caught{SIGQUIT, SIGILL, SIGABRT, SIGBUS, SIGTERM,
                                  SIGTRAP, SIGSYS, SIGFPE,  SIGINT};
    int handled = 0;
    for (int signal = 1; signal < SIGRTMIN; ++signal) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != &SignalHandler) {
            continue;
        }
        ++handled;
        EXPECT_THAT(caught, testing::Contains(signal));
        EXPECT_EQ(action.sa_flags & ~0x04000000, 0) << "signal " << signal;  // less SA_RESTORER
        for (int other = 1; other < SIGRTMIN; ++other) {
            EXPECT_EQ(sigismember(&action.sa_mask, other), 0);
        }
    }
    EXPECT_EQ(handled, 9);
}

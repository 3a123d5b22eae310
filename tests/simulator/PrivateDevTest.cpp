// SPDX-License-Identifier: Apache-2.0
#include "simulator/PrivateDev.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/simulator/SimulatorTestSupport.h"

namespace {

using Simulator::PrivateDev;

int exitStatus(const std::string& command) {
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string ownProgram() {
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

TEST(PrivateDev, IsActiveInTheseTestsAndHoldsNoRealDevice) {
    EXPECT_TRUE(PrivateDev::active());
    EXPECT_NO_THROW(PrivateDev::require("/dev/mem"));
    for (const auto& entry : std::filesystem::directory_iterator("/dev")) {
        struct stat node {};
        if (stat(entry.path().c_str(), &node) != 0) {
            continue;  // a link that leads nowhere
        }
        EXPECT_FALSE(S_ISBLK(node.st_mode)) << entry.path();
        // Memory devices such as /dev/null have major number 1, of which 1 is /dev/mem; 5 is the
        // controlling terminal.
        EXPECT_FALSE(S_ISCHR(node.st_mode) && node.st_rdev == makedev(1, 1)) << entry.path();
        EXPECT_FALSE(S_ISCHR(node.st_mode) && major(node.st_rdev) == 4) << entry.path();
    }
}

TEST(PrivateDev, EnteringAgainStaysInTheSameOne) {
    EXPECT_EQ(PrivateDev::enter(), std::nullopt);
}

TEST(PrivateDev, SharesTheMemoryOfTheBusWithTheMachine) {
    struct stat shm {};
    ASSERT_EQ(stat("/dev/shm", &shm), 0);
    struct stat dev {};
    ASSERT_EQ(stat("/dev", &dev), 0);
    EXPECT_NE(shm.st_dev, dev.st_dev);
}

// Another /dev that is private, but not the unit's: nothing real is there even if something is
// made.
TEST(PrivateDev, EverythingRefusesToTouchADevThatIsNotTheUnitsOwn) {
    const std::string bwrap = "bwrap --bind / / --dev /dev --die-with-parent -- ";
    ASSERT_EQ(exitStatus(bwrap + "test -c /dev/null"), 0) << "no bubblewrap inside of bubblewrap";
    EXPECT_EQ(exitStatus(bwrap + ownProgram() + " --outside"), 0);
}

// The directory alone, which anybody could make, is not taken for the private /dev.
TEST(PrivateDev, IsNotActiveOnAFileSystemOfAnotherType) {
    const SimulatorTest::TemporaryDirectory temporary;
    const std::string path = temporary.path().string();
    if (exitStatus("test \"$(stat -f -c %T " + path + ")\" = tmpfs") == 0) {
        GTEST_SKIP() << path << " is a tmpfs itself";
    }
    const std::string bwrap = "bwrap --bind / / --bind " + path + " /dev --dir " +
                              PrivateDev::kDirectory + " --die-with-parent -- ";
    ASSERT_EQ(exitStatus(bwrap + "test -d " + PrivateDev::kDirectory), 0);
    EXPECT_EQ(exitStatus(bwrap + ownProgram() + " --outside"), 0);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "simulator/Devmem.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "simulator/PhysicalMemory.h"
#include "simulator/PrivateDev.h"

namespace {

using Simulator::Devmem;
using Simulator::MemoryRegion;
using Simulator::PhysicalMemory;
using Simulator::PrivateDev;

class DevmemTest : public testing::Test {
  protected:
    // As the server does it: by name, through a shell.
    int run(const std::string& arguments) {
        setenv("PATH", m_devmem.inFrontOf("/usr/bin:/bin").c_str(), 1);
        const int status = std::system(("devmem " + arguments).c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const std::string m_directory = std::string(PrivateDev::kDirectory) + "/bin";
    const PhysicalMemory m_memory;
    MemoryRegion m_registers = m_memory.map(0x40000400, 0x100);
    Devmem m_devmem{m_directory};
};

TEST_F(DevmemTest, WritesTheSimulatedMemory) {
    EXPECT_EQ(run("0x4000045C 32 1"), 0);
    EXPECT_EQ(m_registers.read32(0x5C), 1u);
    EXPECT_EQ(run("0x4000045C 32 0"), 0);
    EXPECT_EQ(m_registers.read32(0x5C), 0u);
}

TEST_F(DevmemTest, NotesEachCallInOrder) {
    EXPECT_THAT(m_devmem.calls(), testing::IsEmpty());
    run("0x4000045C 32 1");
    run("0x40000460 32 0");
    EXPECT_THAT(m_devmem.calls(), testing::ElementsAre("0x4000045C 32 1", "0x40000460 32 0"));
}

TEST_F(DevmemTest, CanFailAndTouchNothing) {
    m_devmem.failWith(3);
    EXPECT_EQ(run("0x4000045C 32 1"), 3);
    EXPECT_EQ(m_registers.read32(0x5C), 0u);
    EXPECT_THAT(m_devmem.calls(), testing::ElementsAre("0x4000045C 32 1"));
    m_devmem.failWith(0);
    EXPECT_EQ(run("0x4000045C 32 1"), 0);
    EXPECT_EQ(m_registers.read32(0x5C), 1u);
}

TEST_F(DevmemTest, StandsInFrontOfTheOthers) {
    EXPECT_EQ(m_devmem.inFrontOf("/usr/bin:/bin"), m_directory + ":/usr/bin:/bin");
    EXPECT_EQ(m_devmem.inFrontOf(""), m_directory);
}

TEST(Devmem, LeavesNothingBehind) {
    const std::string directory = std::string(PrivateDev::kDirectory) + "/other";
    {
        const Devmem devmem(directory);
        EXPECT_TRUE(std::filesystem::exists(directory + "/devmem"));
    }
    EXPECT_FALSE(std::filesystem::exists(directory));
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "simulator/PhysicalMemory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace {

using Simulator::MemoryRegion;
using Simulator::PhysicalMemory;

TEST(PhysicalMemory, IsALargeFileThatTakesNoRoom) {
    const PhysicalMemory memory;
    struct stat file {};
    ASSERT_EQ(stat("/dev/mem", &file), 0);
    EXPECT_TRUE(S_ISREG(file.st_mode));
    EXPECT_EQ(file.st_size, 0x40100000);
    EXPECT_EQ(file.st_blocks, 0);
}

TEST(PhysicalMemory, GoesWithItsOwnerAndCanBeMadeAgain) {
    { const PhysicalMemory memory; }
    EXPECT_FALSE(std::filesystem::exists("/dev/mem"));
    const PhysicalMemory again;
    EXPECT_TRUE(std::filesystem::exists("/dev/mem"));
}

TEST(PhysicalMemory, RefusesToReplaceADeviceThatIsThere) {
    const PhysicalMemory memory;
    EXPECT_THROW(PhysicalMemory(), std::system_error);
    EXPECT_TRUE(std::filesystem::exists("/dev/mem"));
}

TEST(PhysicalMemory, TwoRegionsOfTheSameAddressAreTheSameMemory) {
    const PhysicalMemory memory;
    MemoryRegion whole = memory.map(0x40000000, 0x1000);
    const MemoryRegion part = memory.map(0x40000450, 0x20);
    whole.write32(0x45C, 0x12345678);
    EXPECT_EQ(part.read32(0xC), 0x12345678u);
}

TEST(PhysicalMemory, TheDevmemCommandOfBusyboxReachesIt) {
    const PhysicalMemory memory;
    const MemoryRegion region = memory.map(0x40000400, 0x100);
    const int status = std::system("busybox devmem 0x4000045C 32 0xCAFE");
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(region.read32(0x5C), 0xCAFEu);
}

TEST(MemoryRegion, KeepsWhatIsWrittenLeastSignificantHalfFirst) {
    const PhysicalMemory memory;
    MemoryRegion region = memory.map(0x40030000, 0x400);
    region.write64(128, 0x1122334455667788);
    EXPECT_EQ(region.read64(128), 0x1122334455667788u);
    EXPECT_EQ(region.read32(128), 0x55667788u);
    EXPECT_EQ(region.read32(132), 0x11223344u);
}

TEST(MemoryRegion, RefusesWhatIsNotInsideOrNotAligned) {
    const PhysicalMemory memory;
    MemoryRegion region = memory.map(0x40030000, 16);
    EXPECT_NO_THROW(region.read64(8));
    EXPECT_THROW(region.read64(12), std::out_of_range);
    EXPECT_THROW(region.write32(16, 0), std::out_of_range);
    EXPECT_THROW(region.read32(2), std::out_of_range);
    EXPECT_THROW(region.read64(4), std::out_of_range);
    EXPECT_THROW(memory.map(0x40100000, 4), std::out_of_range);
    EXPECT_THROW(memory.map(0x400FFFFF, 2), std::out_of_range);
}

}  // namespace

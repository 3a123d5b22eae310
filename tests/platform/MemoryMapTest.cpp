// SPDX-License-Identifier: Apache-2.0
#include "platform/MemoryMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/platform/FakeMemoryDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the function throws; empty when it throws nothing.
template <typename FUNCTION>
std::string failureOf(FUNCTION function) {
    try {
        function();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

uint8_t* bytes(const MemoryMap& map) {
    return static_cast<uint8_t*>(map.getPointerToBase());
}

// ---- The mapping ------------------------------------------------------------------------------

TEST(MemoryMap, MapsOnePageForARegionInside) {
    FakeMemoryDevice device;

    const MemoryMap map(0x4000'0010, 32, device);  // 16 bytes past a boundary of 4096

    ASSERT_EQ(device.mappings.size(), 1u);
    EXPECT_EQ(device.mappings[0].length, 4096u);
    EXPECT_EQ(device.mappings[0].offset, 0x4000'0000u);
    EXPECT_EQ(device.mappings[0].protection, PROT_READ | PROT_WRITE);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(map.getPointerToBase()) % 4096, 16u);
}

TEST(MemoryMap, MapsAPageMoreThanARegionThatEndsOnABoundary) {
    FakeMemoryDevice device;

    const MemoryMap map(0x4000'0000, 4096, device);

    EXPECT_EQ(device.mappings.at(0).length, 8192u);
    EXPECT_EQ(device.mappings.at(0).offset, 0x4000'0000u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(map.getPointerToBase()) % 4096, 0u);
}

TEST(MemoryMap, CountsTheOffsetInThePageToTheLength) {
    FakeMemoryDevice device;

    const MemoryMap shorter(0x4000'0FF0, 15, device);  // ends one byte before the boundary
    const MemoryMap touching(0x4000'0FF0, 16, device);
    const MemoryMap empty(0x4000'0000, 0, device);

    EXPECT_EQ(device.mappings.at(0).length, 4096u);
    EXPECT_EQ(device.mappings.at(1).length, 8192u);
    EXPECT_EQ(device.mappings.at(2).length, 4096u);
}

TEST(MemoryMap, TakesTheWholeAddressSpaceWithoutOverflow) {
    FakeMemoryDevice device;
    device.failMmap = true;

    failureOf([&] { const MemoryMap map(0xFFFF'FFF0, 0xFFFF'FFFF, device); });

    // 0xFF0 + 0xFFFFFFFF = 0x100000FEF: 0x100000 whole pages and one more
    EXPECT_EQ(device.mappings.at(0).length, 0x1'0000'1000u);
    EXPECT_EQ(device.mappings.at(0).offset, 0xFFFF'F000u);
}

TEST(MemoryMap, ShowsThePhysicalMemoryAtTheBase) {
    FakeMemoryDevice device;
    device.setBytes(0x4000'0010, {1, 2, 3});

    const MemoryMap map(0x4000'0010, 32, device);
    bytes(map)[1] = 42;

    EXPECT_EQ(bytes(map)[0], 1);
    EXPECT_EQ(bytes(map)[2], 3);
    EXPECT_THAT(device.bytesAt(0x4000'0010, 3), ElementsAre(1, 42, 3));
}

TEST(MemoryMap, LetsRegionsOverlap) {
    FakeMemoryDevice device;
    const MemoryMap whole(0x4000'0000, 64, device);
    const MemoryMap part(0x4000'0020, 16, device);

    bytes(whole)[0x21] = 7;

    EXPECT_EQ(bytes(part)[1], 7);
}

TEST(MemoryMap, UnmapsAllThatItMapped) {
    FakeMemoryDevice device;
    {
        const MemoryMap map(0x4000'0000, 4096, device);
        EXPECT_THAT(device.unmappedLengths, IsEmpty());
    }
    EXPECT_THAT(device.unmappedLengths, ElementsAre(8192u));
}

TEST(MemoryMap, ThrowsWhenTheRegionCannotBeMapped) {
    FakeMemoryDevice device;
    device.failMmap = true;

    EXPECT_EQ(failureOf([&] { const MemoryMap map(0x4000'0000, 16, device); }),
              "Unable to map memory space.");
    EXPECT_THAT(device.unmappedLengths, IsEmpty());
}

TEST(MemoryMap, ReportsAnUnmapThatFailsAndGoesOn) {
    FakeMemoryDevice device;
    device.failMunmap = true;
    testing::internal::CaptureStderr();

    { const MemoryMap map(0x4000'0000, 16, device); }

    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unable to mumap memory space: Invalid argument\n");
}

// ---- The device -------------------------------------------------------------------------------

TEST(MemoryDeviceFileDescriptor, OpensTheDeviceForSynchronousAccess) {
    FakeMemoryDevice device;

    const MemoryDeviceFileDescriptor descriptor(device);

    EXPECT_THAT(device.openedPaths, ElementsAre("/dev/mem"));
    EXPECT_THAT(device.openFlags, ElementsAre(O_RDWR | O_SYNC));
    EXPECT_EQ(descriptor.fd(), device.openedDescriptors.at(0));
    EXPECT_EQ(descriptor.pageSize(), 4096u);
}

TEST(MemoryDeviceFileDescriptor, ClosesTheDevice) {
    FakeMemoryDevice device;
    { const MemoryDeviceFileDescriptor descriptor(device); }

    EXPECT_EQ(fcntl(device.openedDescriptors.at(0), F_GETFD), -1);
}

TEST(MemoryDeviceFileDescriptor, ThrowsWhenTheDeviceCannotBeOpened) {
    FakeMemoryDevice device;
    device.failOpen = true;

    EXPECT_EQ(failureOf([&] { const MemoryDeviceFileDescriptor descriptor(device); }),
              "Unable to open /dev/mem file descriptor.");
}

TEST(MemoryDeviceFileDescriptor, LeavesNothingOpenWhenThereIsNoPageSize) {
    FakeMemoryDevice device;
    device.failSysconf = true;

    EXPECT_EQ(failureOf([&] { const MemoryDeviceFileDescriptor descriptor(device); }),
              "Unable to open /dev/mem file descriptor.");
    EXPECT_EQ(fcntl(device.openedDescriptors.at(0), F_GETFD), -1);
}

// The descriptor of the process is opened once in its life: these run in a process of their own,
// which ends with 0 when all went well.
class MemoryDeviceOfAProcess : public testing::Test {
  protected:
    MemoryDeviceOfAProcess() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    [[noreturn]] static void end() { std::exit(HasFailure() ? 1 : 0); }
};

TEST_F(MemoryDeviceOfAProcess, IsOpenedByTheFirstMapAndSharedByAll) {
    EXPECT_EXIT(
        {
            FakeMemoryDevice device;
            EXPECT_THAT(device.openedPaths, IsEmpty());
            { const MemoryMap map(0x4000'0000, 16, device); }
            const MemoryMap second(0x4000'1000, 16, device);
            const MemoryMap third(0x4000'2000, 16, device);

            EXPECT_THAT(device.openedPaths, ElementsAre("/dev/mem"));
            for (const auto& mapping : device.mappings) {
                EXPECT_EQ(mapping.fd, device.openedDescriptors.at(0));
            }
            EXPECT_NE(fcntl(device.openedDescriptors.at(0), F_GETFD), -1);
            end();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(MemoryDeviceOfAProcess, IsTriedAgainAfterAFailure) {
    EXPECT_EXIT(
        {
            FakeMemoryDevice device;
            device.failOpen = true;
            for (int i = 0; i < 2; ++i) {
                EXPECT_EQ(failureOf([&] { const MemoryMap map(0x4000'0000, 16, device); }),
                          "Unable to open /dev/mem file descriptor.");
            }
            device.failOpen = false;
            EXPECT_EQ(failureOf([&] { const MemoryMap map(0x4000'0000, 16, device); }), "");

            EXPECT_THAT(device.openedPaths, ElementsAre("/dev/mem", "/dev/mem", "/dev/mem"));
            EXPECT_EQ(device.mappings.size(), 1u);
            end();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(MemoryDeviceOfAProcess, TakesThePageSizeOfTheSystem) {
    EXPECT_EXIT(
        {
            FakeMemoryDevice device;
            device.pageSize = 65536;
            const MemoryMap map(0x4001'0010, 65536 - 16, device);

            EXPECT_EQ(device.mappings.at(0).length, 131072u);
            EXPECT_EQ(device.mappings.at(0).offset, 0x4001'0000u);
            end();
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

#include "ioss_mcsq/GssipMcsq.h"
#include "tests/AllocationCounter.h"
#include "tests/ioss_mcsq/QueueDevices.h"
#include "tests/ioss_mcsq/Samples.h"

namespace {

// The way of a frame from the receiver to the device and to the server's callback.
TEST(GssipMcsqAllocation, IsNoneForAFrame) {
    const QueueDevices devices;
    const Descriptor peer = devices.makeTerminal(3);
    GssipMcsq queue("Rovan", std::vector<unsigned short>{5044}, devices.prefix());
    auto rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    long long handle = -1;
    int calls = 0;
    queue.Connect_IOWrite(
        devices.configure({{"ROVAN_KD", "3"}}).c_str(), "ROVAN_KD", handle,
        [&calls, ballast = std::array<long, 4>()](const aspn2_msgs::idl::GSSIP&) {
            calls += ballast[0] == 0 ? 1 : 0;  // too large to be copied without an allocation
        },
        rc);
    const auto sample = sampleOf(frameOf(8504, 214));
    const auto excluded = sampleOf(frameOf(5044, 214));
    queue.Write(handle, sample, rc);
    ASSERT_EQ(rc, FACE::RETURN_CODE_TYPE::NO_ERROR);

    const long before = allocationCount();
    for (int i = 0; i < 5; ++i) {
        queue.Write(handle, sample, rc);
        queue.Write(handle, excluded, rc);
    }
    const long after = allocationCount();
    EXPECT_EQ(after, before);
    EXPECT_EQ(calls, 11);
    // The terminal hands over in its own time.
    constexpr size_t kExpected = 6 * (224 + 56);
    size_t received = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (received < kExpected && std::chrono::steady_clock::now() < deadline) {
        received += peer.take().size();
        std::this_thread::yield();
    }
    EXPECT_EQ(received, kExpected);
    // That of take(): the counting works.
    EXPECT_EQ(allocationCount() > after, kAllocationsAreCounted);
}

}  // namespace

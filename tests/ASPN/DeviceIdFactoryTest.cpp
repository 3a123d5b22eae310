// SPDX-License-Identifier: Apache-2.0
#include "ASPN/DeviceIdFactory.h"

#include <gtest/gtest.h>

namespace {

using ASPN2::DeviceIdFactory;

TEST(DeviceIdFactory, LeavesSystemAndServerAtZeroByDefault) {
    EXPECT_EQ(DeviceIdFactory().makeDeviceId(0x12, 0x34), 0x00001234);
}

TEST(DeviceIdFactory, PutsEachPartIntoItsByte) {
    const DeviceIdFactory factory(1, 39);

    EXPECT_EQ(factory.makeDeviceId(2, 0), 0x01270200);
    EXPECT_EQ(factory.makeDeviceId(59, 7), 0x01273B07);
    EXPECT_EQ(factory.makeDeviceId(0, 0), 0x01270000);
}

TEST(DeviceIdFactory, TakesTheSystemByName) {
    EXPECT_EQ(DeviceIdFactory("ARVEN", 39).makeDeviceId(1, 0), 0x01270100);
    EXPECT_EQ(DeviceIdFactory("BRELD", 39).makeDeviceId(1, 0), 0x02270100);
    EXPECT_EQ(DeviceIdFactory("TessalyPlus", 39).makeDeviceId(1, 0), 0x03270100);
}

TEST(DeviceIdFactory, HasSystemZeroForAnUnknownName) {
    EXPECT_EQ(DeviceIdFactory("Unheard", 39).makeDeviceId(46, 1), 0x00272E01);
    EXPECT_EQ(DeviceIdFactory(nullptr, 39).makeDeviceId(46, 1), 0x00272E01);
}

TEST(DeviceIdFactory, ForgetsTheFormerBaseWhenReset) {
    DeviceIdFactory factory(0xFF, 0xFF);

    factory.reset(2, 16);
    EXPECT_EQ(factory.makeDeviceId(3, 4), 0x02100304);
    factory.reset("ARVEN", 39);
    EXPECT_EQ(factory.makeDeviceId(3, 4), 0x01270304);
}

TEST(DeviceIdFactory, KeepsAllThirtyTwoBits) {
    EXPECT_EQ(DeviceIdFactory(0xFF, 0xFF).makeDeviceId(0xFF, 0xFF), -1);
    EXPECT_EQ(DeviceIdFactory(0x80, 0).makeDeviceId(0, 0), INT32_MIN);
}

}  // namespace

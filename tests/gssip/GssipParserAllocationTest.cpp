// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "gssip/GssipParser.h"
#include "tests/AllocationCounter.h"
#include "tests/gssip/Frames.h"

namespace {

struct Counter : IHandleGpsipMessages {
    void OnGpsMessageReceived(unsigned char*, unsigned, unsigned) override { ++frames; }
    void OnParserChecksumError(unsigned) override { ++errors; }
    int frames = 0;
    int errors = 0;
};

void feed(GssipParser& parser, const Frames::Bytes& bytes) {
    for (size_t at = 0; at < bytes.size(); at += 128) {
        const size_t count = std::min<size_t>(128, bytes.size() - at);
        parser.LoadBytes(bytes.data() + at, static_cast<uint16_t>(count));
    }
}

TEST(GssipParser, FramesAndFailuresAreDeliveredWithoutAllocating) {
    std::mt19937 random(1);
    Frames::Bytes good = Frames::randomFrame(random, 9225, 416);
    Frames::Bytes bad = good;
    bad[100] ^= 1;
    Counter counter;
    const auto parser = std::make_unique<GssipParser>();
    parser->ProcessMessagesWithThis(&counter, 0);

    const long before = allocationCount();
    for (int i = 0; i < 1000; ++i) {
        feed(*parser, good);
        feed(*parser, bad);
    }
    EXPECT_EQ(allocationCount() - before, 0);
    EXPECT_EQ(counter.frames, 1000);
    EXPECT_GE(counter.errors, 1000);
}

TEST(GssipParser, TheStoreStopsGrowingWhenItHoldsTheLargestFrame) {
    Frames::Bytes hostile;
    for (int i = 0; i < 3000; ++i) {
        hostile = Frames::operator+(std::move(hostile), Frames::header(1, 65535));
    }
    hostile.resize(400000, 0x42);
    const auto parser = std::make_unique<GssipParser>();
    feed(*parser, hostile);

    const long before = allocationCount();
    feed(*parser, hostile);
    EXPECT_EQ(allocationCount() - before, 0);
}

}  // namespace

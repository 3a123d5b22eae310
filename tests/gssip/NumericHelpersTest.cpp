// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <vector>

#include "gssip/NumericConversions.h"

namespace {

struct Split {
    int32_t seconds = 77;
    double nanoseconds = 77.0;
};

Split split(double time) {
    Split result;
    ToSecondsNanoseconds(&result.seconds, &result.nanoseconds, time);
    return result;
}

TEST(NumericHelpers, LswapSwapsTheHalvesInPlaceAndReturnsThem) {
    uint32_t value = 0x12345678;
    EXPECT_EQ(lswap(&value), 0x56781234u);
    EXPECT_EQ(value, 0x56781234u);
}

TEST(NumericHelpers, TheHalvesSwapAtAnyAlignment) {
    unsigned char bytes[6] = {0xEE, 1, 2, 3, 4, 0xEE};
    MSW16_LSW16_swap(bytes + 1);
    const unsigned char expected[6] = {0xEE, 3, 4, 1, 2, 0xEE};
    EXPECT_TRUE(std::equal(bytes, bytes + 6, expected));
}

TEST(NumericHelpers, U16swapSwapsTheBytesInPlaceAndReturnsThem) {
    uint16_t value = 0x12FE;
    EXPECT_EQ(u16swap(&value), 0xFE12);
    EXPECT_EQ(value, 0xFE12);
}

TEST(NumericHelpers, ByteSwapTakesTheGivenNumberOfWords) {
    uint16_t words[3] = {0x0102, 0x0304, 0x0506};
    ByteSwap(words, 2);
    EXPECT_EQ(words[0], 0x0201);
    EXPECT_EQ(words[1], 0x0403);
    EXPECT_EQ(words[2], 0x0506);
}

TEST(NumericHelpers, ByteSwapOfNoneOrFewerDoesNothing) {
    uint16_t word = 0x0102;
    ByteSwap(&word, 0);
    ByteSwap(&word, -1);
    EXPECT_EQ(word, 0x0102);
}

TEST(NumericHelpers, NbcdReadsDigitsAndCountsIllegalOnesAsZero) {
    EXPECT_EQ(FromNBCD(0x1234), 1234);
    EXPECT_EQ(FromNBCD(0x9999), 9999);
    EXPECT_EQ(FromNBCD(0x0000), 0);
    EXPECT_EQ(FromNBCD(0x1A34), 1034);
    EXPECT_EQ(FromNBCD(0xB123), 123);
    EXPECT_EQ(FromNBCD(0x12C4), 1204);
    EXPECT_EQ(FromNBCD(0x123F), 1230);
    EXPECT_EQ(FromNBCD(0xFFFF), 0);
}

TEST(NumericHelpers, NbcdWritesUpTo9999) {
    EXPECT_EQ(ToNBCD(0), 0);
    EXPECT_EQ(ToNBCD(7), 0x0007);
    EXPECT_EQ(ToNBCD(1034), 0x1034);
    EXPECT_EQ(ToNBCD(9999), 0x9999);
    EXPECT_EQ(ToNBCD(10000), 0);
    EXPECT_EQ(ToNBCD(65535), 0);
}

TEST(NumericHelpers, EveryNbcdNumberComesBack) {
    for (uint16_t value = 0; value <= 9999; ++value) {
        ASSERT_EQ(FromNBCD(ToNBCD(value)), value);
    }
}

TEST(NumericHelpers, DirectionsAreNotBroughtToAPositiveRange) {
    EXPECT_DOUBLE_EQ(DirectionRadiansFromVelocity(1.0, 0.0), 1.5707963267948966);
    EXPECT_DOUBLE_EQ(DirectionRadiansFromVelocity(-1.0, -1.0), -2.356194490192345);
    EXPECT_FLOAT_EQ(DirectionRadiansFromVelocityF(-1.0f, 0.0f), -1.57079637f);
    EXPECT_FLOAT_EQ(DirectionRadiansFromVelocityF(0.0f, -1.0f), 3.14159274f);
}

TEST(NumericHelpers, SecondsAndNanosecondsBothCarryTheSign) {
    const Split positive = split(12.25);
    EXPECT_EQ(positive.seconds, 12);
    EXPECT_EQ(positive.nanoseconds, 250000000.0);
    const Split negative = split(-12.25);
    EXPECT_EQ(negative.seconds, -12);
    EXPECT_EQ(negative.nanoseconds, -250000000.0);
    const Split below = split(-0.5);
    EXPECT_EQ(below.seconds, 0);
    EXPECT_EQ(below.nanoseconds, -500000000.0);
}

TEST(NumericHelpers, SecondsSaturateAtTheEndsOf32Bits) {
    EXPECT_EQ(split(2147483647.5).seconds, 2147483647);
    EXPECT_EQ(split(2147483648.0).seconds, 2147483647);
    EXPECT_EQ(split(-2147483648.5).seconds, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(split(-1e300).seconds, std::numeric_limits<int32_t>::min());
    EXPECT_EQ(split(std::numeric_limits<double>::infinity()).seconds, 2147483647);
    EXPECT_EQ(split(std::nan("")).seconds, 0);
}

TEST(NumericHelpers, TheMemoryTestLeaves0x55AndTouchesNothingElse) {
    std::vector<unsigned char> memory(102, 0xEE);
    EXPECT_EQ(flushZero(memory.data() + 1, 100), 0);
    EXPECT_EQ(memory.front(), 0xEE);
    EXPECT_EQ(memory.back(), 0xEE);
    EXPECT_EQ(std::count(memory.begin(), memory.end(), 0x55), 100);
}

// A byte that does not hold what was written to it: a child process keeps clearing it.
TEST(NumericHelpers, TheMemoryTestFindsAByteThatDoesNotHold) {
    constexpr uint16_t kSize = 65535;
    void* memory = mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    const pid_t child = fork();
    if (child == 0) {
        for (volatile auto* byte = static_cast<unsigned char*>(memory) + 100;;) {
            *byte = 0;
        }
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    int result = 0;
    while (result == 0 && std::chrono::steady_clock::now() < deadline) {
        result = flushZero(memory, kSize);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    munmap(memory, kSize);
    EXPECT_EQ(result, 1);
}

TEST(NumericHelpers, TheMemoryTestOfNoBytesPasses) {
    EXPECT_EQ(flushZero(nullptr, 0), 0);
}

}  // namespace

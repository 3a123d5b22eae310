// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <new>

#include "face/FACE_Common.h"

namespace {

using FACE::kUnbounded;
using Numbers = FACE::Sequence<int>;

// An element whose copy finds no memory.
struct Unaffordable {
    Unaffordable() = default;
    Unaffordable(const Unaffordable&) { throw std::bad_alloc(); }
    Unaffordable& operator=(const Unaffordable&) { throw std::bad_alloc(); }
};

TEST(Sequence, IsManagedUnboundedAndEmptyByDefault) {
    const Numbers numbers;
    EXPECT_TRUE(numbers.is_valid());
    EXPECT_TRUE(numbers.is_managed());
    EXPECT_FALSE(numbers.is_bounded());
    EXPECT_EQ(numbers.bound(), 0xFFFFFFFFu);
    EXPECT_EQ(numbers.length(), 0u);
}

TEST(Sequence, AppendsUpToItsBound) {
    auto rc = Numbers::PRECONDITION_VIOLATED;
    Numbers numbers(2u, rc);
    EXPECT_EQ(rc, Numbers::NO_ERROR);
    EXPECT_TRUE(numbers.is_bounded());
    EXPECT_EQ(numbers.append(11), Numbers::NO_ERROR);
    EXPECT_EQ(numbers.append(22), Numbers::NO_ERROR);
    EXPECT_EQ(numbers.append(33), Numbers::INSUFFICIENT_BOUND);
    ASSERT_EQ(numbers.length(), 2u);
    EXPECT_EQ(numbers[0], 11);
    EXPECT_EQ(numbers[1], 22);
}

TEST(Sequence, RefusesABoundOfNoneOrAll) {
    for (const uint32_t bound : {0u, kUnbounded}) {
        auto rc = Numbers::NO_ERROR;
        Numbers numbers(bound, rc);
        EXPECT_EQ(rc, Numbers::PRECONDITION_VIOLATED);
        EXPECT_FALSE(numbers.is_valid());
        EXPECT_EQ(numbers.append(1), Numbers::PRECONDITION_VIOLATED);
        EXPECT_EQ(numbers.resize(0), Numbers::PRECONDITION_VIOLATED);
        EXPECT_EQ(numbers.length(), 0u);
        EXPECT_EQ(numbers.bound(), 0u);
        EXPECT_EQ(numbers.buffer(), nullptr);
    }
}

TEST(Sequence, AppendsIntoTheCallersArray) {
    std::array<int, 4> array = {11, 0, 0, 99};
    auto rc = Numbers::PRECONDITION_VIOLATED;
    Numbers numbers(array.data(), 1, 3, rc);
    EXPECT_EQ(rc, Numbers::NO_ERROR);
    EXPECT_FALSE(numbers.is_managed());
    EXPECT_EQ(numbers.append(22), Numbers::NO_ERROR);
    EXPECT_EQ(numbers.append(33), Numbers::NO_ERROR);
    EXPECT_EQ(numbers.append(44), Numbers::INSUFFICIENT_BOUND);
    EXPECT_EQ(numbers.length(), 3u);
    EXPECT_EQ(array, (std::array<int, 4>{11, 22, 33, 99}));
}

TEST(Sequence, TrustsTheCallerOfAnUnboundedView) {
    std::array<int, 2> array = {0, 0};
    auto rc = Numbers::PRECONDITION_VIOLATED;
    Numbers numbers(array.data(), 0, kUnbounded, rc);
    EXPECT_EQ(rc, Numbers::NO_ERROR);
    EXPECT_FALSE(numbers.is_bounded());
    EXPECT_EQ(numbers.append(11), Numbers::NO_ERROR);
    EXPECT_EQ(numbers.append(22), Numbers::NO_ERROR);
    EXPECT_EQ(array, (std::array<int, 2>{11, 22}));
}

TEST(Sequence, RefusesAViewOfNoneOrOfTooFew) {
    std::array<int, 2> array = {0, 0};
    auto rc = Numbers::NO_ERROR;
    EXPECT_FALSE(Numbers(nullptr, 0, 2, rc).is_valid());
    EXPECT_EQ(rc, Numbers::PRECONDITION_VIOLATED);
    rc = Numbers::NO_ERROR;
    EXPECT_FALSE(Numbers(array.data(), 0, 0, rc).is_valid());
    EXPECT_EQ(rc, Numbers::PRECONDITION_VIOLATED);
    rc = Numbers::NO_ERROR;
    EXPECT_FALSE(Numbers(array.data(), 2, 1, rc).is_valid());
    EXPECT_EQ(rc, Numbers::PRECONDITION_VIOLATED);
}

TEST(Sequence, ReportsAFailedAllocation) {
    using Sequence = FACE::Sequence<Unaffordable>;
    Sequence managed;
    EXPECT_EQ(managed.append(Unaffordable()), Sequence::INSUFFICIENT_MEMORY);
    EXPECT_EQ(managed.length(), 0u);

    std::array<Unaffordable, 1> array;
    auto rc = Sequence::NO_ERROR;
    Sequence view(array.data(), 0, 1, rc);
    EXPECT_EQ(view.append(Unaffordable()), Sequence::INSUFFICIENT_MEMORY);
    EXPECT_EQ(view.length(), 0u);
}

TEST(Sequence, ResizesWithinItsBound) {
    Numbers managed;
    EXPECT_EQ(managed.resize(3), Numbers::NO_ERROR);
    EXPECT_EQ(managed.length(), 3u);
    EXPECT_EQ(managed[2], 0);

    std::array<int, 2> array = {11, 22};
    auto rc = Numbers::NO_ERROR;
    Numbers view(array.data(), 0, 2, rc);
    EXPECT_EQ(view.resize(2), Numbers::NO_ERROR);
    EXPECT_EQ(view[1], 22);
    EXPECT_EQ(view.resize(3), Numbers::INSUFFICIENT_BOUND);
    EXPECT_EQ(view.length(), 2u);
    view.clear();
    EXPECT_EQ(view.length(), 0u);
    EXPECT_EQ(array[1], 22);
}

}  // namespace

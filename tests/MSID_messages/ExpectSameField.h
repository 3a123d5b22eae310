// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

// Compares one member of two structures named `unpacked` and `expected`, bit for bit: the numbers
// come from the same bits, so nothing may be rounded.
#define EXPECT_SAME_FIELD(field) EXPECT_EQ(unpacked.field, expected.field)

/// The elements of a member that is a C array.
#define EXPECT_SAME_ARRAY(field)                              \
    for (size_t i_ = 0; i_ < std::size(expected.field); ++i_) \
    EXPECT_EQ(unpacked.field[i_], expected.field[i_]) << "element " << i_

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>

// Which receiver messages this system knows, and how many data words each has. The message classes
// take their sizes from here.
namespace Msid {

struct MessageSize {
    uint16_t msgId;
    uint16_t wdcnt;
};

constexpr std::array<MessageSize, 19> kMessageSizes{{
    // To the receiver.
    {5001, 31},
    {5313, 100},
    {5331, 50},
    {5402, 67},
    // From the receiver.
    {5040, 88},
    {5042, 100},
    {5044, 21},
    {5047, 100},
    {5048, 100},
    {5404, 60},
    {7270, 59},
    {8040, 25},
    {8080, 6},
    {8504, 200},
    {9225, 416},
    {9391, 84},
    {9405, 104},
    {9409, 32},  // another id of 30409
    {30409, 32},
}};

/// Number of data words of a known message. An id that is not in the table does not compile where a
/// constant is wanted, and throws elsewhere.
constexpr uint16_t wordCount(uint16_t msgId) {
    for (const MessageSize& row : kMessageSizes) {
        if (row.msgId == msgId) {
            return row.wdcnt;
        }
    }
    throw std::out_of_range("Msid::wordCount: unknown message id");
}

}  // namespace Msid

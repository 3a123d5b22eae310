// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>

namespace Simulator {

/// What the receiver can do wrong to an answer or a frame.
enum class Trick { DropAck, DelayAck, Nak, Reject, DropReply, CorruptByte };

// The wrongs that were ordered and have not been done yet. Each is for a number of frames and, when
// it names a message id, for that message alone. Any thread may call.
class Mischief {
  public:
    struct Order {
        Trick trick;
        unsigned times;
        std::optional<std::uint16_t> msgId;  // any message when empty
        std::chrono::milliseconds delay{0};  // of DelayAck
        std::size_t offset = 0;              // of CorruptByte, in the whole frame
    };

    void order(const Order& order);

    /// Takes one turn of the first order for this trick that fits a message of `msgId` with `bytes`
    /// bytes in all.
    std::optional<Order> take(Trick trick, std::uint16_t msgId, std::size_t bytes);

  private:
    std::mutex m_mutex;
    std::list<Order> m_orders;
};

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/Mischief.h"

#include <algorithm>

namespace Simulator {

void Mischief::order(const Order& order) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (order.times > 0) {
        m_orders.push_back(order);
    }
}

std::optional<Mischief::Order> Mischief::take(Trick trick, std::uint16_t msgId, std::size_t bytes) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto fitting =
        std::find_if(m_orders.begin(), m_orders.end(), [&](const Order& candidate) {
            return candidate.trick == trick && candidate.offset < bytes &&
                   (!candidate.msgId || *candidate.msgId == msgId);
        });
    if (fitting == m_orders.end()) {
        return std::nullopt;
    }
    const Order taken = *fitting;
    if (--fitting->times == 0) {
        m_orders.erase(fitting);
    }
    return taken;
}

}  // namespace Simulator

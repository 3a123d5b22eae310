// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <thread>

// True as soon as `condition` holds, false when it does not within `patience`. The patience is no
// figure of the system, only a bound for a test that fails.
template <typename Condition>
bool waitFor(Condition condition, std::chrono::milliseconds patience = std::chrono::seconds(30)) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

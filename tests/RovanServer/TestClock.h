// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>

#include "RovanServer/RovanProcessor.h"
#include "tests/face/TransportBus.h"

namespace processor_test {

// A clock for a processor that stands still until the test moves it. It must outlive the processor.
// The processor's own thread looks at it once in each of its two checks, so that it also tells when
// they have been made.
class TestClock {
  public:
    RovanProcessor::Clock function() {
        return [this] {
            ++m_looks;
            if (m_broken.exchange(false)) {
                throw std::runtime_error("broken clock");
            }
            return RovanProcessor::Time(std::chrono::nanoseconds(m_now));
        };
    }

    void advance(std::chrono::nanoseconds time) { m_now += time.count(); }
    /// The next one who looks gets an exception.
    void breakOnce() { m_broken = true; }

    /// Returns when the thread has made each check at the present time: whoever looks for the third
    /// time has the other check and its own former one behind it. Nobody else may look meanwhile.
    void awaitChecks() const {
        const int before = m_looks;
        EXPECT_TRUE(transport_test::eventually([&] { return m_looks >= before + 3; }));
    }

  private:
    std::atomic<int> m_looks{0};
    std::atomic<int64_t> m_now{1'000'000'000'000};
    std::atomic<bool> m_broken{false};
};

}  // namespace processor_test

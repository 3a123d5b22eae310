// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

namespace ASPN2 {

// The time code that every time stamp made by this process carries: 100 while the system runs live,
// 101 in a simulation. Any thread may call.
class TimeCodeHelper {
  public:
    static constexpr int32_t kLive = 100;
    static constexpr int32_t kSimulation = 101;

    static TimeCodeHelper& Instance();

    void setLiveMode() { m_timeCode = kLive; }
    void setSimMode() { m_timeCode = kSimulation; }
    int32_t getTimeCode() const { return m_timeCode; }

  private:
    TimeCodeHelper() = default;

    std::atomic<int32_t> m_timeCode{kLive};
};

}  // namespace ASPN2

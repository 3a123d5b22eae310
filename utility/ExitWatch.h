// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace Utility {

// Bounds the time that the end of a process may take: when the object has not been destroyed within
// the limit, `giveUp` is called, once and on another thread. It is expected to end the process.
//
// Without a thread to be had there is no bound.
class ExitWatch {
  public:
    ExitWatch(std::chrono::nanoseconds limit, std::function<void()> giveUp);
    ExitWatch(const ExitWatch&) = delete;
    ExitWatch& operator=(const ExitWatch&) = delete;
    ~ExitWatch();

  private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_hasEnded = false;
    std::thread m_thread;
};

}  // namespace Utility

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <thread>

namespace Utility {

// A thread with its stop flag. The owner starts it, asks it to stop and joins it; the function that
// runs on it looks at stopRequested() and returns. Only stopRequested(), requestStop() and
// finished() may be called from other threads than the owner's.
//
// As with std::thread, starting over a joinable thread and destroying a joinable thread end the
// process: both are errors of the owner.
class WorkerThread {
  public:
    WorkerThread() = default;
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    /// Clears the stop flag and runs `function` on a new thread.
    void start(std::function<void()> function);

    void requestStop() noexcept { m_stop = true; }
    bool stopRequested() const noexcept { return m_stop; }

    /// True once the function of the latest start() has returned; false before the first start().
    bool finished() const noexcept { return m_finished; }

    bool joinable() const noexcept { return m_thread.joinable(); }
    void join() { m_thread.join(); }

    /// If the thread is joinable: asks it to stop and joins it.
    void stop();

  private:
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_finished{false};
    std::thread m_thread;
};

}  // namespace Utility

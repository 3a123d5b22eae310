// SPDX-License-Identifier: Apache-2.0
#include "utility/WorkerThread.h"

#include <utility>

namespace Utility {

void WorkerThread::start(std::function<void()> function) {
    m_stop = false;
    m_finished = false;
    m_thread = std::thread([this, run = std::move(function)] {
        run();
        m_finished = true;
    });
}

void WorkerThread::stop() {
    if (m_thread.joinable()) {
        requestStop();
        m_thread.join();
    }
}

}  // namespace Utility

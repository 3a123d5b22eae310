// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>

namespace processor_test {

// The number of a bus that no other test uses as long as this object lives: its lock file is held.
// Waits until one of a few is free.
class OwnBus {
  public:
    OwnBus() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!takeAny()) {
            if (std::chrono::steady_clock::now() > end) {
                throw std::runtime_error("no free bus for this test");
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    OwnBus(const OwnBus&) = delete;
    OwnBus& operator=(const OwnBus&) = delete;
    ~OwnBus() { close(m_lock); }

    int number() const { return m_number; }

  private:
    bool takeAny() {
        for (m_number = kFirst; m_number <= kLast; ++m_number) {
            const auto file = std::filesystem::temp_directory_path() /
                              ("rovan-test-bus-" + std::to_string(m_number));
            m_lock = open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666);
            if (m_lock >= 0 && flock(m_lock, LOCK_EX | LOCK_NB) == 0) {
                return true;
            }
            if (m_lock >= 0) {
                close(m_lock);
            }
        }
        return false;
    }

    // The tests with a fixed number, and those that draw one elsewhere, have others.
    static constexpr int kFirst = 222;
    static constexpr int kLast = 230;

    int m_number = 0;
    int m_lock = -1;
};

}  // namespace processor_test

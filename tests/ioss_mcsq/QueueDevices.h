// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/RovanServer/TemporaryDirectory.h"

using Bytes = std::vector<uint8_t>;

/// True as soon as `condition` holds, false if it does not within ten seconds.
inline bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A descriptor that the test owns, with reads and writes that never wait.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor() { hangUp(); }

    int number() const { return m_number; }
    void hangUp() {
        if (m_number >= 0) {
            close(std::exchange(m_number, -1));
        }
    }
    /// What is there.
    Bytes take() const {
        static thread_local std::array<uint8_t, 1 << 20> room;
        const ssize_t count = read(m_number, room.data(), room.size());
        return Bytes(room.begin(), room.begin() + std::max<ssize_t>(count, 0));
    }
    void put(const Bytes& bytes) const {
        ASSERT_EQ(write(m_number, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

  private:
    int m_number;
};

// Queue devices in a directory of their own, in place of those of /dev, and the configuration file
// that names them.
class QueueDevices {
  public:
    /// What a service takes in place of "/dev/mcs".
    std::string prefix() const { return m_directory.path("mcs"); }
    std::string path(int port) const { return prefix() + std::to_string(port); }
    /// The path of any other file.
    std::string file(const std::string& name) const { return m_directory.path(name); }

    void makeFifo(int port) const { ASSERT_EQ(mkfifo(path(port).c_str(), 0600), 0); }

    /// A raw terminal as the device; the test has its other end.
    Descriptor makeTerminal(int port) const {
        Descriptor farEnd(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK));
        EXPECT_EQ(grantpt(farEnd.number()), 0);
        EXPECT_EQ(unlockpt(farEnd.number()), 0);
        termios settings{};
        EXPECT_EQ(tcgetattr(farEnd.number(), &settings), 0);
        cfmakeraw(&settings);
        EXPECT_EQ(tcsetattr(farEnd.number(), TCSANOW, &settings), 0);
        EXPECT_EQ(symlink(ptsname(farEnd.number()), path(port).c_str()), 0);
        return farEnd;
    }

    /// Another process's end of a FIFO.
    Descriptor join(int port) const {
        return Descriptor(open(path(port).c_str(), O_RDWR | O_NONBLOCK));
    }

    /// A configuration file with one container for each name, with its "Port" as text.
    std::string configure(const std::vector<std::pair<std::string, std::string>>& ports) const {
        std::string text = "<KD_Configurations>";
        for (const auto& [name, port] : ports) {
            text += "<Queue><Name>" + name + "</Name><Parameters><Port>" + port +
                    "</Port></Parameters></Queue>";
        }
        return m_directory.write("io.xml", text + "</KD_Configurations>");
    }

  private:
    TemporaryDirectory m_directory;
};

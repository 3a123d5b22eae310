// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

namespace test_support {

// The number of a bus that no other test of this machine uses as long as this object lives. What
// holds it is a socket with a name but no file: it goes with the process whatever its end, and
// tests of several users do not get into each other's way. Waits until a number is free.
//
// The ports of the buses up to 100 lie below those that the system gives to whoever asks for any,
// so that none of them can be taken by chance.
class OwnBus {
  public:
    static constexpr int kFirst = 1;
    static constexpr int kLast = 100;

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
    ~OwnBus() { close(m_claim); }

    int number() const { return m_number; }
    /// A port for a TCP server on that bus.
    int tcpPort() const { return kFirstTcpPort + m_number; }

  private:
    static constexpr int kFirstTcpPort = 21'000;

    bool takeAny() {
        for (m_number = kFirst; m_number <= kLast; ++m_number) {
            if (take()) {
                return true;
            }
        }
        return false;
    }

    bool take() {
        m_claim = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (m_claim < 0) {
            throw std::runtime_error("no socket to claim a bus with");
        }
        // A name that begins with a zero byte is no path.
        const std::string name = "rovan-test-bus-" + std::to_string(m_number);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path + 1, name.data(), name.size());
        const auto length =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
        if (bind(m_claim, reinterpret_cast<const sockaddr*>(&address), length) == 0) {
            return true;
        }
        close(m_claim);
        return false;
    }

    int m_number = 0;
    int m_claim = -1;
};

/// One such bus for the whole process: enough for tests that have it to themselves.
inline const OwnBus& processBus() {
    static const OwnBus bus;
    return bus;
}
inline int ownBus() {
    return processBus().number();
}
inline int ownTcpPort() {
    return processBus().tcpPort();
}

}  // namespace test_support

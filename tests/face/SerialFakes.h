// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/serial.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "face/SerialCalls.h"

// A serial driver without a device: it writes down the calls and does what its members say. Nothing
// of it reaches the operating system.
class RecordingSerial : public FACE::IOSS::SerialCalls {
  public:
    std::vector<std::string> trace;  // "open /dev/ttyS3", "tcsetattr" and so on, in order
    std::vector<int> openFlags;
    std::vector<int> closed;          // descriptors
    std::vector<termios> attributes;  // one for each tcsetattr
    int fileFlags = O_RDWR | O_NONBLOCK;
    int driverFlags = 0x40;      // of the serial structure
    bool driverRefuses = false;  // TIOCGSERIAL and TIOCSSERIAL
    bool failOpen = false;
    bool failClose = false;
    bool failGetAttributes = false;
    bool failSetAttributes = false;
    termios line{};  // the attributes that the device has now
    std::function<ssize_t(uint8_t* buffer, std::size_t count)> onRead = [](uint8_t*, std::size_t) {
        return ssize_t{0};
    };
    std::function<ssize_t(const uint8_t* buffer, std::size_t count)> onWrite =
        [](const uint8_t*, std::size_t count) { return static_cast<ssize_t>(count); };

    std::size_t count(const std::string& call) const {
        std::size_t n = 0;
        for (const std::string& entry : trace) {
            n += entry == call ? 1u : 0u;
        }
        return n;
    }

    int open(const char* path, int flags) override {
        trace.push_back(std::string("open ") + path);
        openFlags.push_back(flags);
        if (failOpen) {
            errno = ENOENT;
            return -1;
        }
        m_open.insert(m_nextFd);
        return m_nextFd++;
    }
    int close(int fd) override {
        note("close", fd);
        if (failClose) {
            errno = EIO;
            return -1;
        }
        m_open.erase(fd);
        closed.push_back(fd);
        return 0;
    }
    ssize_t read(int fd, void* buffer, std::size_t count) override {
        note("read", fd);
        return onRead(static_cast<uint8_t*>(buffer), count);
    }
    ssize_t write(int fd, const void* buffer, std::size_t count) override {
        note("write", fd);
        return onWrite(static_cast<const uint8_t*>(buffer), count);
    }
    int fcntl(int fd, int command, int argument) override {
        if (command == F_SETFL) {
            note("fcntl F_SETFL", fd);
            fileFlags = argument;
            return 0;
        }
        note("fcntl F_GETFL", fd);
        EXPECT_EQ(command, F_GETFL);
        return fileFlags;
    }
    int ioctl(int fd, unsigned long request, serial_struct* argument) override {
        note(request == TIOCGSERIAL   ? "ioctl TIOCGSERIAL"
             : request == TIOCSSERIAL ? "ioctl TIOCSSERIAL"
                                      : "ioctl ?",
             fd);
        if (driverRefuses) {
            errno = ENOTTY;
            return -1;
        }
        if (request == TIOCGSERIAL) {
            argument->flags = driverFlags;
            argument->baud_base = 1'152'000;
        } else {
            driverFlags = argument->flags;
            EXPECT_EQ(argument->baud_base, 1'152'000) << "not what the driver gave";
        }
        return 0;
    }
    int tcgetattr(int fd, termios* attributesOut) override {
        note("tcgetattr", fd);
        if (failGetAttributes) {
            errno = EIO;
            return -1;
        }
        *attributesOut = line;
        return 0;
    }
    int tcsetattr(int fd, int when, const termios* attributesIn) override {
        note("tcsetattr", fd);
        EXPECT_EQ(when, TCSANOW);
        attributes.push_back(*attributesIn);
        if (failSetAttributes) {
            errno = EIO;
            return -1;
        }
        line = *attributesIn;
        return 0;
    }
    int tcflush(int fd, int queue) override {
        note("tcflush", fd);
        EXPECT_EQ(queue, TCIFLUSH);
        return 0;
    }

  private:
    void note(const char* call, int fd) {
        trace.emplace_back(call);
        EXPECT_EQ(m_open.count(fd), 1u) << call << " of " << fd << ", which is not open";
    }

    int m_nextFd = 1000;
    std::set<int> m_open;
};

// A pseudo-terminal in the place of the serial device: whatever path is opened, it is the near end
// of the pair. The far end belongs to the test.
class PtySerial : public FACE::IOSS::SerialCalls {
  public:
    std::vector<std::string> openedPaths;
    unsigned setAttributes = 0;

    PtySerial() {
        m_farEnd = posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_EQ(grantpt(m_farEnd), 0);
        EXPECT_EQ(unlockpt(m_farEnd), 0);
        char name[64] = "";
        EXPECT_EQ(ptsname_r(m_farEnd, name, sizeof(name)), 0);
        m_name = name;
        // A second descriptor on the near end, so that it is never hung up between opens.
        m_nearEnd = ::open(name, O_RDWR | O_NOCTTY);
        EXPECT_GE(m_nearEnd, 0);
    }
    PtySerial(const PtySerial&) = delete;
    PtySerial& operator=(const PtySerial&) = delete;
    ~PtySerial() {
        ::close(m_nearEnd);
        hangUp();
    }

    int open(const char* path, int flags) override {
        openedPaths.emplace_back(path);
        return ::open(m_name.c_str(), flags);
    }
    int tcsetattr(int fd, int when, const termios* line) override {
        ++setAttributes;
        return SerialCalls::tcsetattr(fd, when, line);
    }

    void send(const std::vector<uint8_t>& bytes) {
        EXPECT_EQ(::write(m_farEnd, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }

    /// Waits, 5 s at most, until the near end has that many bytes to read.
    void waitForInput(int wanted) const {
        int present = 0;
        for (int i = 0; i < 5000 && present < wanted; ++i) {
            pollfd ready{m_nearEnd, POLLIN, 0};
            poll(&ready, 1, 1);
            EXPECT_EQ(::ioctl(m_nearEnd, FIONREAD, &present), 0);
        }
        EXPECT_GE(present, wanted);
    }

    /// What arrived at the far end: waits, 5 s at most, for that many bytes.
    std::vector<uint8_t> received(std::size_t wanted) {
        std::vector<uint8_t> bytes;
        while (bytes.size() < wanted) {
            pollfd ready{m_farEnd, POLLIN, 0};
            uint8_t buffer[512];
            if (poll(&ready, 1, 5000) <= 0) {
                break;
            }
            const ssize_t n = ::read(m_farEnd, buffer, sizeof(buffer));
            if (n <= 0) {
                break;
            }
            bytes.insert(bytes.end(), buffer, buffer + n);
        }
        return bytes;
    }

    termios line() const {
        termios attributes{};
        EXPECT_EQ(::tcgetattr(m_nearEnd, &attributes), 0);
        return attributes;
    }

    void setRaw() {
        termios attributes = line();
        cfmakeraw(&attributes);
        EXPECT_EQ(::tcsetattr(m_nearEnd, TCSANOW, &attributes), 0);
    }

    /// Takes the far end away.
    void hangUp() {
        if (m_farEnd >= 0) {
            ::close(m_farEnd);
            m_farEnd = -1;
        }
    }

  private:
    int m_farEnd = -1;
    int m_nearEnd = -1;
    std::string m_name;
};

// SPDX-License-Identifier: Apache-2.0
#include "face/SerialConnection.h"

#include <fcntl.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cerrno>
#include <utility>

#include "face/TermiosLine.h"
#include "utility/Console.h"

namespace FACE::IOSS {
namespace {

/// Why a read failed: nothing to read is an ordinary thing, everything else is not told apart.
RETURN_CODE_TYPE::Value codeOfReadError() {
    return errno == EAGAIN ? RETURN_CODE_TYPE::NOT_AVAILABLE : RETURN_CODE_TYPE::NO_ACTION;
}

}  // namespace

SerialConnection::SerialConnection(std::string itsName, const SerialSettings& itsSettings,
                                   SerialCalls& calls)
    : ConfiguredConnection(std::move(itsName), itsSettings), m_calls(calls) {
}

SerialConnection::~SerialConnection() {
    close();
}

bool SerialConnection::open() {
    state = kOpening;
    // Non-blocking, because the open of a line without carrier would wait for one.
    m_fd = m_calls.open(path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (m_fd < 0) {
        m_fd = -1;
        state = kClosed;
        isOpen = false;
        return false;
    }
    // Blocking from here on: the time-out of the terminal paces the reads.
    const int flags = m_calls.fcntl(m_fd, F_GETFL, 0);
    m_calls.fcntl(m_fd, F_SETFL, flags & ~O_NONBLOCK);
    requestLowLatency();
    state = applySettings() ? kOpen : kFaulty;
    isOpen = true;
    return true;
}

bool SerialConnection::close() {
    if (!isOpen) {
        return true;
    }
    if (m_calls.close(m_fd) != 0) {
        return false;
    }
    state = kClosed;
    m_fd = -1;
    isOpen = false;
    return true;
}

SerialConnection::Code SerialConnection::read(long long timeoutNs,
                                              Serial::READ_PAYLOAD_TYPE& payload) {
    setReadTimeout(timeoutNs);
    const ssize_t count = m_calls.read(m_fd, payload.payload.buffer(), payload.payload.length());
    if (count < 0) {
        return codeOfReadError();
    }
    if (count == 0) {
        return timeoutNs != 0 ? RETURN_CODE_TYPE::TIMED_OUT : RETURN_CODE_TYPE::NOT_AVAILABLE;
    }
    payload.payload.resize(static_cast<uint32_t>(count));
    payload.timestamp = 0;
    payload.channel = settings.channelNum;
    return RETURN_CODE_TYPE::NO_ERROR;
}

SerialConnection::Code SerialConnection::write(const Serial::WRITE_PAYLOAD_TYPE& payload) {
    const uint32_t wanted = payload.payload.length();
    const ssize_t count = m_calls.write(m_fd, payload.payload.buffer(), wanted);
    if (count < 0) {
        return RETURN_CODE_TYPE::NO_ACTION;
    }
    return count < static_cast<ssize_t>(wanted) ? RETURN_CODE_TYPE::DATA_OVERFLOW
                                                : RETURN_CODE_TYPE::NO_ERROR;
}

std::string SerialConnection::path() const {
    return "/dev/ttyS" + std::to_string(settings.channelNum);
}

// Unchecked: a driver without this does its work all the same.
void SerialConnection::requestLowLatency() {
    serial_struct driver{};
    m_calls.ioctl(m_fd, TIOCGSERIAL, &driver);
    driver.flags |= ASYNC_LOW_LATENCY;
    m_calls.ioctl(m_fd, TIOCSSERIAL, &driver);
}

bool SerialConnection::applySettings() {
    termios line{};
    m_calls.tcgetattr(m_fd, &line);
    const std::vector<std::string> errors = TermiosLine::configure(settings, line);
    for (const std::string& error : errors) {
        Console::line("KD_SerialPort error opening " + path() + ": " + error);
    }
    m_readTimeoutNs = 0;
    m_calls.tcflush(m_fd, TCIFLUSH);
    m_calls.tcsetattr(m_fd, TCSANOW, &line);
    return errors.empty();
}

void SerialConnection::setReadTimeout(long long timeoutNs) {
    if (timeoutNs == m_readTimeoutNs) {
        return;
    }
    termios line{};
    if (m_calls.tcgetattr(m_fd, &line) != 0) {
        return;  // attributes made from nothing would hang up the line; the next read tries again
    }
    TermiosLine::setReadTimeout(timeoutNs, line);
    if (m_calls.tcsetattr(m_fd, TCSANOW, &line) == 0) {
        m_readTimeoutNs = timeoutNs;
    }
}

}  // namespace FACE::IOSS

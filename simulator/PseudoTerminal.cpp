// SPDX-License-Identifier: Apache-2.0
#include "simulator/PseudoTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "simulator/PrivateDev.h"
#include "simulator/SystemError.h"

namespace Simulator {
namespace {

struct Speed {
    speed_t constant;
    int bitsPerSecond;
};
constexpr Speed kSpeeds[] = {
    {B50, 50},           {B75, 75},           {B110, 110},         {B134, 134},
    {B150, 150},         {B200, 200},         {B300, 300},         {B600, 600},
    {B1200, 1200},       {B1800, 1800},       {B2400, 2400},       {B4800, 4800},
    {B9600, 9600},       {B19200, 19200},     {B38400, 38400},     {B57600, 57600},
    {B115200, 115200},   {B230400, 230400},   {B460800, 460800},   {B500000, 500000},
    {B576000, 576000},   {B921600, 921600},   {B1000000, 1000000}, {B1152000, 1152000},
    {B1500000, 1500000}, {B2000000, 2000000}, {B2500000, 2500000}, {B3000000, 3000000},
    {B3500000, 3500000}, {B4000000, 4000000}};

bool waitFor(int fd, short what, std::chrono::milliseconds timeout) {
    pollfd entry{fd, what, 0};
    return poll(&entry, 1, static_cast<int>(timeout.count())) > 0 && (entry.revents & what) != 0;
}

}  // namespace

PseudoTerminal::PseudoTerminal(std::string device) : m_device(std::move(device)) {
    PrivateDev::require(m_device);
    m_nearEnd.reset(checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "pseudo-terminal"));
    checked(grantpt(m_nearEnd.get()), "pseudo-terminal");
    checked(unlockpt(m_nearEnd.get()), "pseudo-terminal");
    char farEnd[64] = {};
    if (ptsname_r(m_nearEnd.get(), farEnd, sizeof farEnd) != 0) {
        throwErrno("pseudo-terminal");
    }
    m_farEnd.reset(checked(open(farEnd, O_RDWR | O_NOCTTY | O_CLOEXEC), farEnd));
    termios settings{};
    checked(tcgetattr(m_farEnd.get(), &settings), farEnd);
    cfmakeraw(&settings);
    checked(tcsetattr(m_farEnd.get(), TCSANOW, &settings), farEnd);
    checked(fcntl(m_nearEnd.get(), F_SETFL, O_NONBLOCK), "pseudo-terminal");
    checked(symlink(farEnd, m_device.c_str()), m_device);
}

PseudoTerminal::~PseudoTerminal() {
    unlink(m_device.c_str());
}

std::size_t PseudoTerminal::read(std::uint8_t* buffer, std::size_t size,
                                 std::chrono::milliseconds timeout) const {
    if (!waitFor(m_nearEnd.get(), POLLIN, timeout)) {
        return 0;
    }
    const ssize_t count = ::read(m_nearEnd.get(), buffer, size);
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::size_t PseudoTerminal::write(const std::uint8_t* bytes, std::size_t count,
                                  std::chrono::milliseconds patience) const {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t now = ::write(m_nearEnd.get(), bytes + done, count - done);
        if (now > 0) {
            done += static_cast<std::size_t>(now);
        } else if (now < 0 && errno == EINTR) {
            continue;
        } else if (!waitFor(m_nearEnd.get(), POLLOUT, patience)) {
            break;
        }
    }
    return done;
}

int PseudoTerminal::farEndSpeed() const {
    termios settings{};
    if (tcgetattr(m_nearEnd.get(), &settings) != 0) {
        return 0;
    }
    const speed_t constant = cfgetospeed(&settings);
    for (const Speed& speed : kSpeeds) {
        if (speed.constant == constant) {
            return speed.bitsPerSecond;
        }
    }
    return 0;
}

}  // namespace Simulator

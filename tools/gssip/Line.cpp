// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Line.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace GssipTool {
namespace {

struct Speed {
    unsigned bitsPerSecond;
    speed_t constant;
};
constexpr Speed kSpeeds[] = {{300, B300},         {600, B600},         {1200, B1200},
                             {2400, B2400},       {4800, B4800},       {9600, B9600},
                             {19200, B19200},     {38400, B38400},     {57600, B57600},
                             {115200, B115200},   {230400, B230400},   {460800, B460800},
                             {500000, B500000},   {576000, B576000},   {921600, B921600},
                             {1000000, B1000000}, {1152000, B1152000}, {1500000, B1500000},
                             {2000000, B2000000}, {3000000, B3000000}, {4000000, B4000000}};

speed_t constantOf(unsigned baud) {
    const auto found = std::find_if(std::begin(kSpeeds), std::end(kSpeeds),
                                    [baud](Speed speed) { return speed.bitsPerSecond == baud; });
    if (found == std::end(kSpeeds)) {
        throw std::runtime_error(fmt::format("{} bit/s is no speed of a serial line", baud));
    }
    return found->constant;
}

}  // namespace

void throwErrno(const std::string& what) {
    throw std::runtime_error(fmt::format("{}: {}", what, std::strerror(errno)));
}

void makeRaw(int fd, std::optional<unsigned> baud, const std::string& path) {
    termios settings{};
    if (tcgetattr(fd, &settings) != 0) {
        throwErrno(path);
    }
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    if (baud) {
        const speed_t speed = constantOf(*baud);
        cfsetispeed(&settings, speed);
        cfsetospeed(&settings, speed);
    }
    if (tcsetattr(fd, TCSANOW, &settings) != 0) {
        throwErrno(path);
    }
}

FileDescriptor openLine(const std::string& path, std::optional<unsigned> baud) {
    FileDescriptor line(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!line) {
        throwErrno(path);
    }
    if (isatty(line.get()) == 0) {
        throw std::runtime_error(path + ": is no serial line");
    }
    makeRaw(line.get(), baud, path);
    return line;
}

PseudoTerminal makePseudoTerminal() {
    PseudoTerminal made;
    made.nearEnd.reset(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    char farEnd[64] = {};
    if (!made.nearEnd || grantpt(made.nearEnd.get()) != 0 || unlockpt(made.nearEnd.get()) != 0 ||
        ptsname_r(made.nearEnd.get(), farEnd, sizeof farEnd) != 0 ||
        fcntl(made.nearEnd.get(), F_SETFL, O_NONBLOCK) != 0) {
        throwErrno("pseudo-terminal");
    }
    made.farEnd = farEnd;
    // Open and closed once, it shows from then on whether somebody else has it open. The settings
    // last as long as the pair.
    const FileDescriptor once(open(farEnd, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!once) {
        throwErrno(farEnd);
    }
    makeRaw(once.get(), std::nullopt, farEnd);
    return made;
}

bool isFarEndOpen(const PseudoTerminal& terminal) {
    pollfd polled{terminal.nearEnd.get(), 0, 0};
    return poll(&polled, 1, 0) == 0 || (polled.revents & POLLHUP) == 0;
}

int unread(const PseudoTerminal& terminal) {
    const FileDescriptor farEnd(
        open(terminal.farEnd.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    int count = 0;
    if (!farEnd || ioctl(farEnd.get(), FIONREAD, &count) != 0) {
        return 0;
    }
    return count;
}

}  // namespace GssipTool

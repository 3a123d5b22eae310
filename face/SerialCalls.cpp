// SPDX-License-Identifier: Apache-2.0
#include "face/SerialCalls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace FACE::IOSS {

SerialCalls& SerialCalls::plain() {
    static SerialCalls theCalls;
    return theCalls;
}

int SerialCalls::open(const char* path, int flags) {
    return ::open(path, flags);
}

int SerialCalls::close(int fd) {
    return ::close(fd);
}

ssize_t SerialCalls::read(int fd, void* buffer, std::size_t count) {
    return ::read(fd, buffer, count);
}

ssize_t SerialCalls::write(int fd, const void* buffer, std::size_t count) {
    return ::write(fd, buffer, count);
}

int SerialCalls::fcntl(int fd, int command, int argument) {
    return ::fcntl(fd, command, argument);
}

int SerialCalls::ioctl(int fd, unsigned long request, serial_struct* argument) {
    return ::ioctl(fd, request, argument);
}

int SerialCalls::tcgetattr(int fd, termios* line) {
    return ::tcgetattr(fd, line);
}

int SerialCalls::tcsetattr(int fd, int when, const termios* line) {
    return ::tcsetattr(fd, when, line);
}

int SerialCalls::tcflush(int fd, int queue) {
    return ::tcflush(fd, queue);
}

}  // namespace FACE::IOSS

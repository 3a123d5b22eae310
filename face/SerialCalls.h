// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cstddef>

struct serial_struct;
struct termios;

namespace FACE::IOSS {

// The operating-system calls beneath the serial service. Each is the plain call, results and errno
// as it leaves them; a derived class can redirect, record or fail one. Any thread may call.
class SerialCalls {
  public:
    /// The plain calls.
    static SerialCalls& plain();

    virtual int open(const char* path, int flags);
    virtual int close(int fd);
    virtual ssize_t read(int fd, void* buffer, std::size_t count);
    virtual ssize_t write(int fd, const void* buffer, std::size_t count);
    virtual int fcntl(int fd, int command, int argument);
    virtual int ioctl(int fd, unsigned long request, serial_struct* argument);
    virtual int tcgetattr(int fd, termios* line);
    virtual int tcsetattr(int fd, int when, const termios* line);
    virtual int tcflush(int fd, int queue);

  protected:
    // Trivial, so that the plain calls are there to the very end of the process.
    ~SerialCalls() = default;
};

}  // namespace FACE::IOSS

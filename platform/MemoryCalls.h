// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

// The operating-system calls beneath MemoryMap. Each is the plain call, results and errno as it
// leaves them; a derived class can redirect, record or fail one. Any thread may call.
class MemoryCalls {
  public:
    /// The plain calls.
    static MemoryCalls& plain();

    virtual int open(const char* path, int flags);
    virtual long sysconf(int name);
    /// As mmap, shared and at an address of the system's choice. The offset has 64 bits on every
    /// machine.
    virtual void* mmap(std::size_t length, int protection, int fd, uint64_t offset);
    virtual int munmap(void* address, std::size_t length);

  protected:
    // Trivial, so that the plain calls are there to the very end of the process.
    ~MemoryCalls() = default;
};

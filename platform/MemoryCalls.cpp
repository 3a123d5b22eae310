// SPDX-License-Identifier: Apache-2.0
#include "platform/MemoryCalls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

MemoryCalls& MemoryCalls::plain() {
    static MemoryCalls theCalls;
    return theCalls;
}

int MemoryCalls::open(const char* path, int flags) {
    return ::open(path, flags);
}

long MemoryCalls::sysconf(int name) {
    return ::sysconf(name);
}

void* MemoryCalls::mmap(std::size_t length, int protection, int fd, uint64_t offset) {
    return ::mmap64(nullptr, length, protection, MAP_SHARED, fd, static_cast<off64_t>(offset));
}

int MemoryCalls::munmap(void* address, std::size_t length) {
    return ::munmap(address, length);
}

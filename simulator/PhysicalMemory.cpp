// SPDX-License-Identifier: Apache-2.0
#include "simulator/PhysicalMemory.h"

#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>

#include "simulator/PrivateDev.h"
#include "simulator/SystemError.h"

namespace Simulator {

PhysicalMemory::PhysicalMemory() {
    PrivateDev::require(kPath);
    m_file.reset(checked(open(kPath, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600), kPath));
    if (ftruncate(m_file.get(), static_cast<off_t>(kBytes)) != 0) {
        const int error = errno;
        unlink(kPath);
        errno = error;
        throwErrno(kPath);
    }
}

PhysicalMemory::~PhysicalMemory() {
    unlink(kPath);
}

MemoryRegion PhysicalMemory::map(std::uint64_t base, std::size_t size) const {
    if (size > kBytes || base > kBytes - size) {
        throw std::out_of_range("register block beyond the simulated memory");
    }
    return {m_file.get(), base, size};
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "platform/MemoryMap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

const MemoryDeviceFileDescriptor& MemoryDeviceFileDescriptor::instance(MemoryCalls& calls) {
    static const MemoryDeviceFileDescriptor theMemoryDeviceFileDescriptor(calls);
    return theMemoryDeviceFileDescriptor;
}

MemoryDeviceFileDescriptor::MemoryDeviceFileDescriptor(MemoryCalls& calls) {
    // Synchronous, so that the mapping is not cached: these are registers.
    m_fd = calls.open("/dev/mem", O_RDWR | O_SYNC);
    const long pageSize = calls.sysconf(_SC_PAGESIZE);
    if (m_fd < 0 || pageSize <= 0) {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
        throw std::runtime_error("Unable to open /dev/mem file descriptor.");
    }
    m_pageSize = static_cast<unsigned>(pageSize);
}

MemoryDeviceFileDescriptor::~MemoryDeviceFileDescriptor() {
    ::close(m_fd);
}

MemoryMap::MemoryMap(unsigned base, unsigned size, MemoryCalls& calls) : m_calls(calls) {
    const MemoryDeviceFileDescriptor& device = MemoryDeviceFileDescriptor::instance(calls);
    m_offsetInPage = base % device.pageSize();
    m_numPages = (uint64_t{m_offsetInPage} + size) / device.pageSize() + 1;
    const uint64_t length = m_numPages * device.pageSize();
    m_length = static_cast<std::size_t>(length);

    m_mappedAddress =
        m_length == length  // it may not fit the address space of a small machine
            ? m_calls.mmap(m_length, PROT_READ | PROT_WRITE, device.fd(), base - m_offsetInPage)
            : MAP_FAILED;
    if (m_mappedAddress == MAP_FAILED) {
        throw std::runtime_error("Unable to map memory space.");
    }
    m_pointerToBase = static_cast<unsigned char*>(m_mappedAddress) + m_offsetInPage;
}

MemoryMap::~MemoryMap() {
    if (m_calls.munmap(m_mappedAddress, m_length) != 0) {
        std::perror("Unable to mumap memory space");
    }
}

// SPDX-License-Identifier: Apache-2.0
#include "simulator/MemoryRegion.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "simulator/SystemError.h"

namespace Simulator {

MemoryRegion::MemoryRegion(int fd, std::uint64_t base, std::size_t size) : m_size(size) {
    const auto page = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    const std::uint64_t inPage = base % page;
    m_mappingBytes = static_cast<std::size_t>(inPage) + size;
    m_mapping = mmap(nullptr, m_mappingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd,
                     static_cast<off_t>(base - inPage));
    if (m_mapping == MAP_FAILED) {
        throwErrno("mapping the simulated memory");
    }
    m_base = static_cast<unsigned char*>(m_mapping) + inPage;
}

MemoryRegion::MemoryRegion(MemoryRegion&& other) noexcept
    : m_mapping(std::exchange(other.m_mapping, nullptr)),
      m_mappingBytes(other.m_mappingBytes),
      m_base(other.m_base),
      m_size(other.m_size) {
}

MemoryRegion::~MemoryRegion() {
    if (m_mapping != nullptr) {
        munmap(m_mapping, m_mappingBytes);
    }
}

std::uint32_t MemoryRegion::read32(std::size_t offset) const {
    return __atomic_load_n(at<std::uint32_t>(offset), __ATOMIC_SEQ_CST);
}

std::uint64_t MemoryRegion::read64(std::size_t offset) const {
    return __atomic_load_n(at<std::uint64_t>(offset), __ATOMIC_SEQ_CST);
}

void MemoryRegion::write32(std::size_t offset, std::uint32_t value) {
    __atomic_store_n(at<std::uint32_t>(offset), value, __ATOMIC_SEQ_CST);
}

void MemoryRegion::write64(std::size_t offset, std::uint64_t value) {
    __atomic_store_n(at<std::uint64_t>(offset), value, __ATOMIC_SEQ_CST);
}

template <typename T>
T* MemoryRegion::at(std::size_t offset) const {
    if (m_size < sizeof(T) || offset > m_size - sizeof(T)) {
        throw std::out_of_range("access outside the simulated register block");
    }
    unsigned char* const address = m_base + offset;
    if (reinterpret_cast<std::uintptr_t>(address) % sizeof(T) != 0) {
        throw std::out_of_range("access to a simulated register that is not aligned");
    }
    return reinterpret_cast<T*>(address);
}

}  // namespace Simulator

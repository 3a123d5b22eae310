// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/MemoryCalls.h"

// The descriptor of "/dev/mem", which all mappings share.
class MemoryDeviceFileDescriptor {
  public:
    /// The one of this process: opened when it is first asked for, again after a failure, with the
    /// calls of that moment; closed at exit. Any thread may ask.
    static const MemoryDeviceFileDescriptor& instance(MemoryCalls& calls);

    /// Throws std::runtime_error when the device cannot be opened.
    explicit MemoryDeviceFileDescriptor(MemoryCalls& calls);
    MemoryDeviceFileDescriptor(const MemoryDeviceFileDescriptor&) = delete;
    MemoryDeviceFileDescriptor& operator=(const MemoryDeviceFileDescriptor&) = delete;
    ~MemoryDeviceFileDescriptor();

    unsigned pageSize() const { return m_pageSize; }
    int fd() const { return m_fd; }

  private:
    unsigned m_pageSize = 0;  // bytes
    int m_fd = -1;
};

// A region of physical memory in the address space of this process, from construction to
// destruction. Borrows the calls, which outlive it. An object belongs to one thread; what it maps
// is for all.
class MemoryMap {
  public:
    /// `base` is the physical address, `size` the length in bytes. Throws std::runtime_error when
    /// the memory device cannot be opened or the region not mapped.
    MemoryMap(unsigned base, unsigned size, MemoryCalls& calls = MemoryCalls::plain());
    MemoryMap(const MemoryMap&) = delete;
    MemoryMap& operator=(const MemoryMap&) = delete;
    ~MemoryMap();

    /// Where the address `base` is in this process.
    void* getPointerToBase() const { return m_pointerToBase; }

  private:
    MemoryCalls& m_calls;
    void* m_mappedAddress = nullptr;
    void* m_pointerToBase = nullptr;
    unsigned m_offsetInPage = 0;
    uint64_t m_numPages = 0;
    std::size_t m_length = 0;  // bytes
};

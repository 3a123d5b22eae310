// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace Simulator {

// A stretch of the simulated physical memory, mapped into this process. Offsets are in bytes from
// its base and must be multiples of the access's width; each access is one atomic load or store, as
// the server's are, so several threads and processes may use one region. An access that is not
// aligned or not inside throws std::out_of_range.
class MemoryRegion {
  public:
    /// Maps `size` bytes from physical address `base` of the memory file `fd`. Throws
    /// std::system_error.
    MemoryRegion(int fd, std::uint64_t base, std::size_t size);
    MemoryRegion(MemoryRegion&& other) noexcept;
    MemoryRegion& operator=(MemoryRegion&&) = delete;
    ~MemoryRegion();

    std::uint32_t read32(std::size_t offset) const;
    std::uint64_t read64(std::size_t offset) const;
    void write32(std::size_t offset, std::uint32_t value);
    void write64(std::size_t offset, std::uint64_t value);

  private:
    template <typename T>
    T* at(std::size_t offset) const;

    void* m_mapping = nullptr;
    std::size_t m_mappingBytes = 0;
    unsigned char* m_base = nullptr;
    std::size_t m_size = 0;
};

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "simulator/FileDescriptor.h"
#include "simulator/MemoryRegion.h"

namespace Simulator {

// The machine's physical memory: /dev/mem as a sparse regular file in the private /dev, full of
// zeros. The server and the `devmem` command map it as they map the real one. The file goes with
// this object; regions that were mapped from it stay usable.
class PhysicalMemory {
  public:
    static constexpr const char* kPath = "/dev/mem";
    /// Everything that the server maps lies below this.
    static constexpr std::uint64_t kBytes = 0x40100000;

    /// Throws std::runtime_error outside the private /dev, std::system_error when there is a
    /// /dev/mem already.
    PhysicalMemory();
    PhysicalMemory(const PhysicalMemory&) = delete;
    PhysicalMemory& operator=(const PhysicalMemory&) = delete;
    ~PhysicalMemory();

    /// Throws std::out_of_range when the region does not lie inside the file.
    MemoryRegion map(std::uint64_t base, std::size_t size) const;

  private:
    FileDescriptor m_file;
};

}  // namespace Simulator

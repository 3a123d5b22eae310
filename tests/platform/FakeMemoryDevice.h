// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/MemoryCalls.h"

// The physical memory of a unit that exists only as a sparse file. Writes down the calls; each can
// be made to fail. Whatever descriptor the caller maps, it gets this object's file, so that the
// descriptor that a process keeps for good does not matter to the tests after the first one.
class FakeMemoryDevice : public MemoryCalls {
  public:
    struct Mapping {
        std::size_t length;
        int protection;
        int fd;
        uint64_t offset;
    };
    static constexpr off_t kBytes = 0x4010'0000;

    std::vector<std::string> openedPaths;
    std::vector<int> openFlags;
    std::vector<int> openedDescriptors;
    std::vector<Mapping> mappings;
    std::vector<std::size_t> unmappedLengths;
    bool failOpen = false;
    bool failSysconf = false;
    bool failMmap = false;
    bool failMunmap = false;
    long pageSize = 4096;

    FakeMemoryDevice() {
        std::string directory = testing::TempDir() + "rovan-memory-XXXXXX";
        EXPECT_NE(mkdtemp(directory.data()), nullptr);
        const std::string path = directory + "/mem";
        m_fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        EXPECT_GE(m_fd, 0);
        EXPECT_EQ(ftruncate(m_fd, kBytes), 0);
        // The descriptor keeps the file; so nothing is left behind, however the test ends.
        unlink(path.c_str());
        rmdir(directory.c_str());
    }
    FakeMemoryDevice(const FakeMemoryDevice&) = delete;
    FakeMemoryDevice& operator=(const FakeMemoryDevice&) = delete;
    ~FakeMemoryDevice() { ::close(m_fd); }

    /// The memory as the hardware has it, past all mappings.
    std::vector<uint8_t> bytesAt(uint64_t address, std::size_t count) const {
        std::vector<uint8_t> bytes(count);
        EXPECT_EQ(pread(m_fd, bytes.data(), count, static_cast<off_t>(address)),
                  static_cast<ssize_t>(count));
        return bytes;
    }
    void setBytes(uint64_t address, const std::vector<uint8_t>& bytes) {
        EXPECT_EQ(pwrite(m_fd, bytes.data(), bytes.size(), static_cast<off_t>(address)),
                  static_cast<ssize_t>(bytes.size()));
    }

    int open(const char* path, int flags) override {
        openedPaths.emplace_back(path);
        openFlags.push_back(flags);
        if (failOpen) {
            errno = EACCES;
            return -1;
        }
        openedDescriptors.push_back(dup(m_fd));  // the caller closes what it opened
        return openedDescriptors.back();
    }
    long sysconf(int name) override {
        EXPECT_EQ(name, _SC_PAGESIZE);
        return failSysconf ? -1 : pageSize;
    }
    void* mmap(std::size_t length, int protection, int fd, uint64_t offset) override {
        mappings.push_back({length, protection, fd, offset});
        if (failMmap) {
            errno = EPERM;
            return MAP_FAILED;
        }
        return MemoryCalls::mmap(length, protection, m_fd, offset);
    }
    int munmap(void* address, std::size_t length) override {
        unmappedLengths.push_back(length);
        const int result = MemoryCalls::munmap(address, length);
        if (failMunmap) {
            errno = EINVAL;
            return -1;
        }
        return result;
    }

  private:
    int m_fd = -1;
};

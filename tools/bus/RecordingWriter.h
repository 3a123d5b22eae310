// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "tools/bus/Recorded.h"

namespace Bus {

// Writes a recording. A file that finish() has not completed lacks the end mark and is taken for
// cut by every reader. One thread. Every function throws UsageError when the file cannot be
// written.
class RecordingWriter {
  public:
    /// Makes the file. One that exists is only replaced with `replace`.
    RecordingWriter(const std::string& path, bool replace);

    /// False for a sample that is too large for the format; nothing is written then.
    bool write(const Recorded& sample);
    /// Hands what was written to the system, so that a death of this process loses no more.
    void flush();
    /// Ends the file. Nothing may be written after that.
    void finish();

    uint64_t samples() const { return m_samples; }
    /// Length of the file so far.
    uint64_t size() const { return m_size; }

  private:
    void writeRecord(const std::vector<uint8_t>& body);
    void writeBytes(const uint8_t* bytes, size_t count);
    [[noreturn]] void fail() const;

    const std::string m_path;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
    uint64_t m_samples = 0;
    uint64_t m_size = 0;
};

}  // namespace Bus

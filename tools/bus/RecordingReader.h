// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "tools/bus/Recorded.h"

namespace Bus {

// Reads a recording, one sample at a time; needs no more memory than the largest one. Trusts
// nothing that the file says before it is checked. One thread.
class RecordingReader {
  public:
    /// Throws UsageError for what is no recording.
    explicit RecordingReader(const std::string& path);

    /// The next sample; false behind the last one of a whole file. Throws UsageError, with the
    /// offset of the record, at the first damage. Nothing can be read after either.
    bool next(Recorded& sample);

    /// Where in the file the sample that came last begins.
    uint64_t offset() const { return m_offset; }
    /// Throws UsageError for the sample that came last.
    [[noreturn]] void fail(const std::string& what) const;

  private:
    /// False at the end of the file; fewer bytes are damage.
    bool readBytes(std::vector<uint8_t>& bytes, size_t count);
    void readEnd();
    void parse(Recorded& sample) const;

    const std::string m_path;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file;
    std::vector<uint8_t> m_body;
    uint64_t m_offset = 0;  // of the record that is read
    uint64_t m_next = 0;
    uint64_t m_samples = 0;
};

}  // namespace Bus

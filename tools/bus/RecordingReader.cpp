// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/RecordingReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/RecordingFormat.h"

namespace Bus {
namespace {

namespace Format = RecordingFormat;

// Takes one field after the other from a body. Once a field does not fit, every further one is
// empty and good() is false.
class Body {
  public:
    explicit Body(const std::vector<uint8_t>& body) : m_at(body.data()), m_left(body.size()) {}

    bool good() const { return m_good; }
    bool atEnd() const { return m_left == 0; }

    template <typename T>
    T number() {
        const uint8_t* const bytes = take(sizeof(T));
        return bytes != nullptr ? Format::get<T>(bytes) : T{};
    }

    template <typename LIST>
    LIST list(size_t count) {
        const uint8_t* const bytes = take(count);
        return bytes != nullptr ? LIST(bytes, bytes + count) : LIST();
    }

  private:
    const uint8_t* take(size_t count) {
        m_good = m_good && count <= m_left;
        if (!m_good) {
            return nullptr;
        }
        const uint8_t* const taken = m_at;
        m_at += count;
        m_left -= count;
        return taken;
    }

    const uint8_t* m_at;
    size_t m_left;
    bool m_good = true;
};

std::FILE* openFile(const std::string& path) {
    std::error_code error;
    if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
        throw UsageError(fmt::format("{}: not a file", path));
    }
    std::FILE* const file = std::fopen(path.c_str(), "rbe");
    if (file == nullptr) {
        throw UsageError(fmt::format("{}: {}", path, std::strerror(errno)));
    }
    return file;
}

}  // namespace

RecordingReader::RecordingReader(const std::string& path)
    : m_path(path), m_file(openFile(path), &std::fclose) {
    std::vector<uint8_t> magic(Format::kMagic.size());
    const size_t count = std::fread(magic.data(), 1, magic.size(), m_file.get());
    const auto version = magic.begin() + Format::kVersionAt;
    if (count != magic.size() || !std::equal(magic.begin(), version, Format::kMagic.begin())) {
        throw UsageError(fmt::format("{}: not a recording of rovan-bus", path));
    }
    if (!std::equal(version, magic.end(), Format::kMagic.begin() + Format::kVersionAt)) {
        throw UsageError(fmt::format("{}: a recording of version {}, which is unknown", path,
                                     Format::get<uint32_t>(&*version)));
    }
    m_next = count;
}

bool RecordingReader::next(Recorded& sample) {
    m_offset = m_next;
    std::vector<uint8_t> header;
    if (!readBytes(header, Format::kRecordHeader)) {
        fail("cut off here, the end mark is missing");
    }
    const auto length = Format::get<uint32_t>(header.data());
    if (length == 0 || length > Format::kMaxBody) {
        fail(fmt::format("a record of {} bytes cannot be", length));
    }
    if (!readBytes(m_body, length)) {
        fail("cut off within a record");
    }
    if (Format::crc32(m_body) != Format::get<uint32_t>(header.data() + sizeof length)) {
        fail("damaged, the checksum is wrong");
    }
    if (m_body[0] == Format::kEnd) {
        readEnd();
        return false;
    }
    parse(sample);
    ++m_samples;
    return true;
}

bool RecordingReader::readBytes(std::vector<uint8_t>& bytes, size_t count) {
    bytes.resize(count);
    const size_t got = std::fread(bytes.data(), 1, count, m_file.get());
    m_next += got;
    if (std::ferror(m_file.get()) != 0) {
        fail(fmt::format("cannot read: {}", std::strerror(errno)));
    }
    if (got != 0 && got != count) {
        fail("cut off within a record");
    }
    return got == count;
}

void RecordingReader::readEnd() {
    const bool isWhole = m_body.size() == Format::kEndBody;
    if (!isWhole || Format::get<uint64_t>(m_body.data() + 1) != m_samples) {
        fail("the end mark does not fit what stands before it");
    }
    if (std::fgetc(m_file.get()) != EOF) {
        fail("something stands behind the end mark");
    }
}

void RecordingReader::parse(Recorded& sample) const {
    Body fields(m_body);
    const auto kind = fields.number<uint8_t>();
    sample.sinceStartNs = fields.number<int64_t>();
    sample.sentNs = fields.number<int64_t>();
    sample.receivedNs = fields.number<int64_t>();
    sample.sequence = fields.number<uint64_t>();
    for (std::string* text : {&sample.topic, &sample.typeName, &sample.publisher}) {
        *text = fields.list<std::string>(fields.number<uint16_t>());
    }
    sample.bytes = fields.list<std::vector<uint8_t>>(fields.number<uint32_t>());
    if (kind != Format::kSample || !fields.good() || !fields.atEnd() || sample.sinceStartNs < 0) {
        fail("a record that makes no sense");
    }
}

void RecordingReader::fail(const std::string& what) const {
    throw UsageError(fmt::format("{}: at byte {}: {}", m_path, m_offset, what));
}

}  // namespace Bus

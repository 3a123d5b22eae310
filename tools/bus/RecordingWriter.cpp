// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/RecordingWriter.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/RecordingFormat.h"

namespace Bus {
namespace {

namespace Format = RecordingFormat;

std::FILE* openFile(const std::string& path, bool replace) {
    const int how = replace ? O_TRUNC : O_EXCL;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, 0666);
    if (fd < 0) {
        throw UsageError(errno == EEXIST
                             ? fmt::format("{}: exists; --force replaces it", path)
                             : fmt::format("{}: cannot write: {}", path, std::strerror(errno)));
    }
    return fdopen(fd, "wb");
}

void putText(std::vector<uint8_t>& body, const std::string& text) {
    Format::put<uint16_t>(body, static_cast<uint16_t>(text.size()));
    body.insert(body.end(), text.begin(), text.end());
}

}  // namespace

RecordingWriter::RecordingWriter(const std::string& path, bool replace)
    : m_path(path), m_file(openFile(path, replace), &std::fclose) {
    writeBytes(Format::kMagic.data(), Format::kMagic.size());
    flush();
}

bool RecordingWriter::write(const Recorded& sample) {
    for (const std::string* text : {&sample.topic, &sample.typeName, &sample.publisher}) {
        if (text->size() > Format::kMaxText) {
            return false;
        }
    }
    std::vector<uint8_t> body;
    Format::put(body, Format::kSample);
    Format::put(body, sample.sinceStartNs);
    Format::put(body, sample.sentNs);
    Format::put(body, sample.receivedNs);
    Format::put(body, sample.sequence);
    putText(body, sample.topic);
    putText(body, sample.typeName);
    putText(body, sample.publisher);
    if (sample.bytes.size() > Format::kMaxBody - body.size() - sizeof(uint32_t)) {
        return false;
    }
    Format::put(body, static_cast<uint32_t>(sample.bytes.size()));
    body.insert(body.end(), sample.bytes.begin(), sample.bytes.end());
    writeRecord(body);
    ++m_samples;
    return true;
}

void RecordingWriter::flush() {
    if (std::fflush(m_file.get()) != 0) {
        fail();
    }
}

void RecordingWriter::finish() {
    std::vector<uint8_t> body;
    Format::put(body, Format::kEnd);
    Format::put(body, m_samples);
    writeRecord(body);
    flush();
    if (std::fclose(m_file.release()) != 0) {
        fail();
    }
}

void RecordingWriter::writeRecord(const std::vector<uint8_t>& body) {
    std::vector<uint8_t> header;
    Format::put(header, static_cast<uint32_t>(body.size()));
    Format::put(header, Format::crc32(body));
    writeBytes(header.data(), header.size());
    writeBytes(body.data(), body.size());
}

void RecordingWriter::writeBytes(const uint8_t* bytes, size_t count) {
    if (std::fwrite(bytes, 1, count, m_file.get()) != count) {
        fail();
    }
    m_size += count;
}

void RecordingWriter::fail() const {
    throw UsageError(fmt::format("{}: cannot write: {}", m_path, std::strerror(errno)));
}

}  // namespace Bus

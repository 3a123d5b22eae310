// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/Input.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>

namespace GssipTool {
namespace {

constexpr const char* kStandardInput = "-";

FileDescriptor openForReading(const std::string& path) {
    if (path == kStandardInput) {
        return FileDescriptor(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    }
    // A line without carrier must not hold up the open; a pipe waits for who writes into it.
    struct stat about {};
    const bool isPipe = stat(path.c_str(), &about) == 0 && S_ISFIFO(about.st_mode);
    return FileDescriptor(
        open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC | (isPipe ? 0 : O_NONBLOCK)));
}

}  // namespace

int64_t nowNs() {
    using std::chrono::duration_cast;
    using std::chrono::nanoseconds;
    using Steady = std::chrono::steady_clock;
    static const auto kUnixAtStart = std::chrono::system_clock::now().time_since_epoch();
    static const auto kStart = Steady::now();
    return duration_cast<nanoseconds>(kUnixAtStart + (Steady::now() - kStart)).count();
}

Input::Input(const std::string& path, std::optional<unsigned> baud)
    : m_path(path), m_file(openForReading(path)) {
    struct stat about {};
    if (!m_file || fstat(m_file.get(), &about) != 0) {
        throwErrno(path);
    }
    if (S_ISDIR(about.st_mode)) {
        throw std::runtime_error(path + ": is a directory");
    }
    m_isLive = isatty(m_file.get()) == 1;
    if (m_isLive && path == kStandardInput) {
        throw std::runtime_error("standard input is a terminal: name a file or a line");
    }
    if (m_isLive) {
        makeRaw(m_file.get(), baud, path);
        m_kind = Kind::kRaw;
    } else if (baud) {
        throw std::runtime_error(path + ": is no serial line that could have a speed");
    }
}

Input::Event Input::read(std::chrono::milliseconds patience, const Sink& sink) {
    std::array<uint8_t, 65536> buffer;
    pollfd polled{m_file.get(), POLLIN, 0};
    const int ready = poll(&polled, 1, static_cast<int>(patience.count()));
    if (ready == 0 || (ready < 0 && errno == EINTR)) {
        return Event::kNothing;
    }
    const ssize_t count = ::read(m_file.get(), buffer.data(), buffer.size());
    if (count > 0) {
        take(buffer.data(), static_cast<size_t>(count), sink);
        return Event::kBytes;
    }
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return Event::kNothing;
    }
    if (m_isLive && (count == 0 || errno == EIO)) {
        return Event::kHangUp;
    }
    if (count < 0) {
        throwErrno(m_path);
    }
    return ended(sink);
}

// Keeps the first bytes until they differ from the first line of a recording, or are all of it.
void Input::take(const uint8_t* bytes, size_t count, const Sink& sink) {
    if (m_kind != Kind::kUnknown) {
        pass(bytes, count, sink);
        return;
    }
    m_start.insert(m_start.end(), bytes, bytes + count);
    const size_t known = std::min(m_start.size(), kRecordingMagicBytes);
    const bool isLike =
        std::equal(m_start.begin(), m_start.begin() + static_cast<long>(known), kRecordingMagic);
    if (isLike && known < kRecordingMagicBytes) {
        return;
    }
    m_kind = isLike ? Kind::kRecording : Kind::kRaw;
    const size_t from = isLike ? kRecordingMagicBytes : 0;
    const Bytes start = std::move(m_start);
    m_start.clear();
    pass(start.data() + from, start.size() - from, sink);
}

void Input::pass(const uint8_t* bytes, size_t count, const Sink& sink) {
    if (m_kind == Kind::kRecording) {
        try {
            m_recording.feed(bytes, count, sink);
        } catch (const std::runtime_error& problem) {
            throw std::runtime_error(m_path + ": " + problem.what());
        }
    } else {
        sink(bytes, count, m_isLive ? std::optional(nowNs()) : std::nullopt);
    }
}

Input::Event Input::ended(const Sink& sink) {
    if (m_kind == Kind::kUnknown) {  // shorter than the first line of a recording
        m_kind = Kind::kRaw;
        pass(m_start.data(), m_start.size(), sink);
        m_start.clear();
    }
    return Event::kEnd;
}

}  // namespace GssipTool

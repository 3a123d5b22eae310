// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>

#include "tools/gssip/Commands.h"
#include "tools/gssip/FrameScanner.h"
#include "tools/gssip/Input.h"
#include "tools/gssip/Until.h"
#include "utility/Console.h"

namespace GssipTool {
namespace {

// The file that a recording goes to. Each block is written at once, so that a recording is good up
// to its last block whatever happens.
class RecordingFile {
  public:
    /// "-" is standard output. Does not touch a file that is there, unless told to.
    RecordingFile(const std::string& path, bool force) : m_path(path) {
        m_file.reset(path == "-"
                         ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                         : open(path.c_str(),
                                O_WRONLY | O_CREAT | O_CLOEXEC | (force ? O_TRUNC : O_EXCL), 0666));
        if (!m_file && errno == EEXIST) {
            throw std::runtime_error(path + ": is there already; --force writes over it");
        }
        if (!m_file) {
            throwErrno(path);
        }
        const std::string magic = kRecordingMagic;
        write(Bytes(magic.begin(), magic.end()));
    }

    void block(int64_t timeNs, const uint8_t* bytes, size_t count) {
        Bytes block = blockHeader(timeNs, count);
        block.insert(block.end(), bytes, bytes + count);
        write(block);
    }

  private:
    void write(const Bytes& bytes) {
        for (size_t done = 0; done < bytes.size();) {
            const ssize_t now = ::write(m_file.get(), bytes.data() + done, bytes.size() - done);
            if (now < 0 && errno != EINTR) {
                throwErrno(m_path);
            }
            done += now > 0 ? static_cast<size_t>(now) : 0;
        }
    }

    std::string m_path;
    FileDescriptor m_file;
};

// What has come so far; on a terminal, shown as it grows.
class Progress {
  public:
    void take(const uint8_t* bytes, size_t count) {
        m_bytes += count;
        m_scanner.feed(bytes, count);
    }

    void show() {
        const auto now = Clock::now();
        if (m_onTerminal && now >= m_next) {
            m_next = now + std::chrono::milliseconds(500);
            std::fprintf(stderr, "\r%s\033[K", text().c_str());
            std::fflush(stderr);
        }
    }

    void end(const std::string& device, const std::string& file) {
        m_scanner.flush();
        Console::errorLine(fmt::format("{}gssip: recorded {} from {} to {}",
                                       m_onTerminal ? "\r\033[K" : "", text(), device, file));
    }

    uint64_t bytes() const { return m_bytes; }

  private:
    using Clock = std::chrono::steady_clock;

    std::string text() const {
        return fmt::format("{} bytes, {} frames, {} bytes skipped in {:.1f} s", m_bytes, m_frames,
                           m_skipped,
                           std::chrono::duration<double>(Clock::now() - m_start).count());
    }

    const Clock::time_point m_start = Clock::now();
    const bool m_onTerminal = isatty(STDERR_FILENO) == 1;
    Clock::time_point m_next = m_start;
    uint64_t m_bytes = 0;
    uint64_t m_frames = 0;
    uint64_t m_skipped = 0;
    FrameScanner m_scanner{[this](Piece&& piece) {
        m_frames += piece.isFrame ? 1 : 0;
        m_skipped += piece.isFrame ? 0 : piece.bytes.size();
    }};
};

}  // namespace

ExitStatus record(const Options& options) {
    Input input(options.input, options.baud);
    RecordingFile file(options.output, options.force);
    Progress progress;
    const Until until(options.durationSeconds);
    const auto sink = [&](const uint8_t* bytes, size_t count, std::optional<int64_t> timeNs) {
        file.block(timeNs.value_or(nowNs()), bytes, count);
        progress.take(bytes, count);
    };
    Input::Event event = Input::Event::kNothing;
    while (event != Input::Event::kEnd && event != Input::Event::kHangUp && !until.reached()) {
        event = input.read(until.patience(), sink);
        progress.show();
    }
    progress.end(options.input, options.output);
    if (event == Input::Event::kHangUp) {
        Console::errorLine(fmt::format("gssip: {}: the line was hung up", options.input));
        return kFailed;
    }
    return progress.bytes() > 0 ? kGood : kDataErrors;
}

}  // namespace GssipTool

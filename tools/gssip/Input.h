// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tools/gssip/Line.h"
#include "tools/gssip/Recording.h"

namespace GssipTool {

/// The time now, in nanoseconds of Unix time. It goes on evenly even when the clock is set.
int64_t nowNs();

// Where bytes come from: a file or a pipe, raw or as a recording, or a live serial line. One
// thread.
class Input {
  public:
    enum class Event {
        kBytes,
        kNothing,  // in time
        kEnd,
        kHangUp,  // the line has gone
    };
    /// The time is when the bytes came; a raw file does not know it.
    using Sink = std::function<void(const uint8_t* bytes, size_t count, std::optional<int64_t>)>;

    /// A path, or "-" for standard input. `baud` is the speed of a serial line, in bits per second;
    /// without it, the speed stays. Throws std::runtime_error.
    Input(const std::string& path, std::optional<unsigned> baud);

    /// Waits that long for bytes and hands them over. Throws std::runtime_error when reading fails
    /// or a recording is damaged.
    Event read(std::chrono::milliseconds patience, const Sink& sink);

    bool isLive() const { return m_isLive; }
    /// Whether the input is a recording; known once its first bytes have come.
    bool isRecording() const { return m_kind == Kind::kRecording; }
    /// Whether the recording ended within a block.
    bool isCutOff() const { return isRecording() && !m_recording.isAtEnd(); }

  private:
    enum class Kind { kUnknown, kRaw, kRecording };

    void take(const uint8_t* bytes, size_t count, const Sink& sink);
    void pass(const uint8_t* bytes, size_t count, const Sink& sink);
    Event ended(const Sink& sink);

    std::string m_path;
    FileDescriptor m_file;
    bool m_isLive = false;
    Kind m_kind = Kind::kUnknown;
    Bytes m_start;  // of an input whose kind is not known yet
    RecordingReader m_recording;
};

}  // namespace GssipTool

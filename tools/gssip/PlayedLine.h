// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/gssip/Line.h"
#include "tools/gssip/Options.h"
#include "tools/gssip/Until.h"

namespace GssipTool {

// The line that a file is played on: one that is there, or a pseudo-terminal of its own, with a
// link to it if wanted, which goes with this object. What the other side sends is read and thrown
// away, so that it never has to wait. One thread.
class PlayedLine {
  public:
    /// Tells the path of a pseudo-terminal on standard output. Throws std::runtime_error.
    explicit PlayedLine(const Options& options);
    ~PlayedLine();
    PlayedLine(const PlayedLine&) = delete;
    PlayedLine& operator=(const PlayedLine&) = delete;

    /// Waits until somebody has opened the pseudo-terminal; false when the end came first.
    bool waitForReader(const Until& until) const;
    /// Writes all the bytes; false when the end came first. On a pseudo-terminal that nobody has
    /// open they are lost, as on a line.
    bool write(const uint8_t* bytes, size_t count, const Until& until);
    /// Waits until the other side has taken everything, or is gone.
    void finish(const Until& until);
    /// Takes what the other side sends, for so long.
    void drainFor(std::chrono::milliseconds time);

    uint64_t played() const { return m_played; }
    uint64_t lost() const { return m_lost; }

  private:
    bool isHeard() const { return !m_terminal || isFarEndOpen(*m_terminal); }
    int fd() const { return m_terminal ? m_terminal->nearEnd.get() : m_line.get(); }
    int pending() const;
    void makeLink(const std::string& path);

    std::string m_path;
    std::optional<PseudoTerminal> m_terminal;
    FileDescriptor m_line;
    std::string m_link;
    uint64_t m_played = 0;
    uint64_t m_lost = 0;
};

}  // namespace GssipTool

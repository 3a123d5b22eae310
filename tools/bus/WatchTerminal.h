// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "tools/bus/Canvas.h"

namespace Bus {

// The terminal in full-screen mode, given back as it was by the destructor and also when a signal
// that kills is raised. What is written to standard error meanwhile does not reach the screen; it
// can be fetched. One for the process, one thread.
class WatchTerminal {
  public:
    /// Throws UsageError when standard input or output is no terminal.
    static void require();

    /// Throws UsageError as well when the terminal cannot show a full screen.
    WatchTerminal();
    ~WatchTerminal();
    WatchTerminal(const WatchTerminal&) = delete;
    WatchTerminal& operator=(const WatchTerminal&) = delete;

    int width() const;
    int height() const;
    /// Shows a screen; of another size than the terminal's as much as fits.
    void show(const Canvas& canvas);
    /// A character or a WatchControl::Key; empty when none comes in time. A resize is none, but
    /// ends the wait.
    std::optional<int> key(std::chrono::milliseconds timeout);
    /// The next whole line that was written to standard error.
    std::optional<std::string> errorLine();
    /// Whether the terminal still is there.
    bool good() const { return m_good; }

  private:
    void captureErrors();
    void releaseErrors();

    int m_errorsFrom = -1;
    int m_realErrors = -1;
    std::string m_errors;
    bool m_good = true;
};

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace Bus {

// A line on standard error that tells how far something is, a few times a second. Silent when that
// is no terminal. One thread.
class Progress {
  public:
    Progress();
    /// Clears the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Whether it is time to show something new.
    bool isDue() const;
    void show(const std::string& text);

  private:
    const bool m_isTerminal;
    bool m_isShown = false;
    std::chrono::steady_clock::time_point m_next;
};

}  // namespace Bus

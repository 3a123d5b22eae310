// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Tools {

// Standard output, in colour when it is a terminal and NO_COLOR is not set. What is written appears
// at the next flush at the latest. One thread.
class Output {
  public:
    Output();

    void write(const std::string& text);
    void flush();
    /// False once a write has failed, as when somebody has stopped reading; nothing more is written
    /// then.
    bool good() const { return m_problem == 0; }
    /// What the system says about that.
    std::string problem() const;
    /// Whether the failure is just that nobody reads any more.
    bool isReaderGone() const;

    // The text as what it is; as it stands without colours.
    std::string heading(const std::string& text) const { return coloured("1;36", text); }
    std::string dim(const std::string& text) const { return coloured("2", text); }
    /// The text as something that is wrong.
    std::string alarm(const std::string& text) const { return coloured("1;31", text); }
    std::string warning(const std::string& text) const { return coloured("1;33", text); }
    std::string good(const std::string& text) const { return coloured("1;32", text); }

  private:
    std::string coloured(const char* code, const std::string& text) const;

    const bool m_inColour;
    int m_problem = 0;  // errno of the write that failed
};

}  // namespace Tools

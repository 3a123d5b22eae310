// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Bus {

// Standard output, in colour when it is a terminal and NO_COLOR is not set. What is written appears
// at the next flush at the latest. One thread.
class Output {
  public:
    Output();

    void write(const std::string& text);
    void flush();
    /// False once somebody has stopped reading; nothing more needs to be written then.
    bool good() const { return m_good; }

    /// The text as a heading and as an aside; as it is without colours.
    std::string heading(const std::string& text) const { return coloured("1;36", text); }
    std::string dim(const std::string& text) const { return coloured("2", text); }

  private:
    std::string coloured(const char* code, const std::string& text) const;

    const bool m_inColour;
    bool m_good = true;
};

}  // namespace Bus

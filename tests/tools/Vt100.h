// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace tools_test {

// The screen of a terminal of the kind vt100, as far as a program that knows it by its description
// uses it: cursor moves, erasing and character attributes. Whatever else comes is counted.
class Vt100 {
  public:
    Vt100(int width, int height) { resize(width, height); }

    /// Clears the screen.
    void resize(int width, int height) {
        m_width = width;
        m_lines.assign(static_cast<size_t>(height), std::string(static_cast<size_t>(width), ' '));
        m_x = m_y = 0;
    }

    void feed(const std::string& bytes) {
        for (const char c : bytes) {
            feed(c);
        }
    }

    /// All lines, each ended.
    std::string text() const {
        std::string text;
        for (const std::string& line : m_lines) {
            text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
        }
        return text;
    }
    const std::string& line(int y) const { return m_lines.at(static_cast<size_t>(y)); }
    int unknown() const { return m_unknown; }

  private:
    int height() const { return static_cast<int>(m_lines.size()); }
    std::string& row() { return m_lines[static_cast<size_t>(m_y)]; }

    void feed(char c) {
        if (!m_sequence.empty()) {
            m_sequence += c;
            const bool isShort = m_sequence.size() == 2 && c != '[' && c != '(' && c != ')';
            const bool isSet = m_sequence.size() == 3 && m_sequence[1] != '[';
            const bool isLong = m_sequence.size() > 2 && m_sequence[1] == '[' && c >= '@';
            if (isShort || isSet || isLong) {
                finish();
                m_sequence.clear();
            }
        } else if (c == '\x1b') {
            m_sequence = c;
        } else if (c == '\r') {
            moveTo(0, m_y);
        } else if (c == '\n') {
            moveTo(m_x, m_y + 1);
        } else if (c == '\b') {
            moveTo(m_x - 1, m_y);
        } else if (c == '\t') {
            moveTo((m_x / 8 + 1) * 8, m_y);
        } else if (c >= ' ') {
            put(c);
        }
    }

    // A character in the last column leaves the cursor there until the next one comes.
    void put(char c) {
        if (m_x == m_width) {
            moveTo(0, m_y + 1);
        }
        row()[static_cast<size_t>(m_x)] = c;
        ++m_x;
    }

    void moveTo(int x, int y) {
        m_x = std::clamp(x, 0, m_width - 1);
        m_y = std::clamp(y, 0, height() - 1);
    }

    void erase(int fromX, int toX) {
        std::fill(row().begin() + std::min(fromX, m_width), row().begin() + std::min(toX, m_width),
                  ' ');
    }

    void eraseBelow() {
        erase(m_x, m_width);
        for (int y = m_y + 1; y < height(); ++y) {
            m_lines[static_cast<size_t>(y)].assign(static_cast<size_t>(m_width), ' ');
        }
    }

    void finish() {
        if (m_sequence[1] != '[') {
            // Keypad modes and character sets do not show.
            m_unknown += std::string("=>()").find(m_sequence[1]) == std::string::npos ? 1 : 0;
            return;
        }
        const std::string arguments = m_sequence.substr(2, m_sequence.size() - 3);
        const int first = std::atoi(arguments.c_str());
        const size_t semicolon = arguments.find(';');
        const int second =
            semicolon == std::string::npos ? 0 : std::atoi(arguments.c_str() + semicolon + 1);
        const int count = std::max(first, 1);
        switch (m_sequence.back()) {
            case 'H':
                moveTo(std::max(second, 1) - 1, count - 1);
                break;
            case 'A':
                moveTo(m_x, m_y - count);
                break;
            case 'B':
                moveTo(m_x, m_y + count);
                break;
            case 'C':
                moveTo(m_x + count, m_y);
                break;
            case 'D':
                moveTo(m_x - count, m_y);
                break;
            case 'J':
                eraseBelow();
                break;
            case 'K':
                first == 1 ? erase(0, m_x + 1) : erase(m_x, m_width);
                break;
            case 'm':
            case 'h':
            case 'l':
            case 'r':
                break;
            default:
                ++m_unknown;
        }
    }

    int m_width = 0;
    std::vector<std::string> m_lines;
    int m_x = 0;
    int m_y = 0;
    int m_unknown = 0;
    std::string m_sequence;
};

}  // namespace tools_test

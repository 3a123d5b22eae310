// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Canvas.h"

#include <algorithm>

namespace Bus {

Canvas::Canvas(int width, int height)
    : m_width(std::max(width, 0)),
      m_height(std::max(height, 0)),
      m_cells(static_cast<size_t>(m_width) * static_cast<size_t>(m_height)) {
}

void Canvas::put(int x, int y, const std::string& text, uint8_t style) {
    if (y < 0 || y >= m_height) {
        return;
    }
    for (const char c : text) {
        if (x >= 0 && x < m_width) {
            m_cells[static_cast<size_t>(y * m_width + x)] = {c >= ' ' && c <= '~' ? c : '?', style};
        }
        ++x;
    }
}

std::string Canvas::line(int y) const {
    std::string text;
    for (int x = 0; x < m_width; ++x) {
        text += at(x, y).character;
    }
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string Canvas::text() const {
    std::string text;
    for (int y = 0; y < m_height; ++y) {
        text += line(y) + '\n';
    }
    return text;
}

Area Area::part(int x, int y, int width, int height) const {
    return Area(m_canvas, m_x + x, m_y + y, std::clamp(width, 0, std::max(m_width - x, 0)),
                std::clamp(height, 0, std::max(m_height - y, 0)));
}

void Area::put(int x, int y, const std::string& text, uint8_t style) {
    if (y < 0 || y >= m_height || x >= m_width || x < 0) {
        return;
    }
    m_canvas.put(m_x + x, m_y + y, text.substr(0, static_cast<size_t>(m_width - x)), style);
}

void Area::clear() {
    for (int y = 0; y < m_height; ++y) {
        put(0, y, std::string(static_cast<size_t>(m_width), ' '));
    }
}

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Bus {

// How a character looks; may be added up. On a terminal that cannot show one it is left out, so
// none carries a meaning of its own.
enum Style : uint8_t { kPlain = 0, kBold = 1, kDim = 2, kReverse = 4, kAlarm = 8 };

// A screen of characters, all of them printable ASCII. What is put outside is cut off.
class Canvas {
  public:
    struct Cell {
        char character = ' ';
        uint8_t style = kPlain;
    };

    Canvas(int width, int height);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Within the canvas.
    const Cell& at(int x, int y) const { return m_cells[static_cast<size_t>(y * m_width + x)]; }
    /// Other characters than printable ASCII become question marks.
    void put(int x, int y, const std::string& text, uint8_t style = kPlain);

    /// A line without the blanks at its end.
    std::string line(int y) const;
    /// All lines, each ended.
    std::string text() const;

  private:
    int m_width;
    int m_height;
    std::vector<Cell> m_cells;
};

// A rectangle of a canvas, which must outlive it. What does not fit is cut off at its edge.
class Area {
  public:
    Area(Canvas& canvas, int x, int y, int width, int height)
        : m_canvas(canvas), m_x(x), m_y(y), m_width(width), m_height(height) {}

    int width() const { return m_width; }
    int height() const { return m_height; }
    Area part(int x, int y, int width, int height) const;
    void put(int x, int y, const std::string& text, uint8_t style = kPlain);
    void clear();

  private:
    Canvas& m_canvas;
    int m_x;
    int m_y;
    int m_width;
    int m_height;
};

}  // namespace Bus

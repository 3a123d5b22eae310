// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "tools/bus/WatchPanes.h"
#include "tools/bus/WatchText.h"

// The panes of the satellites and channels.
namespace Bus::WatchPanes {
namespace {

using namespace WatchText;

constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180;
constexpr double kBarFull = 60;  // dB-Hz; no satellite is stronger

struct Disc {
    int x;
    int y;
    double radiusX;
    double radiusY;

    // Where a direction is, in degrees.
    std::pair<int, int> place(double azimuth, double elevation) const {
        const double radius = (90 - elevation) / 90;
        const double angle = azimuth * kRadiansPerDegree;
        return {x + static_cast<int>(std::lround(radius * radiusX * std::sin(angle))),
                y - static_cast<int>(std::lround(radius * radiusY * std::cos(angle)))};
    }
};

void drawRim(Area& area, const Disc& disc) {
    for (int azimuth = 0; azimuth < 360; azimuth += 2) {
        const auto [x, y] = disc.place(azimuth, 0);
        area.put(x, y, ".", kDim);
    }
    constexpr std::pair<int, const char*> kNames[] = {{0, "N"}, {90, "E"}, {180, "S"}, {270, "W"}};
    for (const auto& [azimuth, name] : kNames) {
        const auto [x, y] = disc.place(azimuth, 0);
        area.put(x, y, name, kBold);
    }
    area.put(disc.x, disc.y, "+", kDim);
}

// Labels that never touch: two numbers without a blank between them are another number.
class Labels {
  public:
    explicit Labels(Area& area) : m_area(area) {}

    /// Puts it there or right beside; false when there is no room.
    bool put(int x, int y, const std::string& text, uint8_t style) {
        constexpr std::pair<int, int> kSteps[] = {{0, 0},  {1, 0},  {-1, 0}, {0, 1},
                                                  {0, -1}, {2, 0},  {-2, 0}, {1, 1},
                                                  {1, -1}, {-1, 1}, {-1, -1}};
        const int length = static_cast<int>(text.size());
        for (const auto& [right, down] : kSteps) {
            const int column = std::min(x + right, m_area.width() - length);
            const int row = y + down;
            if (column < 0 || row < 1 || row >= m_area.height() || touches(column, row, length)) {
                continue;
            }
            m_area.put(column, row, text, style);
            m_taken.push_back({column, row, length});
            return true;
        }
        return false;
    }

  private:
    struct Taken {
        int x;
        int y;
        int length;
    };

    bool touches(int x, int y, int length) const {
        return std::any_of(m_taken.begin(), m_taken.end(), [&](const Taken& other) {
            return other.y == y && x <= other.x + other.length && other.x <= x + length;
        });
    }

    Area& m_area;
    std::vector<Taken> m_taken;
};

std::string bar(const Number& value, int width) {
    const double part = std::clamp(value.value_or(0) / kBarFull, 0.0, 1.0);
    const auto filled = static_cast<size_t>(std::lround(part * width));
    return std::string(filled, '#') + std::string(static_cast<size_t>(width) - filled, ' ');
}

}  // namespace

void sky(Area area, const WatchModel& model, Clock::time_point now) {
    const uint8_t style = title(area, "SKY", model.freshness("SVStatus", now));
    const int rows = area.height() - 1;
    if (rows < 5 || area.width() < 11) {
        return;
    }
    // A character is about twice as high as it is wide.
    const int radiusY = std::min((rows - 1) / 2, (area.width() - 2) / 4);
    const Disc disc{area.width() / 2, 1 + rows / 2, 2.0 * radiusY, 1.0 * radiusY};
    drawRim(area, disc);
    Labels labels(area);
    int elsewhere = 0;
    for (const SatelliteState& satellite : model.satellites()) {
        if (!satellite.azimuth || !satellite.elevation || *satellite.elevation < 0) {
            ++elsewhere;
            continue;
        }
        const auto [x, y] = disc.place(*satellite.azimuth, *satellite.elevation);
        const bool isHealthy = satellite.isHealthy;
        const bool isPlaced =
            labels.put(x, y, fmt::format("{}{}", satellite.id, isHealthy ? "" : "!"),
                       isHealthy ? static_cast<uint8_t>(kBold | style) : uint8_t{kAlarm});
        elsewhere += isPlaced ? 0 : 1;
    }
    if (elsewhere > 0) {
        area.put(0, area.height() - 1, fmt::format("{} not shown", elsewhere), kAlarm);
    }
}

void satellites(Area area, const WatchModel& model, Clock::time_point now) {
    const uint8_t style = title(area, " SV  azimuth elevation", model.freshness("SVStatus", now));
    int y = 1;
    for (const SatelliteState& satellite : model.satellites()) {
        area.put(0, y++,
                 fmt::format("{:>3} {} {}  {}{}", satellite.id, number(satellite.azimuth, 0, 8),
                             number(satellite.elevation, 0, 9),
                             satellite.isRising ? "rising" : "setting",
                             satellite.isHealthy ? "" : " UNHEALTHY"),
                 satellite.isHealthy ? style : uint8_t{kAlarm});
    }
}

void carrierToNoise(Area area, const WatchModel& model, Clock::time_point now) {
    const uint8_t style = title(area, "C/N0", model.freshness("ChannelStatus", now));
    const auto& channels = model.channels();
    const int rows = area.height() - 1;
    if (rows < 1) {
        return;
    }
    // Satellite, band, used in the solution or not, bar, number.
    constexpr int kLeast = 18;
    constexpr int kAround = 12;
    const int wanted = (static_cast<int>(channels.size()) + rows - 1) / rows;
    const int columns = std::clamp(wanted, 1, std::max(area.width() / kLeast, 1));
    const int width = area.width() / columns;
    const auto places = static_cast<size_t>(columns * rows);
    const size_t shown = channels.size() <= places ? channels.size() : places - 1;
    for (size_t i = 0; i < shown; ++i) {
        const ChannelState& channel = channels[i];
        const int column = static_cast<int>(i) / rows;
        const int row = static_cast<int>(i) % rows;
        area.put(
            column * width, 1 + row,
            fmt::format("{:>3}/{}{}{} {}", channel.prn, channel.band, channel.isUsed ? '*' : ' ',
                        bar(channel.carrierToNoise, std::max(width - kAround, 0)),
                        number(channel.carrierToNoise, 0, 2)),
            style);
    }
    if (shown < channels.size()) {
        area.put((columns - 1) * width, rows, fmt::format("{} more", channels.size() - shown),
                 kBold);
    }
}

}  // namespace Bus::WatchPanes

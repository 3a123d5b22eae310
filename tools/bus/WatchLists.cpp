// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <utility>
#include <vector>

#include "tools/bus/WatchPanes.h"
#include "tools/bus/WatchText.h"

// The panes that are lists: the link and the log.
namespace Bus::WatchPanes {
namespace {

using namespace WatchText;

std::string hzText(const WatchLink& link, Clock::time_point now) {
    const auto hz = link.hz(now);
    return number(hz, hz && *hz < 0.995 ? 3 : 1, 6);
}

std::string ageText(const WatchLink& link, Clock::time_point now) {
    return number(link.age(now), 1, 7);
}

// What is wrong with a topic, in a word.
const char* troubleOf(const WatchLink& link, Clock::time_point now) {
    if (link.isStale(now)) {
        return "STALE";
    }
    return link.missing() > 0 ? "GAPS" : "";
}

void wide(Area& area, const WatchModel& model, Clock::time_point now) {
    area.put(0, 0,
             fitted(fmt::format("{:<22}{:>6} {:>7} {:>8} {:>8}  {}", "LINK", "Hz", "age s",
                                "samples", "missing", "from"),
                    static_cast<size_t>(area.width())),
             kBold);
    int y = 1;
    for (const auto& [topic, link] : model.links()) {
        const std::string trouble = troubleOf(link, now);
        const std::string others =
            link.publishers() > 1 ? fmt::format(" and {} more", link.publishers() - 1) : "";
        area.put(0, y++,
                 fmt::format("{}{} {} {:>8} {:>8}  {}{} {}", fitted(topic, 22), hzText(link, now),
                             ageText(link, now), link.samples(), link.missing(), link.publisher(),
                             others, trouble),
                 !trouble.empty()     ? kAlarm
                 : link.samples() > 0 ? kPlain
                                      : kDim);
    }
}

void narrow(Area& area, const WatchModel& model, Clock::time_point now) {
    area.put(0, 0, fitted("LINK Hz, ! stale, # gaps", static_cast<size_t>(area.width())), kBold);
    const int width = area.width() / 2;
    const int rows = area.height() - 1;
    const int places = 2 * rows;
    const int topics = static_cast<int>(model.links().size());
    int i = 0;
    for (const auto& [topic, link] : model.links()) {
        const int x = rows > 0 && i < places ? i / rows * width : area.width();
        const int y = rows > 0 ? 1 + i % rows : 1;
        ++i;
        if (i == places && topics > places) {
            area.put(x, y, fmt::format("{} more, 3 shows them", topics - places + 1), kBold);
            break;
        }
        const char mark = link.isStale(now) ? '!' : link.missing() > 0 ? '#' : ' ';
        const auto nameWidth = static_cast<size_t>(std::max(width - 8, 1));
        area.put(x, y, fmt::format("{}{}{}", fitted(topic, nameWidth), hzText(link, now), mark),
                 mark != ' '          ? kAlarm
                 : link.samples() > 0 ? kPlain
                                      : kDim);
    }
}

// A line of the log on as many rows as it takes, on a narrow area cut to one.
std::vector<std::string> rowsOf(const WatchModel::LogLine& line, size_t width) {
    constexpr size_t kWide = 60;
    constexpr size_t kIndent = 13;
    std::string rest = fmt::format("{} {} {}", clock(line.unixNs), line.kind, line.text);
    std::vector<std::string> rows{rest.substr(0, width)};
    while (width >= kWide && rest.size() > width) {
        rest = std::string(kIndent, ' ') + rest.substr(width);
        rows.push_back(rest.substr(0, width));
    }
    return rows;
}

}  // namespace

void link(Area area, const WatchModel& model, Clock::time_point now) {
    constexpr int kWide = 66;
    const bool fits =
        area.width() >= kWide && area.height() > static_cast<int>(model.links().size());
    if (fits || area.width() < 24) {
        wide(area, model, now);
    } else {
        narrow(area, model, now);
    }
}

void log(Area area, const WatchModel& model, size_t scroll) {
    const auto& lines = model.log();
    const auto width = static_cast<size_t>(std::max(area.width(), 0));
    const int rows = area.height() - 1;
    const size_t back = std::min(scroll, lines.empty() ? 0 : lines.size() - 1);
    area.put(0, 0,
             fitted(fmt::format("LOG {}{}", model.logged(),
                                back > 0 ? fmt::format(", {} below", back) : ""),
                    width),
             kBold);
    // From the last line upwards, as many as fit; the oldest perhaps only in part.
    std::deque<std::pair<std::string, bool>> shown;
    for (size_t i = lines.size() - back; i > 0 && static_cast<int>(shown.size()) < rows; --i) {
        const auto wrapped = rowsOf(lines[i - 1], width);
        for (auto row = wrapped.rbegin(); row != wrapped.rend(); ++row) {
            shown.emplace_front(*row, lines[i - 1].isAlarm);
        }
    }
    while (static_cast<int>(shown.size()) > std::max(rows, 0)) {
        shown.pop_front();
    }
    int y = 1;
    for (const auto& [text, isAlarm] : shown) {
        area.put(0, y++, text, isAlarm ? kAlarm : kPlain);
    }
}

}  // namespace Bus::WatchPanes

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchScreen.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/bus/WatchCommands.h"
#include "tools/bus/WatchPanes.h"
#include "tools/bus/WatchText.h"

namespace Bus {
namespace {

using namespace WatchPanes;
using WatchText::fitted;

constexpr int kLeftWidth = 38;
constexpr int kWithRightWidth = 80;
constexpr int kBarsWidth = 19;

struct Pane {
    void (*draw)(Area area, const WatchModel& model, Clock::time_point now);
    int lines;
};

constexpr Pane kLeftPanes[] = {
    {position, kPositionLines}, {receiver, kReceiverLines},         {time, kTimeLines},
    {keys, kKeyLines},          {interference, kInterferenceLines},
};

void left(Area area, const WatchModel& model, const WatchMoment& moment) {
    int lines = 0;
    for (const Pane& pane : kLeftPanes) {
        lines += pane.lines;
    }
    const int gap = area.height() >= lines + 4 ? 1 : 0;
    int y = 0;
    for (const Pane& pane : kLeftPanes) {
        pane.draw(area.part(0, y, area.width(), pane.lines), model, moment.now);
        y += pane.lines + gap;
    }
}

void skyAndBars(Area area, const WatchModel& model, const WatchMoment& moment) {
    // The bars get what the round sky leaves.
    const int skyWidth = std::clamp(4 * ((area.height() - 2) / 2) + 4, 11,
                                    std::max(area.width() - kBarsWidth - 1, 11));
    sky(area.part(0, 0, skyWidth, area.height()), model, moment.now);
    carrierToNoise(area.part(skyWidth + 1, 0, area.width() - skyWidth - 1, area.height()), model,
                   moment.now);
}

void overview(Area area, const WatchModel& model, const WatchControl& control,
              const WatchMoment& moment) {
    if (area.width() < kWithRightWidth) {
        left(area, model, moment);
        return;
    }
    left(area.part(0, 0, kLeftWidth, area.height()), model, moment);
    const int x = kLeftWidth + 1;
    const int width = area.width() - x;
    constexpr int kLeastSky = 10;
    constexpr int kLeastLog = 4;
    const int topics = static_cast<int>(model.links().size());
    const int spare = area.height() - kLeastSky - kLeastLog;
    const int linkLines =
        std::clamp(spare >= topics + 1 ? topics + 1 : (topics + 1) / 2 + 1, 0, std::max(spare, 0));
    const int rest = std::max(area.height() - linkLines, 0);
    const int skyLines = std::max(std::min(rest * 3 / 5, 25), std::min(kLeastSky, rest));
    skyAndBars(area.part(x, 0, width, skyLines), model, moment);
    link(area.part(x, skyLines, width, linkLines), model, moment.now);
    log(area.part(x, skyLines + linkLines, width, rest - skyLines), model, control.scroll());
}

void satellitesPage(Area area, const WatchModel& model, const WatchMoment& moment) {
    constexpr int kListWidth = 42;
    const int upper = std::max(area.height() * 3 / 5, 14);
    satellites(area.part(0, 0, kListWidth, upper), model, moment.now);
    sky(area.part(kListWidth + 1, 0, area.width() - kListWidth - 1, upper), model, moment.now);
    carrierToNoise(area.part(0, upper, area.width(), area.height() - upper), model, moment.now);
}

void page(Area area, const WatchModel& model, const WatchControl& control,
          const WatchMoment& moment) {
    switch (control.page()) {
        case WatchControl::Page::kOverview:
            overview(area, model, control, moment);
            break;
        case WatchControl::Page::kSatellites:
            satellitesPage(area, model, moment);
            break;
        case WatchControl::Page::kLink:
            link(area, model, moment.now);
            break;
        case WatchControl::Page::kLog:
            log(area, model, control.scroll());
            break;
    }
}

// A box in the middle.
void box(Area screen, const std::vector<std::string>& lines, size_t marked) {
    size_t widest = 0;
    for (const std::string& line : lines) {
        widest = std::max(widest, line.size());
    }
    const int width = std::min(static_cast<int>(widest) + 4, screen.width());
    const int height = std::min(static_cast<int>(lines.size()) + 2, screen.height());
    Area area =
        screen.part((screen.width() - width) / 2, (screen.height() - height) / 2, width, height);
    area.clear();
    const std::string edge =
        '+' + std::string(static_cast<size_t>(std::max(width - 2, 0)), '-') + '+';
    area.put(0, 0, edge);
    area.put(0, height - 1, edge);
    const auto rows = static_cast<size_t>(std::max(height - 2, 0));
    // On a low screen the box shows the lines around the marked one.
    const size_t first = marked >= rows && marked < lines.size() ? marked - rows + 1 : 0;
    for (size_t i = first; i < lines.size() && i - first < rows; ++i) {
        const int y = static_cast<int>(i - first) + 1;
        area.put(0, y, '|' + std::string(static_cast<size_t>(std::max(width - 2, 0)), ' ') + '|');
        area.part(2, y, width - 4, 1)
            .put(0, 0, fitted(lines[i], widest), i == marked ? kReverse : kPlain);
    }
}

const std::vector<std::string>& help() {
    static const std::vector<std::string> lines = {
        "1 2 3 4, Tab  overview, satellites, link, log",
        "Up Down PgUp PgDn Home End  scroll the log",
        "c             send a command",
        "q, Ctrl-C     quit",
        "",
        "--       not known or not valid",
        "STALE    older than three of its periods",
        "lat lon  as sent; degrees if that is radians",
        "+-       one sigma, m and m/s",
        "C/N0     satellite/band, * used in solution",
        "keys     by type; left: as sent",
        "missing  by the numbers in the headers",
        "",
        "any key closes this",
    };
    return lines;
}

std::vector<std::string> commandLines() {
    std::vector<std::string> lines;
    for (const std::string& text : WatchCommands::texts()) {
        lines.push_back((WatchCommands::wordFor(text).empty() ? "  " : "! ") + text);
    }
    lines.emplace_back("  another text ...");
    return lines;
}

void dialog(Area screen, const WatchControl& control) {
    constexpr size_t kNoneMarked = ~size_t{0};
    switch (control.dialog()) {
        case WatchControl::Dialog::kNone:
            break;
        case WatchControl::Dialog::kHelp:
            box(screen, help(), kNoneMarked);
            break;
        case WatchControl::Dialog::kCommands:
            box(screen, commandLines(), control.selected());
            break;
        case WatchControl::Dialog::kText:
            box(screen, {"Command to send, Enter, or Escape:", "> " + control.input() + "_"},
                kNoneMarked);
            break;
        case WatchControl::Dialog::kConfirm:
            box(screen, {"Send " + control.command() + " ?", "y sends it, any other key does not"},
                kNoneMarked);
            break;
        case WatchControl::Dialog::kWord:
            box(screen,
                {control.command() + " cannot be undone.",
                 "To send it type the word " + WatchCommands::wordFor(control.command()) +
                     " and Enter:",
                 "> " + control.input() + "_"},
                kNoneMarked);
            break;
    }
}

}  // namespace

Canvas watchScreen(const WatchModel& model, const WatchControl& control, const WatchMoment& moment,
                   int width, int height) {
    Canvas canvas(width, height);
    Area screen(canvas, 0, 0, width, height);
    const auto columns = static_cast<size_t>(std::max(width, 0));
    const std::string clock = WatchText::clock(moment.unixNs) + " UTC";
    const std::string losses =
        moment.losses > 0 ? fmt::format("  {} samples dropped here", moment.losses) : "";
    screen.put(0, 0, fitted("rovan-bus watch  " + moment.bus + losses, columns), kReverse);
    screen.put(width - static_cast<int>(clock.size()), 0, clock, kReverse);
    page(screen.part(0, 1, width, height - 2), model, control, moment);
    const std::string footer =
        control.message().empty()
            ? "q quit  ? help  c command  1 overview  2 satellites  3 link  4 log"
            : control.message();
    screen.put(0, height - 1, fitted(footer, columns), kReverse);
    dialog(screen.part(0, 1, width, height - 2), control);
    return canvas;
}

}  // namespace Bus

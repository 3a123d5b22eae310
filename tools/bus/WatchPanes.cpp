// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchPanes.h"

#include <fmt/format.h>

#include <functional>
#include <utility>

#include "tools/bus/WatchText.h"

namespace Bus::WatchPanes {
namespace {

using namespace WatchText;

std::string degrees(const Number& value) {
    return value ? fmt::format("{:>12.7f} deg", *value) : fmt::format("{:>12} deg", "--");
}

// Names of a table of values, "?" and the number for what is not in it.
std::string nameOf(const std::map<uint32_t, const char*>& names, uint32_t value) {
    const auto found = names.find(value);
    return found != names.end() ? found->second : fmt::format("?{}", value);
}

// One column for each key behind the name of the line. The last one is wider: that of a 5040 counts
// further.
std::string keyLine(const WatchModel& model, const char* name,
                    const std::function<std::string(const KeyState&)>& cell) {
    std::string line = fmt::format("{:<4}", name);
    size_t left = model.keys().size();
    for (const auto& [type, key] : model.keys()) {
        const size_t width = --left == 0 ? 6 : 4;
        const std::string text = cell(key.state);
        line += fmt::format("{:>{}}", text.size() < width ? text : "--", width);
    }
    return line;
}

}  // namespace

void position(Area area, const WatchModel& model, Clock::time_point now) {
    const PositionState& state = model.position();
    const auto freshness = model.freshness("PositionVelocity", now);
    const bool isLost = freshness.ageSeconds && !state.isSolution;
    const uint8_t style = title(area, "POSITION", freshness);
    if (isLost) {
        area.put(10, 0, "NO SOLUTION", kAlarm | kBold);
    }
    const auto& sigma = state.positionSigma;
    // As sent, and what that is if it is radians.
    area.put(
        0, 1,
        fmt::format(" lat {} {}", number(state.latitude, 9, 13), degrees(state.latitudeDegrees)),
        style);
    area.put(
        0, 2,
        fmt::format(" lon {} {}", number(state.longitude, 9, 13), degrees(state.longitudeDegrees)),
        style);
    area.put(0, 3,
             fmt::format(" alt {} +-N{} E{} D{}", number(state.altitude, 1, 9),
                         number(sigma[0], 1, 5), number(sigma[1], 1, 5), number(sigma[2], 1, 5)),
             style);
    const auto& v = state.velocity;
    area.put(0, 4,
             fmt::format(" vel N{} E{} D{} m/s", number(v[0], 2, 8), number(v[1], 2, 8),
                         number(v[2], 2, 8)),
             style);
    const auto& w = state.velocitySigma;
    area.put(0, 5,
             fmt::format("  +- N{} E{} D{} m/s", number(w[0], 2, 8), number(w[1], 2, 8),
                         number(w[2], 2, 8)),
             style);
}

void receiver(Area area, const WatchModel& model, Clock::time_point now) {
    const ReceiverState& state = model.receiver();
    const auto freshness = model.freshness("ReceiverStatus", now);
    const uint8_t style = title(area, "RECEIVER", freshness);
    if (freshness.ageSeconds) {
        area.put(10, 0, state.fails ? "FAILURE" : "no failure",
                 state.fails ? kAlarm | kBold : style);
    }
    area.put(0, 1,
             fmt::format(" satellites used {}  available {}", number(state.used, 0, 3),
                         number(state.available, 0, 3)),
             style);
    area.put(0, 2,
             fmt::format(" PDOP {}   TDOP {}", number(state.pdop, 1, 5), number(state.tdop, 1, 5)),
             style);
}

void time(Area area, const WatchModel& model, Clock::time_point now) {
    const auto gps = model.freshness("GPSTime", now);
    const auto utc = model.freshness("UTCTime", now);
    uint8_t style = title(area, "TIME", gps);
    const GpsTimeState& time = model.gpsTime();
    area.put(0, 1,
             fmt::format(" GPS  week {} {} s", number(time.week, 0, 5), seconds(time.timeOfWeekNs)),
             style);
    area.put(0, 2,
             fmt::format(" bias {} +- {} (as sent)", number(time.bias, 2, 10),
                         number(time.biasError, 2, 8)),
             style);
    style = utc.isStale || !utc.ageSeconds ? kDim : kPlain;
    area.put(0, 3,
             fmt::format(" UTC  {}{}", timeOfDay(model.utc().timeOfDayNs),
                         utc.isStale ? fmt::format(" STALE {:.0f} s", *utc.ageSeconds) : ""),
             style);
    const LeapState& leap = model.leap();
    const auto downlink = model.freshness("UtcDownlink", now);
    style = downlink.isStale || !downlink.ageSeconds ? kDim : kPlain;
    area.put(0, 4,
             fmt::format(" leap {} s, {} s from week {}, {}{}", number(leap.now, 0, 2),
                         number(leap.announced, 0, 2), number(leap.week, 0, 5),
                         number(leap.day, 0, 2), downlink.isStale ? " STALE" : ""),
             style);
}

void keys(Area area, const WatchModel& model, Clock::time_point now) {
    static const std::map<uint32_t, const char*> kStatus = {
        {1, "off"}, {2, "on"}, {4, "4"}, {5, "-"}};
    static const std::map<uint32_t, const char*> kLoad = {{0, "ok"}, {1, "BAD"}, {2, "-"}};
    static const std::map<uint32_t, const char*> kZeroization = {
        {0, "0"}, {1, "1"}, {2, "2"}, {3, "-"}};
    const uint8_t style = title(area, "KEYS", model.keyFreshness(now));
    if (model.keys().empty()) {
        area.put(0, 1, " --", style);
        return;
    }
    const auto plain = [](uint32_t value) { return fmt::format("{}", value); };
    const std::pair<const char*, std::function<std::string(const KeyState&)>> lines[] = {
        {"type", [&](const KeyState& key) { return plain(key.type); }},
        {"now", [](const KeyState& key) { return nameOf(kStatus, key.status); }},
        {"load", [](const KeyState& key) { return nameOf(kLoad, key.load); }},
        {"zero", [](const KeyState& key) { return nameOf(kZeroization, key.zeroization); }},
        {"left", [](const KeyState& key) { return fmt::format("{}", key.remaining); }},
    };
    int y = 1;
    for (const auto& [name, cell] : lines) {
        area.put(0, y++, keyLine(model, name, cell), style);
    }
}

void interference(Area area, const WatchModel& model, Clock::time_point now) {
    const auto freshness = model.freshness("ChallengedEnvironment", now);
    const uint8_t style = title(area, "INTERFERENCE type/signal", freshness);
    if (model.interference().empty()) {
        area.put(0, 1, " --", style);
        return;
    }
    int x = 1;
    for (const InterferenceState& state : model.interference()) {
        const std::string text =
            fmt::format("{}/{} {}", state.type, state.signal, state.isIndicated ? "YES" : "no");
        area.put(x, 1, text, state.isIndicated ? kAlarm | kBold : style);
        x += static_cast<int>(text.size()) + 2;
    }
}

}  // namespace Bus::WatchPanes

// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "tools/bus/Commands.h"
#include "tools/bus/Limit.h"
#include "tools/bus/RateMeter.h"
#include "tools/bus/Session.h"
#include "tools/common/Output.h"

namespace Bus {
namespace {

using Clock = RateMeter::Clock;
using Meters = std::map<std::string, RateMeter>;

Clock::duration secondsToDuration(double seconds) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

std::string jsonLines(Meters& meters, Clock::time_point now) {
    std::string text;
    for (auto& [topic, meter] : meters) {
        const auto rate = meter.rate(now);
        const auto age = meter.age(now);
        Json line;
        line["topic"] = topic;
        line["samples"] = meter.count();
        line["rate_hz"] = rate ? Json(rate->hz) : Json();
        line["min_interval_s"] = rate ? Json(rate->minSeconds) : Json();
        line["max_interval_s"] = rate ? Json(rate->maxSeconds) : Json();
        line["age_s"] = age ? Json(*age) : Json();
        text += toLine(line) + '\n';
    }
    return text;
}

std::string table(Meters& meters, Clock::time_point now, const Tools::Output& output) {
    size_t width = 5;
    for (const auto& [topic, meter] : meters) {
        width = std::max(width, topic.size());
    }
    std::string text =
        output.heading(fmt::format("{:<{}} {:>9} {:>10} {:>10} {:>10} {:>8}", "topic", width,
                                   "samples", "rate Hz", "min ms", "max ms", "age s"));
    text += '\n';
    for (auto& [topic, meter] : meters) {
        const auto rate = meter.rate(now);
        const auto age = meter.age(now);
        text += fmt::format("{:<{}} {:>9}", topic, width, meter.count());
        text += rate ? fmt::format(" {:>10.3f} {:>10.3f} {:>10.3f}", rate->hz,
                                   rate->minSeconds * 1000, rate->maxSeconds * 1000)
                     : fmt::format(" {:>10} {:>10} {:>10}", "-", "-", "-");
        text += age ? fmt::format(" {:>8.1f}\n", *age) : fmt::format(" {:>8}\n", "-");
    }
    return text + '\n';
}

}  // namespace

ExitStatus hz(const Options& options) {
    Session session(options);
    Limit limit(options);
    Tools::Output output;
    Meters meters;
    const auto window = secondsToDuration(options.windowSeconds);
    const auto every = secondsToDuration(options.everySeconds);
    for (const std::string& topic : options.topics) {
        meters.try_emplace(topic, window);
    }
    const auto report = [&] {
        const auto now = Clock::now();
        output.write(options.json ? jsonLines(meters, now) : table(meters, now, output));
        output.flush();
    };
    auto nextReport = Clock::now() + every;
    while (!limit.reached() && output.good()) {
        Sample sample;
        if (session.next(sample, std::min(limit.patience(), nextReport - Clock::now()))) {
            limit.count();
            meters.try_emplace(sample.topic, window).first->second.add(sample.arrival);
        }
        if (Clock::now() >= nextReport && !limit.reached()) {
            report();
            nextReport = std::max(nextReport + every, Clock::now());
        }
    }
    report();
    session.report(options.summary);
    return limit.status();
}

}  // namespace Bus

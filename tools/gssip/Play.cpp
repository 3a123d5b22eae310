// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>

#include "tools/gssip/Commands.h"
#include "tools/gssip/Input.h"
#include "tools/gssip/PlayedLine.h"
#include "tools/gssip/Until.h"
#include "utility/Console.h"

namespace GssipTool {
namespace {

constexpr unsigned kUsualBaud = 115200;
constexpr double kBitsPerByte = 10;  // with start and stop bit

double factorOf(const std::string& speed) {
    if (speed == "max") {
        return std::numeric_limits<double>::infinity();
    }
    size_t used = 0;
    double factor = 0;
    try {
        factor = std::stod(speed, &used);
    } catch (const std::exception&) {}
    if (used != speed.size() || !(factor > 0) || !std::isfinite(factor)) {
        throw std::runtime_error("--speed wants a number above 0, or max");
    }
    return factor;
}

// When what of a file is due. A recording says so itself; a raw capture goes out at the speed of
// the line.
class Pace {
  public:
    Pace(double factor, unsigned baud) : m_factor(factor), m_bytesPerSec(baud / kBitsPerByte) {}

    void restart() {
        m_start = Clock::now();
        m_firstNs.reset();
        m_bytes = 0;
    }

    /// Waits for it; false when the end came first.
    bool waitFor(std::optional<int64_t> timeNs, const Until& until, PlayedLine& line) {
        const Clock::time_point due = dueOf(timeNs);
        while (!until.reached() && Clock::now() < due) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
            line.drainFor(std::min(left, until.patience()));
        }
        return !until.reached();
    }

    void count(size_t bytes) { m_bytes += bytes; }

    /// So much of a raw capture goes out at once that the line would need 10 ms for it.
    size_t piece(std::optional<int64_t> timeNs, size_t bytes) const {
        constexpr double kSeconds = 0.01;
        const double fair = std::max(1.0, m_bytesPerSec * kSeconds * m_factor);
        return timeNs || fair >= static_cast<double>(bytes) ? bytes : static_cast<size_t>(fair);
    }

  private:
    using Clock = Until::Clock;

    Clock::time_point dueOf(std::optional<int64_t> timeNs) {
        double seconds = static_cast<double>(m_bytes) / m_bytesPerSec;
        if (timeNs) {
            m_firstNs = m_firstNs.value_or(*timeNs);
            seconds = static_cast<double>(*timeNs - *m_firstNs) / 1e9;
        }
        constexpr double kLongest = 1e9;  // a lifetime, and far from the end of the clock
        const double wait = std::min(std::max(seconds, 0.0) / m_factor, kLongest);
        return m_start +
               std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(wait));
    }

    const double m_factor;
    const double m_bytesPerSec;
    Clock::time_point m_start = Clock::now();
    std::optional<int64_t> m_firstNs;
    uint64_t m_bytes = 0;
};

std::unique_ptr<Input> opened(const std::string& path) {
    auto input = std::make_unique<Input>(path, std::nullopt);
    if (input->isLive()) {
        throw std::runtime_error(path + ": is a live line: record it first");
    }
    return input;
}

// The file once; false when the end came first. Nothing to play is an error.
bool playOnce(Input& input, const std::string& name, Pace& pace, PlayedLine& line,
              const Until& until) {
    pace.restart();
    const uint64_t before = line.played();
    bool goesOn = true;
    const auto sink = [&](const uint8_t* bytes, size_t count, std::optional<int64_t> timeNs) {
        for (size_t done = 0; done < count && goesOn;) {
            const size_t now = pace.piece(timeNs, count - done);
            goesOn = pace.waitFor(timeNs, until, line) && line.write(bytes + done, now, until);
            pace.count(now);
            done += now;
        }
    };
    Input::Event event = Input::Event::kNothing;
    while (goesOn && event != Input::Event::kEnd && !until.reached()) {
        event = input.read(until.patience(), sink);
    }
    if (event == Input::Event::kEnd && line.played() == before) {
        throw std::runtime_error(name + ": holds nothing to play");
    }
    if (event == Input::Event::kEnd && input.isCutOff()) {
        Console::errorLine(fmt::format("gssip: {}: the recording is cut off", name));
    }
    return goesOn && !until.reached();
}

}  // namespace

ExitStatus play(const Options& options) {
    if (options.loop && options.input == "-") {
        throw std::runtime_error("--loop wants a file, not standard input");
    }
    Pace pace(factorOf(options.speed), options.baud.value_or(kUsualBaud));
    std::unique_ptr<Input> input = opened(options.input);  // before anybody waits for it
    PlayedLine line(options);
    const Until until(options.durationSeconds);
    const bool starts = options.noWait || line.waitForReader(until);
    const auto start = Until::Clock::now();
    while (starts && playOnce(*input, options.input, pace, line, until) && options.loop) {
        input = opened(options.input);
    }
    if (!until.reached()) {
        line.finish(until);
    }
    Console::errorLine(fmt::format(
        "gssip: played {} bytes in {:.1f} s{}", line.played(),
        std::chrono::duration<double>(Until::Clock::now() - start).count(),
        line.lost() > 0 ? fmt::format(", {} of them while nobody listened", line.lost()) : ""));
    return line.lost() > 0 ? kDataErrors : kGood;
}

}  // namespace GssipTool

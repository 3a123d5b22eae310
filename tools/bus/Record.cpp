// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <set>

#include "tools/bus/Commands.h"
#include "tools/bus/Limit.h"
#include "tools/bus/Progress.h"
#include "tools/bus/RecordedSamples.h"
#include "tools/bus/RecordingWriter.h"
#include "tools/bus/Session.h"
#include "tools/common/Quoted.h"
#include "utility/Console.h"

namespace Bus {
namespace {

using Clock = Limit::Clock;

// What a death of this process may lose.
constexpr std::chrono::seconds kFlushEvery{1};

}  // namespace

ExitStatus record(const Options& options) {
    Session session(options);
    RecordingWriter writer(options.recording.file, options.recording.force);
    RecordedSamples samples;
    std::set<std::string> topics;
    Limit limit(options);
    const Clock::time_point start = Clock::now();
    Clock::time_point nextFlush = start + kFlushEvery;
    {
        Progress progress;
        while (!limit.reached()) {
            Sample sample;
            if (session.next(sample, limit.patience())) {
                const auto since = std::max(sample.arrival - start, Clock::duration::zero());
                if (writer.write(
                        samples.recordedOf(sample, std::chrono::nanoseconds(since).count()))) {
                    limit.count();
                    topics.insert(sample.topic);
                } else {
                    Console::errorLine(fmt::format("rovan-bus: {}: a sample is too large to record",
                                                   sample.topic));
                }
            }
            if (Clock::now() >= nextFlush) {
                writer.flush();
                nextFlush = Clock::now() + kFlushEvery;
            }
            if (progress.isDue()) {
                const std::chrono::duration<double> elapsed = Clock::now() - start;
                progress.show(fmt::format("{:.0f} s, {} samples of {} topics, {} bytes",
                                          elapsed.count(), writer.samples(), topics.size(),
                                          writer.size()));
            }
        }
    }
    writer.finish();
    Console::line(fmt::format("recorded {} samples of {} topics, {} bytes, in {}", writer.samples(),
                              topics.size(), writer.size(),
                              Tools::inQuotes(options.recording.file)));
    session.report(options.summary);
    return limit.status();
}

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "tools/bus/Commands.h"
#include "tools/bus/JsonLine.h"
#include "tools/bus/Limit.h"
#include "tools/bus/Session.h"
#include "tools/common/Output.h"

namespace Bus {
namespace {

constexpr int64_t kNsPerSec = 1'000'000'000;

std::string utc(int64_t unixNs) {
    const std::time_t seconds = static_cast<std::time_t>(unixNs / kNsPerSec);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z", fmt::gmtime(seconds),
                       unixNs % kNsPerSec / 1000);
}

std::string textBlock(const Sample& sample, const Tools::Output& output) {
    const std::string about =
        fmt::format("#{} from {} at {}", sample.sequence, sample.publisher, utc(sample.receivedNs));
    return fmt::format("{}  {}\n{}\n", output.heading(sample.topic), output.dim(about),
                       sample.message->text());
}

}  // namespace

ExitStatus echo(const Options& options) {
    Session session(options);
    Limit limit(options);
    Tools::Output output;
    Sample sample;
    while (!limit.reached() && output.good()) {
        if (!session.next(sample, std::chrono::nanoseconds::zero())) {
            output.flush();  // nothing waits: let the reader see what there is
            if (!session.next(sample, limit.patience())) {
                continue;
            }
        }
        limit.count();
        output.write(options.json ? jsonLine(sample) : textBlock(sample, output));
    }
    output.flush();
    session.report(options.summary);
    return limit.status();
}

}  // namespace Bus

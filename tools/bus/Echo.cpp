// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>

#include "tools/bus/Commands.h"
#include "tools/bus/JsonLine.h"
#include "tools/bus/Limit.h"
#include "tools/bus/RecordedSamples.h"
#include "tools/bus/RecordingReader.h"
#include "tools/bus/Session.h"
#include "tools/bus/UtcText.h"
#include "tools/common/Output.h"

namespace Bus {
namespace {

std::string textBlock(const Sample& sample, const Tools::Output& output) {
    const std::string about = fmt::format("#{} from {} at {}", sample.sequence, sample.publisher,
                                          utcText(sample.receivedNs));
    return fmt::format("{}  {}\n{}\n", output.heading(sample.topic), output.dim(about),
                       sample.message->text());
}

std::string shown(const Sample& sample, const Options& options, const Tools::Output& output) {
    return options.json ? jsonLine(sample) : textBlock(sample, output);
}

ExitStatus echoRecording(const Options& options) {
    RecordingReader reader(options.recording.file);
    RecordedSamples samples;
    Recorded recorded;
    Limit limit(options);
    Tools::Output output;
    const auto& topics = options.topics;
    while (!limit.reached() && output.good() && reader.next(recorded)) {
        if (!topics.empty() &&
            std::find(topics.begin(), topics.end(), recorded.topic) == topics.end()) {
            continue;
        }
        const Sample sample = samples.sampleOf(recorded);
        if (sample.message == nullptr) {
            reader.fail("not a whole message of its type");
        }
        limit.count();
        output.write(shown(sample, options, output));
    }
    output.flush();
    return limit.status();
}

}  // namespace

ExitStatus echo(const Options& options) {
    if (!options.recording.file.empty()) {
        return echoRecording(options);
    }
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
        output.write(shown(sample, options, output));
    }
    output.flush();
    session.report(options.summary);
    return limit.status();
}

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/RecordingContents.h"

#include <fmt/format.h>

#include <algorithm>

#include "tools/bus/RecordedSamples.h"
#include "tools/bus/RecordingReader.h"
#include "tools/common/Quoted.h"

namespace Bus {
namespace {

constexpr size_t kMaxTopics = 1024;

}  // namespace

void RecordingContents::read(const std::string& path, RecordingContents& contents) {
    RecordingReader reader(path);
    RecordedSamples samples;
    Recorded sample;
    while (reader.next(sample)) {
        const auto known = contents.topics.find(sample.topic);
        if (known == contents.topics.end() && contents.topics.size() == kMaxTopics) {
            reader.fail(fmt::format("more than {} topics", kMaxTopics));
        }
        if (known != contents.topics.end() && known->second.typeName != sample.typeName) {
            reader.fail(fmt::format("the topic {} has two types", Tools::inQuotes(sample.topic)));
        }
        if (samples.knows(sample.typeName) && samples.messageOf(sample) == nullptr) {
            reader.fail(fmt::format("not a whole message of the type {}",
                                    Tools::inQuotes(sample.typeName)));
        }
        contents.add(sample);
    }
}

void RecordingContents::add(const Recorded& sample) {
    Topic& topic = topics[sample.topic];
    if (topic.samples == 0) {
        topic.typeName = sample.typeName;
        topic.firstNs = sample.sinceStartNs;
    }
    if (samples == 0) {
        firstReceivedNs = sample.receivedNs;
    }
    ++topic.samples;
    topic.bytes += sample.bytes.size();
    topic.lastNs = std::max(topic.lastNs, sample.sinceStartNs);
    ++samples;
    lastNs = std::max(lastNs, sample.sinceStartNs);
}

}  // namespace Bus

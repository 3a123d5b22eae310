// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/RecordedSamples.h"

namespace Bus {

Recorded RecordedSamples::recordedOf(const Sample& sample, int64_t sinceStartNs) {
    Recorded recorded;
    recorded.sinceStartNs = sinceStartNs;
    recorded.sentNs = sample.sentNs;
    recorded.receivedNs = sample.receivedNs;
    recorded.sequence = sample.sequence;
    recorded.topic = sample.topic;
    recorded.typeName = sample.typeName;
    recorded.publisher = sample.publisher;
    recorded.bytes = codec(sample.typeName).bytesOf(*sample.message);
    return recorded;
}

std::unique_ptr<Message> RecordedSamples::messageOf(const Recorded& recorded) {
    return codec(recorded.typeName).messageOf(recorded.bytes);
}

Sample RecordedSamples::sampleOf(const Recorded& recorded) {
    Sample sample;
    sample.topic = recorded.topic;
    sample.typeName = recorded.typeName;
    sample.publisher = recorded.publisher;
    sample.sequence = recorded.sequence;
    sample.sentNs = recorded.sentNs;
    sample.receivedNs = recorded.receivedNs;
    sample.message = messageOf(recorded);
    return sample;
}

const Codec& RecordedSamples::codec(const std::string& typeName) {
    const auto known = m_codecs.find(typeName);
    return known != m_codecs.end() ? known->second
                                   : m_codecs.emplace(typeName, Codec(typeName)).first->second;
}

}  // namespace Bus

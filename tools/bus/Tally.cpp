// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Tally.h"

#include <fmt/format.h>

namespace Bus {

void Tally::add(const Sample& sample) {
    Counts& counts = m_topics[sample.topic];
    if (sample.message == nullptr) {
        ++counts.unreadable;
        return;
    }
    ++counts.samples;
    const auto [last, isFirst] = m_lastSequence.try_emplace(sample.writer, sample.sequence);
    if (!isFirst && sample.sequence > last->second) {
        counts.lost += sample.sequence - last->second - 1;
        last->second = sample.sequence;
    }
}

std::string Tally::summary() const {
    std::string text;
    for (const auto& [topic, counts] : m_topics) {
        text += line(topic, counts);
    }
    return text.empty() ? "no samples\n" : text;
}

std::string Tally::problems() const {
    std::string text;
    for (const auto& [topic, counts] : m_topics) {
        text += counts.lost + counts.unreadable > 0 ? line(topic, counts) : "";
    }
    return text;
}

bool Tally::hasUnreadable(const std::string& topic) const {
    const auto found = m_topics.find(topic);
    return found != m_topics.end() && found->second.unreadable > 0;
}

std::string Tally::line(const std::string& topic, const Counts& counts) {
    return fmt::format("{}: {} samples, {} lost, {} unreadable\n", topic, counts.samples,
                       counts.lost, counts.unreadable);
}

}  // namespace Bus

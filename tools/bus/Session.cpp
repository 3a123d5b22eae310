// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/Session.h"

#include <fmt/format.h>

#include <cstdio>

#include "utility/Console.h"

namespace Bus {
namespace {

std::vector<Topic> topicsOf(const ConnectionsFile& file, const std::vector<std::string>& names) {
    std::vector<Topic> topics;
    for (const std::string& name : names) {
        topics.push_back(file.get(name));
    }
    return topics;
}

}  // namespace

Session::Session(const Options& options) : Session(options, ConnectionsFile(options.connections)) {
}

Session::Session(const Options& options, const ConnectionsFile& file)
    : Session(options, file,
              options.topics.empty() ? file.topics() : topicsOf(file, options.topics),
              options.topics.empty()) {
}

Session::Session(const Options& options, const ConnectionsFile& file,
                 const std::vector<std::string>& topics)
    : Session(options, file, topicsOf(file, topics), false) {
}

Session::Session(const Options& options, const ConnectionsFile& file,
                 const std::vector<Topic>& topics, bool wantsAll)
    : m_wantsAll(wantsAll), m_bus(file.counterpart(options.listen), kParticipantName) {
    for (const Topic& topic : topics) {
        subscribe(topic);
    }
}

bool Session::next(Sample& sample, std::chrono::nanoseconds timeout) {
    if (m_wantsAll) {
        subscribeNewTopics();
    }
    Sample fetched;
    if (!m_samples.pop_front(fetched, timeout) || !isReadable(fetched)) {
        return false;
    }
    sample = std::move(fetched);
    return true;
}

bool Session::isReadable(const Sample& sample) {
    const bool isReadable = sample.message != nullptr;
    if (!isReadable && !m_tally.hasUnreadable(sample.topic)) {
        Console::errorLine(fmt::format("rovan-bus: {}: a sample could not be read", sample.topic));
    }
    m_tally.add(sample);
    return isReadable;
}

void Session::report(bool summary) const {
    std::string text = summary ? m_tally.summary() : m_tally.problems();
    if (m_dropped > 0) {
        text +=
            fmt::format("rovan-bus: {} samples dropped, they came too fast\n", m_dropped.load());
    }
    std::fputs(text.c_str(), stderr);
}

void Session::subscribe(const Topic& topic) {
    if (!m_subscribed.insert(topic.name).second) {
        return;
    }
    try {
        m_bus.subscribe(topic, [this](Sample sample) {
            if (!m_samples.push_back(std::move(sample))) {
                ++m_dropped;
            }
        });
    } catch (const UsageError& problem) {
        if (!m_wantsAll) {
            throw;
        }
        Console::errorLine(fmt::format("rovan-bus: {}", problem.what()));
    }
}

void Session::subscribeNewTopics() {
    const uint64_t changes = m_bus.directory().changes();
    if (changes == m_changesSeen) {
        return;
    }
    m_changesSeen = changes;
    for (const FoundTopic& found : m_bus.directory().topics()) {
        if (!found.publishers.empty()) {
            subscribe(topicOf(found));
        }
    }
}

}  // namespace Bus

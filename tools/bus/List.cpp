// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>

#include "tools/bus/Bus.h"
#include "tools/bus/Commands.h"
#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/Limit.h"
#include "tools/common/Output.h"
#include "utility/Sleep.h"

namespace Bus {
namespace {

// The topics of the file that nobody publishes or subscribes.
void addUnused(std::vector<FoundTopic>& topics, const ConnectionsFile& file) {
    for (const Topic& topic : file.topics()) {
        const bool isUsed =
            std::any_of(topics.begin(), topics.end(),
                        [&topic](const FoundTopic& found) { return found.name == topic.name; });
        if (!isUsed) {
            topics.push_back({topic.name, topic.typeName, {}, {}});
        }
    }
}

std::string jsonLines(const std::vector<FoundTopic>& topics) {
    std::string text;
    for (const FoundTopic& topic : topics) {
        Json line;
        line["topic"] = topic.name;
        line["type"] = topic.typeName;
        line["publishers"] = topic.publishers;
        line["subscribers"] = topic.subscribers;
        text += toLine(line) + '\n';
    }
    return text;
}

std::string namesOf(const std::vector<std::string>& participants) {
    return participants.empty() ? "-" : fmt::format("{}", fmt::join(participants, ","));
}

std::string table(const std::vector<FoundTopic>& topics, const Tools::Output& output) {
    size_t name = 5;
    size_t type = 4;
    size_t publishers = 10;
    for (const FoundTopic& topic : topics) {
        name = std::max(name, topic.name.size());
        type = std::max(type, topic.typeName.size());
        publishers = std::max(publishers, namesOf(topic.publishers).size());
    }
    std::string text =
        output.heading(fmt::format("{:<{}}  {:<{}}  {:<{}}  {}", "topic", name, "type", type,
                                   "publishers", publishers, "subscribers")) +
        '\n';
    for (const FoundTopic& topic : topics) {
        text += fmt::format("{:<{}}  {:<{}}  {:<{}}  {}\n", topic.name, name, topic.typeName, type,
                            namesOf(topic.publishers), publishers, namesOf(topic.subscribers));
    }
    return text;
}

}  // namespace

ExitStatus list(const Options& options) {
    const ConnectionsFile file(options.connections);
    const Bus bus(file.counterpart(options.listen), kParticipantName);
    Options waiting = options;
    if (waiting.durationSeconds <= 0) {
        waiting.durationSeconds = file.discoverySeconds();
    }
    const Limit limit(waiting);
    while (!limit.reached()) {
        Utility::sleepFor(limit.patience());
    }
    std::vector<FoundTopic> topics = bus.directory().topics();
    const bool foundAny = !topics.empty();
    if (options.all) {
        addUnused(topics, file);
    }
    Tools::Output output;
    output.write(options.json ? jsonLines(topics) : table(topics, output));
    output.flush();
    return foundAny ? kOk : kNothingSeen;
}

}  // namespace Bus

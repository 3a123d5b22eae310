// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "tools/bus/Commands.h"
#include "tools/bus/Player.h"
#include "tools/bus/RecordingContents.h"
#include "tools/bus/Settled.h"
#include "tools/common/Quoted.h"
#include "tools/common/StopSignals.h"
#include "utility/Console.h"

namespace Bus {
namespace {

using Tools::inQuotes;
using Topics = std::map<std::string, RecordingContents::Topic>;

// A command that is sent once more is a command: it may zeroize a receiver.
bool mustBeNamed(const std::string& name, const RecordingContents::Topic& topic) {
    return name == "Command" || name == "Response" ||
           topic.typeName == "aspn2_msgs::idl::CommandResponse";
}

// The whole file is checked before the first sample goes out.
RecordingContents contentsOf(const RecordingOptions& options) {
    RecordingContents contents;
    try {
        RecordingContents::read(options.file, contents);
    } catch (const UsageError& damage) {
        if (!options.partial || contents.samples == 0) {
            throw;
        }
        Console::errorLine(fmt::format("rovan-bus: {}", damage.what()));
        Console::errorLine(
            fmt::format("rovan-bus: playing the {} samples before that", contents.samples));
    }
    return contents;
}

Topics chosen(const RecordingContents& contents, const std::vector<std::string>& names) {
    Topics topics;
    for (const std::string& name : names) {
        const auto found = contents.topics.find(name);
        if (found == contents.topics.end()) {
            throw UsageError(fmt::format("the recording has no topic {}", inQuotes(name)));
        }
        topics.insert(*found);
    }
    if (!names.empty()) {
        return topics;
    }
    for (const auto& [name, topic] : contents.topics) {
        if (mustBeNamed(name, topic)) {
            Console::errorLine(fmt::format(
                "rovan-bus: {} is left out, it is played only when named", inQuotes(name)));
        } else if (makeMessage(topic.typeName) == nullptr) {
            Console::errorLine(fmt::format("rovan-bus: {} is left out, its type {} is unknown",
                                           inQuotes(name), inQuotes(topic.typeName)));
        } else {
            topics.emplace(name, topic);
        }
    }
    return topics;
}

}  // namespace

ExitStatus play(const Options& options) {
    const RecordingContents contents = contentsOf(options.recording);
    const ConnectionsFile file(options.connections);
    const Topics topics = chosen(contents, options.topics);
    if (topics.empty()) {
        Console::errorLine("rovan-bus: there is nothing to play");
        return kNothingSeen;
    }
    Session session(options, file, {});
    Player player(session, options, file.settings().historyDepth);
    for (const auto& [name, topic] : topics) {
        const Topic* const known = file.find(name);
        if (known != nullptr && known->typeName != topic.typeName) {
            throw UsageError(fmt::format("the topic {} has the type {} in {}, but {} in {}", name,
                                         topic.typeName, options.recording.file, known->typeName,
                                         file.path()));
        }
        player.add(topicOf({name, topic.typeName, {}, {}}));
    }
    const double patience = options.recording.patienceSeconds > 0
                                ? options.recording.patienceSeconds
                                : 2 * file.discoverySeconds();
    if (!waitUntilSettled(
            session.directory(), [&] { return player.hasSubscribers(); }, patience)) {
        Console::errorLine(Tools::StopSignals::arrived()
                               ? "rovan-bus: interrupted, nothing was played"
                               : "rovan-bus: nobody subscribes to what the recording has; nothing "
                                 "was played");
        return kNothingSeen;
    }
    const ExitStatus status = player.play(contents);
    Console::line(fmt::format("played {} samples of {} topics", player.played(), topics.size()));
    return status;
}

}  // namespace Bus

// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "tools/bus/CommandMessage.h"
#include "tools/bus/Commands.h"
#include "tools/bus/JsonLine.h"
#include "tools/bus/Limit.h"
#include "tools/bus/Session.h"
#include "tools/bus/Settled.h"
#include "tools/bus/Text.h"
#include "tools/common/Output.h"
#include "tools/common/StopSignals.h"
#include "utility/Console.h"

namespace Bus {
namespace {

using Clock = Limit::Clock;

constexpr const char* kCommand = "Command";
constexpr const char* kResponse = "Response";
constexpr const char* kType = "aspn2_msgs::idl::CommandResponse";

// Longer than the bus takes to notice that a subscriber has died.
constexpr double kTakenSeconds = 10;

void checkTogether(const Options& options) {
    if (options.send.wait && options.send.asResponse) {
        throw UsageError("--wait is for commands, nobody answers a response");
    }
    if (!options.send.wait && (options.count != 0 || !options.send.until.empty())) {
        throw UsageError("--until and --count say when to end the --wait, which is missing");
    }
}

bool hasPublisher(const Directory& directory, const char* topic) {
    const auto topics = directory.topics();
    return std::any_of(topics.begin(), topics.end(), [&](const FoundTopic& found) {
        return found.name == topic && found.typeName == kType && !found.publishers.empty();
    });
}

// Waits for somebody who listens, and answers if that is wanted. Says so when there is nobody.
bool waitForListeners(const Session& session, const Publisher& publisher, const Topic& topic,
                      bool wantsAnswers, double seconds) {
    bool listens = false;
    bool answers = false;
    const auto isComplete = [&] {
        listens = publisher.subscribers() > 0;
        answers = !wantsAnswers || hasPublisher(session.directory(), kResponse);
        return listens && answers;
    };
    if (waitUntilSettled(session.directory(), isComplete, seconds)) {
        return true;
    }
    if (Tools::StopSignals::arrived()) {
        Console::errorLine("rovan-bus: interrupted, nothing was sent");
        return false;
    }
    if (!listens || !answers) {
        Console::errorLine(fmt::format("rovan-bus: nobody {} the topic {}; nothing was sent",
                                       listens ? "publishes" : "subscribes to",
                                       listens ? kResponse : topic.name));
    }
    return listens && answers;
}

bool waitUntilTaken(Publisher& publisher, double seconds) {
    Options patience;
    patience.durationSeconds = seconds;
    const Limit limit(patience);
    bool taken = false;
    while (!taken && !limit.reached()) {
        taken = publisher.waitUntilTaken(limit.patience());
    }
    if (!taken) {
        Console::errorLine("rovan-bus: sent, but a subscriber has not confirmed that it came");
    }
    return taken;
}

bool endsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

ExitStatus showAnswers(Session& session, const idl::CommandResponse& command,
                       Clock::time_point sent, const Options& options) {
    const std::vector<std::string>& until = options.send.until;
    Limit limit(options);
    Tools::Output output;
    Sample sample;
    while (!limit.reached() && output.good()) {
        if (!session.next(sample, limit.patience())) {
            continue;
        }
        const auto& response = *static_cast<const idl::CommandResponse*>(sample.message->data());
        if (!isAnswer(response, command)) {
            continue;
        }
        limit.count();
        const std::string& text = response.command_response();
        const std::chrono::duration<double> elapsed = sample.arrival - sent;
        output.write(options.json ? jsonLine(sample)
                                  : fmt::format("{:9.3f} s  {}: {}\n", elapsed.count(),
                                                sample.publisher, inQuotes(text)));
        output.flush();
        if (std::any_of(until.begin(), until.end(),
                        [&](const std::string& suffix) { return endsWith(text, suffix); })) {
            return kOk;
        }
    }
    session.report(false);
    const ExitStatus status =
        until.empty() || Tools::StopSignals::arrived() ? limit.status() : kNothingSeen;
    if (status == kNothingSeen) {
        Console::errorLine(fmt::format("rovan-bus: {} in {} s",
                                       limit.seen() == 0 ? "no answer" : "not the answer awaited",
                                       options.durationSeconds));
    }
    return status;
}

}  // namespace

ExitStatus send(const Options& options) {
    checkTogether(options);
    const SendOptions& what = options.send;
    const ConnectionsFile file(options.connections);
    const Topic& topic = topicOfCommands(file, what.asResponse ? kResponse : kCommand);
    std::vector<std::string> answers;
    if (what.wait) {
        answers.push_back(topicOfCommands(file, kResponse).name);
    }
    // First the ears, then the voice.
    Session session(options, file, answers);
    Publisher& publisher = session.publish(topic);
    const double patience =
        what.patienceSeconds > 0 ? what.patienceSeconds : 2 * file.discoverySeconds();
    if (!waitForListeners(session, publisher, topic, what.wait, patience)) {
        return kNothingSeen;
    }

    idl::CommandResponse message = messageOf(what);
    const Clock::time_point sent = Clock::now();
    if (!publisher.write(&message)) {
        Console::errorLine("rovan-bus: the bus library did not take the message");
        return kNothingSeen;
    }
    if (!options.json) {
        Console::line(fmt::format("sent {} to the topic {}, identifier {}, subscribers {}",
                                  inQuotes(what.text), topic.name, message.command_identifier(),
                                  publisher.subscribers()));
    }
    if (what.wait) {
        return showAnswers(session, message, sent, options);
    }
    return waitUntilTaken(publisher, kTakenSeconds) ? kOk : kNothingSeen;
}

}  // namespace Bus

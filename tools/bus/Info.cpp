// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>
#include <exception>

#include "tools/bus/Commands.h"
#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/Json.h"
#include "tools/bus/RecordingContents.h"
#include "tools/bus/UtcText.h"
#include "tools/common/Output.h"
#include "tools/common/Quoted.h"

namespace Bus {
namespace {

double seconds(int64_t ns) {
    return static_cast<double>(ns) / 1e9;
}

std::string jsonLines(const RecordingContents& contents) {
    std::string text;
    for (const auto& [name, topic] : contents.topics) {
        Json line;
        line["topic"] = name;
        line["type"] = topic.typeName;
        line["samples"] = topic.samples;
        line["bytes"] = topic.bytes;
        line["first_s"] = seconds(topic.firstNs);
        line["last_s"] = seconds(topic.lastNs);
        text += toLine(line) + '\n';
    }
    return text;
}

// Names that a file made of anything may hold are not let loose on a terminal.
std::string printable(const std::string& text) {
    const std::string quoted = Tools::inQuotes(text);
    return quoted.substr(1, quoted.size() - 2);
}

std::string table(const RecordingContents& contents, const Tools::Output& output) {
    size_t name = 5;
    size_t type = 4;
    for (const auto& [topic, what] : contents.topics) {
        name = std::max(name, printable(topic).size());
        type = std::max(type, printable(what.typeName).size());
    }
    std::string text =
        fmt::format("{} samples in {:.3f} s", contents.samples, seconds(contents.lastNs));
    text += contents.samples > 0 ? ", the first at " + utcText(contents.firstReceivedNs) : "";
    text += '\n' +
            output.heading(fmt::format("{:<{}}  {:<{}} {:>9} {:>11} {:>10} {:>10}", "topic", name,
                                       "type", type, "samples", "bytes", "first s", "last s")) +
            '\n';
    for (const auto& [topic, what] : contents.topics) {
        text += fmt::format("{:<{}}  {:<{}} {:>9} {:>11} {:>10.3f} {:>10.3f}\n", printable(topic),
                            name, printable(what.typeName), type, what.samples, what.bytes,
                            seconds(what.firstNs), seconds(what.lastNs));
    }
    return text;
}

}  // namespace

ExitStatus info(const Options& options) {
    RecordingContents contents;
    std::exception_ptr damage;
    try {
        RecordingContents::read(options.recording.file, contents);
    } catch (const UsageError&) {
        damage = std::current_exception();
    }
    if (damage == nullptr || contents.samples > 0) {
        Tools::Output output;
        output.write(options.json ? jsonLines(contents) : table(contents, output));
        output.flush();
    }
    if (damage != nullptr) {
        std::rethrow_exception(damage);
    }
    return contents.samples > 0 ? kOk : kNothingSeen;
}

}  // namespace Bus

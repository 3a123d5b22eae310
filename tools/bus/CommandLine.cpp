// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <utility>

#include "tools/bus/Commands.h"
#include "tools/bus/ConnectionsFile.h"
#include "tools/common/StopSignals.h"
#include "utility/Console.h"

namespace Bus {
namespace {

constexpr const char* kFooter =
    "Exit status: 0 good; 1 nothing seen or nobody there in time (or fewer than --count);\n"
    "2 wrong arguments, a wrong file, an unknown topic or a bus that cannot be joined.";

constexpr const char* kEchoFooter =
    "Each JSON line has topic, type, publisher, sequence, sent_ns and received_ns (Unix\n"
    "time) and the message with every field. Enumerations are numbers, character arrays\n"
    "are texts; \"Infinity\", \"-Infinity\" and \"NaN\" stand as strings.";

constexpr const char* kHzFooter =
    "Reckoned from the times of arrival of the last --window seconds. A dash, in JSON\n"
    "null, stands where there are fewer than two samples.";

constexpr const char* kListFooter =
    "Waits 3 seconds, on TCP 10, for everybody to be heard of, unless --duration says\n"
    "otherwise. Publishers and subscribers are the names of participants.";

constexpr const char* kSendFooter =
    "An answer has the command's identifier and names its device id. Without --wait it\n"
    "ends once everybody who listens has the command. Time stamps are Unix time.\n"
    "  rovan-bus send ROVAN_DESTROY --wait 700 --until _PASS,_FAIL\n"
    "  rovan-bus send REQUEST_COMPONENT_CBIT_PASS --as-response --server 47";

constexpr const char* kWatchFooter =
    "In it ? shows the keys. A number that is not valid or not known is --, one that is older\n"
    "than three of its periods is marked STALE. Position as sent, and in degrees if that is\n"
    "radians; the sky by azimuth and elevation if these are degrees. q or Ctrl-C ends it.";

constexpr const char* kRecordFooter =
    "Ctrl-C ends the recording. A recording that was cut off lacks its end mark, and info\n"
    "and play say so. Nothing is published.";

constexpr const char* kPlayFooter =
    "The whole file is checked before the first sample goes out. The samples are those of\n"
    "the recording to the last bit, time stamps and sequence numbers too. Topics of commands\n"
    "and responses are played only when they are named: they may zeroize a receiver.";

constexpr const char* kInfoFooter =
    "Reads and checks the whole file. Of a damaged one it shows what stands before the\n"
    "damage and says where that is; the exit status is 2.";

constexpr const char* kDefaultWaitSeconds = "10";

void addFooter(CLI::App& command, const char* footer) {
    command.footer(std::string(footer) + "\n\n" + kFooter);
}

void addConnections(CLI::App& command, Options& options) {
    command.add_option("-c,--connections", options.connections, "connections file of the server")
        ->type_name("FILE")
        ->capture_default_str();
    command.add_flag("--listen", options.listen,
                     "with a TCP_Client file: wait for the server to connect");
}

void addJson(CLI::App& command, Options& options) {
    command.add_flag("-j,--json", options.json, "one JSON object a line");
}

void addCommon(CLI::App& command, Options& options, const char* footer) {
    addConnections(command, options);
    addJson(command, options);
    addFooter(command, footer);
}

void addDuration(CLI::App& command, Options& options) {
    command.add_option("-d,--duration", options.durationSeconds, "end after so many seconds")
        ->type_name("S")
        ->check(CLI::PositiveNumber);
}

void addCount(CLI::App& command, Options& options, const char* what) {
    command.add_option("-n,--count", options.count, what)
        ->type_name("N")
        ->check(CLI::PositiveNumber);
}

// What the commands that fetch samples have besides.
void addSampling(CLI::App& command, Options& options) {
    command.add_option("TOPIC", options.topics, "topics of the file; without any, all on the bus");
    addCount(command, options, "end after so many samples");
    addDuration(command, options);
    command.add_flag("-s,--summary", options.summary,
                     "at the end, count samples and losses on standard error");
}

CLI::App* addSend(CLI::App& app, Options& options) {
    // Signed or not, decimal or hexadecimal.
    const auto thirtyTwoBits =
        CLI::Range(std::int64_t{INT32_MIN}, std::int64_t{UINT32_MAX}).description("");
    SendOptions& what = options.send;
    CLI::App* const command = app.add_subcommand("send", "Sends a command and shows the answers.");
    command->add_option("TEXT", what.text, "the command, with its arguments")->required();
    command->add_option("-w,--wait", options.durationSeconds, "show the answers of S seconds")
        ->type_name("S")
        ->expected(0, 1)
        ->default_str(kDefaultWaitSeconds)
        ->check(CLI::PositiveNumber)
        ->each([&what](const std::string&) { what.wait = true; });
    command->add_option("-u,--until", what.until, "end with an answer that ends like this")
        ->type_name("END[,END]")
        ->allow_extra_args(false)
        ->delimiter(',');
    addCount(*command, options, "end after so many answers");
    command->add_flag("-r,--as-response", what.asResponse, "send a response, not a command");
    command->add_option("--device-id", what.deviceId, "the sender [0x00FF0200]")
        ->type_name("ID")
        ->check(thirtyTwoBits);
    command->add_option("--server", what.server, "the server number in the sender's id")
        ->type_name("N")
        ->check(CLI::Range(0, 255));
    command->add_option("--to", what.to, "the commanded device [0]")
        ->type_name("ID")
        ->check(thirtyTwoBits);
    command->add_option("--identifier", what.identifier, "of the command [a new one]")
        ->type_name("N")
        ->check(thirtyTwoBits);
    command->add_option("--patience", what.patienceSeconds, "for somebody who listens [6, TCP 20]")
        ->type_name("S")
        ->check(CLI::PositiveNumber);
    addCommon(*command, options, kSendFooter);
    return command;
}

double numberIn(const std::string& text, double least, double most, const char* option) {
    double number = 0;
    // Not a number is in no range.
    if (!CLI::detail::lexical_cast(text, number) || !(number >= least && number <= most)) {
        throw CLI::ValidationError(
            option, fmt::format("\"{}\" is no number from {} to {}", text, least, most));
    }
    return number;
}

// "80x24"
void readSize(const std::string& text, WatchOptions& options) {
    const size_t by = text.find('x');
    const auto part = [&](size_t start, size_t count) {
        return static_cast<int>(
            numberIn(text.substr(std::min(start, text.size()), count), 20, 500, "--size"));
    };
    options.width = part(0, by);
    options.height = part(by == std::string::npos ? by : by + 1, std::string::npos);
}

CLI::App* addWatch(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("watch", "A live view of everything.");
    command->add_option("TOPIC", options.topics, "topics of the file; without any, all on the bus");
    addDuration(*command, options);
    command->add_flag("--once", options.watch.once,
                      "print one screen as text, after the duration [5, TCP 12]");
    command
        ->add_option_function<std::string>(
            "--size", [&options](const std::string& text) { readSize(text, options.watch); },
            "of that screen [80x24]")
        ->type_name("COLUMNSxLINES");
    command->add_flag("-s,--summary", options.summary,
                      "at the end, count samples and losses on standard error");
    addConnections(*command, options);
    addFooter(*command, kWatchFooter);
    return command;
}

void addRecording(CLI::App& command, Options& options) {
    command.add_option("FILE", options.recording.file, "the recording")->required();
}

CLI::App* addRecord(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("record", "Records samples in a file.");
    addRecording(*command, options);
    addSampling(*command, options);
    command->add_flag("-f,--force", options.recording.force, "replace a file that exists");
    addConnections(*command, options);
    addFooter(*command, kRecordFooter);
    return command;
}

CLI::App* addPlay(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("play", "Publishes the samples of a recording.");
    addRecording(*command, options);
    command->add_option("TOPIC", options.topics, "topics of the recording; without any, all");
    double& speed = options.recording.speed;
    command
        ->add_option_function<std::string>(
            "--speed",
            [&speed](const std::string& text) {
                speed = text == "max" ? 0 : numberIn(text, 0.001, 1e6, "--speed");
            },
            "times the original one, or max [1]")
        ->type_name("X");
    addCount(*command, options, "end after so many samples");
    addDuration(*command, options);
    command->add_flag("--partial", options.recording.partial,
                      "of a damaged file play what stands before the damage");
    command
        ->add_option("--patience", options.recording.patienceSeconds,
                     "for somebody who listens [6, TCP 20]")
        ->type_name("S")
        ->check(CLI::PositiveNumber);
    addConnections(*command, options);
    addFooter(*command, kPlayFooter);
    return command;
}

}  // namespace

int run(int argc, char** argv) {
    Tools::StopSignals::install();
    Options options;
    options.connections = defaultConnections();

    CLI::App app("Shows what is on the bus of a server, and sends commands.", "rovan-bus");
    app.require_subcommand(1);
    app.footer(kFooter);
    CLI::App* const echoCommand = app.add_subcommand("echo", "Shows every field of every sample.");
    addSampling(*echoCommand, options);
    echoCommand->add_option("--file", options.recording.file, "a recording in place of the bus")
        ->type_name("FILE");
    addCommon(*echoCommand, options, kEchoFooter);
    CLI::App* const hzCommand = app.add_subcommand("hz", "Shows how often topics are published.");
    addSampling(*hzCommand, options);
    hzCommand->add_option("--every", options.everySeconds, "seconds between two reports")
        ->type_name("S")
        ->check(CLI::Range(0.05, 86400.0))
        ->capture_default_str();
    hzCommand->add_option("--window", options.windowSeconds, "seconds to look back")
        ->type_name("S")
        ->check(CLI::Range(0.05, 3600.0))
        ->capture_default_str();
    addCommon(*hzCommand, options, kHzFooter);
    CLI::App* const listCommand = app.add_subcommand("list", "Lists the topics and who uses them.");
    listCommand->add_flag("-a,--all", options.all, "also the topics of the file that nobody uses");
    addDuration(*listCommand, options);
    addCommon(*listCommand, options, kListFooter);
    CLI::App* const sendCommand = addSend(app, options);
    CLI::App* const watchCommand = addWatch(app, options);
    CLI::App* const recordCommand = addRecord(app, options);
    CLI::App* const playCommand = addPlay(app, options);
    CLI::App* const infoCommand = app.add_subcommand("info", "Shows what is in a recording.");
    addRecording(*infoCommand, options);
    addJson(*infoCommand, options);
    addFooter(*infoCommand, kInfoFooter);

    try {
        app.parse(argc, argv);
        const std::pair<CLI::App*, ExitStatus (*)(const Options&)> commands[] = {
            {echoCommand, echo}, {hzCommand, hz},         {listCommand, list},
            {sendCommand, send}, {recordCommand, record}, {playCommand, play},
            {infoCommand, info}, {watchCommand, watch},
        };
        const auto wanted = std::find_if(std::begin(commands), std::end(commands),
                                         [](const auto& row) { return row.first->parsed(); });
        return wanted->second(options);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? kOk : kUsage;
    } catch (const std::exception& problem) {
        Console::errorLine(fmt::format("rovan-bus: {}", problem.what()));
        return kUsage;
    }
}

}  // namespace Bus

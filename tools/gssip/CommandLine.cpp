// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "tools/common/StopSignals.h"
#include "tools/gssip/Commands.h"
#include "utility/Console.h"

namespace GssipTool {
namespace {

constexpr const char* kFooter =
    "Exit status: 0 good; 1 errors in the data, or no data; 2 wrong arguments, what cannot be\n"
    "read or written, a line that was hung up. See gssip(1).";

constexpr const char* kDecodeFooter =
    "INPUT is a raw capture, a recording, a serial line or a pseudo-terminal. Skipped bytes\n"
    "are always shown. JSON has one object a line: frames with fields and raw words, bytes\n"
    "that belong to no frame, a summary. gssip messages tells the fields.";

constexpr const char* kEncodeFooter =
    "What gssip decode --json gave comes back byte for byte. A changed field wins over raw\n"
    "words; checksums are computed unless given. Written by hand, this is enough:\n"
    "  {\"id\":5001,\"fields\":{\"command\":5}}\n"
    "  {\"id\":8504,\"flags\":[\"marker\",\"ack-request\",\"connect\"]}\n"
    "  {\"bytes\":\"ff81 0000\"}";

constexpr const char* kRecordFooter =
    "Ends on Ctrl-C, SIGTERM, after --duration or with the line. Every block is written at\n"
    "once, with the time when it came.";

constexpr const char* kPlayFooter =
    "Without LINE it makes a pseudo-terminal, prints its path and starts when somebody has\n"
    "opened it. A recording keeps its times; a raw capture takes the time that the line\n"
    "would need at --baud. What the other side sends is thrown away.";

void addFooter(CLI::App& command, const std::string& footer) {
    command.footer(footer + "\n\n" + kFooter);
}

void addBaud(CLI::App& command, Options& options, const char* what) {
    command.add_option("-b,--baud", options.baud, what)
        ->type_name("BIT/S")
        ->check(CLI::PositiveNumber);
}

void addDuration(CLI::App& command, Options& options) {
    command.add_option("-d,--duration", options.durationSeconds, "end after so many seconds")
        ->type_name("S")
        ->check(CLI::PositiveNumber);
}

CLI::App* addDecode(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("decode", "Shows what a stream of bytes says.");
    command->add_option("INPUT", options.input, "file or line; - is standard input [-]");
    command->add_flag("-j,--json", options.json, "one JSON object a line");
    command->add_option("-i,--id", options.ids, "only these messages")
        ->type_name("ID[,ID]")
        ->delimiter(',')
        ->allow_extra_args(false);
    command->add_flag("-x,--hex", options.hex, "also the raw words, and the bytes skipped");
    CLI::Option* const only =
        command->add_flag("-s,--summary", options.summaryOnly, "only the summary");
    command->add_flag("-q,--no-summary", options.noSummary, "without the summary")->excludes(only);
    command->add_option("-n,--count", options.count, "end after so many frames")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    addDuration(*command, options);
    addBaud(*command, options, "set the speed of the line");
    addFooter(*command, kDecodeFooter);
    return command;
}

CLI::App* addEncode(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("encode", "Turns JSON lines into bytes again.");
    command->add_option("INPUT", options.input, "file; - is standard input [-]");
    command->add_flag("-r,--recording", options.recording, "write a recording, with the times");
    addFooter(*command, kEncodeFooter);
    return command;
}

CLI::App* addRecord(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("record", "Records a line, with times.");
    command->add_option("LINE", options.input, "serial line or pseudo-terminal")->required();
    command->add_option("FILE", options.output, "the recording; - is standard output")->required();
    command->add_flag("-f,--force", options.force, "write over a file that is there");
    addDuration(*command, options);
    addBaud(*command, options, "set the speed of the line");
    addFooter(*command, kRecordFooter);
    return command;
}

CLI::App* addPlay(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("play", "Plays a recording or a raw capture.");
    command->add_option("FILE", options.input, "what to play; - is standard input")->required();
    command->add_option("LINE", options.output, "play on this line");
    command->add_option("-l,--link", options.link, "a name for the pseudo-terminal")
        ->type_name("PATH");
    command->add_option("-s,--speed", options.speed, "times as fast, or max [1]")->type_name("X");
    command->add_flag("--loop", options.loop, "again and again");
    command->add_flag("--no-wait", options.noWait, "start before somebody has opened it");
    addDuration(*command, options);
    addBaud(*command, options, "speed of the line [115200]");
    addFooter(*command, kPlayFooter);
    return command;
}

CLI::App* addMessages(CLI::App& app, Options& options) {
    CLI::App* const command = app.add_subcommand("messages", "Lists the messages and fields.");
    command->add_option("ID", options.ids, "the fields of these messages")->type_name("");
    addFooter(*command, "Words are counted from 0, the first data word.");
    return command;
}

}  // namespace

int run(int argc, char** argv) {
    Tools::StopSignals::install();
    Options options;
    CLI::App app("Reads, writes, records and plays the serial protocol of the receiver.", "gssip");
    app.require_subcommand(1);
    app.footer(kFooter);
    const CLI::App* const decodeCommand = addDecode(app, options);
    const CLI::App* const encodeCommand = addEncode(app, options);
    const CLI::App* const recordCommand = addRecord(app, options);
    const CLI::App* const playCommand = addPlay(app, options);
    addMessages(app, options);
    try {
        app.parse(argc, argv);
        return decodeCommand->parsed()   ? decode(options)
               : encodeCommand->parsed() ? encode(options)
               : recordCommand->parsed() ? record(options)
               : playCommand->parsed()   ? play(options)
                                         : messages(options);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? kGood : kFailed;
    } catch (const std::exception& problem) {
        Console::errorLine(fmt::format("gssip: {}", problem.what()));
        return kFailed;
    }
}

}  // namespace GssipTool

// SPDX-License-Identifier: Apache-2.0
#include "tools/config/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "tools/config/Check.h"
#include "tools/config/Init.h"
#include "tools/config/Report.h"
#include "utility/Console.h"

namespace Config {
namespace {

// How a command ends, for the shell.
enum ExitStatus { kClean = 0, kProblems = 1, kUsage = 2 };

constexpr const char* kFooter =
    "Exit status: 0 clean, or warnings alone; 1 errors, with --strict also warnings;\n"
    "2 wrong arguments, no file to check, a directory that cannot be written.";

constexpr const char* kCheckFooter =
    "An error keeps the server from starting or lets it work otherwise than the file says;\n"
    "a warning is most likely not what was meant. Devices and bus are not touched.\n"
    "Each JSON line has severity, kind, file, line, container, key, problem, found,\n"
    "expected and suggestion; what does not apply is null.";

struct Options {
    std::string file;
    std::string startedIn;  // empty: in the directory of the file
    bool json = false;
    bool strict = false;
    std::string directory;
    std::string transport = "udp";
    bool force = false;
};

// Throws when somebody did not get what was written.
void finish(Tools::Output& output) {
    output.flush();
    if (!output.good()) {
        throw std::runtime_error("standard output: " + output.problem());
    }
}

int runCheck(const Options& options) {
    // As the server's argument, FILE begins where the server is started.
    const std::filesystem::path file = std::filesystem::path(options.startedIn) / options.file;
    std::string directory =
        options.startedIn.empty() ? file.parent_path().string() : options.startedIn;
    if (directory.empty()) {
        directory = ".";
    }
    const CheckResult result = check(file.string(), directory);
    Tools::Output output;
    for (const Finding& finding : result.findings) {
        output.write(options.json ? jsonLine(finding) : textLine(finding, output));
    }
    if (!options.json && result.isReadable) {
        output.write(summary(result, directory, output));
    }
    finish(output);
    if (!result.isReadable) {
        return kUsage;
    }
    return result.errors() > 0 || (options.strict && result.warnings() > 0) ? kProblems : kClean;
}

int runInit(const Options& options) {
    const std::vector<std::string> paths =
        init(options.directory, options.transport, options.force);
    Tools::Output output;
    for (const std::string& path : paths) {
        output.write(fmt::format("wrote {}\n", path));
    }
    output.write(
        fmt::format("Next: edit them, then\n  rovan-config check {}\n"
                    "  cd {} && RovanServer rovan.xml\n",
                    paths.front(), options.directory));
    finish(output);
    return kClean;
}

}  // namespace

int run(int argc, char** argv) {
    Options options;
    CLI::App app("Checks the configuration of a server, and writes one to start from.",
                 "rovan-config");
    app.require_subcommand(1);
    app.footer(kFooter);

    CLI::App* const checkCommand =
        app.add_subcommand("check", "Looks at a top-level file and all files that it names.");
    checkCommand->add_option("FILE", options.file, "the file that the server is started with")
        ->required();
    checkCommand
        ->add_option("-C,--started-in", options.startedIn,
                     "where the server is started [the directory of FILE]")
        ->type_name("DIR")
        ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
    checkCommand->add_flag("-j,--json", options.json, "one JSON object a line");
    checkCommand->add_flag("-s,--strict", options.strict, "warnings count as errors");
    checkCommand->footer(std::string(kCheckFooter) + "\n\n" + kFooter);

    CLI::App* const initCommand =
        app.add_subcommand("init", "Writes a commented configuration to start from.");
    initCommand->add_option("DIR", options.directory, "where to; made if it is not there")
        ->required();
    initCommand->add_option("-t,--transport", options.transport, "how the bus is carried")
        ->type_name("udp|shm|tcp-server|tcp-client")
        ->check(CLI::IsMember(variants()).description(""))
        ->capture_default_str();
    initCommand->add_flag("-f,--force", options.force, "overwrite what is there");
    initCommand->footer(kFooter);

    try {
        app.parse(argc, argv);
        return checkCommand->parsed() ? runCheck(options) : runInit(options);
    } catch (const CLI::ParseError& problem) {
        return app.exit(problem) == 0 ? kClean : kUsage;
    } catch (const std::exception& problem) {
        Console::errorLine(fmt::format("rovan-config: {}", problem.what()));
        return kUsage;
    }
}

}  // namespace Config

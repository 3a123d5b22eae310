// SPDX-License-Identifier: Apache-2.0
// rovan-unit: the simulated unit with the server in it, at a desk.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/PrivateDev.h"
#include "simulator/SimulatedUnit.h"
#include "simulator/Summary.h"
#include "utility/Console.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

constexpr const char* kDefaultConfig = "config/udp/rovan.xml";
constexpr const char* kServerName = "RovanServer";

constexpr int kGood = 0;
constexpr int kNoUnit = 1;
constexpr int kServerFailed = 2;

struct Options {
    std::string config;
    std::string server;
    double duration = 0;
    bool noServer = false;
    bool quiet = false;
    bool paced = false;
    std::uint32_t seed = 1;
    double periodScale = 1;
    std::optional<double> gpsStart;
    std::vector<std::string> scenarios;
};

fs::path programDirectory() {
    return fs::read_symlink("/proc/self/exe").parent_path();
}

// The default configuration, below here or below a directory that this program lies in.
fs::path defaultConfig() {
    if (fs::exists(kDefaultConfig)) {
        return kDefaultConfig;
    }
    for (fs::path directory = programDirectory(); directory != directory.root_path();
         directory = directory.parent_path()) {
        if (fs::exists(directory / kDefaultConfig)) {
            return directory / kDefaultConfig;
        }
    }
    return kDefaultConfig;
}

Simulator::UnitOptions unitOptions(const Options& options) {
    Simulator::UnitOptions unit;
    unit.configFile = options.config.empty() ? defaultConfig() : fs::path(options.config);
    if (!options.noServer) {
        unit.server =
            options.server.empty() ? programDirectory() / kServerName : fs::path(options.server);
    }
    unit.passConsoleThrough = !options.quiet;
    unit.paced = options.paced;
    unit.receiver.seed = options.seed;
    unit.receiver.epoch = std::chrono::round<std::chrono::milliseconds>(
        options.periodScale * std::chrono::duration<double>(unit.receiver.epoch));
    unit.receiver.gpsStart = options.gpsStart;
    for (const std::string& file : options.scenarios) {
        unit.scenario.append(Simulator::Scenario::read(file));
    }
    return unit;
}

// What brings a second shell to where the devices are.
std::string shellCommand() {
    return "nsenter --target " + std::to_string(getpid()) +
           (geteuid() == 0 ? " --mount" : " --user --preserve-credentials --mount") +
           " env PATH=" + Simulator::PrivateDev::kDirectory + "/bin:$PATH sh";
}

bool terminalColours() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr &&
           terminal != nullptr && std::string(terminal) != "dumb";
}

sigset_t blockEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        sigaddset(&signals, number);
    }
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

int run(const Options& options) {
    // Blocked before there is any thread, so that only the wait below takes them.
    const sigset_t signals = blockEndSignals();
    Simulator::SimulatedUnit unit(unitOptions(options));
    const auto started = steady_clock::now();
    unit.start();
    Console::line("Simulated unit: " + unit.deployment().file.string() + ", receiver on " +
                  unit.line().device() + (options.noServer ? ", no server" : ", server started"));
    if (options.noServer) {
        Console::line("  a shell in its /dev: " + shellCommand());
    }

    const auto end = started + std::chrono::duration_cast<steady_clock::duration>(
                                   std::chrono::duration<double>(options.duration));
    const timespec rhythm{0, 100'000'000};
    bool endedByItself = false;
    while (options.duration <= 0 || steady_clock::now() < end) {
        if (sigtimedwait(&signals, nullptr, &rhythm) > 0) {
            break;
        }
        if (unit.server() != nullptr && unit.server()->waitFor(std::chrono::milliseconds(0))) {
            Console::errorLine("Simulated unit: the server has ended by itself");
            endedByItself = true;
            break;
        }
    }
    const auto serverEnd = unit.stop();
    Console::line(Simulator::summary(unit, serverEnd, started, terminalColours()));
    const bool good =
        unit.server() == nullptr || (!endedByItself && serverEnd && serverEnd->good());
    return good ? kGood : kServerFailed;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Runs the server in a simulated unit: receiver, FPGA, power switches and queue\n"
        "devices, all in a private /dev. Ends with Ctrl-C and prints a summary.\n");
    app.add_option("-c,--config", options.config,
                   std::string("Top-level configuration [") + kDefaultConfig + "]");
    app.add_option("-s,--server", options.server, "Server program [RovanServer beside this one]");
    app.add_option("-d,--duration", options.duration, "End after so many seconds")
        ->check(CLI::PositiveNumber);
    app.add_flag("-n,--no-server", options.noServer, "Only the unit; start the server yourself");
    app.add_flag("-q,--quiet", options.quiet, "Do not print what the server prints");
    app.add_flag("-p,--paced", options.paced, "Bytes take their time on the serial line");
    app.add_option("--seed", options.seed, "Choose other satellites and other noise");
    app.add_option("--period-scale", options.periodScale, "All periods of reports, times this [1]")
        ->type_name("FACTOR")
        ->check(CLI::Range(0.02, 10.0));
    app.add_option("--gps-start", options.gpsStart, "GPS time at the start [the clock's]")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 1e10));
    app.add_option("--scenario", options.scenarios,
                   "What the receiver is to do, see docs/scenarios.md")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.footer(
        "\nExit status: 0 the server ended in order when told to, 1 the unit could not be\n"
        "set up, 2 the server failed or ended by itself; above 100 wrong usage.");
    CLI11_PARSE(app, argc, argv);
    try {
        if (const std::optional<int> status = Simulator::PrivateDev::enter()) {
            return *status;
        }
        return run(options);
    } catch (const std::exception& error) {
        Console::errorLine(std::string("rovan-unit: ") + error.what());
        return kNoUnit;
    }
}

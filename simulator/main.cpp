// SPDX-License-Identifier: Apache-2.0
// rovan-unit: the simulated unit with the server in it, at a desk.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simulator/BusLedger.h"
#include "simulator/ControlInput.h"
#include "simulator/LedgerText.h"
#include "simulator/PrivateDev.h"
#include "simulator/Progress.h"
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
constexpr int kOutOfBalance = 1;
constexpr int kServerFailed = 2;

struct Options {
    std::string config;
    std::string server;
    double duration = 0;
    bool noServer = false;
    bool quiet = false;
    bool paced = false;
    std::uint32_t seed = 1;
    double speed = 1;
    std::optional<double> gpsStart;
    std::vector<std::string> scenarios;
    std::vector<std::string> faults;
    std::string control;
    bool ledger = false;
    bool json = false;
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
        std::chrono::duration<double>(unit.receiver.epoch) / options.speed);
    unit.receiver.gpsStart = options.gpsStart;
    for (const std::string& file : options.scenarios) {
        unit.scenario.append(Simulator::Scenario::read(file));
    }
    for (const std::string& fault : options.faults) {
        unit.scenario.append(Simulator::ScenarioStatement::parseOption(fault));
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

// A terminal is read for orders when nothing else is to stand on it.
std::unique_ptr<Simulator::ControlInput> controlInput(const Options& options,
                                                      Simulator::ScenarioPlayer& player) {
    const bool terminal = options.duration <= 0 && isatty(STDIN_FILENO) != 0;
    if (options.control.empty() && !terminal) {
        return nullptr;
    }
    return std::make_unique<Simulator::ControlInput>(
        options.control.empty() ? "-" : options.control, player);
}

// Until the time is over or a signal comes; false when the server has ended by itself.
bool waitForEnd(const Options& options, Simulator::SimulatedUnit& unit,
                steady_clock::time_point started, const sigset_t& signals,
                Simulator::BusLedger* ledger) {
    const std::chrono::duration<double> duration(options.duration);
    const auto end = started + std::chrono::duration_cast<steady_clock::duration>(duration);
    const timespec rhythm{0, 100'000'000};
    Simulator::Progress progress(unit.receiver().ledger(), started, duration);
    while (options.duration <= 0 || steady_clock::now() < end) {
        if (sigtimedwait(&signals, nullptr, &rhythm) > 0) {
            break;
        }
        if (unit.server() != nullptr && unit.server()->waitFor(std::chrono::milliseconds(0))) {
            return false;
        }
        if (ledger != nullptr) {
            ledger->collect();
        }
        progress.update();
    }
    return true;
}

int run(const Options& options) {
    // Blocked before there is any thread, so that only the wait below takes them.
    const sigset_t signals = blockEndSignals();
    Simulator::SimulatedUnit unit(unitOptions(options));
    std::unique_ptr<Simulator::BusLedger> ledger;
    if (options.ledger || options.json) {
        ledger = std::make_unique<Simulator::BusLedger>(unit);
    }
    const auto started = steady_clock::now();
    unit.start();
    if (!options.json) {
        Console::line("Simulated unit: " + unit.deployment().file.string() + ", receiver on " +
                      unit.line().device() +
                      (options.noServer ? ", no server" : ", server started"));
    }
    if (options.noServer) {
        Console::line("  a shell in its /dev: " + shellCommand());
    }
    auto control = controlInput(options, unit.scenario());
    const bool toldToEnd = waitForEnd(options, unit, started, signals, ledger.get());
    if (!toldToEnd) {
        Console::errorLine("Simulated unit: the server has ended by itself");
    }
    control.reset();
    std::optional<Simulator::LedgerBalance> balance;
    if (ledger) {
        balance = ledger->close();
        ledger.reset();
    }
    const auto serverEnd = unit.stop();
    if (options.json) {
        Console::line(Simulator::ledgerJson(*balance));
    } else {
        Console::line(Simulator::summary(unit, serverEnd, started, terminalColours()) +
                      (balance ? Simulator::ledgerText(*balance, terminalColours()) : ""));
    }
    if (unit.server() != nullptr && !(toldToEnd && serverEnd && serverEnd->good())) {
        return kServerFailed;
    }
    return balance && !balance->balances() ? kOutOfBalance : kGood;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Runs the server in a simulated unit with a private /dev until Ctrl-C.\n");
    app.get_formatter()->column_width(24);
    app.add_option("-c,--config", options.config,
                   std::string("Top-level configuration [") + kDefaultConfig + "]")
        ->type_name("FILE");
    app.add_option("-s,--server", options.server, "Server program [RovanServer beside this one]")
        ->type_name("FILE");
    app.add_option("-d,--duration", options.duration, "End after so many seconds")
        ->type_name("S")
        ->check(CLI::Range(0.001, 1e9).description(""));
    app.add_flag("-n,--no-server", options.noServer, "Only the unit; start the server yourself");
    app.add_flag("-q,--quiet", options.quiet, "Do not print what the server prints");
    app.add_flag("-p,--paced", options.paced, "Bytes take their time on the serial line");
    app.add_option("--seed", options.seed, "Choose other satellites and other noise");
    app.add_option("--speed", options.speed, "The receiver reports so many times as fast [1]")
        ->type_name("X")
        ->check(CLI::Range(0.1, 50.0).description(""));
    app.add_option("--gps-start", options.gpsStart, "GPS time at the start, seconds [the clock's]")
        ->type_name("S")
        ->check(CLI::Range(0.0, 1e10).description(""));
    app.add_option("--scenario", options.scenarios, "What goes on, see docs/scenarios.md; repeat")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_option("--fault", options.faults,
                   "A statement of a scenario; repeat, see --list-faults")
        ->type_name("NAME=ARGS")
        ->allow_extra_args(false);
    app.add_flag_callback(
        "--list-faults",
        [] {
            std::cout << Simulator::ScenarioAction::help();
            throw CLI::Success();
        },
        "List all faults and other actions, and end");
    app.add_option("--control", options.control,
                   "Read statements meanwhile [a terminal, without -d]")
        ->type_name("FIFO");
    app.add_flag("-l,--ledger", options.ledger, "Compare the frames with what comes on the bus");
    app.add_flag("-j,--json", options.json, "The ledger as one JSON object, and no summary");
    app.footer(
        "Exit status: 0 the server ended in order when told to, 1 no unit or no balance,\n"
        "2 the server failed or ended by itself; above 100 wrong usage.");
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

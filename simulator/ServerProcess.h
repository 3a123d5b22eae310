// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "simulator/BoundedLog.h"
#include "simulator/FileDescriptor.h"
#include "utility/WorkerThread.h"

namespace Simulator {

/// How a process ended.
struct ProcessEnd {
    bool bySignal = false;
    int code = 0;  // exit status, or the signal's number

    bool good() const { return !bySignal && code == 0; }
    std::string text() const;
};

/// One line that the server printed.
struct ConsoleLine {
    bool error;  // on standard error
    std::string text;
};

// The server, unmodified, as a child process with its one argument. Its console is kept line by
// line and passed through when asked to. It runs in a process group of its own, so that Ctrl-C
// reaches it only through the unit's orderly end, and it is killed when the thread that started it
// ends.
//
// start(), waitFor() and stop() belong to one thread; the rest any thread may call.
class ServerProcess {
  public:
    struct Options {
        std::filesystem::path program;
        std::string argument;
        std::filesystem::path directory;                 // it is started here
        std::map<std::string, std::string> environment;  // beyond this process's own
        bool passThrough = false;                        // print what it prints
    };

    explicit ServerProcess(Options options) : m_options(std::move(options)) {}
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;
    ~ServerProcess() { stop(std::chrono::seconds(5)); }

    /// Throws std::runtime_error when the program is not there, std::system_error when it cannot be
    /// started.
    void start();

    bool running() const;
    pid_t pid() const;
    /// Sends a signal; false when the server does not run.
    bool signal(int number);

    /// Waits for the end; empty when it has not come within `timeout`.
    std::optional<ProcessEnd> waitFor(std::chrono::milliseconds timeout);

    /// Asks the server to end, by SIGTERM, and kills it when it has not done so within `patience`.
    /// Empty when it was never started.
    std::optional<ProcessEnd> stop(std::chrono::milliseconds patience);

    const BoundedLog<ConsoleLine>& console() const { return m_console; }

  private:
    struct Stream {
        FileDescriptor pipe;
        int passTo;
        bool error;
        std::string begun;  // of a line that has no end yet
    };

    [[noreturn]] static void runChild(const char* directory, char* const* arguments,
                                      char* const* environment, int output, int errors);
    void pump();
    bool readFrom(Stream& stream);

    const Options m_options;
    mutable std::mutex m_mutex;  // guards the next two
    pid_t m_pid = -1;
    std::optional<ProcessEnd> m_end;
    FileDescriptor m_endNotice;  // a pidfd, readable when the process has ended
    Stream m_streams[2];
    BoundedLog<ConsoleLine> m_console{20'000};
    Utility::WorkerThread m_pump;
};

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#include "simulator/ServerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "simulator/SystemError.h"

namespace Simulator {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPumpRhythm{50};
constexpr std::size_t kMaxLine = 65'536;

struct Pipe {
    FileDescriptor read;
    FileDescriptor write;
};

Pipe makePipe() {
    int ends[2] = {-1, -1};
    checked(pipe2(ends, O_CLOEXEC), "pipe");
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

// This process's environment with `changes`, as "NAME=value".
std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (changes.count(text.substr(0, text.find('='))) == 0) {
            result.push_back(text);
        }
    }
    for (const auto& [name, value] : changes) {
        result.push_back(name + '=' + value);
    }
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

}  // namespace

std::string ProcessEnd::text() const {
    return bySignal ? std::string("ended by signal ") + std::to_string(code) + " (" +
                          strsignal(code) + ")"
                    : "exit status " + std::to_string(code);
}

void ServerProcess::start() {
    if (running()) {
        throw std::runtime_error("the server runs already");
    }
    m_pump.stop();
    if (access(m_options.program.c_str(), X_OK) != 0) {
        throw std::runtime_error("no server program at " + m_options.program.string());
    }
    Pipe output = makePipe();
    Pipe errors = makePipe();
    std::vector<std::string> arguments = {m_options.program.string(), m_options.argument};
    std::vector<std::string> environment = environmentWith(m_options.environment);
    // All that allocates is done before the fork: other threads may hold the allocator's locks.
    const std::vector<char*> argumentPointers = pointers(arguments);
    const std::vector<char*> environmentPointers = pointers(environment);
    const pid_t pid = checked(fork(), "fork");
    if (pid == 0) {
        runChild(m_options.directory.c_str(), argumentPointers.data(), environmentPointers.data(),
                 output.write.get(), errors.write.get());
    }
    // By number: the library declares its wrapper without C linkage.
    m_endNotice.reset(checked(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)), "pidfd"));
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_pid = pid;
        m_end.reset();
    }
    m_streams[0] = {std::move(output.read), STDOUT_FILENO, false, {}};
    m_streams[1] = {std::move(errors.read), STDERR_FILENO, true, {}};
    m_pump.start([this] { pump(); });
}

// Only calls that are safe between fork and exec.
void ServerProcess::runChild(const char* directory, char* const* arguments,
                             char* const* environment, int output, int errors) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setpgid(0, 0);
    for (int number = 1; number < NSIG; ++number) {
        ::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    if (dup2(output, STDOUT_FILENO) < 0 || dup2(errors, STDERR_FILENO) < 0 ||
        chdir(directory) != 0) {
        _exit(126);
    }
    execve(arguments[0], arguments, environment);
    _exit(127);
}

bool ServerProcess::running() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pid > 0 && !m_end;
}

pid_t ServerProcess::pid() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pid;
}

bool ServerProcess::signal(int number) {
    // Under the lock nobody collects the process, so its number is still its own.
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_pid > 0 && !m_end && kill(m_pid, number) == 0;
}

std::optional<ProcessEnd> ServerProcess::waitFor(milliseconds timeout) {
    if (!running()) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_end;
    }
    pollfd notice{m_endNotice.get(), POLLIN, 0};
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    int ready = 0;
    do {
        const auto left =
            std::chrono::duration_cast<milliseconds>(deadline - std::chrono::steady_clock::now());
        ready = poll(&notice, 1, static_cast<int>(std::max<long long>(left.count(), 0)));
    } while (ready < 0 && errno == EINTR);
    if (ready <= 0) {
        return std::nullopt;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    int status = 0;
    if (waitpid(m_pid, &status, 0) == m_pid) {
        m_end = WIFEXITED(status) ? ProcessEnd{false, WEXITSTATUS(status)}
                                  : ProcessEnd{true, WTERMSIG(status)};
    }
    return m_end;
}

std::optional<ProcessEnd> ServerProcess::stop(milliseconds patience) {
    if (signal(SIGTERM) && !waitFor(patience)) {
        signal(SIGKILL);
        waitFor(std::chrono::seconds(10));
    }
    m_pump.stop();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_end;
}

// Until both streams have ended, or until it is asked to stop and there is nothing left to read.
void ServerProcess::pump() {
    pollfd entries[2] = {{m_streams[0].pipe.get(), POLLIN, 0},
                         {m_streams[1].pipe.get(), POLLIN, 0}};
    while (entries[0].fd >= 0 || entries[1].fd >= 0) {
        const int ready = poll(entries, 2, static_cast<int>(kPumpRhythm.count()));
        if (ready == 0 && m_pump.stopRequested()) {
            break;
        }
        for (int i = 0; ready > 0 && i < 2; ++i) {
            if (entries[i].revents != 0 && !readFrom(m_streams[i])) {
                entries[i].fd = -1;
            }
        }
    }
    for (Stream& stream : m_streams) {
        if (!stream.begun.empty()) {
            m_console.add({stream.error, std::exchange(stream.begun, {})});
        }
    }
}

bool ServerProcess::readFrom(Stream& stream) {
    char buffer[4096];
    const ssize_t count = read(stream.pipe.get(), buffer, sizeof buffer);
    if (count <= 0) {
        return count < 0 && errno == EINTR;
    }
    if (m_options.passThrough) {
        for (ssize_t done = 0; done < count;) {
            const ssize_t now =
                write(stream.passTo, buffer + done, static_cast<std::size_t>(count - done));
            if (now <= 0 && errno != EINTR) {
                break;  // nobody reads our console any more
            }
            done += std::max<ssize_t>(now, 0);
        }
    }
    for (ssize_t i = 0; i < count; ++i) {
        if (buffer[i] != '\n' && stream.begun.size() < kMaxLine) {
            stream.begun += buffer[i];
        } else {
            m_console.add({stream.error, std::exchange(stream.begun, {})});
        }
    }
    return true;
}

}  // namespace Simulator

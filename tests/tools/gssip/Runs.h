// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/Program.h"
#include "tests/tools/TemporaryDirectory.h"
#include "tests/tools/gssip/Streams.h"

// Runs of the real gssip, on pseudo-terminals of the tests' own.
namespace Runs {

using Frames::Bytes;
using Clock = std::chrono::steady_clock;

class Gssip : public tools_test::Program {
  public:
    explicit Gssip(const std::vector<std::string>& arguments, const std::string& input = "")
        : Program(arguments, "gssip", input) {}
};

struct Ended {
    int status;
    std::string output;
    std::string errors;
};

inline Ended run(const std::vector<std::string>& arguments, const std::string& input = "") {
    Gssip program(arguments, input);
    const int status = program.wait();
    return {status, program.output(), program.errors()};
}

inline std::string textOf(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

inline std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Waits, with a generous limit, until it holds; false when it never did.
inline bool waitUntil(const std::function<bool()>& holds) {
    const auto deadline = Clock::now() + std::chrono::seconds(30);
    while (!holds()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

// An end of a line: reads and writes with a generous limit.
class End {
  public:
    explicit End(int fd) : m_fd(fd) {
        if (fd < 0) {
            throw std::runtime_error("pseudo-terminal");
        }
    }
    ~End() { hangUp(); }
    End(const End&) = delete;
    End& operator=(const End&) = delete;

    void write(const Bytes& bytes) const {
        for (size_t done = 0; done < bytes.size();) {
            const ssize_t now = ::write(m_fd, bytes.data() + done, bytes.size() - done);
            if (now < 0) {
                throw std::runtime_error("write");
            }
            done += static_cast<size_t>(now);
        }
    }
    /// That many bytes, or fewer when they do not come in time or the line ends.
    Bytes read(size_t count) const {
        Bytes bytes;
        const auto deadline = Clock::now() + std::chrono::seconds(30);
        while (bytes.size() < count && Clock::now() < deadline) {
            pollfd polled{m_fd, POLLIN, 0};
            uint8_t buffer[4096];
            if (poll(&polled, 1, 100) <= 0) {
                continue;
            }
            const ssize_t now = ::read(m_fd, buffer, std::min(sizeof buffer, count - bytes.size()));
            if (now <= 0) {
                break;
            }
            bytes.insert(bytes.end(), buffer, buffer + now);
        }
        return bytes;
    }
    termios settings() const {
        termios all{};
        tcgetattr(m_fd, &all);
        return all;
    }
    void hangUp() {
        if (m_fd >= 0) {
            close(m_fd);
        }
        m_fd = -1;
    }
    int fd() const { return m_fd; }

  private:
    int m_fd;
};

/// Opens a path as a raw line that is no controlling terminal.
inline int openRaw(const std::string& path) {
    const int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    tcgetattr(fd, &settings);
    cfmakeraw(&settings);
    tcsetattr(fd, TCSANOW, &settings);
    return fd;
}

// A pseudo-terminal that stands for a serial line: `far` is its path for the program, `near` is
// where the test sits. The far end is held open, so that the program may come and go.
class Line {
  public:
    Line()
        : near(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)),
          path(prepared(near.fd())),
          m_held(openRaw(path)) {}

    /// The whole line goes.
    void hangUp() {
        m_held.hangUp();
        near.hangUp();
    }

    End near;
    const std::string path;

  private:
    static std::string prepared(int fd) {
        char name[64] = {};
        if (grantpt(fd) != 0 || unlockpt(fd) != 0 || ptsname_r(fd, name, sizeof name) != 0) {
            throw std::runtime_error("pseudo-terminal");
        }
        return name;
    }

    End m_held;
};

// A run with standard output, or with standard error, on a terminal, in a session of its own that
// has no controlling terminal. Killed by its id at the end if it still runs.
class OnTerminal {
  public:
    OnTerminal(std::vector<std::string> arguments, int onTerminal, const Line& terminal) {
        std::string path = ROVAN_BINARY_DIR "/bin/gssip";
        std::vector<char*> argv{path.data()};
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        const int far = openRaw(terminal.path);
        m_pid = fork();
        if (m_pid == 0) {
            setsid();
            const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
            dup2(nothing, STDIN_FILENO);
            dup2(onTerminal == STDOUT_FILENO ? far : nothing, STDOUT_FILENO);
            dup2(onTerminal == STDERR_FILENO ? far : nothing, STDERR_FILENO);
            execv(path.c_str(), argv.data());
            _exit(127);
        }
        close(far);
    }
    ~OnTerminal() {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
    }
    OnTerminal(const OnTerminal&) = delete;
    OnTerminal& operator=(const OnTerminal&) = delete;

    int stop(int signal) {
        kill(m_pid, signal);
        return wait();
    }
    int wait() {
        int status = 0;
        const bool ended = waitUntil([&] { return waitpid(m_pid, &status, WNOHANG) == m_pid; });
        m_pid = ended ? -1 : m_pid;
        return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    /// The device number of its controlling terminal; 0 for none.
    int controllingTerminal() const {
        std::string stat = contentsOf("/proc/" + std::to_string(m_pid) + "/stat");
        std::istringstream fields(stat.substr(stat.rfind(')') + 1));
        std::string state;
        int parent = 0, group = 0, session = 0, terminal = -1;
        fields >> state >> parent >> group >> session >> terminal;
        return terminal;
    }

  private:
    pid_t m_pid = -1;
};

}  // namespace Runs

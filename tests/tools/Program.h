// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tools_test {

// A run of a real program, rovan-bus unless another is named, with its standard output and standard
// error at hand, and its standard input from a file if one is named. Killed by its id at the end if
// it still runs.
class Program {
  public:
    explicit Program(const std::vector<std::string>& arguments,
                     const std::string& program = "rovan-bus", const std::string& input = "") {
        int out[2];
        int err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
            throw std::runtime_error("pipe2");
        }
        std::string path = ROVAN_BINARY_DIR "/bin/" + program;
        std::vector<char*> argv{path.data()};
        std::vector<std::string> copies = arguments;
        for (std::string& argument : copies) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        m_pid = fork();
        if (m_pid == 0) {
            if (!input.empty()) {
                dup2(open(input.c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO);
            }
            dup2(out[1], STDOUT_FILENO);
            dup2(err[1], STDERR_FILENO);
            execv(path.c_str(), argv.data());
            _exit(127);
        }
        close(out[1]);
        close(err[1]);
        m_out.fd = out[0];
        m_err.fd = err[0];
    }
    ~Program() {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        closeOutput();
        close(m_err.fd);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void signal(int number) const { kill(m_pid, number); }

    /// Whether it has a handler for that signal by now.
    bool catches(int number) const {
        std::ifstream status("/proc/" + std::to_string(m_pid) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind("SigCgt:", 0) == 0) {
                return (std::stoull(line.substr(7), nullptr, 16) >> (number - 1) & 1) != 0;
            }
        }
        return false;
    }

    /// Stops reading its standard output for good.
    void closeOutput() {
        if (m_out.fd >= 0) {
            close(m_out.fd);
        }
        m_out.fd = -1;
    }

    /// The next whole line of standard output; empty when none comes in time or the program ends.
    std::optional<std::string> line() {
        const auto deadline = Clock::now() + kPatience;
        size_t end = 0;
        while ((end = m_out.text.find('\n', m_taken)) == std::string::npos) {
            if (!read(deadline)) {
                return std::nullopt;
            }
        }
        std::string line = m_out.text.substr(m_taken, end - m_taken);
        m_taken = end + 1;
        return line;
    }

    /// Waits for the end and gives the exit status; -1 when it does not end in time, and 128 and
    /// the signal's number when a signal ended it.
    int wait() {
        const auto deadline = Clock::now() + kPatience;
        while (read(deadline)) {}
        if (Clock::now() >= deadline) {
            return -1;
        }
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    /// All that came so far.
    const std::string& output() const { return m_out.text; }
    const std::string& errors() const { return m_err.text; }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kPatience = std::chrono::seconds(40);

    struct Stream {
        int fd = -1;
        bool open = true;
        std::string text;
    };

    // Reads what there is on either stream. False when both have ended or the time is over.
    bool read(Clock::time_point deadline) {
        m_out.open = m_out.open && m_out.fd >= 0;
        if (!m_out.open && !m_err.open) {
            return false;
        }
        pollfd polled[] = {{m_out.open ? m_out.fd : -1, POLLIN, 0},
                           {m_err.open ? m_err.fd : -1, POLLIN, 0}};
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0 || poll(polled, 2, static_cast<int>(left.count())) <= 0) {
            return false;
        }
        Stream* const streams[] = {&m_out, &m_err};
        for (int i = 0; i < 2; ++i) {
            if (polled[i].revents != 0) {
                char bytes[4096];
                const ssize_t count = ::read(streams[i]->fd, bytes, sizeof bytes);
                streams[i]->open = count > 0;
                streams[i]->text.append(bytes, count > 0 ? static_cast<size_t>(count) : 0);
            }
        }
        return true;
    }

    pid_t m_pid = -1;
    Stream m_out;
    Stream m_err;
    size_t m_taken = 0;
};

}  // namespace tools_test

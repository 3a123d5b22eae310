// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/tools/Vt100.h"

namespace tools_test {

// A run of the real rovan-bus on a terminal of its own: a pseudo-terminal with a vt100 at the other
// end. Killed by its id at the end if it still runs.
class ScreenProgram {
  public:
    ScreenProgram(std::vector<std::string> arguments, int width, int height,
                  const std::string& terminal = "vt100")
        : m_screen(width, height) {
        winsize size = sizeOf(width, height);
        if (openpty(&m_master, &m_slave, nullptr, nullptr, &size) != 0) {
            throw std::runtime_error("openpty");
        }
        fcntl(m_master, F_SETFD, FD_CLOEXEC);
        tcgetattr(m_slave, &m_before);
        std::string path = ROVAN_BINARY_DIR "/bin/rovan-bus";
        std::vector<char*> argv{path.data()};
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        m_pid = fork();
        if (m_pid == 0) {
            setenv("TERM", terminal.c_str(), 1);
            unsetenv("LINES");
            unsetenv("COLUMNS");
            login_tty(m_slave);
            execv(path.c_str(), argv.data());
            _exit(127);
        }
    }
    ~ScreenProgram() {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        close(m_slave);
        close(m_master);
    }
    ScreenProgram(const ScreenProgram&) = delete;
    ScreenProgram& operator=(const ScreenProgram&) = delete;

    void type(const std::string& keys) const {
        if (write(m_master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
            throw std::runtime_error("write");
        }
    }
    void signal(int number) const { kill(m_pid, number); }
    void resize(int width, int height) {
        winsize size = sizeOf(width, height);
        m_screen.resize(width, height);
        ioctl(m_master, TIOCSWINSZ, &size);
    }

    /// Waits until the screen shows that text.
    bool shows(const std::string& text) {
        const auto deadline = Clock::now() + kPatience;
        while (m_screen.text().find(text) == std::string::npos) {
            if (!read(deadline)) {
                return false;
            }
        }
        return true;
    }
    const Vt100& screen() const { return m_screen; }
    /// All bytes that came so far.
    const std::string& bytes() const { return m_bytes; }

    /// Waits for the end and gives the exit status; -1 when it does not end in time, and 128 and
    /// the signal's number when a signal ended it.
    int wait() {
        const auto deadline = Clock::now() + kPatience;
        int status = 0;
        while (waitpid(m_pid, &status, WNOHANG) == 0) {
            read(std::min(deadline, Clock::now() + std::chrono::milliseconds(20)));
            if (Clock::now() >= deadline) {
                return -1;
            }
        }
        m_pid = -1;
        while (read(Clock::now() + std::chrono::milliseconds(20))) {}
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    /// Whether the terminal echoes and takes lines again, as before the program.
    bool isRestored() const {
        termios now{};
        tcgetattr(m_slave, &now);
        return now.c_lflag == m_before.c_lflag && now.c_iflag == m_before.c_iflag &&
               now.c_oflag == m_before.c_oflag;
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kPatience = std::chrono::seconds(40);

    static winsize sizeOf(int width, int height) {
        winsize size{};
        size.ws_col = static_cast<unsigned short>(width);
        size.ws_row = static_cast<unsigned short>(height);
        return size;
    }

    // False when nothing came in time.
    bool read(Clock::time_point deadline) {
        pollfd polled{m_master, POLLIN, 0};
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (poll(&polled, 1, std::max(static_cast<int>(left.count()), 0)) <= 0) {
            return false;
        }
        char bytes[4096];
        const ssize_t count = ::read(m_master, bytes, sizeof bytes);
        if (count <= 0) {
            return false;
        }
        m_bytes.append(bytes, static_cast<size_t>(count));
        m_screen.feed(std::string(bytes, static_cast<size_t>(count)));
        return true;
    }

    pid_t m_pid = -1;
    int m_master = -1;
    int m_slave = -1;
    termios m_before{};
    Vt100 m_screen;
    std::string m_bytes;
};

}  // namespace tools_test

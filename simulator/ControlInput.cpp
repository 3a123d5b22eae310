// SPDX-License-Identifier: Apache-2.0
#include "simulator/ControlInput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "simulator/SystemError.h"
#include "utility/Console.h"
#include "utility/Sleep.h"

namespace Simulator {
namespace {

constexpr std::size_t kLongestLine = 1000;
constexpr std::chrono::milliseconds kRhythm{50};

// Who reads a terminal from the background is stopped by it.
bool inBackground(int fd) {
    return isatty(fd) != 0 && tcgetpgrp(fd) != getpgrp();
}

// Text that does nothing to a terminal which it is shown on.
bool isPlain(const std::string& line) {
    return std::all_of(line.begin(), line.end(),
                       [](char c) { return (c >= ' ' && c <= '~') || c == '\t' || c == '\r'; });
}

}  // namespace

ControlInput::ControlInput(const std::string& source, ScenarioPlayer& player) : m_player(player) {
    if (source == "-") {
        m_fd = STDIN_FILENO;
    } else {
        if (mkfifo(source.c_str(), 0600) == 0) {
            m_madeHere = source;
        } else if (errno != EEXIST) {
            throwErrno(source);
        }
        struct stat status {};
        if (stat(source.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
            throw std::runtime_error(source + " is not a FIFO");
        }
        // For both directions, so that it does not end when a writer goes.
        m_fifo.reset(checked(open(source.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC), source));
        m_fd = m_fifo.get();
    }
    m_thread.start([this] { loop(); });
}

ControlInput::~ControlInput() {
    m_thread.stop();
    if (!m_madeHere.empty()) {
        std::error_code ignored;
        std::filesystem::remove(m_madeHere, ignored);
    }
}

void ControlInput::loop() {
    while (!m_thread.stopRequested()) {
        if (inBackground(m_fd)) {
            Utility::sleepFor(kRhythm);
            continue;
        }
        pollfd entry{m_fd, POLLIN, 0};
        if (poll(&entry, 1, static_cast<int>(kRhythm.count())) > 0 && !take()) {
            break;
        }
    }
}

bool ControlInput::take() {
    char buffer[512];
    const ssize_t count = read(m_fd, buffer, sizeof buffer);
    if (count < 0) {
        return errno == EINTR || errno == EAGAIN;
    }
    for (ssize_t i = 0; i < count; ++i) {
        takeByte(buffer[i]);
    }
    if (count == 0 && !m_line.empty()) {
        takeByte('\n');
    }
    return count > 0;
}

void ControlInput::takeByte(char byte) {
    if (byte != '\n') {
        m_tooLong = m_tooLong || m_line.size() >= kLongestLine;
        if (!m_tooLong) {
            m_line += byte;
        }
        return;
    }
    if (m_tooLong) {
        Console::errorLine("control: expected a line of at most " + std::to_string(kLongestLine) +
                           " characters");
    } else {
        execute(m_line);
    }
    m_line.clear();
    m_tooLong = false;
}

void ControlInput::execute(const std::string& line) {
    if (!isPlain(line)) {
        Console::errorLine("control: expected plain text");
        return;
    }
    try {
        ScenarioLine words("control", line);
        if (words.atEnd()) {
            return;
        }
        if (words.peek() == "help") {
            Console::errorLine(
                "[at TIME | on ID|EVENT [once | N times]] ACTION [for TIME] [after "
                "TIME]\n" +
                ScenarioAction::help());
            return;
        }
        const std::string text = words.text();
        m_player.order(ScenarioStatement::parse("control", line));
        Console::errorLine("control: taken: " + text);
    } catch (const ScenarioError& error) {
        Console::errorLine(error.what());
    }
}

}  // namespace Simulator

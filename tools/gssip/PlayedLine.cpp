// SPDX-License-Identifier: Apache-2.0
#include "tools/gssip/PlayedLine.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "utility/Console.h"
#include "utility/Sleep.h"

namespace GssipTool {
namespace {

constexpr std::chrono::milliseconds kLook(10);

}  // namespace

PlayedLine::PlayedLine(const Options& options) : m_path(options.output) {
    if (!m_path.empty()) {
        if (!options.link.empty()) {
            throw std::runtime_error("--link is for a pseudo-terminal: without a line");
        }
        m_line = openLine(m_path, options.baud);
        return;
    }
    m_terminal = makePseudoTerminal();
    m_path = m_terminal->farEnd;
    if (!options.link.empty()) {
        makeLink(options.link);
    }
    Console::line(m_path);
}

PlayedLine::~PlayedLine() {
    std::error_code error;
    if (!m_link.empty() && std::filesystem::read_symlink(m_link, error) == m_path) {
        std::filesystem::remove(m_link, error);
    }
}

// In place of a link that was left behind by one who was killed; of nothing else.
void PlayedLine::makeLink(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::is_symlink(fs::symlink_status(path, error)) && !fs::exists(path, error)) {
        fs::remove(path, error);
    }
    if (symlink(m_path.c_str(), path.c_str()) != 0) {
        throwErrno(path);
    }
    m_link = path;
}

bool PlayedLine::waitForReader(const Until& until) const {
    while (!until.reached() && !isHeard()) {
        Utility::sleepFor(kLook);
    }
    return !until.reached();
}

void PlayedLine::drainFor(std::chrono::milliseconds time) {
    std::array<uint8_t, 4096> unwanted;
    pollfd polled{fd(), POLLIN, 0};
    const bool gone = poll(&polled, 1, static_cast<int>(time.count())) > 0 &&
                      ::read(fd(), unwanted.data(), unwanted.size()) <= 0;
    if (gone) {  // the poll will not wait then
        Utility::sleepFor(std::min(time, kLook));
    }
}

bool PlayedLine::write(const uint8_t* bytes, size_t count, const Until& until) {
    for (size_t done = 0; done < count && !until.reached();) {
        if (!isHeard()) {
            m_lost += count - done;
            m_played += count - done;
            return true;
        }
        const ssize_t now = ::write(fd(), bytes + done, count - done);
        if (now > 0) {
            done += static_cast<size_t>(now);
            m_played += static_cast<size_t>(now);
        } else if (now < 0 && errno != EAGAIN && errno != EINTR && isHeard()) {
            throwErrno(m_path);
        } else {
            pollfd polled{fd(), POLLIN | POLLOUT, 0};
            poll(&polled, 1, static_cast<int>(kLook.count()));
        }
        drainFor(std::chrono::milliseconds::zero());
    }
    return !until.reached();
}

// Bytes on their way.
int PlayedLine::pending() const {
    if (m_terminal) {
        return unread(*m_terminal);
    }
    int count = 0;
    return ioctl(fd(), TIOCOUTQ, &count) == 0 ? count : 0;
}

void PlayedLine::finish(const Until& until) {
    // Between the near end and what can be counted at the far end, bytes are on their way for a
    // moment.
    constexpr int kQuietLooks = 5;
    for (int quiet = 0; quiet < kQuietLooks && !until.reached() && isHeard();) {
        quiet = pending() == 0 ? quiet + 1 : 0;
        drainFor(kLook);
    }
}

}  // namespace GssipTool

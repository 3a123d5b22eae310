// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/WatchTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

// Last, and without its macros of common names.
#define NCURSES_NOMACROS
#include <curses.h>
#include <term.h>

#include "tools/bus/ConnectionsFile.h"
#include "tools/bus/WatchControl.h"

namespace Bus {
namespace {

SCREEN* g_screen = nullptr;

// What a handler needs to give the terminal back: only system calls are allowed there.
struct Restore {
    termios mode{};
    char text[256] = {};
    size_t length = 0;
};
Restore g_restore;

void restoreAndDie(int number) {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, g_restore.text, g_restore.length);
    tcsetattr(STDIN_FILENO, TCSANOW, &g_restore.mode);
    raise(number);  // once more, the handler is gone
}

// Without the times to wait that a description holds, "$<2>".
void addToRestore(const char* capability) {
    const char* text = tigetstr(const_cast<char*>(capability));
    if (text == nullptr || text == reinterpret_cast<char*>(-1)) {
        return;
    }
    while (*text != '\0' && g_restore.length < sizeof g_restore.text) {
        const char* const end = std::strncmp(text, "$<", 2) == 0 ? std::strchr(text, '>') : nullptr;
        if (end != nullptr) {
            text = end + 1;
        } else {
            g_restore.text[g_restore.length++] = *text++;
        }
    }
}

// A hang-up and Ctrl-\ end the program in order, as Ctrl-C does. What kills for other reasons still
// must not leave the terminal without echo.
void handleSignals() {
    struct sigaction orderly {};
    sigaction(SIGTERM, nullptr, &orderly);
    sigaction(SIGHUP, &orderly, nullptr);
    sigaction(SIGQUIT, &orderly, nullptr);
    struct sigaction fatal {};
    sigemptyset(&fatal.sa_mask);
    fatal.sa_handler = restoreAndDie;
    fatal.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGALRM, SIGUSR1, SIGUSR2}) {
        sigaction(number, &fatal, nullptr);
    }
}

chtype attributesOf(uint8_t style) {
    chtype attributes = A_NORMAL;
    attributes |= (style & kBold) != 0 ? A_BOLD : A_NORMAL;
    attributes |= (style & kDim) != 0 ? A_DIM : A_NORMAL;
    attributes |= (style & kReverse) != 0 ? A_REVERSE : A_NORMAL;
    if ((style & kAlarm) != 0) {
        attributes |= has_colors() ? static_cast<chtype>(COLOR_PAIR(1)) | A_BOLD : A_BOLD;
    }
    return attributes;
}

struct KeyRow {
    int theirs;
    int ours;
};

constexpr KeyRow kKeys[] = {
    {'\n', WatchControl::kEnter},
    {'\r', WatchControl::kEnter},
    {KEY_ENTER, WatchControl::kEnter},
    {27, WatchControl::kEscape},
    {KEY_BACKSPACE, WatchControl::kBackspace},
    {127, WatchControl::kBackspace},
    {'\b', WatchControl::kBackspace},
    {KEY_UP, WatchControl::kUp},
    {KEY_DOWN, WatchControl::kDown},
    {KEY_PPAGE, WatchControl::kPageUp},
    {KEY_NPAGE, WatchControl::kPageDown},
    {KEY_HOME, WatchControl::kHome},
    {KEY_END, WatchControl::kEnd},
};

// Asked before a screen is made: of one that it cannot make the library keeps the memory.
bool canMoveCursor() {
    int ignored = 0;
    if (setupterm(nullptr, STDOUT_FILENO, &ignored) != OK) {
        return false;
    }
    const bool can = tigetstr(const_cast<char*>("cup")) != nullptr;
    del_curterm(cur_term);
    return can;
}

}  // namespace

void WatchTerminal::require() {
    if (isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1) {
        throw UsageError("watch needs a terminal; --once prints one screen as text");
    }
}

WatchTerminal::WatchTerminal() {
    require();
    tcgetattr(STDIN_FILENO, &g_restore.mode);
    g_screen = canMoveCursor() ? newterm(nullptr, stdout, stdin) : nullptr;
    if (g_screen == nullptr) {
        throw UsageError("this terminal cannot show a full screen; --once prints one as text");
    }
    for (const char* capability : {"sgr0", "cnorm", "rmkx", "rmcup"}) {
        addToRestore(capability);
    }
    handleSignals();
    cbreak();
    noecho();
    keypad(stdscr, TRUE);
    set_escdelay(50);
    curs_set(0);
    if (has_colors()) {
        start_color();
        use_default_colors();
        init_pair(1, COLOR_RED, -1);
    }
    captureErrors();
}

WatchTerminal::~WatchTerminal() {
    endwin();
    delscreen(g_screen);
    g_screen = nullptr;
    releaseErrors();
}

int WatchTerminal::width() const {
    return getmaxx(stdscr);
}

int WatchTerminal::height() const {
    return getmaxy(stdscr);
}

void WatchTerminal::show(const Canvas& canvas) {
    werase(stdscr);
    for (int y = 0; y < std::min(canvas.height(), height()); ++y) {
        for (int x = 0; x < std::min(canvas.width(), width()); ++x) {
            const Canvas::Cell& cell = canvas.at(x, y);
            mvwaddch(stdscr, y, x,
                     static_cast<unsigned char>(cell.character) | attributesOf(cell.style));
        }
    }
    wrefresh(stdscr);
}

std::optional<int> WatchTerminal::key(std::chrono::milliseconds timeout) {
    wtimeout(stdscr, static_cast<int>(timeout.count()));
    const int key = wgetch(stdscr);
    if (key == ERR) {
        // An end of the terminal is no time-out, and would come back at once for ever.
        pollfd polled{STDIN_FILENO, POLLIN, 0};
        const bool isEnded =
            poll(&polled, 1, 0) > 0 && (polled.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
        m_good = m_good && !isEnded;
        return std::nullopt;
    }
    if (key == KEY_RESIZE) {
        return std::nullopt;
    }
    if (key == 'L' - '@') {
        clearok(stdscr, TRUE);  // Ctrl-L draws everything anew
        return std::nullopt;
    }
    for (const KeyRow& row : kKeys) {
        if (row.theirs == key) {
            return row.ours;
        }
    }
    return key < 0x80 ? std::optional<int>(key) : std::nullopt;
}

std::optional<std::string> WatchTerminal::errorLine() {
    constexpr size_t kLongest = 1 << 16;
    char bytes[4096];
    ssize_t count = 0;
    while (m_errorsFrom >= 0 && m_errors.size() < kLongest &&
           (count = read(m_errorsFrom, bytes, sizeof bytes)) > 0) {
        m_errors.append(bytes, static_cast<size_t>(count));
    }
    const size_t end = m_errors.find('\n');
    if (end == std::string::npos && m_errors.size() < kLongest) {
        return std::nullopt;
    }
    std::string line = m_errors.substr(0, end);
    m_errors.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

// A pipe that nobody waits for: what does not fit is lost, rather than that a thread of the bus
// library stands still.
void WatchTerminal::captureErrors() {
    int ends[2];
    if (isatty(STDERR_FILENO) != 1 || pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    m_errorsFrom = ends[0];
    m_realErrors = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
}

void WatchTerminal::releaseErrors() {
    if (m_errorsFrom < 0) {
        return;
    }
    dup2(m_realErrors, STDERR_FILENO);
    close(m_realErrors);
    close(m_errorsFrom);
}

}  // namespace Bus

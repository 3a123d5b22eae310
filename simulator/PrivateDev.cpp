// SPDX-License-Identifier: Apache-2.0
#include "simulator/PrivateDev.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "simulator/FileDescriptor.h"
#include "simulator/SystemError.h"

namespace Simulator {
namespace {

constexpr int kForwardedSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// The file system type of what is mounted on /dev last, that is on top.
std::string typeOfDev() {
    std::ifstream mounts("/proc/self/mountinfo");
    std::string type;
    for (std::string line; std::getline(mounts, line);) {
        // "id parent major:minor root mount-point options [tags] - type source options"
        std::istringstream fields(line);
        std::string skipped;
        std::string mountPoint;
        fields >> skipped >> skipped >> skipped >> skipped >> mountPoint;
        const std::size_t separator = line.find(" - ");
        if (mountPoint == "/dev" && separator != std::string::npos) {
            std::istringstream(line.substr(separator + 3)) >> type;
        }
    }
    return type;
}

// This program's own command line, as it was before anybody took options out of argv.
std::vector<std::string> commandLine() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(file, argument, '\0');) {
        arguments.push_back(argument);
    }
    return arguments;
}

std::string ownPath() {
    char path[PATH_MAX] = {};
    checked(readlink("/proc/self/exe", path, sizeof path - 1), "own program");
    return path;
}

std::vector<std::string> sandboxCommand(int infoFd) {
    std::vector<std::string> command = {"bwrap",
                                        "--bind",
                                        "/",
                                        "/",
                                        "--dev",
                                        "/dev",
                                        "--bind",
                                        "/dev/shm",
                                        "/dev/shm",
                                        "--dir",
                                        PrivateDev::kDirectory,
                                        "--proc",
                                        "/proc",
                                        "--die-with-parent",
                                        "--info-fd",
                                        std::to_string(infoFd),
                                        "--",
                                        ownPath()};
    const std::vector<std::string> own = commandLine();
    if (!own.empty()) {
        command.insert(command.end(), std::next(own.begin()), own.end());
    }
    return command;
}

// bubblewrap tells the process id of what it started as "child-pid": <number>. -1 when it failed.
pid_t readChildPid(int infoFd) {
    std::string info;
    char piece[256];
    for (ssize_t count = 0; (count = read(infoFd, piece, sizeof piece)) > 0;) {
        info.append(piece, static_cast<std::size_t>(count));
    }
    int pid = -1;
    const std::size_t found = info.find("\"child-pid\":");
    if (found != std::string::npos) {
        std::istringstream(info.substr(found + std::strlen("\"child-pid\":"))) >> pid;
    }
    return pid;
}

// Waits for the sandbox to end and hands every signal on to the program inside: the sandbox itself
// must not die of one, for it would take the program with it before it could clean up.
int superviseUntilEnd(pid_t sandbox, pid_t inner, const sigset_t& signals) {
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0) {
            continue;
        }
        if (signal != SIGCHLD) {
            if (inner > 0) {
                kill(inner, signal);
            }
            continue;
        }
        int status = 0;
        if (waitpid(sandbox, &status, WNOHANG) == sandbox) {
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
    }
}

}  // namespace

std::optional<int> PrivateDev::enter() {
    if (active()) {
        // Inherited from the start of the sandbox, see below.
        for (const int signal : kForwardedSignals) {
            ::signal(signal, SIG_DFL);
        }
        return std::nullopt;
    }

    int info[2] = {-1, -1};
    checked(pipe(info), "pipe");
    FileDescriptor infoRead(info[0]);
    FileDescriptor infoWrite(info[1]);
    checked(fcntl(infoRead.get(), F_SETFD, FD_CLOEXEC), "pipe");

    const std::vector<std::string> command = sandboxCommand(infoWrite.get());
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);

    sigset_t signals;
    sigset_t before;
    sigemptyset(&signals);
    sigaddset(&signals, SIGCHLD);
    for (const int signal : kForwardedSignals) {
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_BLOCK, &signals, &before);

    const pid_t sandbox = checked(fork(), "fork");
    if (sandbox == 0) {
        // A signal from the terminal reaches the whole group; the sandbox ignores it.
        for (const int signal : kForwardedSignals) {
            ::signal(signal, SIG_IGN);
        }
        sigprocmask(SIG_SETMASK, &before, nullptr);
        execvp(arguments[0], arguments.data());
        std::perror("bubblewrap (bwrap) is needed for the private /dev");
        _exit(127);
    }
    infoWrite.reset();
    const int status = superviseUntilEnd(sandbox, readChildPid(infoRead.get()), signals);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return status;
}

bool PrivateDev::active() {
    struct stat directory {};
    return stat(kDirectory, &directory) == 0 && S_ISDIR(directory.st_mode) &&
           typeOfDev() == "tmpfs";
}

void PrivateDev::require(const std::string& path) {
    if (!active()) {
        throw std::runtime_error("/dev is not the simulated unit's own: refusing to touch " + path);
    }
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

// Failed system calls of the simulated unit become exceptions that name what failed.
namespace Simulator {

/// Throws std::system_error of the present errno, with `what` before its text.
[[noreturn]] inline void throwErrno(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// `result` of a system call; throws when it is negative.
template <typename T>
T checked(T result, const std::string& what) {
    if (result < 0) {
        throwErrno(what);
    }
    return result;
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace Simulator {

// The private /dev in which the simulated unit puts its devices. Nothing here may ever reach the
// machine's own /dev/mem or serial lines, so a program that holds a unit starts itself anew under
// bubblewrap, where /dev is a fresh file system of its own, and every class that makes or opens a
// device first asks require().
//
// Works as root and as an ordinary user. /dev/shm stays the machine's, so that the bus reaches
// across.
class PrivateDev {
  public:
    /// First thing in main, before there is any thread. Without a value this process has its
    /// private /dev, and main goes on. With one, the program has run there as a child and ended:
    /// the value is its exit status, for main to return. SIGINT, SIGTERM, SIGHUP and SIGQUIT are
    /// passed on to the child meanwhile. Throws std::system_error when the child could not be
    /// started.
    static std::optional<int> enter();

    /// True when /dev is the private one.
    static bool active();

    /// Throws std::runtime_error, which names `path`, unless /dev is the private one.
    static void require(const std::string& path);

    /// A directory of the private /dev, for what else must vanish with it.
    static constexpr const char* kDirectory = "/dev/simulated-unit";
};

}  // namespace Simulator

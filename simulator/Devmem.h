// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Simulator {

// The `devmem` command: a directory that goes in front of PATH and holds a `devmem` that notes its
// arguments and then lets busybox do the work on the simulated memory. The note is what tells the
// order of two calls for certain, however close they were.
class Devmem {
  public:
    /// Makes `directory`, which must lie in the private /dev: there it vanishes with the unit, also
    /// when that is killed. Throws std::runtime_error outside the private /dev or without a
    /// busybox.
    explicit Devmem(std::filesystem::path directory);
    Devmem(const Devmem&) = delete;
    Devmem& operator=(const Devmem&) = delete;
    ~Devmem();

    /// `path`, a value of PATH, with the directory in front.
    std::string inFrontOf(const std::string& path) const;

    /// The arguments of each call so far, in order, such as "0x4000045C 32 1".
    std::vector<std::string> calls() const;

    /// From now on the command notes its arguments and fails with `status`, touching nothing; 0
    /// makes it work again.
    void failWith(int status);

  private:
    void write(const std::string& lastLine) const;

    std::filesystem::path m_directory;
    std::string m_busybox;
};

}  // namespace Simulator

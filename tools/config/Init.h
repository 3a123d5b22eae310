// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace Config {

// What a person can put right: a file in the way, a directory that may not be written. The text is
// for standard error.
class InitError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The transports that a deployment can start from, under the names of their directories.
const std::vector<std::string>& variants();

/// Writes a deployment of that variant, which is started in `directory`, and gives the paths of
/// what it wrote, the top-level file first. Makes the directory if need be. Without `force` it
/// overwrites nothing, and writes nothing if any of the files is there already. A file appears as a
/// whole or not at all. Throws InitError.
std::vector<std::string> init(const std::string& directory, const std::string& variant, bool force);

}  // namespace Config

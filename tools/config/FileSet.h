// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/config/ConfigFile.h"

namespace Config {

// The files of one deployment, each loaded once, also when several keys name it.
class FileSet {
  public:
    /// `directory` is where the server is started; relative paths begin there. Empty: here.
    explicit FileSet(std::string directory) : m_directory(std::move(directory)) {}

    /// The path as seen from here.
    std::string resolve(const std::string& path) const;

    /// The file at a path as the server names it. What keeps it from being loaded goes to
    /// `findings` at the first call for it.
    ConfigFile& load(const std::string& path, Findings& findings);

    /// The same at a path as seen from here.
    ConfigFile& loadFromHere(const std::string& path, Findings& findings);

    const std::vector<std::unique_ptr<ConfigFile>>& files() const { return m_files; }

  private:
    const std::string m_directory;
    std::vector<std::unique_ptr<ConfigFile>> m_files;
};

}  // namespace Config

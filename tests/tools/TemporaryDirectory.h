// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace tools_test {

// A fresh directory, gone at the end.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string path = std::filesystem::temp_directory_path() / "rovan-tools-XXXXXX";
        if (mkdtemp(path.data()) == nullptr) {
            throw std::runtime_error("mkdtemp");
        }
        m_path = path;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Writes a file and gives its path.
    std::string file(const std::string& name, const std::string& text) const {
        std::string path = m_path / name;
        std::ofstream(path) << text;
        return path;
    }
    /// The path of a file that need not be there.
    std::string path(const std::string& name) const { return m_path / name; }

  private:
    std::filesystem::path m_path;
};

}  // namespace tools_test

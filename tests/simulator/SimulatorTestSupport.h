// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace SimulatorTest {

/// Long enough for anything that should happen at once, on a busy machine too.
constexpr std::chrono::milliseconds kSoon{5000};

/// Waits until `condition` holds; false when that takes longer than kSoon.
template <typename Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + kSoon;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// A fresh directory that goes with this object.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "simulator.XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        m_path = name;
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& path() const { return m_path; }

    /// Writes an executable shell script and gives its path.
    std::filesystem::path script(const std::string& name, const std::string& body) const {
        const std::filesystem::path file = m_path / name;
        std::ofstream(file) << "#!/bin/sh\n" << body;
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        return file;
    }

  private:
    std::filesystem::path m_path;
};

}  // namespace SimulatorTest

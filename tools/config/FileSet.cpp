// SPDX-License-Identifier: Apache-2.0
#include "tools/config/FileSet.h"

#include <filesystem>

namespace Config {

std::string FileSet::resolve(const std::string& path) const {
    // An absolute path stands for itself.
    return (std::filesystem::path(m_directory) / path).lexically_normal().string();
}

ConfigFile& FileSet::load(const std::string& path, Findings& findings) {
    return loadFromHere(resolve(path), findings);
}

ConfigFile& FileSet::loadFromHere(const std::string& path, Findings& findings) {
    std::error_code ignored;
    for (const auto& file : m_files) {
        if (file->path() == path || std::filesystem::equivalent(file->path(), path, ignored)) {
            return *file;
        }
    }
    m_files.push_back(std::make_unique<ConfigFile>(path, findings));
    return *m_files.back();
}

}  // namespace Config

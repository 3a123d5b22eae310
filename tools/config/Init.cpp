// SPDX-License-Identifier: Apache-2.0
#include "tools/config/Init.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tools/config/Shipped.h"

namespace Config {
namespace {

namespace fs = std::filesystem;

constexpr const char* kDevices = "io_devices.xml";

struct NewFile {
    fs::path path;
    std::string text;
};

const std::string& shipped(const std::string& path) {
    const auto& files = shippedFiles();
    const auto found = std::find_if(files.begin(), files.end(),
                                    [&path](const ShippedFile& file) { return file.path == path; });
    if (found == files.end()) {
        throw InitError(fmt::format("no {} is built in", path));
    }
    return found->text;
}

// The shipped variants share one file above them; here it lies beside the others.
std::string besideTheOthers(std::string text) {
    const std::string above = fmt::format(">../{}<", kDevices);
    const std::size_t at = text.find(above);
    if (at == std::string::npos) {
        throw InitError(fmt::format("the file that is built in does not name ../{}", kDevices));
    }
    return text.replace(at, above.size(), fmt::format(">{}<", kDevices));
}

[[noreturn]] void fail(const fs::path& path, int error) {
    throw InitError(fmt::format("{}: {}", path.string(), std::strerror(error)));
}

// A link fails where something is in the way, a rename takes its place; both show the whole file.
void write(const NewFile& file, bool force) {
    fs::path temporary = file.path;
    temporary += fmt::format(".{}", getpid());
    std::error_code ignored;
    errno = 0;
    std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
    stream << file.text << std::flush;
    const bool written = stream.good();
    const int writeError = errno;
    stream.close();
    if (!written) {
        fs::remove(temporary, ignored);
        fail(file.path, writeError != 0 ? writeError : EIO);
    }
    const int result = force ? std::rename(temporary.c_str(), file.path.c_str())
                             : link(temporary.c_str(), file.path.c_str());
    const int error = errno;
    fs::remove(temporary, ignored);
    if (result != 0) {
        fail(file.path, error);
    }
}

}  // namespace

const std::vector<std::string>& variants() {
    static const std::vector<std::string> kVariants = {"udp", "shm", "tcp-server", "tcp-client"};
    return kVariants;
}

std::vector<std::string> init(const std::string& directory, const std::string& variant,
                              bool force) {
    const fs::path target(directory);
    const std::vector<NewFile> files = {
        {target / "rovan.xml", besideTheOthers(shipped(variant + "/rovan.xml"))},
        {target / "connections.xml", shipped(variant + "/connections.xml")},
        {target / kDevices, shipped(kDevices)}};
    std::error_code error;
    for (const NewFile& file : files) {
        if (!force && fs::exists(fs::symlink_status(file.path, error))) {
            throw InitError(
                fmt::format("{} is there already; --force overwrites it", file.path.string()));
        }
    }
    fs::create_directories(target, error);
    if (error) {
        throw InitError(fmt::format("{}: {}", directory, error.message()));
    }
    std::vector<std::string> paths;
    for (const NewFile& file : files) {
        write(file, force);
        paths.push_back(file.path.string());
    }
    return paths;
}

}  // namespace Config

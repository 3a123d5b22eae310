// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace Simulator {

struct MemoryBlock {
    std::uint32_t base = 0;
    std::uint32_t size = 0;
};

// What the simulated unit takes from the server's own configuration files, so that both ends agree
// on every device.
struct Deployment {
    /// Reads the top-level file and the I/O devices file that it names. Throws std::runtime_error
    /// that names the file, container and key that is missing.
    static Deployment read(const std::filesystem::path& topLevelFile);

    /// The top-level file and its directory, both absolute; the server is started in the directory.
    std::filesystem::path file;
    std::filesystem::path directory;

    /// The bus and its topics.
    std::filesystem::path connectionsFile;

    /// FPGA UART and pulse input whose time stamps go with a frame.
    unsigned uart = 0;
    unsigned pulse = 0;

    /// Number of the serial device, and the speed at which the server opens it.
    unsigned serialChannel = 0;
    int serialSpeed = 0;

    /// Numbers of the queue devices.
    unsigned rovanKdPort = 0;
    unsigned kdRovanPort = 0;

    /// The register blocks by name.
    std::map<std::string, MemoryBlock> memory;
};

}  // namespace Simulator

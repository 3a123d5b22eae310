// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace Config {

// A file of the deployment that is shipped, under its path in config/.
struct ShippedFile {
    std::string path;
    std::string text;
};

/// All of them.
const std::vector<ShippedFile>& shippedFiles();

}  // namespace Config

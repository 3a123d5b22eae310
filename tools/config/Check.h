// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "tools/config/Finding.h"

namespace Config {

struct CheckResult {
    Findings findings;               // file by file, each from its top to its end
    std::vector<std::string> files;  // that were read, the top-level file first
    bool isReadable = false;         // whether there was a top-level file to look at
    bool needsDirectory = false;     // a path in the files depends on where the server is started

    std::size_t errors() const;
    std::size_t warnings() const;
};

/// Looks at a top-level file and at all that it names, as a server would that is started in
/// `directory`, without touching a device or the bus. `file` is a path as seen from here.
CheckResult check(const std::string& file, const std::string& directory);

}  // namespace Config

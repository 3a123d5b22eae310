// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Config {

// An error keeps the server from starting or lets it work otherwise than the file says; a warning
// is most likely not what was meant.
enum class Severity { kError, kWarning };

// What is wrong at one place of a configuration. What does not apply is empty.
struct Finding {
    Severity severity = Severity::kError;
    std::string kind;  // a fixed word for scripts, "missing-key" for example
    std::string file;
    int line = 0;  // from 1; 0 when there is none
    std::string container;
    std::string key;
    std::string problem;               // a few words: "is missing"
    std::optional<std::string> found;  // the text as it stands in the file
    std::string expected;
    std::string suggestion;  // what may have been meant
};

using Findings = std::vector<Finding>;

}  // namespace Config

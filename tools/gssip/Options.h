// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace GssipTool {

// How a command ends, for the shell.
enum ExitStatus { kGood = 0, kDataErrors = 1, kFailed = 2 };

// What the command line says. Zero is without limit.
struct Options {
    std::string input = "-";
    std::string output;         // record: the file; play: the line, empty for a new pseudo-terminal
    std::vector<uint16_t> ids;  // only these messages; empty for all
    bool json = false;
    bool hex = false;
    bool summaryOnly = false;
    bool noSummary = false;
    uint64_t count = 0;
    double durationSeconds = 0;
    std::optional<unsigned> baud;
    bool recording = false;   // encode: with times
    bool force = false;       // record over a file that is there
    std::string link;         // play: a name for the pseudo-terminal
    std::string speed = "1";  // play: a factor, or "max"
    bool loop = false;
    bool noWait = false;  // play: do not wait for a reader
};

}  // namespace GssipTool

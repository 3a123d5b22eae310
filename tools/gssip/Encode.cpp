// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iostream>
#include <set>
#include <stdexcept>
#include <vector>

#include "tools/common/Output.h"
#include "tools/common/Quoted.h"
#include "tools/gssip/Commands.h"
#include "tools/gssip/FrameJson.h"
#include "tools/gssip/Recording.h"
#include "utility/Console.h"

namespace GssipTool {
namespace {

// Far above what a line of decode needs.
constexpr size_t kMaxLineBytes = 16 << 20;
constexpr size_t kMaxDepth = 16;

// What the library takes in silence: a key that comes twice, of which one would be lost.
class Strict {
  public:
    bool operator()(int depth, Json::parse_event_t event, const Json& parsed) {
        if (static_cast<size_t>(depth) > kMaxDepth) {
            throw std::invalid_argument("is nested too deeply");
        }
        if (event == Json::parse_event_t::object_start) {
            m_keys.resize(static_cast<size_t>(depth) + 2);
            m_keys.back().clear();
        } else if (event == Json::parse_event_t::key &&
                   !m_keys[static_cast<size_t>(depth)].insert(parsed.get<std::string>()).second) {
            throw std::invalid_argument(Tools::inQuotes(parsed.get<std::string>()) +
                                        " stands twice in an object");
        }
        return true;
    }

  private:
    std::vector<std::set<std::string>> m_keys;  // of the open objects, by depth
};

Json parsed(const std::string& line) {
    try {
        return Json::parse(
            line, [strict = Strict()](int depth, Json::parse_event_t event, Json& value) mutable {
                return strict(depth, event, value);
            });
    } catch (const Json::exception& problem) {
        const std::string what = problem.what();  // "[where.in.the.library] what is wrong"
        throw std::invalid_argument(what.substr(std::min(what.size(), what.find("] ") + 2)));
    }
}

// Blocks of a recording; bytes without a time came with those before them.
class Recorder {
  public:
    std::string start() const { return kRecordingMagic; }
    std::string blocks(const Json& item, const Bytes& bytes) {
        if (item.contains("time_ns")) {
            const Json& time = item["time_ns"];
            if (!time.is_number_integer() || time < 0) {
                throw std::invalid_argument("time_ns wants a whole number, 0 or above");
            }
            m_timeNs = time.get<int64_t>();
        }
        std::string text;
        for (size_t done = 0; done < bytes.size();) {
            const size_t now = std::min(bytes.size() - done, kMaxBlockBytes);
            const Bytes header = blockHeader(m_timeNs, now);
            text.append(header.begin(), header.end());
            text.append(bytes.begin() + static_cast<long>(done),
                        bytes.begin() + static_cast<long>(done + now));
            done += now;
        }
        return text;
    }

  private:
    int64_t m_timeNs = 0;
};

// Reads a line that is not too long; false at the end.
bool readLine(std::istream& in, std::string& line) {
    line.clear();
    for (int c = in.get(); c != std::char_traits<char>::eof(); c = in.get()) {
        if (c == '\n') {
            return true;
        }
        if (line.size() == kMaxLineBytes) {
            throw std::invalid_argument("is longer than 16 MiB");
        }
        line += static_cast<char>(c);
    }
    return !line.empty();
}

void encodeLines(std::istream& in, bool recording, Tools::Output& output, uint64_t& number) {
    Recorder recorder;
    if (recording) {
        output.write(recorder.start());
    }
    std::string line;
    for (number = 1; output.good() && readLine(in, line); ++number) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) {
            continue;
        }
        const Json item = parsed(line);
        const Bytes bytes = bytesOf(item);
        output.write(recording ? recorder.blocks(item, bytes)
                               : std::string(bytes.begin(), bytes.end()));
        if (in.rdbuf()->in_avail() <= 0) {
            output.flush();
        }
    }
}

}  // namespace

ExitStatus encode(const Options& options) {
    // A stream that waits for input goes on waiting after a signal that has a handler.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    if (isatty(STDOUT_FILENO) == 1) {
        throw std::runtime_error("standard output is a terminal: name a file with > or |");
    }
    std::ios::sync_with_stdio(false);
    std::ifstream file;
    const bool isFile = options.input != "-";
    if (isFile) {
        file.open(options.input, std::ios::binary);
        if (!file) {
            throw std::runtime_error(fmt::format("{}: {}", options.input, std::strerror(errno)));
        }
    }
    std::istream& in = isFile ? file : std::cin;
    Tools::Output output;
    uint64_t number = 0;
    ExitStatus status = kGood;
    try {
        encodeLines(in, options.recording, output, number);
    } catch (const std::invalid_argument& problem) {
        Console::errorLine(fmt::format("gssip: {} line {}: {}",
                                       isFile ? options.input : "standard input", number,
                                       problem.what()));
        status = kDataErrors;
    }
    output.flush();
    if (in.bad()) {
        throw std::runtime_error(options.input + ": cannot be read");
    }
    if (output.isReaderGone()) {
        return kFailed;
    }
    if (!output.good()) {
        throw std::runtime_error("standard output: " + output.problem());
    }
    return status;
}

}  // namespace GssipTool

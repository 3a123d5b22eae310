// SPDX-License-Identifier: Apache-2.0
#include "tools/config/Check.h"

#include <algorithm>
#include <climits>
#include <filesystem>

#include "face/FACE_Common.h"
#include "tools/config/Checks.h"

namespace Config {
namespace {

std::size_t count(const Findings& findings, Severity severity) {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [severity](const Finding& finding) { return finding.severity == severity; }));
}

bool isRelative(const FACE::String& path) {
    return path.length() != 0 && std::filesystem::path(FACE::toStdString(path)).is_relative();
}

// File by file in the order in which they are read; what has no line comes last.
void sort(Findings& findings, const std::vector<std::string>& files) {
    const auto place = [&files](const Finding& finding) {
        return std::find(files.begin(), files.end(), finding.file) - files.begin();
    };
    const auto line = [](const Finding& finding) {
        return finding.line != 0 ? static_cast<unsigned>(finding.line) : UINT_MAX;
    };
    std::stable_sort(findings.begin(), findings.end(), [&](const Finding& a, const Finding& b) {
        return std::make_pair(place(a), line(a)) < std::make_pair(place(b), line(b));
    });
}

}  // namespace

std::size_t CheckResult::errors() const {
    return count(findings, Severity::kError);
}

std::size_t CheckResult::warnings() const {
    return count(findings, Severity::kWarning);
}

CheckResult check(const std::string& file, const std::string& directory) {
    CheckResult result;
    FileSet files(directory);
    ConfigFile& topLevelFile = files.loadFromHere(file, result.findings);
    result.isReadable = topLevelFile.isReadable();
    if (topLevelFile.isGood()) {
        const TopLevel topLevel = checkTopLevel(topLevelFile, files, result.findings);
        if (topLevel.connections != nullptr) {
            checkBus(*topLevel.connections, result.findings);
        }
        if (topLevel.devices != nullptr) {
            checkDevices(*topLevel.devices, topLevel, result.findings);
        }
        result.needsDirectory = isRelative(topLevel.settings.connectionsFile) ||
                                isRelative(topLevel.settings.ioDevicesFile);
    }
    for (const auto& each : files.files()) {
        checkUnread(*each, result.findings);
        if (each->isReadable()) {
            result.files.push_back(each->path());
        }
    }
    sort(result.findings, result.files);
    return result;
}

}  // namespace Config

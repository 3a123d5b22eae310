// SPDX-License-Identifier: Apache-2.0
#include "tools/config/Report.h"

#include <fmt/format.h>

#include "tools/common/JsonText.h"
#include "tools/common/Quoted.h"

namespace Config {
namespace {

// More of a text than this helps nobody.
constexpr std::size_t kLongestText = 200;

const char* nameOf(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

std::string shortened(const std::string& text) {
    return text.size() <= kLongestText ? text : text.substr(0, kLongestText) + "...";
}

// As it stands, unless something in it could steer a terminal.
std::string plain(const std::string& text) {
    const std::string quoted = Tools::inQuotes(shortened(text));
    const std::string inside = quoted.substr(1, quoted.size() - 2);
    return inside == shortened(text) ? inside : quoted;
}

// Words of ours, with texts of the file in them.
std::string harmless(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte < 0x20 || byte == 0x7F ? fmt::format("\\x{:02x}", byte) : std::string(1, c);
    }
    return result;
}

std::string counted(std::size_t count, const char* what) {
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

Tools::Json orNull(const std::string& text) {
    return text.empty() ? Tools::Json() : Tools::Json(text);
}

}  // namespace

std::string textLine(const Finding& finding, const Tools::Output& output) {
    const bool isError = finding.severity == Severity::kError;
    std::string place = plain(finding.file);
    if (finding.line != 0) {
        place += fmt::format(":{}", finding.line);
    }
    const std::string severity = nameOf(finding.severity);
    std::string text =
        fmt::format("{}: {}: ", place, isError ? output.alarm(severity) : output.warning(severity));
    if (!finding.container.empty()) {
        text += plain(finding.container);
        text += finding.key.empty() ? ": " : fmt::format(", {}: ", plain(finding.key));
    }
    if (finding.found) {
        text += Tools::inQuotes(shortened(*finding.found)) + ' ';
    }
    text += harmless(finding.problem);
    if (!finding.expected.empty()) {
        text += "; expected " + harmless(finding.expected);
    }
    if (!finding.suggestion.empty()) {
        text += fmt::format("; did you mean {}?", Tools::inQuotes(finding.suggestion));
    }
    return text + '\n';
}

std::string jsonLine(const Finding& finding) {
    Tools::Json line;
    line["severity"] = nameOf(finding.severity);
    line["kind"] = finding.kind;
    line["file"] = finding.file;
    line["line"] = finding.line != 0 ? Tools::Json(finding.line) : Tools::Json();
    line["container"] = orNull(finding.container);
    line["key"] = orNull(finding.key);
    line["problem"] = finding.problem;
    line["found"] = finding.found ? Tools::Json(*finding.found) : Tools::Json();
    line["expected"] = orNull(finding.expected);
    line["suggestion"] = orNull(finding.suggestion);
    return Tools::toLine(line) + '\n';
}

std::string summary(const CheckResult& result, const std::string& directory,
                    const Tools::Output& output) {
    const std::size_t errors = result.errors();
    const std::size_t warnings = result.warnings();
    const std::string counts =
        errors + warnings == 0
            ? output.good("clean")
            : fmt::format("{}, {}", counted(errors, "error"), counted(warnings, "warning"));
    return fmt::format("{} in {}{}\n", counts, counted(result.files.size(), "file"),
                       result.needsDirectory
                           ? fmt::format("; the server is to be started in {}", plain(directory))
                           : "");
}

}  // namespace Config

// SPDX-License-Identifier: Apache-2.0
#include "tools/config/CheckedRow.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "tools/config/Suggestion.h"

namespace Config {
namespace {

constexpr const char* kBlanks = " \t\r\n\v\f";

bool equalsIgnoringCase(const std::string& text, const char* lowerCase) {
    return text.size() == std::string(lowerCase).size() &&
           std::equal(text.begin(), text.end(), lowerCase, [](char a, char b) {
               return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
           });
}

// The server takes the number at the start of a text and ignores the rest; here the whole text has
// to be one. Blanks around it do no harm.
bool isNumber(const std::string& text, std::int64_t& value, bool& inRange) {
    errno = 0;
    char* end = nullptr;
    value = std::strtoll(text.c_str(), &end, 0);
    inRange = errno != ERANGE;
    const std::string rest = end;
    return end != text.c_str() && rest.find_first_not_of(kBlanks) == std::string::npos;
}

bool isOctal(const std::string& text) {
    const std::size_t digits = text.find_first_not_of(std::string(kBlanks) + "+-");
    return text.size() > digits + 1 && text[digits] == '0' && text[digits + 1] >= '0' &&
           text[digits + 1] <= '7';
}

}  // namespace

CheckedRow::CheckedRow(ConfigFile& file, const std::string& container, Findings& findings)
    : m_file(file), m_findings(findings), m_container(file.open(container)), m_name(container) {
    if (m_container != nullptr || !file.isGood()) {
        return;
    }
    std::vector<std::string> names;
    for (const ConfigFile::Container& other : file.containers()) {
        names.push_back(other.name);
    }
    Finding finding;
    finding.kind = "missing-container";
    finding.file = file.path();
    finding.container = container;
    finding.problem = "there is no container of this name";
    finding.suggestion = suggestion(container, names);
    findings.push_back(finding);
}

void CheckedRow::read(const char* key, std::string& value) {
    std::string text;
    if (readText(key, "a text", text)) {
        m_texts[key] = text;
        value = std::move(text);
    }
}

void CheckedRow::read(const char* key, FACE::String& value) {
    std::string text;
    read(key, text);
    if (!text.empty()) {
        value = FACE::String(text.c_str());
    }
}

void CheckedRow::read(const char* key, bool& value) {
    constexpr const char* kExpected = "TRUE or FALSE";
    std::string text;
    if (!readText(key, kExpected, text)) {
        return;
    }
    const bool isTrue = equalsIgnoringCase(text, "true");
    std::int64_t number = 0;
    bool inRange = true;
    if (!isTrue && !equalsIgnoringCase(text, "false") && !isNumber(text, number, inRange)) {
        m_texts[key] = text;
        add(Severity::kError, "not-a-boolean", key, "counts as FALSE", kExpected,
            suggestion(text, {"TRUE", "FALSE"}));
        m_texts.erase(key);
        return;
    }
    m_texts[key] = text;
    value = isTrue || number != 0;
}

void CheckedRow::readNumber(const char* key, std::int64_t& value, std::int64_t least,
                            std::int64_t most) {
    const std::string expected = fmt::format("a whole number from {} to {}", least, most);
    std::string text;
    if (!readText(key, expected, text)) {
        return;
    }
    m_texts[key] = text;
    std::int64_t number = 0;
    bool inRange = true;
    if (!isNumber(text, number, inRange)) {
        add(Severity::kError, "not-a-number", key, "is not a number", expected);
        m_texts.erase(key);
    } else if (!inRange || number < least || number > most) {
        add(Severity::kError, "out-of-range", key, "is out of range", expected);
        m_texts.erase(key);
    } else {
        value = number;
        if (isOctal(text)) {
            add(Severity::kWarning, "octal", key,
                fmt::format("is octal for the leading 0, that is {}", number),
                "a decimal number without the 0, or a hexadecimal one with 0x");
        }
    }
}

bool CheckedRow::readText(const char* key, const std::string& expected, std::string& text) {
    text = m_file.read(*m_container, key);
    if (!text.empty()) {
        return true;
    }
    const bool isThere = m_file.has(*m_container, key);
    add(Severity::kError, "missing-key", key, isThere ? "has no value" : "is missing", expected);
    return false;
}

std::string CheckedRow::text(const std::string& key) const {
    const auto found = m_texts.find(key);
    return found != m_texts.end() ? found->second : "";
}

void CheckedRow::error(const std::string& key, const std::string& problem,
                       const std::string& expected, const std::string& meant) {
    if (isGood(key)) {
        add(Severity::kError, "wrong-value", key, problem, expected, meant);
    }
}

void CheckedRow::warning(const std::string& key, const std::string& problem,
                         const std::string& expected, const std::string& meant) {
    if (isGood(key)) {
        add(Severity::kWarning, "doubtful-value", key, problem, expected, meant);
    }
}

void CheckedRow::add(Severity severity, const char* kind, const std::string& key,
                     const std::string& problem, const std::string& expected,
                     const std::string& meant) {
    Finding finding;
    finding.severity = severity;
    finding.kind = kind;
    finding.file = m_file.path();
    finding.line = m_file.lineOf(*m_container, key);
    finding.container = m_name;
    finding.key = key;
    finding.problem = problem;
    const auto text = m_texts.find(key);
    if (text != m_texts.end()) {
        finding.found = text->second;
    }
    finding.expected = expected;
    finding.suggestion = meant;
    m_findings.push_back(finding);
}

}  // namespace Config

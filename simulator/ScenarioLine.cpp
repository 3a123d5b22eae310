// SPDX-License-Identifier: Apache-2.0
#include "simulator/ScenarioLine.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace Simulator {
namespace {

constexpr const char* kBlanks = " \t\r";
constexpr double kLongestSeconds = 1e6;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The number at the start of the text, without a sign; what follows it goes to `rest`.
// False when there is none.
template <typename Number, typename... Format>
bool readNumber(const std::string& text, Number& number, std::string& rest, Format... format) {
    if (text.empty() || !isDigit(text.front())) {
        return false;
    }
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, format...);
    rest.assign(result.ptr, end);
    return result.ec == std::errc();
}

}  // namespace

ScenarioLine::ScenarioLine(std::string where, const std::string& text) : m_where(std::move(where)) {
    std::size_t at = 0;
    while ((at = text.find_first_not_of(kBlanks, at)) != std::string::npos && text[at] != '#') {
        if (text[at] == '"') {
            const std::size_t end = text.find('"', at + 1);
            if (end == std::string::npos) {
                throw ScenarioError(m_where + ": expected a \" at the end of " + text.substr(at));
            }
            m_words.push_back({text.substr(at + 1, end - at - 1), true});
            at = end + 1;
        } else {
            const std::size_t end = std::min(text.find_first_of(" \t\r#\"", at), text.size());
            m_words.push_back({text.substr(at, end - at), false});
            at = end;
        }
    }
}

std::string ScenarioLine::text() const {
    std::string text;
    for (const Word& word : m_words) {
        text += text.empty() ? "" : " ";
        text += word.quoted ? '"' + word.text + '"' : word.text;
    }
    return text;
}

bool ScenarioLine::take(const char* word) {
    const bool isNext = !atEnd() && peek() == word;
    m_next += isNext ? 1 : 0;
    return isNext;
}

std::string ScenarioLine::peek() const {
    return atEnd() || nextIsQuoted() ? std::string() : m_words[m_next].text;
}

bool ScenarioLine::nextIsQuoted() const {
    return !atEnd() && m_words[m_next].quoted;
}

bool ScenarioLine::nextIsNumber() const {
    const std::string next = peek();
    return !next.empty() && isDigit(next.front());
}

std::string ScenarioLine::word(const std::string& expected) {
    const std::string next = peek();
    if (next.empty()) {
        fail(expected);
    }
    ++m_next;
    return next;
}

std::size_t ScenarioLine::oneOf(const std::vector<const char*>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (take(words[i])) {
            return i;
        }
    }
    fail(listed(words));
}

unsigned ScenarioLine::number(const char* name, unsigned least, unsigned most) {
    unsigned value = 0;
    std::string rest;
    if (!readNumber(peek(), value, rest) || !rest.empty() || value < least || value > most) {
        fail(std::string(name) + " from " + std::to_string(least) + " to " + std::to_string(most));
    }
    ++m_next;
    return value;
}

double ScenarioLine::fraction(const char* name) {
    double value = 0;
    std::string rest;
    if (!readNumber(peek(), value, rest, std::chars_format::general) || !rest.empty() ||
        value > 1) {
        fail(std::string(name) + " from 0 to 1");
    }
    ++m_next;
    return value;
}

std::chrono::nanoseconds ScenarioLine::duration(const char* name) {
    double value = 0;
    std::string unit;
    const bool isNumber = readNumber(peek(), value, unit, std::chars_format::fixed);
    const double seconds = unit == "ms" ? value / 1000 : value;
    const bool isUnit = unit.empty() || unit == "s" || unit == "ms";
    if (!isNumber || !isUnit || seconds > kLongestSeconds) {
        fail(std::string(name) + " as 2.5 (seconds) or 300ms");
    }
    ++m_next;
    return std::chrono::round<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
}

std::string ScenarioLine::quoted(const char* name, std::size_t most) {
    if (!nextIsQuoted() || m_words[m_next].text.size() > most) {
        fail(std::string(name) + " of at most " + std::to_string(most) + " characters in quotes");
    }
    return m_words[m_next++].text;
}

void ScenarioLine::end(const std::string& expected) {
    if (!atEnd()) {
        fail(expected);
    }
}

void ScenarioLine::fail(const std::string& expected) const {
    const std::string found = atEnd() ? "the end of the line" : '"' + m_words[m_next].text + '"';
    throw ScenarioError(m_where + ": expected " + expected + ", found " + found);
}

std::string ScenarioLine::listed(const std::vector<const char*>& words) {
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        list += i == 0 ? "" : i + 1 == words.size() ? " or " : ", ";
        list += words[i];
    }
    return list;
}

}  // namespace Simulator

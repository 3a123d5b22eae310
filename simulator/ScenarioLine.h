// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace Simulator {

// What is wrong in a scenario: the file, the line, what was expected and what stands there instead.
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// One line of a scenario, read word by word. Words are separated by blanks; a text in quotes is one
// word; a # outside of quotes begins a comment. What is read must be there: a reading function that
// does not find what it wants throws ScenarioError with `expected` in it.
class ScenarioLine {
  public:
    /// `where` stands for the line in errors, as "file:12".
    ScenarioLine(std::string where, const std::string& text);

    const std::string& where() const { return m_where; }
    /// All words as they are, with single blanks between them.
    std::string text() const;
    bool atEnd() const { return m_next == m_words.size(); }

    /// Takes the next word if it is this one.
    bool take(const char* word);
    /// The next word, empty at the end or before a text in quotes; it is not taken.
    std::string peek() const;
    bool nextIsQuoted() const;
    bool nextIsNumber() const;

    std::string word(const std::string& expected);
    /// One of the words; gives its place among them.
    std::size_t oneOf(const std::vector<const char*>& words);
    bool onOrOff() { return oneOf({"on", "off"}) == 0; }
    /// A whole number in these limits; `name` has its article, as "a message id".
    unsigned number(const char* name, unsigned least, unsigned most);
    /// A number from 0 to 1, as "0.001" or "1e-3".
    double fraction(const char* name);
    /// Seconds, as "2.5" or "2.5s", or milliseconds, as "300ms".
    std::chrono::nanoseconds duration(const char* name);
    /// A text in quotes of at most `most` characters.
    std::string quoted(const char* name, std::size_t most);
    void end(const std::string& expected);

    /// Says what was expected in place of the next word.
    [[noreturn]] void fail(const std::string& expected) const;

    /// "a, b or c".
    static std::string listed(const std::vector<const char*>& words);

  private:
    struct Word {
        std::string text;
        bool quoted;
    };

    const std::string m_where;
    std::vector<Word> m_words;
    std::size_t m_next = 0;
};

}  // namespace Simulator

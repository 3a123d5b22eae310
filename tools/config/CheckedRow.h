// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <type_traits>

#include "face/FACE_Common.h"
#include "tools/config/ConfigFile.h"
#include "tools/config/Finding.h"

namespace Config {

// A row of parameters of one container, looked at in the place of FACE::KD_Config_Row: the server's
// own functions call it with their keys and variables, and it reads the variables as the server
// would and notes what is missing or is not what it should be. Refers to both arguments.
class CheckedRow {
  public:
    /// Opens the container; a missing one is an error.
    CheckedRow(ConfigFile& file, const std::string& container, Findings& findings);

    bool isOpen() const { return m_container != nullptr; }

    /// Reads one parameter: a string, a bool or a number of any width.
    template <typename T>
    CheckedRow& operator()(const char* key, T& value) {
        if (isOpen()) {
            read(key, value);
        }
        return *this;
    }

    /// Whether the key had a value of its type. Only then further findings make sense.
    bool isGood(const std::string& key) const { return m_texts.count(key) != 0; }

    // Further findings about a good key; nothing happens for another.
    void error(const std::string& key, const std::string& problem, const std::string& expected,
               const std::string& suggestion = {});
    void warning(const std::string& key, const std::string& problem, const std::string& expected,
                 const std::string& suggestion = {});

    /// The value as it stands in the file; empty for a key that is not good.
    std::string text(const std::string& key) const;

  private:
    void read(const char* key, std::string& value);
    void read(const char* key, FACE::String& value);
    void read(const char* key, bool& value);
    template <typename T>
    std::enable_if_t<std::is_integral_v<T>> read(const char* key, T& value) {
        using Limits = std::numeric_limits<T>;
        std::int64_t number = value;
        readNumber(key, number, std::int64_t{Limits::min()}, std::int64_t{Limits::max()});
        value = static_cast<T>(number);
    }

    /// False, with an error, when there is no text.
    bool readText(const char* key, const std::string& expected, std::string& text);
    void readNumber(const char* key, std::int64_t& value, std::int64_t least, std::int64_t most);
    void add(Severity severity, const char* kind, const std::string& key,
             const std::string& problem, const std::string& expected,
             const std::string& suggestion = {});

    ConfigFile& m_file;
    Findings& m_findings;
    ConfigFile::Container* m_container;
    std::string m_name;
    std::map<std::string, std::string> m_texts;  // of the good keys
};

}  // namespace Config

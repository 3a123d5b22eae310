// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/config/Finding.h"

namespace tinyxml2 {
class XMLDocument;
class XMLElement;
}  // namespace tinyxml2

namespace FACE {
class KD_Config;
}

namespace Config {

// One configuration file: its values through the server's own configuration service, so that both
// understand the same, and beside them the parsed document, which knows the lines and what else
// stands there. Notes what was looked up, so that the rest can be told.
class ConfigFile {
  public:
    // A child of the root. `name` is empty when it has none and can never be found then.
    struct Container {
        const tinyxml2::XMLElement* element = nullptr;
        std::string tag;
        std::string name;
        int line = 0;
        std::string openedAs;  // the name under which it was looked up; empty when it was not
        std::set<std::string> keysRead;
    };

    /// Loads the file. What keeps it from being one goes to `findings`, without expectation.
    ConfigFile(std::string path, Findings& findings);
    ConfigFile(const ConfigFile&) = delete;
    ConfigFile& operator=(const ConfigFile&) = delete;
    ~ConfigFile();

    const std::string& path() const { return m_path; }
    /// False when nothing can be looked up.
    bool isGood() const { return m_good; }
    /// False when there is no file, or none that may be read.
    bool isReadable() const { return m_readable; }

    std::vector<Container>& containers() { return m_containers; }
    const std::vector<Container>& containers() const { return m_containers; }
    /// The container that the server opens under a name, null when there is none.
    Container* find(const std::string& name);
    /// The same, and notes it as looked up.
    Container* open(const std::string& name);
    /// The text that the server reads under a key of it; empty when that is missing or has no text.
    std::string read(Container& container, const std::string& key);
    /// The line of the key; that of the container when the key is not there.
    int lineOf(const Container& container, const std::string& key) const;
    /// Whether the key stands there, be it without a text.
    bool has(const Container& container, const std::string& key) const;

  private:
    bool load(Findings& findings);

    const std::string m_path;
    bool m_readable = false;
    bool m_good = false;
    std::unique_ptr<FACE::KD_Config> m_config;
    std::unique_ptr<tinyxml2::XMLDocument> m_document;
    std::vector<Container> m_containers;
};

}  // namespace Config

// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>
#include <tinyxml2.h>

#include <map>

#include "ASPN/ServerIds.h"
#include "tools/config/Checks.h"
#include "tools/config/Suggestion.h"

namespace Config {
namespace {

using tinyxml2::XMLElement;

class Unread {
  public:
    Unread(const ConfigFile& file, Findings& findings) : m_file(file), m_findings(findings) {
        for (const Finding& finding : findings) {
            if (finding.file == file.path() && finding.kind == "missing-container") {
                m_missing.push_back(finding.container);
            }
        }
    }

    void lookAtAll() {
        for (const ConfigFile::Container& container : m_file.containers()) {
            if (container.openedAs.empty()) {
                lookAtUnread(container);
            } else {
                lookAtRead(container);
            }
            if (!container.name.empty()) {
                m_lines.emplace(container.name, container.line);
            }
        }
    }

  private:
    void lookAtUnread(const ConfigFile::Container& container) {
        if (container.name.empty()) {
            warn("unread-container", container, "", container.line,
                 fmt::format("a container <{}> without a Name is never found", container.tag));
            return;
        }
        const auto first = m_lines.find(container.name);
        if (first != m_lines.end()) {
            warn("duplicate-container", container, "", container.line,
                 fmt::format("stands twice; the one in line {} counts", first->second));
        } else if (!isOtherServer(container.name)) {
            warn("unread-container", container, "", container.line, "nobody reads this container",
                 suggestion(container.name, m_missing));
        }
    }

    void lookAtRead(const ConfigFile::Container& container) {
        if (container.name != container.openedAs) {
            warn("found-by-tag", container, "", container.line,
                 fmt::format("is what the server finds under {}, which is its tag",
                             container.openedAs));
        }
        const XMLElement* const parameters = container.element->FirstChildElement("Parameters");
        for (const XMLElement* child = container.element->FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            const std::string tag = child->Name();
            const bool isName = child == container.element->FirstChildElement("Name");
            if (!isName && child != parameters) {
                warn("unread-key", container, tag, child->GetLineNum(),
                     tag == "Name" || tag == "Parameters" ? "stands twice; the first counts"
                                                          : "stands outside of Parameters");
            }
        }
        if (parameters != nullptr) {
            lookAtKeys(container, *parameters);
        }
    }

    void lookAtKeys(const ConfigFile::Container& container, const XMLElement& parameters) {
        std::vector<std::string> missing;
        for (const std::string& key : container.keysRead) {
            if (!m_file.has(container, key)) {
                missing.push_back(key);
            }
        }
        std::map<std::string, int> lines;
        for (const XMLElement* child = parameters.FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            const std::string key = child->Name();
            const auto [first, isFirst] = lines.emplace(key, child->GetLineNum());
            if (!isFirst) {
                warn("duplicate-key", container, key, child->GetLineNum(),
                     fmt::format("stands twice; the one in line {} counts", first->second));
            } else if (container.keysRead.count(key) == 0) {
                warn("unread-key", container, key, child->GetLineNum(), "nobody reads this key",
                     suggestion(key, missing));
            }
        }
    }

    // Several servers may share a file.
    static bool isOtherServer(const std::string& name) {
        for (int id = 0; id <= UINT8_MAX; ++id) {
            const std::string server = ASPN2::ServerIds::to_string(static_cast<unsigned char>(id));
            if (server == name && server != ASPN2::ServerIds::kInvalid) {
                return true;
            }
        }
        return false;
    }

    void warn(const char* kind, const ConfigFile::Container& container, const std::string& key,
              int line, const std::string& problem, const std::string& meant = {}) {
        Finding finding;
        finding.severity = Severity::kWarning;
        finding.kind = kind;
        finding.file = m_file.path();
        finding.line = line;
        finding.container = container.name;
        finding.key = key;
        finding.problem = problem;
        finding.suggestion = meant;
        m_findings.push_back(finding);
    }

    const ConfigFile& m_file;
    Findings& m_findings;
    std::vector<std::string> m_missing;  // names that were looked up
    std::map<std::string, int> m_lines;  // of the first container of each name
};

}  // namespace

void checkUnread(const ConfigFile& file, Findings& findings) {
    Unread(file, findings).lookAtAll();
}

}  // namespace Config

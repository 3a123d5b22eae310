// SPDX-License-Identifier: Apache-2.0
#include "tools/config/ConfigFile.h"

#include <tinyxml2.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "face/KD_Config.h"

namespace Config {
namespace {

using RC = FACE::RETURN_CODE_TYPE;
using tinyxml2::XMLElement;

constexpr const char* kRoot = "KD_Configurations";

// "XML_ERROR_MISMATCHED_ELEMENT" as words.
std::string inWords(std::string errorName) {
    for (const char* const start : {"XML_ERROR_", "XML_"}) {
        if (errorName.rfind(start, 0) == 0) {
            errorName.erase(0, std::string(start).size());
        }
    }
    std::transform(errorName.begin(), errorName.end(), errorName.begin(), [](unsigned char c) {
        return c == '_' ? ' ' : static_cast<char>(std::tolower(c));
    });
    return errorName;
}

const XMLElement* keyOf(const XMLElement* container, const std::string& key) {
    const XMLElement* const parameters = container->FirstChildElement("Parameters");
    return parameters != nullptr ? parameters->FirstChildElement(key.c_str()) : nullptr;
}

}  // namespace

ConfigFile::ConfigFile(std::string path, Findings& findings)
    : m_path(std::move(path)),
      m_config(std::make_unique<FACE::KD_Config>()),
      m_document(std::make_unique<tinyxml2::XMLDocument>(true, tinyxml2::PRESERVE_WHITESPACE)) {
    m_good = load(findings);
}

ConfigFile::~ConfigFile() = default;

bool ConfigFile::load(Findings& findings) {
    Finding finding;
    finding.file = m_path;
    const auto fail = [&](const char* kind, const std::string& problem, int line = 0) {
        finding.kind = kind;
        finding.problem = problem;
        finding.line = line;
        findings.push_back(finding);
        return false;
    };

    std::error_code error;
    const auto status = std::filesystem::status(m_path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return fail("missing-file", "there is no such file");
    }
    if (status.type() != std::filesystem::file_type::regular) {
        return fail("missing-file", "is not a file");
    }
    if (access(m_path.c_str(), R_OK) != 0) {
        return fail("unreadable-file", "may not be read");
    }
    m_readable = true;
    if (m_document->LoadFile(m_path.c_str()) != tinyxml2::XML_SUCCESS) {
        return fail("broken-xml", "is no XML: " + inWords(m_document->ErrorName()),
                    m_document->ErrorLineNum());
    }
    const XMLElement* const root = m_document->FirstChildElement(kRoot);
    if (root == nullptr) {
        const XMLElement* const other = m_document->RootElement();
        finding.expected = std::string("the root element ") + kRoot;
        if (other != nullptr) {
            finding.found = other->Name();
        }
        return fail("wrong-root", "is no configuration",
                    other != nullptr ? other->GetLineNum() : 0);
    }
    RC::Value rc = RC::NO_ERROR;
    m_config->Initialize(m_path.c_str(), rc);
    if (rc != RC::NO_ERROR) {
        return fail("unreadable-file", "cannot be read");
    }
    for (const XMLElement* element = root->FirstChildElement(); element != nullptr;
         element = element->NextSiblingElement()) {
        const XMLElement* const name = element->FirstChildElement("Name");
        const char* const text = name != nullptr ? name->GetText() : nullptr;
        Container container;
        container.element = element;
        container.tag = element->Name();
        container.name = text != nullptr ? text : "";
        container.line = element->GetLineNum();
        m_containers.push_back(std::move(container));
    }
    return true;
}

ConfigFile::Container* ConfigFile::find(const std::string& name) {
    // By its name or by its tag, whichever comes first in the file, as the service finds it.
    const auto found =
        std::find_if(m_containers.begin(), m_containers.end(), [&name](const Container& container) {
            return !container.name.empty() && (container.name == name || container.tag == name);
        });
    return found != m_containers.end() ? &*found : nullptr;
}

ConfigFile::Container* ConfigFile::open(const std::string& name) {
    Container* const container = find(name);
    if (container != nullptr) {
        container->openedAs = name;
    }
    return container;
}

std::string ConfigFile::read(Container& container, const std::string& key) {
    container.keysRead.insert(key);
    int handle = 0;
    RC::Value rc = RC::NO_ERROR;
    m_config->Open(container.openedAs.c_str(), handle, rc);
    if (rc != RC::NO_ERROR) {
        return "";
    }
    std::string text;
    int size = 0;
    m_config->Get_Size(handle, key.c_str(), size, rc);
    if (rc == RC::NO_ERROR && size > 0) {
        text.resize(static_cast<std::size_t>(size));
        int bytes = 0;
        m_config->Read(handle, key.c_str(), text.data(), size, bytes, rc);
        text.resize(rc == RC::NO_ERROR ? static_cast<std::size_t>(bytes) : 0);
    }
    m_config->Close(handle, rc);
    return text;
}

int ConfigFile::lineOf(const Container& container, const std::string& key) const {
    const XMLElement* const element = keyOf(container.element, key);
    return element != nullptr ? element->GetLineNum() : container.line;
}

bool ConfigFile::has(const Container& container, const std::string& key) const {
    return keyOf(container.element, key) != nullptr;
}

}  // namespace Config

// SPDX-License-Identifier: Apache-2.0
#include "tests/end_to_end/TestDeployment.h"

#include <tinyxml2.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace fs = std::filesystem;
using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

namespace {

XMLElement* findContainer(XMLDocument& document, const std::string& name) {
    for (XMLElement* container = document.RootElement()->FirstChildElement(); container != nullptr;
         container = container->NextSiblingElement()) {
        const XMLElement* itsName = container->FirstChildElement("Name");
        if (itsName != nullptr && itsName->GetText() != nullptr && name == itsName->GetText()) {
            return container;
        }
    }
    throw std::runtime_error("no container " + name);
}

void edit(const fs::path& file, const std::function<void(XMLDocument&)>& change) {
    XMLDocument document;
    if (document.LoadFile(file.c_str()) != tinyxml2::XML_SUCCESS) {
        throw std::runtime_error("cannot read " + file.string());
    }
    change(document);
    if (document.SaveFile(file.c_str()) != tinyxml2::XML_SUCCESS) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

XMLElement* findKey(XMLDocument& document, const std::string& container, const std::string& key) {
    XMLElement* found = findContainer(document, container)
                            ->FirstChildElement("Parameters")
                            ->FirstChildElement(key.c_str());
    if (found == nullptr) {
        throw std::runtime_error("no key " + key + " in " + container);
    }
    return found;
}

}  // namespace

TestDeployment::TestDeployment(const std::string& variant) : m_variant(variant) {
    std::string path = (fs::temp_directory_path() / "rovan-deployment-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no temporary directory");
    }
    m_directory = path;
    fs::copy(fs::path(ROVAN_SOURCE_DIR) / "config", m_directory, fs::copy_options::recursive);

    moveToOwnBus(connectionsFile());
}

TestDeployment::~TestDeployment() {
    std::error_code ignored;
    fs::remove_all(m_directory, ignored);
}

fs::path TestDeployment::connectionsFileOf(const std::string& variant) {
    const fs::path file = m_directory / variant / "connections.xml";
    moveToOwnBus(file);
    return file;
}

fs::path TestDeployment::backFilling(const fs::path& connectionsFile) {
    const fs::path copy = connectionsFile.parent_path() / "listener.xml";
    fs::copy_file(connectionsFile, copy, fs::copy_options::overwrite_existing);
    set(copy, "FastRtps", "BackFillHistory", "TRUE");
    return copy;
}

void TestDeployment::moveToOwnBus(const fs::path& connectionsFile) {
    set(connectionsFile, "FastRtps", "DomainId", std::to_string(m_bus.number()));
    set(connectionsFile, "FastRtps", "TcpPort", std::to_string(m_bus.tcpPort()));
}

void TestDeployment::setServer(const std::string& key, const std::string& value) {
    set(topLevelFile(), "Rovan", key, value);
}

void TestDeployment::setSystem(const std::string& key, const std::string& value) {
    set(topLevelFile(), "Keldra", key, value);
}

void TestDeployment::set(const fs::path& file, const std::string& container, const std::string& key,
                         const std::string& value) {
    edit(file,
         [&](XMLDocument& document) { findKey(document, container, key)->SetText(value.c_str()); });
}

void TestDeployment::removeContainer(const fs::path& file, const std::string& container) {
    edit(file,
         [&](XMLDocument& document) { document.DeleteNode(findContainer(document, container)); });
}

FileChanged::FileChanged(fs::path file) : m_file(std::move(file)) {
    std::ostringstream text;
    text << std::ifstream(m_file).rdbuf();
    m_original = text.str();
}

FileChanged::~FileChanged() {
    std::ofstream(m_file) << m_original;
}

KeyRemoved::KeyRemoved(const fs::path& file, const std::string& container, const std::string& key)
    : FileChanged(file) {
    edit(file,
         [&](XMLDocument& document) { document.DeleteNode(findKey(document, container, key)); });
}

ContainerRemoved::ContainerRemoved(const fs::path& file, const std::string& container)
    : FileChanged(file) {
    edit(file,
         [&](XMLDocument& document) { document.DeleteNode(findContainer(document, container)); });
}

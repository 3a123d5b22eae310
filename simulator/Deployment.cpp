// SPDX-License-Identifier: Apache-2.0
#include "simulator/Deployment.h"

#include <tinyxml2.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace Simulator {
namespace {

// One configuration file.
class ConfigFile {
  public:
    explicit ConfigFile(const std::filesystem::path& path) : m_path(path.string()) {
        if (m_document.LoadFile(m_path.c_str()) != tinyxml2::XML_SUCCESS) {
            throw std::runtime_error(m_path + ": " + m_document.ErrorStr());
        }
        m_root = m_document.FirstChildElement("KD_Configurations");
        if (m_root == nullptr) {
            throw std::runtime_error(m_path + ": no KD_Configurations");
        }
    }

    const tinyxml2::XMLElement* root() const { return m_root; }

    /// The value of `key` in the container named `container`.
    std::string text(const std::string& container, const char* key) const {
        for (const auto* element = m_root->FirstChildElement(); element != nullptr;
             element = element->NextSiblingElement()) {
            if (nameOf(*element) != container) {
                continue;
            }
            const std::string value = parameter(*element, key);
            if (!value.empty()) {
                return value;
            }
        }
        throw std::runtime_error(m_path + ": no " + key + " in " + container);
    }

    /// The same as a number in any base that the server understands.
    std::uint32_t number(const std::string& container, const char* key) const {
        return toNumber(text(container, key));
    }

    static std::string nameOf(const tinyxml2::XMLElement& container) {
        return textOf(container.FirstChildElement("Name"));
    }

    static std::string parameter(const tinyxml2::XMLElement& container, const char* key) {
        const auto* const parameters = container.FirstChildElement("Parameters");
        return parameters == nullptr ? "" : textOf(parameters->FirstChildElement(key));
    }

    static std::uint32_t toNumber(const std::string& text) {
        return static_cast<std::uint32_t>(std::strtoul(text.c_str(), nullptr, 0));
    }

  private:
    static std::string textOf(const tinyxml2::XMLElement* element) {
        const char* const text = element == nullptr ? nullptr : element->GetText();
        return text == nullptr ? "" : text;
    }

    std::string m_path;
    tinyxml2::XMLDocument m_document;
    const tinyxml2::XMLElement* m_root = nullptr;
};

}  // namespace

Deployment Deployment::read(const std::filesystem::path& topLevelFile) {
    Deployment deployment;
    deployment.file = std::filesystem::absolute(topLevelFile);
    deployment.directory = deployment.file.parent_path();

    const ConfigFile top(deployment.file);
    deployment.uart = top.number("Rovan", "PARAM_3");
    deployment.pulse = top.number("Rovan", "PARAM_4");

    deployment.connectionsFile = deployment.directory / top.text("Rovan", "Connections");

    const ConfigFile devices(deployment.directory / top.text("Rovan", "IODevices"));
    deployment.serialChannel = devices.number("Rovan", "ChannelNum");
    deployment.serialSpeed = static_cast<int>(devices.number("Rovan", "Baudrate"));
    deployment.rovanKdPort = devices.number("ROVAN_KD", "Port");
    deployment.kdRovanPort = devices.number("KD_ROVAN", "Port");
    for (const auto* element = devices.root()->FirstChildElement(); element != nullptr;
         element = element->NextSiblingElement()) {
        const std::string base = ConfigFile::parameter(*element, "BaseAddress");
        const std::string size = ConfigFile::parameter(*element, "Size");
        if (!base.empty() && !size.empty()) {
            deployment.memory[ConfigFile::nameOf(*element)] = {ConfigFile::toNumber(base),
                                                               ConfigFile::toNumber(size)};
        }
    }
    return deployment;
}

}  // namespace Simulator

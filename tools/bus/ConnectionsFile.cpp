// SPDX-License-Identifier: Apache-2.0
#include "tools/bus/ConnectionsFile.h"

#include <fmt/format.h>
#include <tinyxml2.h>

#include <algorithm>
#include <filesystem>

#include "face/KD_Config.h"
#include "face/KD_Config_Row.h"
#include "face/KD_TSS_Settings.h"

namespace Bus {
namespace {

using RC = FACE::RETURN_CODE_TYPE;

// The names of the containers that describe a connection. The configuration service finds
// containers only by name, so the names come from the document itself.
std::vector<std::string> connectionNames(const std::string& path) {
    tinyxml2::XMLDocument document(true, tinyxml2::PRESERVE_WHITESPACE);
    document.LoadFile(path.c_str());
    std::vector<std::string> names;
    const auto* root = document.FirstChildElement("KD_Configurations");
    for (const auto* container = root != nullptr ? root->FirstChildElement() : nullptr;
         container != nullptr; container = container->NextSiblingElement()) {
        const auto* name = container->FirstChildElement("Name");
        const auto* parameters = container->FirstChildElement("Parameters");
        if (name != nullptr && name->GetText() != nullptr && parameters != nullptr &&
            parameters->FirstChildElement("TopicType") != nullptr) {
            names.emplace_back(name->GetText());
        }
    }
    return names;
}

void load(FACE::KD_Config& config, const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        throw UsageError(fmt::format("{}: no such file", path));
    }
    if (!std::filesystem::is_regular_file(path, error)) {
        throw UsageError(fmt::format("{}: not a file", path));
    }
    RC::Value rc = RC::NO_ERROR;
    config.Initialize(path.c_str(), rc);
    if (rc != RC::NO_ERROR) {
        throw UsageError(fmt::format("{}: not a readable configuration file", path));
    }
}

}  // namespace

ConnectionsFile::ConnectionsFile(const std::string& path) : m_path(path) {
    FACE::KD_Config config;
    load(config, path);
    {
        FACE::KD_Config_Row row(config, FACE::TSS::kSettingsContainer);
        if (row.openCode() != RC::NO_ERROR) {
            throw UsageError(fmt::format("{}: no container \"{}\"; is it a connections file?", path,
                                         FACE::TSS::kSettingsContainer));
        }
        FACE::TSS::readSettings(row, m_settings);
        if (row.code() != RC::NO_ERROR) {
            throw UsageError(fmt::format("{}: a key of the container \"{}\" is missing", path,
                                         FACE::TSS::kSettingsContainer));
        }
    }
    for (const std::string& name : connectionNames(path)) {
        Topic topic{name, "", ""};
        FACE::KD_Config_Row row(config, name.c_str());
        FACE::TSS::readConnection(row, topic.typeName, topic.pubSubType);
        if (row.code() != RC::NO_ERROR) {
            throw UsageError(fmt::format("{}: the connection \"{}\" is incomplete", path, name));
        }
        if (find(name) == nullptr) {
            m_topics.push_back(topic);
        }
    }
}

const Topic* ConnectionsFile::find(const std::string& name) const {
    const auto found = std::find_if(m_topics.begin(), m_topics.end(),
                                    [&name](const Topic& topic) { return topic.name == name; });
    return found != m_topics.end() ? &*found : nullptr;
}

const Topic& ConnectionsFile::get(const std::string& name) const {
    const Topic* const topic = find(name);
    if (topic == nullptr) {
        std::string known;
        for (const Topic& each : m_topics) {
            known += (known.empty() ? "" : ", ") + each.name;
        }
        throw UsageError(fmt::format("unknown topic {}; {} has {}", name, m_path,
                                     known.empty() ? "none" : known));
    }
    return *topic;
}

double ConnectionsFile::discoverySeconds() const {
    return m_settings.useTransport.compare(0, 3, "TCP") == 0 ? 10 : 3;
}

ConnectionsFile::Settings ConnectionsFile::counterpart(bool listen) const {
    Settings settings = m_settings;
    if (settings.useTransport == "TCP_Server") {
        settings.useTransport = "TCP_Client";
    } else if (settings.useTransport == "TCP_Client" && listen) {
        settings.useTransport = "TCP_Server";
    }
    return settings;
}

}  // namespace Bus

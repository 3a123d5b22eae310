// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <tinyxml2.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tools/config/Check.h"

namespace tools_config_test {

namespace fs = std::filesystem;

inline const fs::path kShipped = ROVAN_SOURCE_DIR "/config";

inline std::string contents(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// A place where a value stands: the file by its name, the container by its Name.
struct Place {
    std::string file;
    std::string container;
    std::string key;
    std::string value;
};

/// Every key of a shipped file, in the order of the file.
inline std::vector<Place> placesIn(const fs::path& path) {
    std::vector<Place> places;
    tinyxml2::XMLDocument document;
    document.LoadFile(path.c_str());
    const auto* const root = document.FirstChildElement("KD_Configurations");
    for (const auto* container = root->FirstChildElement(); container != nullptr;
         container = container->NextSiblingElement()) {
        const auto* key = container->FirstChildElement("Parameters")->FirstChildElement();
        for (; key != nullptr; key = key->NextSiblingElement()) {
            places.push_back({path.filename(), container->FirstChildElement("Name")->GetText(),
                              key->Name(), key->GetText()});
        }
    }
    return places;
}

/// Every key of the three files of the shipped variant on UDP.
inline std::vector<Place> allPlaces() {
    std::vector<Place> places;
    for (const char* const file : {"udp/rovan.xml", "udp/connections.xml", "io_devices.xml"}) {
        for (Place& place : placesIn(kShipped / file)) {
            places.push_back(std::move(place));
        }
    }
    return places;
}

// A copy of the shipped files in one directory, to be changed; gone at the end.
class Deployment {
  public:
    explicit Deployment(const std::string& variant = "udp") {
        std::string path = fs::temp_directory_path() / "rovan-config-XXXXXX";
        EXPECT_NE(mkdtemp(path.data()), nullptr);
        m_directory = path;
        fs::copy_file(kShipped / variant / "rovan.xml", m_directory / "rovan.xml");
        fs::copy_file(kShipped / variant / "connections.xml", m_directory / "connections.xml");
        fs::copy_file(kShipped / "io_devices.xml", m_directory / "io_devices.xml");
        set("rovan.xml", "Rovan", "IODevices", "io_devices.xml");
    }
    ~Deployment() {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }
    Deployment(const Deployment&) = delete;
    Deployment& operator=(const Deployment&) = delete;

    fs::path directory() const { return m_directory; }
    fs::path path(const std::string& file) const { return m_directory / file; }

    void write(const std::string& file, const std::string& text) const {
        std::ofstream(path(file), std::ios::binary) << text;
    }

    /// Replaces the one place where `from` stands.
    void replace(const std::string& file, const std::string& from, const std::string& to) const {
        std::string text = contents(path(file));
        const std::size_t at = text.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        ASSERT_EQ(text.find(from, at + 1), std::string::npos) << from << " stands twice";
        write(file, text.replace(at, from.size(), to));
    }

    void set(const std::string& file, const std::string& container, const std::string& key,
             const std::string& value) const {
        edit(file, container, [&](tinyxml2::XMLElement* element) {
            element->FirstChildElement("Parameters")
                ->FirstChildElement(key.c_str())
                ->SetText(value.c_str());
        });
    }

    void removeKey(const Place& place) const {
        edit(place.file, place.container, [&](tinyxml2::XMLElement* element) {
            auto* const parameters = element->FirstChildElement("Parameters");
            parameters->DeleteChild(parameters->FirstChildElement(place.key.c_str()));
        });
    }

    void renameKey(const Place& place, const std::string& name) const {
        edit(place.file, place.container, [&](tinyxml2::XMLElement* element) {
            element->FirstChildElement("Parameters")
                ->FirstChildElement(place.key.c_str())
                ->SetName(name.c_str());
        });
    }

    void removeContainer(const std::string& file, const std::string& container) const {
        edit(file, container,
             [](tinyxml2::XMLElement* element) { element->Parent()->DeleteChild(element); });
    }

    /// Puts a text behind the last container.
    void append(const std::string& file, const std::string& text) const {
        replace(file, "</KD_Configurations>", text + "</KD_Configurations>");
    }

    Config::CheckResult check() const { return Config::check(path("rovan.xml"), m_directory); }

  private:
    template <typename Change>
    void edit(const std::string& file, const std::string& container, Change change) const {
        tinyxml2::XMLDocument document;
        ASSERT_EQ(document.LoadFile(path(file).c_str()), tinyxml2::XML_SUCCESS);
        auto* element = document.FirstChildElement("KD_Configurations")->FirstChildElement();
        while (element != nullptr && element->FirstChildElement("Name")->GetText() != container) {
            element = element->NextSiblingElement();
        }
        ASSERT_NE(element, nullptr) << container;
        change(element);
        ASSERT_EQ(document.SaveFile(path(file).c_str()), tinyxml2::XML_SUCCESS);
    }

    fs::path m_directory;
};

/// All findings as text, for the message of a failed expectation.
inline std::string described(const Config::CheckResult& result) {
    std::string text;
    for (const Config::Finding& finding : result.findings) {
        text += (finding.severity == Config::Severity::kError ? "error " : "warning ") +
                finding.kind + ' ' + fs::path(finding.file).filename().string() + ':' +
                std::to_string(finding.line) + ' ' + finding.container + '/' + finding.key + ": " +
                finding.found.value_or("-") + ' ' + finding.problem + "; " + finding.expected +
                "; " + finding.suggestion + '\n';
    }
    return text;
}

}  // namespace tools_config_test

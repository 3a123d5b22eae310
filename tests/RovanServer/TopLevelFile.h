// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

// The text of a top-level configuration file, changed key by key before it is written.
class TopLevelFile {
  public:
    using Parameters = std::vector<std::pair<std::string, std::string>>;

    Parameters system{
        {"System", "TessalyPlus"}, {"Configuration", "Desk"}, {"Environment", "SYSTEM_ENV_LIVE"}};
    Parameters server{{"Connections", "connections.xml"},
                      {"IODevices", "io_devices.xml"},
                      {"Debug", "FALSE"},
                      {"PRI", "0"},
                      {"CPU", "0"},
                      {"PARAM_1", "115200"},
                      {"PARAM_2", "0"},
                      {"PARAM_3", "0"},
                      {"PARAM_4", "0"},
                      {"PARAM_5", "FALSE"},
                      {"PARAM_6", "9225"},
                      {"PARAM_7", "8504"},
                      {"PARAM_8", "0"},
                      {"PARAM_9", "0"}};
    std::string systemName = "Keldra";
    std::string serverName = "Rovan";

    static void set(Parameters& parameters, const std::string& key, const std::string& value) {
        find(parameters, key)->second = value;
    }
    static void remove(Parameters& parameters, const std::string& key) {
        parameters.erase(find(parameters, key));
    }

    std::string text() const {
        return "<KD_Configurations>" + container("System", systemName, system) +
               container("Server", serverName, server) + "</KD_Configurations>";
    }

  private:
    static Parameters::iterator find(Parameters& parameters, const std::string& key) {
        return std::find_if(parameters.begin(), parameters.end(),
                            [&](const auto& parameter) { return parameter.first == key; });
    }

    static std::string container(const std::string& tag, const std::string& name,
                                 const Parameters& parameters) {
        std::string text = "<" + tag + "><Name>" + name + "</Name><Parameters>";
        for (const auto& [key, value] : parameters) {
            text += "<" + key + ">" + value + "</" + key + ">";
        }
        return text + "</Parameters></" + tag + ">";
    }
};

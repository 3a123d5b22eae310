// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Config_Helpers.h"

#include <algorithm>
#include <cstdlib>

#include "utility/Console.h"

namespace FACE::KD_Config_Helpers {

std::string Details::Read_Config(Configuration& config, int handle, const String& name) {
    std::string text;
    int size = 0;
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    config.Get_Size(handle, name, size, rc);
    if (rc == RETURN_CODE_TYPE::NO_ERROR && size > 0) {
        text.resize(static_cast<size_t>(size));
        int bytesRead = 0;
        config.Read(handle, name, text.data(), size, bytesRead, rc);
        text.resize(rc == RETURN_CODE_TYPE::NO_ERROR ? static_cast<size_t>(bytesRead) : 0);
    }
    if (text.empty()) {
        Console::line("WARNING - Parameter " + toStdString(name) + " not found");
    }
    return text;
}

bool Details::Write_Config(Configuration& config, int handle, const String& name,
                           std::string value) {
    const int size = static_cast<int>(value.size());
    int bytesWritten = 0;
    auto rc = RETURN_CODE_TYPE::NO_ERROR;
    config.Write(handle, name, value.data(), size, bytesWritten, rc);
    return rc == RETURN_CODE_TYPE::NO_ERROR && bytesWritten == size;
}

int64_t Details::toSigned(const std::string& text) {
    return std::strtoll(text.c_str(), nullptr, 0);
}

uint64_t Details::toUnsigned(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 0);
}

void Get_Parameter(Configuration& config, int handle, const String& name, std::string& value,
                   RETURN_CODE_TYPE::Value& rc) {
    std::string text = Details::Read_Config(config, handle, name);
    if (text.empty()) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    } else {
        value = std::move(text);
    }
}

void Get_String_Parameter(Configuration& config, int handle, const String& name, String& value,
                          RETURN_CODE_TYPE::Value& rc) {
    std::string text;
    Get_Parameter(config, handle, name, text, rc);
    if (!text.empty()) {
        value = String(text.c_str());
    }
}

void Get_Boolean_Parameter(Configuration& config, int handle, const String& name, bool& value,
                           RETURN_CODE_TYPE::Value& rc) {
    std::string text;
    Get_Parameter(config, handle, name, text, rc);
    if (text.empty()) {
        return;
    }
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    value = text == "true" || (text != "false" && Details::toSigned(text) != 0);
}

void Set_String_Parameter(Configuration& config, int handle, const String& name,
                          const String& value, RETURN_CODE_TYPE::Value& rc) {
    if (!Details::Write_Config(config, handle, name, toStdString(value))) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    }
}

void Set_Boolean_Parameter(Configuration& config, int handle, const String& name, bool value,
                           RETURN_CODE_TYPE::Value& rc) {
    Set_String_Parameter(config, handle, name, value ? "TRUE" : "FALSE", rc);
}

}  // namespace FACE::KD_Config_Helpers

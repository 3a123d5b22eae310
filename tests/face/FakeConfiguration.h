// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "face/FACE_Configuration.h"

// A configuration held in maps that writes down what is asked of it: "initialize path", "open
// Name", "close Name".
class FakeConfiguration : public FACE::Configuration {
  public:
    using Code = FACE::RETURN_CODE_TYPE::Value;

    std::map<std::string, std::map<std::string, std::string>> containers;
    std::vector<std::string> trace;
    Code initializeCode = FACE::RETURN_CODE_TYPE::NO_ERROR;

    void Initialize(const FACE::String& path, Code& rc) override {
        trace.push_back("initialize " + FACE::toStdString(path));
        rc = initializeCode;
    }

    void Open(const FACE::String& name, int& handle, Code& rc) override {
        const std::string text = FACE::toStdString(name);
        trace.push_back("open " + text);
        if (containers.count(text) == 0) {
            rc = FACE::RETURN_CODE_TYPE::INVALID_CONFIG;
            return;
        }
        m_open.push_back(text);
        handle = static_cast<int>(m_open.size()) - 1;
        rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    }

    void Get_Size(int handle, const FACE::String& name, int& size, Code& rc) override {
        const std::string* const text = find(handle, name);
        if (text != nullptr) {
            size = static_cast<int>(text->size());
        }
        rc = text != nullptr ? FACE::RETURN_CODE_TYPE::NO_ERROR
                             : FACE::RETURN_CODE_TYPE::INVALID_CONFIG;
    }

    void Read(int handle, const FACE::String& name, void* buffer, int bufferSize, int& bytesRead,
              Code& rc) override {
        bytesRead = 0;
        const std::string* const text = find(handle, name);
        if (text == nullptr) {
            rc = FACE::RETURN_CODE_TYPE::INVALID_PARAM;
            return;
        }
        bytesRead = std::min(bufferSize, static_cast<int>(text->size()));
        std::memcpy(buffer, text->data(), static_cast<std::size_t>(bytesRead));
        rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    }

    void Close(int handle, Code& rc) override {
        trace.push_back("close " + m_open.at(static_cast<std::size_t>(handle)));
        rc = FACE::RETURN_CODE_TYPE::NO_ERROR;
    }

    // The services never write or seek.
    void Write(int, const FACE::String&, void*, int, int&, Code&) override {}
    void Seek(int, WHENCE_TYPE::Value, int, Code&) override {}

  private:
    const std::string* find(int handle, const FACE::String& name) const {
        const auto& parameters = containers.at(m_open.at(static_cast<std::size_t>(handle)));
        const auto found = parameters.find(FACE::toStdString(name));
        return found == parameters.end() || found->second.empty() ? nullptr : &found->second;
    }

    std::vector<std::string> m_open;
};

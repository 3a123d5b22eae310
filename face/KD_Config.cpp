// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Config.h"

#include <fcntl.h>
#include <tinyxml2.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "utility/Console.h"

namespace FACE {
namespace {

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

constexpr const char* kRoot = "KD_Configurations";
constexpr const char* kSchemaLocation = "xsi:noNamespaceSchemaLocation";

// The element's text, null when it has none.
const char* textOf(const XMLElement* element) {
    const char* text = element != nullptr ? element->GetText() : nullptr;
    return text != nullptr && *text != '\0' ? text : nullptr;
}

const char* nameOf(const XMLElement* container) {
    return textOf(container->FirstChildElement("Name"));
}

XMLElement* parameterOf(XMLElement* container, const std::string& name) {
    XMLElement* parameters = container->FirstChildElement("Parameters");
    return parameters != nullptr ? parameters->FirstChildElement(name.c_str()) : nullptr;
}

// The text of the parameter, or with an empty `name` that of the container's name.
const char* lookUp(XMLElement* container, const std::string& name) {
    return name.empty() ? nameOf(container) : textOf(parameterOf(container, name));
}

int sizeOf(const char* text) {
    return static_cast<int>(std::min<size_t>(std::strlen(text), INT_MAX));
}

// With a null tag, any sibling.
XMLElement* nextSibling(XMLElement* element, bool forward, const char* tag = nullptr) {
    return forward ? element->NextSiblingElement(tag) : element->PreviousSiblingElement(tag);
}

XMLElement* getConfigContainer(XMLDocument& document, const std::string& name, bool forward) {
    XMLElement* root = document.FirstChildElement(kRoot);
    for (XMLElement* container = forward ? root->FirstChildElement() : root->LastChildElement();
         container != nullptr; container = nextSibling(container, forward)) {
        const char* containerName = nameOf(container);
        if (containerName != nullptr && (name == containerName || name == container->Name())) {
            return container;
        }
    }
    return nullptr;
}

}  // namespace

struct KD_Config::config_set {
    XMLElement* container;  // part of the document
    std::string tag;
    std::string name;

    void aimAt(XMLElement* element) {
        const char* text = nameOf(element);
        container = element;
        name = text != nullptr ? text : "";
    }
};

KD_Config::KD_Config() = default;
KD_Config::~KD_Config() = default;

void KD_Config::Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::NO_ERROR;
    if (m_initialized) {
        return;
    }
    rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    const std::lock_guard<std::mutex> lock(m_documentMutex);
    m_document = std::make_unique<XMLDocument>(true, tinyxml2::PRESERVE_WHITESPACE);
    const std::string file = toStdString(path);
    // A pipe could not be loaded either, but opening it would wait for its writer for ever.
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) ||
        m_document->LoadFile(file.c_str()) != tinyxml2::XML_SUCCESS) {
        return;
    }
    const XMLElement* root = m_document->FirstChildElement(kRoot);
    if (root == nullptr) {
        Console::line("Configuration XML - " + file + " Error: Unable to locate the " + kRoot +
                      " object");
        return;
    }
    const char* schemaLocation = root->Attribute(kSchemaLocation);
    m_schemaLocation = schemaLocation != nullptr ? schemaLocation : "";
    m_path = file;
    m_initialized = true;
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

void KD_Config::Open(const String& name, int& handle, RETURN_CODE_TYPE::Value& rc) {
    // Atomic for the sake of other instances, which may be in use on other threads.
    static std::atomic<int> s_HandleCount{0};

    if (!m_initialized) {
        rc = RETURN_CODE_TYPE::INVALID_MODE;
        return;
    }
    rc = RETURN_CODE_TYPE::NO_ERROR;
    const std::string wanted = toStdString(name);
    for (const auto& [openHandle, set] : m_sets) {
        if (set->name == wanted) {
            handle = openHandle;
            return;
        }
    }
    XMLElement* container = getConfigContainer(*m_document, wanted, true);
    if (container == nullptr) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
        return;
    }
    for (const auto& [openHandle, set] : m_sets) {
        if (set->tag == container->Name()) {
            set->aimAt(container);
            handle = openHandle;
            return;
        }
    }
    auto set = std::make_unique<config_set>();
    set->tag = container->Name();
    set->aimAt(container);
    handle = s_HandleCount++;
    m_sets[handle] = std::move(set);
}

void KD_Config::Get_Size(int handle, const String& name, int& size, RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    const config_set* set = findSet(handle);
    if (set == nullptr) {
        return;
    }
    if (const char* text = lookUp(set->container, toStdString(name))) {
        size = sizeOf(text);
        rc = RETURN_CODE_TYPE::NO_ERROR;
    }
}

void KD_Config::Read(int handle, const String& name, void* buffer, int bufferSize, int& bytesRead,
                     RETURN_CODE_TYPE::Value& rc) {
    bytesRead = 0;
    const config_set* set = findSet(handle);
    if (set == nullptr) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
        return;
    }
    const char* text = lookUp(set->container, toStdString(name));
    if (text == nullptr || buffer == nullptr || bufferSize < 0) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
        return;
    }
    std::memset(buffer, 0, static_cast<size_t>(bufferSize));
    bytesRead = std::min(sizeOf(text), bufferSize);
    std::memcpy(buffer, text, static_cast<size_t>(bytesRead));
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

void KD_Config::Write(int handle, const String& name, void* data, int dataSize, int& bytesWritten,
                      RETURN_CODE_TYPE::Value& rc) {
    bytesWritten = 0;
    const config_set* set = findSet(handle);
    if (set == nullptr) {
        rc = RETURN_CODE_TYPE::INVALID_CONFIG;
        return;
    }
    const std::string parameter = toStdString(name);
    XMLElement* element = parameter.empty() ? nullptr : parameterOf(set->container, parameter);
    if (textOf(element) == nullptr || data == nullptr || dataSize < 0) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
        return;
    }
    element->SetText(
        std::string(static_cast<const char*>(data), static_cast<size_t>(dataSize)).c_str());
    // In a CDATA section a text with its end mark would break the file for the next reader.
    element->FirstChild()->ToText()->SetCData(false);
    if (!save()) {
        rc = RETURN_CODE_TYPE::NO_ACTION;
        return;
    }
    bytesWritten = dataSize;
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

void KD_Config::Seek(int handle, WHENCE_TYPE::Value whence, int offset,
                     RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    config_set* set = findSet(handle);
    if (set == nullptr || whence > WHENCE_TYPE::FROM_LAST) {
        return;
    }
    const bool fromLast = whence == WHENCE_TYPE::FROM_LAST;
    XMLElement* element = whence == WHENCE_TYPE::FROM_CURRENT
                              ? set->container
                              : getConfigContainer(*m_document, set->tag, !fromLast);
    const bool forward = (offset >= 0) != fromLast;
    // In 64 bits the smallest offset has an absolute value too.
    for (auto remaining = std::llabs(offset); element != nullptr && remaining > 0; --remaining) {
        element = nextSibling(element, forward, set->tag.c_str());
    }
    if (element == nullptr) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
        return;
    }
    set->aimAt(element);
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

void KD_Config::Close(int handle, RETURN_CODE_TYPE::Value& rc) {
    rc = m_sets.erase(handle) != 0 ? RETURN_CODE_TYPE::NO_ERROR : RETURN_CODE_TYPE::INVALID_CONFIG;
}

KD_Config::config_set* KD_Config::findSet(int handle) const {
    const auto found = m_sets.find(handle);
    return found != m_sets.end() ? found->second.get() : nullptr;
}

bool KD_Config::save() {
    const std::lock_guard<std::mutex> lock(m_documentMutex);
    const int descriptor =
        open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_SYNC | O_CLOEXEC, 0644);
    if (descriptor < 0) {
        return false;
    }
    std::FILE* file = fdopen(descriptor, "w");
    if (file == nullptr) {
        close(descriptor);
        return false;
    }
    // The document's own result says nothing of failed writes; those show in the stream.
    bool saved = m_document->SaveFile(file, false) == tinyxml2::XML_SUCCESS;
    saved = std::fflush(file) == 0 && std::ferror(file) == 0 && saved;
    return std::fclose(file) == 0 && saved;
}

}  // namespace FACE

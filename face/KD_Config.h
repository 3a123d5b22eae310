// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "face/FACE_Configuration.h"

namespace tinyxml2 {
class XMLDocument;
class XMLElement;
}  // namespace tinyxml2

namespace FACE {

// The configuration in one XML file, held as the parsed document:
//
//   <KD_Configurations>
//     <AnyTag>                          a container; several may share a tag
//       <Name>its name</Name>
//       <Parameters><Key>text</Key></Parameters>
//     </AnyTag>
//   </KD_Configurations>
//
// Owns the document and the open handles. Handles are unique in the process and never used again.
// An instance belongs to one thread at a time; only loading and saving the document are locked.
//
// What follows from the rules of Open and is easily overlooked: opening a name twice gives one
// handle, which the first Close ends; opening a container whose tag is open already re-aims that
// handle. So close a container before opening the next.
class KD_Config : public Configuration {
  public:
    KD_Config();
    KD_Config(const KD_Config&) = delete;
    KD_Config& operator=(const KD_Config&) = delete;
    ~KD_Config() override;

    /// Loads the file. INVALID_CONFIG when it cannot be read, is no XML or has another root. Once
    /// it has succeeded, a further call does nothing and gives NO_ERROR, whatever its path.
    void Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) override;

    /// Opens the container whose Name text or tag is `name`. INVALID_MODE before Initialize,
    /// INVALID_CONFIG for an unknown container; `handle` is then untouched.
    void Open(const String& name, int& handle, RETURN_CODE_TYPE::Value& rc) override;

    /// The length of a parameter's text in bytes; with an empty `name`, of the container's name.
    /// INVALID_CONFIG for an unknown handle and for a missing or empty text.
    void Get_Size(int handle, const String& name, int& size, RETURN_CODE_TYPE::Value& rc) override;

    /// Zeroes the buffer and copies as much of the text as it holds; a terminator stands behind the
    /// text only where the buffer is longer. INVALID_CONFIG for an unknown handle, INVALID_PARAM
    /// for a missing or empty text.
    void Read(int handle, const String& name, void* buffer, int bufferSize, int& bytesRead,
              RETURN_CODE_TYPE::Value& rc) override;

    /// Replaces the text of a parameter that has one and saves the whole document over its file.
    /// NO_ACTION when the file could not be saved; the document in memory keeps the new text.
    void Write(int handle, const String& name, void* data, int dataSize, int& bytesWritten,
               RETURN_CODE_TYPE::Value& rc) override;

    /// Aims the handle at another container of its tag, `offset` of them further on. FROM_LAST
    /// counts toward the front of the file. INVALID_PARAM, and nothing moves, when there are too
    /// few.
    void Seek(int handle, WHENCE_TYPE::Value whence, int offset,
              RETURN_CODE_TYPE::Value& rc) override;

    void Close(int handle, RETURN_CODE_TYPE::Value& rc) override;

  private:
    struct config_set;

    config_set* findSet(int handle) const;
    bool save();

    std::string m_path;
    std::string m_schemaLocation;  // remembered, never used to validate
    std::mutex m_documentMutex;    // loading and saving
    std::unique_ptr<tinyxml2::XMLDocument> m_document;
    std::map<int, std::unique_ptr<config_set>> m_sets;
    bool m_initialized = false;
};

}  // namespace FACE

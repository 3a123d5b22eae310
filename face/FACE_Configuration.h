// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>

#include "face/FACE_Common.h"

namespace FACE {

// Named containers of named text parameters. Open gives a handle on a container; the other
// operations take it.
class Configuration {
  public:
    struct WHENCE_TYPE {
        enum Value : uint32_t { FROM_FIRST = 0, FROM_CURRENT = 1, FROM_LAST = 2 };
    };

    virtual ~Configuration() = default;
    virtual void Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Open(const String& name, int& handle, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Get_Size(int handle, const String& name, int& size,
                          RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Read(int handle, const String& name, void* buffer, int bufferSize, int& bytesRead,
                      RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Write(int handle, const String& name, void* data, int dataSize, int& bytesWritten,
                       RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Seek(int handle, WHENCE_TYPE::Value whence, int offset,
                      RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Close(int handle, RETURN_CODE_TYPE::Value& rc) = 0;
};

namespace Configuration_Injectable {
class Injectable {
  public:
    virtual ~Injectable() = default;
    /// NOT_AVAILABLE with a reference already held, INVALID_PARAM for a null one.
    virtual void Set_Reference(const String& name,
                               const std::shared_ptr<Configuration>& configuration, long long id,
                               RETURN_CODE_TYPE::Value& rc) = 0;
};
}  // namespace Configuration_Injectable

}  // namespace FACE

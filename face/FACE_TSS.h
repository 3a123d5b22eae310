// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "face/FACE_Common.h"

// The interfaces of the transport service. A connection id is a 64-bit number that stays valid for
// the life of the service; -1 is none.
namespace FACE::TSS {

struct HEADER_TYPE {
    int64_t sourceUid = 0;       // entity id of the writer
    int64_t destinationUid = 0;  // entity id of the reader
    int64_t timestamp = 0;       // source time stamp, ns
};

struct QoS_Element {
    String name;
    String value;
};

/// Connection id, transaction id, message, header, quality of service, and a code nobody looks at.
template <typename T>
using Read_Callback = std::function<void(long long, long long, const T&, const HEADER_TYPE&,
                                         const Sequence<QoS_Element>&, RETURN_CODE_TYPE::Value&)>;

class Base {
  public:
    virtual ~Base() = default;
    virtual void Initialize(const String& path, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Create_Connection(const String& name, long long timeout, long long& id,
                                   int& maxMessageSize, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Destroy_Connection(long long id, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Unregister_Sender(long long id, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Unregister_Callback(long long id, RETURN_CODE_TYPE::Value& rc) = 0;
};

namespace Base_Injectable {
class Injectable {
  public:
    virtual ~Injectable() = default;
    virtual void Set_Reference(const String& name, const std::shared_ptr<Base>& base, long long id,
                               RETURN_CODE_TYPE::Value& rc) = 0;
};
}  // namespace Base_Injectable

template <typename T>
class TypedTS {
  public:
    virtual ~TypedTS() = default;
    virtual void Receive_Message(long long connection, long long timeout, long long& transaction,
                                 T& message, HEADER_TYPE& header, Sequence<QoS_Element>& qos,
                                 RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Send_Message(long long connection, long long timeout, long long& transaction,
                              const T& message, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Register_Sender(long long connection, RETURN_CODE_TYPE::Value& rc) = 0;
    virtual void Register_Callback(long long connection, Read_Callback<T> callback,
                                   RETURN_CODE_TYPE::Value& rc) = 0;
};

}  // namespace FACE::TSS

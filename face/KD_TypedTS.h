// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "face/FACE_TSS.h"

namespace FACE::TSS {

class KD_TSS;

namespace Details {

// The typed face of the transport: publishes and subscribes one message type on connections of a
// KD_TSS, which it keeps alive. Several faces may share one transport.
//
// Set_Reference and the registrations come from the bring-up thread; Send_Message may be called
// from any thread afterwards. A callback runs on a thread of the bus library, or inside
// Send_Message when this process publishes what it subscribes; while it runs, nothing else arrives
// at this process's participant. So it must not wait for a thread that may send, and must not
// throw.
//
// The members are compiled in KD_TypedTS.cpp for the message types of this server; a further type
// wants a line there.
template <typename T>
class KD_TypedTS : public TypedTS<T>, public Base_Injectable::Injectable {
  public:
    KD_TypedTS() = default;
    KD_TypedTS(const KD_TypedTS&) = delete;
    KD_TypedTS& operator=(const KD_TypedTS&) = delete;
    ~KD_TypedTS() override = default;

    /// Not supported, input is by callback only: always throws std::runtime_error.
    void Receive_Message(long long connection, long long timeout, long long& transaction,
                         T& message, HEADER_TYPE& header, Sequence<QoS_Element>& qos,
                         RETURN_CODE_TYPE::Value& rc) override;

    /// Publishes. NOT_AVAILABLE without a transport that is initialised or without a publisher on
    /// the connection, INVALID_PARAM for an unknown connection, DATA_OVERFLOW when the bus refuses
    /// the sample, CONNECTION_CLOSED after an exception, whose text goes to standard error.
    /// `timeout` and `transaction` are unused.
    void Send_Message(long long connection, long long timeout, long long& transaction,
                      const T& message, RETURN_CODE_TYPE::Value& rc) override;

    /// Makes the connection's publisher; NO_ACTION if it has one. Failures as for Send_Message.
    void Register_Sender(long long connection, RETURN_CODE_TYPE::Value& rc) override;

    /// Makes the connection's subscriber; NO_ACTION if it has one. Failures as for Send_Message.
    /// The callback may not be empty.
    void Register_Callback(long long connection, Read_Callback<T> callback,
                           RETURN_CODE_TYPE::Value& rc) override;

    /// NOT_AVAILABLE with a reference already held, INVALID_PARAM for null or anything but a
    /// KD_TSS.
    void Set_Reference(const String& name, const std::shared_ptr<Base>& base, long long id,
                       RETURN_CODE_TYPE::Value& rc) override;

  private:
    std::shared_ptr<KD_TSS> m_transport;
};

}  // namespace Details
}  // namespace FACE::TSS

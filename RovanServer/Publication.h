// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RovanServer/PublicationBase.h"
#include "face/KD_TypedTS.h"

// One topic of the processor: next number, typed transport, connection and device id.
template <typename T>
class Publication : public PublicationBase {
  public:
    using PublicationBase::PublicationBase;

    /// Replaces whatever transport the block held.
    void createTypedTransport() override {
        m_typedTs = std::make_shared<FACE::TSS::Details::KD_TypedTS<T>>();
    }
    void setReference(const std::shared_ptr<FACE::TSS::KD_TSS>& tss, Code& rc) override {
        m_typedTs->Set_Reference(FACE::String(), tss, 0, rc);
    }
    void registerSender(Code& rc) override { m_typedTs->Register_Sender(m_connectionId, rc); }

    /// Stamps `message` with the times of the received frame's header, numbers it and sends it.
    /// A failure becomes one event of type 3: the owner's name, `failureWords`, time of validity
    /// and number. It is not tried again.
    void publish(const Header& received, T& message, const char* failureWords) {
        publish(received, message, failureWords, m_deviceId);
    }
    /// The same under another device id.
    void publish(const Header& received, T& message, const char* failureWords, int32_t deviceId) {
        stamp(message.header(), received, deviceId);
        // Without a transport nothing can be sent, and that is a failure like any other.
        Code rc = Code::NOT_AVAILABLE;
        long long transaction = 0;
        if (m_typedTs) {
            m_typedTs->Send_Message(m_connectionId, -1, transaction, message, rc);
        }
        if (rc != Code::NO_ERROR) {
            reportFailure(message.header(), failureWords);
        }
    }

  private:
    std::shared_ptr<FACE::TSS::Details::KD_TypedTS<T>> m_typedTs;
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "aspn2_msgs/GSSIP.h"
#include "face/FACE_Common.h"
#include "face/KD_TSS.h"

// What the publications of all message types have in common: the connection, the steps that set it
// up, and the numbering and stamping of messages. The owner connects and disconnects on one thread
// at a time; each publication is used for sending by one thread only, so that its numbers need no
// lock.
class PublicationBase {
  public:
    using Code = FACE::RETURN_CODE_TYPE::Value;

    /// `topic` and `label` must outlive the object; `label` names the publication when connecting
    /// fails. `owner` begins the text of every failure report and must outlive the object too.
    PublicationBase(const std::string& owner, const char* topic, const char* label,
                    int32_t deviceId);
    PublicationBase(const PublicationBase&) = delete;
    PublicationBase& operator=(const PublicationBase&) = delete;
    virtual ~PublicationBase() = default;

    const char* label() const { return m_label; }
    int32_t deviceId() const { return m_deviceId; }

    // The steps of connecting, in order.
    void createConnection(FACE::TSS::KD_TSS& tss, Code& rc);
    virtual void createTypedTransport() = 0;
    virtual void setReference(const std::shared_ptr<FACE::TSS::KD_TSS>& tss, Code& rc) = 0;
    virtual void registerSender(Code& rc) = 0;

    // The steps of disconnecting; what they return is of no use to anybody.
    void unregisterSender(FACE::TSS::KD_TSS& tss);
    void destroyConnection(FACE::TSS::KD_TSS& tss);

  protected:
    using Header = aspn2_msgs::idl::header;

    /// Fills the header of the next message: source, the time stamps of the frame that it comes
    /// from, and a number, which is used up whether or not the message gets out.
    void stamp(Header& header, const Header& received, int32_t deviceId);
    void reportFailure(const Header& header, const char* failureWords) const;

    int64_t m_nextSeqNum = 0;
    long long m_connectionId = -1;
    const int32_t m_deviceId;

  private:
    const std::string& m_owner;
    const char* const m_topic;
    const char* const m_label;
};

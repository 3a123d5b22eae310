// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/PublicationBase.h"

#include "ASPN/HealthReporter.h"

PublicationBase::PublicationBase(const std::string& owner, const char* topic, const char* label,
                                 int32_t deviceId)
    : m_deviceId(deviceId), m_owner(owner), m_topic(topic), m_label(label) {
}

void PublicationBase::createConnection(FACE::TSS::KD_TSS& tss, Code& rc) {
    int maxMessageSize = 0;
    tss.Create_Connection(m_topic, -1, m_connectionId, maxMessageSize, rc);
}

void PublicationBase::unregisterSender(FACE::TSS::KD_TSS& tss) {
    Code ignored = Code::NO_ERROR;
    tss.Unregister_Sender(m_connectionId, ignored);
}

void PublicationBase::destroyConnection(FACE::TSS::KD_TSS& tss) {
    Code ignored = Code::NO_ERROR;
    tss.Destroy_Connection(m_connectionId, ignored);
}

void PublicationBase::stamp(Header& header, const Header& received, int32_t deviceId) {
    header.device_id(deviceId);
    header.timestamp_arrival(received.timestamp_arrival());
    header.timestamp_valid(received.timestamp_valid());
    header.seq_num(m_nextSeqNum++);
}

void PublicationBase::reportFailure(const Header& header, const char* failureWords) const {
    HealthReporter::Instance().SendEvent(
        __FILE__, __LINE__, EventTypes::eError,
        m_owner + failureWords + ", TOV = " + std::to_string(header.timestamp_valid().sec()) +
            ", SeqNum = " + std::to_string(header.seq_num()));
}

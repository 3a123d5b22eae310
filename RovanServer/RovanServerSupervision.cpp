// SPDX-License-Identifier: Apache-2.0
// Frames from the receiver: the single switch point of its data.
#include <string>

#include "ASPN/ServerIds.h"
#include "MSID_messages/Rovan_5044_Msg.h"
#include "MSID_messages/Rovan_5404_Msg.h"
#include "MSID_messages/Rovan_9225_Msg.h"
#include "RovanServer/Passthrough.h"
#include "RovanServer/ReceiverMessages.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"
#include "RovanServer/RovanServer.h"
#include "RovanServer/TimeDataTransfer.h"
#include "gssip/GssipFrame.h"
#include "utility/Console.h"

struct RovanServer::FrameRow {
    uint16_t msgId;
    void (RovanServer::*handle)(const GSSIP& gssip);
};

// Sorted by nothing but the order of the table: an id that is not in it is dropped.
const RovanServer::FrameRow RovanServer::kFrameTable[] = {
    {8, &RovanServer::handle8},
    {253, &RovanServer::translate<&RovanProcessor::process253>},
    {5040, &RovanServer::handle5040},
    {5042, &RovanServer::handle5042},
    {5044, &RovanServer::process5044},
    {5047, &RovanServer::translate<&RovanProcessor::process5047>},
    {5048, &RovanServer::translate<&RovanProcessor::process5048>},
    {5404, &RovanServer::process5404},
    {7270, &RovanServer::translate<&RovanProcessor::process7270>},
    {8040, &RovanServer::translate<&RovanProcessor::process8040>},
    {8080, &RovanServer::translate<&RovanProcessor::process8080>},
    {8504, &RovanServer::handle8504},
    {9225, &RovanServer::handle9225},
    {9391, &RovanServer::translate<&RovanProcessor::process9391>},
    {9405, &RovanServer::process9405},
    {9409, &RovanServer::translate<&RovanProcessor::process30409>},
    {30409, &RovanServer::translate<&RovanProcessor::process30409>},
};

void RovanServer::cbGssip(const GSSIP& gssip) {
    if (!isRunning()) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_gssipMutex);
    // Too short to hold a message id: not from the link, which checks every frame.
    if (!isRunning() || gssip.data().size() < 2 * (Gssip::kWordMsgId + 1)) {
        return;
    }
    const uint16_t msgId = Gssip::wordAt(gssip.data().data() + 2 * Gssip::kWordMsgId);
    for (const FrameRow& row : kFrameTable) {
        if (row.msgId == msgId) {
            (this->*row.handle)(gssip);
            return;
        }
    }
}

void RovanServer::cbGssipPassthrough(const GSSIP& gssip) {
    if (!isRunning()) {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_gssipMutex);
    if (isRunning()) {
        forwardPassthrough(gssip.data(), m_passthroughMessages, *this);
    }
}

template <void (RovanProcessor::*process)(const aspn2_msgs::idl::GSSIP&)>
void RovanServer::translate(const GSSIP& gssip) {
    (m_rovanProcessor.get()->*process)(gssip);
}

void RovanServer::handle8(const GSSIP& gssip) {
    m_rovanProcessor->process8(gssip);
    m_bit.onMessage8();
}

void RovanServer::handle5040(const GSSIP& gssip) {
    m_rovanProcessor->process5040(gssip);
    m_timeDataTransfer->on5040(static_cast<int16_t>(m_rovanProcessor->getOpMode()));
}

void RovanServer::handle5042(const GSSIP& gssip) {
    m_rovanProcessor->process5042(gssip);
    m_timeDataTransfer->on5042(m_rovanProcessor->getIsDtsCom1());
}

void RovanServer::process5044(const GSSIP& gssip) {
    m_zeroize.onReportReceived(Rovan_5044_Msg::kMsgId);
    // Only the events of this server's own link count.
    if (ASPN2::ServerIds::ofDevice(gssip.header().device_id()) != m_serverId) {
        return;
    }
    const RovanProcessorFrame frame(gssip);
    Rovan_5044_Msg message;
    if (!message.ok_set_5044_gpsip(frame.bytes, frame.size)) {
        return;
    }
    message.unpack_5044();
    const uint16_t eventId = message.unpacked().eventId;
    const std::string text = "5044,ID:," + std::to_string(eventId) + "," + message.unpacked().text;
    if (m_configuration.debug) {
        Console::line(text);
    }
    sendEvent(__FILE__, __LINE__, EventTypes::eInformation, text);
    m_zeroize.handleZeroize(eventId);
}

void RovanServer::process5404(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_5404_Msg message;
    if (message.ok_set_5404_gpsip(frame.bytes, frame.size)) {
        m_zeroize.onIpZeroizeStatus(message.getIPZeroizeStatus());
        if (m_configuration.debug) {
            Console::line("5404, is IP Clear Complete: " +
                          std::to_string(m_zeroize.ipClearStatus()));
        }
    }
    // A report has come, even one that cannot be read. Said last: a pass on the zeroize thread must
    // not see that it has come before it can see the status.
    m_zeroize.onReportReceived(Rovan_5404_Msg::kMsgId);
}

void RovanServer::handle8504(const GSSIP& gssip) {
    if (m_bit.takes8504()) {
        m_rovanProcessor->process8504(gssip);
        m_bit.on8504Processed();
    }
}

void RovanServer::process9405(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    m_supervision.process9405(frame.bytes, frame.size, m_bit.isRunning());
}

bool RovanServer::isCbitRequired() const {
    return m_rovanProcessor->getCurrentRcvrFail() || m_supervision.hasFault();
}

void RovanServer::handle9225(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_9225_Msg message;
    if (!message.OkSetContent(frame.bytes, frame.size)) {
        return;
    }
    m_versionStatus.setSerialNumber1(getLastWord(message.get_FCM_ID()));
    m_versionStatus.setSoftware1Version(getLastWord(message.get_HPN_BSL()));
    m_versionStatus.setHardware1Version(getLastWord(message.get_HPN_HW()));
    m_versionStatus.setOs1Version(getLastWord(message.get_HPN_PAP_Boot()));
    m_versionStatus.setOs2Version(getLastWord(message.get_HPN_PSP_Boot()));
    m_versionStatus.setFirmware1Version(getLastWord(message.get_HPN_FPGA()));
    m_zeroize.onVersionRecord(message.isBootFlagNormal(), message.isPSPbootAllZeroes(),
                              message.isPSP_SwAllZeroes());
    m_rovanProcessor->process9225(gssip);
}

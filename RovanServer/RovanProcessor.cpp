// SPDX-License-Identifier: Apache-2.0
// Life cycle of the processor, and the frames that only move its state.
#include "RovanServer/RovanProcessor.h"

#include <utility>

#include "ASPN/HealthReporter.h"
#include "ASPN/ServerConnections.h"
#include "MSID_messages/Rovan_5042_Msg.h"
#include "MSID_messages/Rovan_9225_Msg.h"
#include "RovanServer/RovanProcessorFrame.h"
#include "RovanServer/RovanProcessorPeriodic.h"

namespace ServerConnections = ASPN2::ServerConnections;

RovanProcessor::RovanProcessor(const std::string& name, std::shared_ptr<FACE::TSS::KD_TSS> tss,
                               const ASPN2::DeviceIdFactory& deviceIds, bool debug, Clock clock)
    : m_name(name),
      m_debug(debug),
      m_deviceIds(deviceIds),
      m_tss(std::move(tss)),
      m_clock(std::move(clock)),
      // Topic, label, message code and sub id of the device id.
      m_gpsTime(m_name, ServerConnections::kGpsTime.name, "RovanProcessor() gpsTime_rcv",
                m_deviceIds.makeDeviceId(38, 0)),
      m_utcTime(m_name, ServerConnections::kUtcTime.name, "RovanProcessor() utcTime_rcv",
                m_deviceIds.makeDeviceId(41, 0)),
      m_utcDownlink(m_name, ServerConnections::kUtcDownlink.name,
                    "RovanProcessor() utcDownlink_rcv", m_deviceIds.makeDeviceId(37, 0)),
      m_pv(m_name, ServerConnections::kPositionVelocity.name, "RovanProcessor() pv_rcv",
           m_deviceIds.makeDeviceId(32, 1)),
      m_pvSecondDeviceId(m_deviceIds.makeDeviceId(32, 0)),
      m_rcvrStatus(m_name, ServerConnections::kReceiverStatus.name,
                   "RovanProcessor() rcvrStatus_rcv", m_deviceIds.makeDeviceId(48, 0)),
      m_chanStatus(m_name, ServerConnections::kChannelStatus.name,
                   "RovanProcessor() chanStatus_rcv", m_deviceIds.makeDeviceId(36, 0)),
      m_challEnv(m_name, ServerConnections::kChallengedEnvironment.name,
                 "RovanProcessor() challEnv_rcv", m_deviceIds.makeDeviceId(43, 0)),
      m_gpsCryptoStatus(m_name, ServerConnections::kGpsCryptoStatus.name,
                        "RovanProcessor() gpsCryptoStatus_rcv", m_deviceIds.makeDeviceId(51, 0)),
      m_gpsLineOfSight(m_name, ServerConnections::kGpsLineOfSight.name,
                       "RovanProcessor() gpsLineOfSight_rcv", m_deviceIds.makeDeviceId(50, 0)),
      m_maintenanceLog(m_name, ServerConnections::kMaintenanceEvent.name,
                       "RovanProcessor() maintenanceLog_rcv", m_deviceIds.makeDeviceId(59, 0)),
      m_svStatus(m_name, ServerConnections::kSvStatus.name, "RovanProcessor() svStatus_rcv",
                 m_deviceIds.makeDeviceId(60, 0)) {
}

RovanProcessor::~RovanProcessor() {
    stop();
}

void RovanProcessor::start() {
    stop();
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        m_commOk = false;
        m_last253Time = m_clock();
        m_lineOfSightObs.clear();
        m_lineOfSightEpoch = 0;
    }
    m_periodicThread.start([this] { periodicThreadFunction(); });
}

void RovanProcessor::stop() {
    m_periodicThread.stop();
}

void RovanProcessor::periodicThreadFunction() {
    runRovanProcessorChecks(m_periodicThread, m_name,
                            {[this] { periodic7270Checker(); }, [this] { periodic253Checker(); }});
}

void RovanProcessor::process8(const GSSIP&) {
    const std::lock_guard<std::mutex> lock(m_dataMutex);
    m_reportRcvrStateOnce = true;
}

void RovanProcessor::process5042(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_5042_Msg message;
    if (!message.ok_set_5042_gpsip(frame.bytes, frame.size)) {
        return;
    }
    message.unpack_5042();
    m_isDtsCom1 = message.unpacked().isDtsCom1;
}

void RovanProcessor::process9225(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_9225_Msg message;
    if (!message.OkSetContent(frame.bytes, frame.size) || m_configEventsSent) {
        return;
    }
    static constexpr std::string (Rovan_9225_Msg::*kReported[])() const = {
        &Rovan_9225_Msg::get_BuildTime_String,
        &Rovan_9225_Msg::get_PAP_SW_Build_String,
        &Rovan_9225_Msg::get_PAP_Boot_Build_String,
        &Rovan_9225_Msg::get_PSP_SW_Build_String,
        &Rovan_9225_Msg::get_PSP_Boot_Build_String,
        &Rovan_9225_Msg::get_HPN_PAP_SW,
        &Rovan_9225_Msg::get_HPN_PAP_Boot,
        &Rovan_9225_Msg::get_HPN_PSP_SW,
        &Rovan_9225_Msg::get_HPN_PSP_Boot,
        &Rovan_9225_Msg::get_HPN_FPGA,
        &Rovan_9225_Msg::get_HPN_HW,
        &Rovan_9225_Msg::get_HPN_BSL,
        &Rovan_9225_Msg::get_FCM_ID,
    };
    for (const auto& text : kReported) {
        HealthReporter::Instance().SendConfigEvent((message.*text)());
    }
    m_configEventsSent = true;
}

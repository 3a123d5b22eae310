// SPDX-License-Identifier: Apache-2.0
// Bring-up and tear-down of the services and workers.
#include <memory>
#include <string>
#include <utility>

#include "ASPN/HealthReporter.h"
#include "ASPN/ServerConnections.h"
#include "MSID_messages/RovanCommandMsg.h"
#include "PCSMaintReporter/PCSMaintReporter.h"
#include "RovanServer/PassthroughQuery.h"
#include "RovanServer/ReceiverMessages.h"
#include "RovanServer/RovanIo.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanServer.h"
#include "RovanServer/TimeDataTransfer.h"
#include "face/KD_Config.h"
#include "face/KD_Devmem.h"
#include "face/KD_SerialPort.h"
#include "face/KD_TSS.h"
#include "face/KD_TypedTS.h"
#include "ioss_mcsq/GssipMcsq.h"
#include "platform/FPGA.h"
#include "utility/Console.h"
#include "utility/HestrelPartNumber.h"
#include "utility/StringUtils.h"

using FACE::RETURN_CODE_TYPE;
using FACE::TSS::KD_TSS;
using FACE::TSS::Details::KD_TypedTS;
namespace ServerConnections = ASPN2::ServerConnections;

namespace {

// The build that this server reports as its own.
constexpr const char* kBuildTimeStamp = "2024-09-18T13:48:46Z";
constexpr const char* kNotice = "Rovan Server, navigation unit software. All rights reserved.";

constexpr uint16_t kPulse = 2;
constexpr uint16_t kPulsePorts[] = {0, 15};

bool isGood(RETURN_CODE_TYPE::Value rc) {
    return rc == RETURN_CODE_TYPE::NO_ERROR;
}

}  // namespace

void RovanServer::Framework_Connect(const FACE::String& configFile, RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::INVALID_CONFIG;
    const FACE::String file(configFile);
    // A transport that failed does not keep the I/O services from being tried.
    const bool okTransport = okConnectTransport(file);
    const bool okIo = okConnectIo(file);
    if (!okTransport || !okIo) {
        return;
    }
    m_deviceIdFactory.reset(m_configuration.systemName.buffer(), m_serverId);
    m_cmdResponse.reset(m_deviceIdFactory);
    m_setUp.fpga = true;
    FpgaFace::Instance().InitFpga(m_devmem);
    connectReporters();
    connectWorkers();
    queueReceiverSetup();
    reportConfiguration();
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

bool RovanServer::okConnectTransport(const FACE::String& configFile) {
    bool ok = true;
    const auto check = [&ok](RETURN_CODE_TYPE::Value rc) { ok = isGood(rc) && ok; };
    RETURN_CODE_TYPE::Value rc = RETURN_CODE_TYPE::NO_ERROR;

    m_setUp.transport = true;
    m_tss = std::make_shared<KD_TSS>(m_serverName);
    m_tss->Set_Reference(configFile, std::make_shared<FACE::KD_Config>(), 0, rc);
    if (isGood(rc)) {
        m_tss->Initialize(m_configuration.connectionsFile, rc);
    }
    check(rc);
    if (ok) {
        const auto create = [&](const char* name, long long& connection) {
            int maxMessageSize = 0;
            m_tss->Create_Connection(name, -1, connection, maxMessageSize, rc);
            check(rc);
        };
        create(ServerConnections::kCommand.name, m_connections.command);
        create(ServerConnections::kResponse.name, m_connections.response);
        create(ServerConnections::kEventLog.name, m_connections.eventLog);
        create(ServerConnections::kMaintenanceEvent.name, m_connections.maintenance);
    }

    m_commandResponseTS = std::make_shared<TypedTS<aspn2_msgs::idl::CommandResponse>>();
    m_eventLogTS = std::make_shared<TypedTS<aspn2_msgs::idl::EventLog>>();
    m_maintenanceTS = std::make_shared<TypedTS<aspn2_msgs::idl::MaintenanceEvent>>();
    RETURN_CODE_TYPE::Value eventLogRc = RETURN_CODE_TYPE::NO_ERROR;
    RETURN_CODE_TYPE::Value maintenanceRc = RETURN_CODE_TYPE::NO_ERROR;
    m_commandResponseTS->Set_Reference(configFile, m_tss, 0, rc);
    m_eventLogTS->Set_Reference(configFile, m_tss, 0, eventLogRc);
    // A reporter without its transport refuses to start, so this code needs no look.
    m_maintenanceTS->Set_Reference(configFile, m_tss, 0, maintenanceRc);
    check(rc);
    check(eventLogRc);
    if (!isGood(rc) || !isGood(eventLogRc)) {
        return false;
    }

    m_commandResponseTS->Register_Callback(
        m_connections.command,
        [this](long long, long long, const CommandResponse& cmd, const auto&, const auto&, auto&) {
            cbCmd(cmd);
        },
        rc);
    check(rc);
    m_commandResponseTS->Register_Callback(
        m_connections.response,
        [this](long long, long long, const CommandResponse& rsp, const auto&, const auto&, auto&) {
            cbRsp(rsp);
        },
        rc);
    check(rc);
    m_commandResponseTS->Register_Sender(m_connections.response, rc);
    check(rc);
    m_commandResponseTS->Register_Sender(m_connections.command, rc);
    check(rc);
    return ok;
}

bool RovanServer::okConnectIo(const FACE::String& configFile) {
    const auto config = std::make_shared<FACE::KD_Config>();
    m_serialPort = std::make_shared<FACE::IOSS::KD_SerialPort>();
    m_devmem = std::make_shared<FACE::IOSS::KD_Devmem>();
    m_gssipMcsq = std::make_shared<GssipMcsq>(
        m_serverName, StringUtils::split(FACE::toStdString(m_configuration.mcsqTopicList), ','));

    RETURN_CODE_TYPE::Value serialRc = RETURN_CODE_TYPE::NO_ERROR;
    RETURN_CODE_TYPE::Value devmemRc = RETURN_CODE_TYPE::NO_ERROR;
    m_serialPort->Set_Reference(configFile, config, 0, serialRc);
    m_devmem->Set_Reference(configFile, config, 0, devmemRc);
    if (!isGood(serialRc) || !isGood(devmemRc)) {
        return false;
    }
    m_serialPort->Initialize(m_configuration.ioDevicesFile, serialRc);
    m_devmem->Initialize(m_configuration.ioDevicesFile, devmemRc);

    RETURN_CODE_TYPE::Value fromReceiverRc = RETURN_CODE_TYPE::NO_ERROR;
    RETURN_CODE_TYPE::Value toReceiverRc = RETURN_CODE_TYPE::NO_ERROR;
    m_gssipMcsq->Connect_IOWrite(
        m_configuration.ioDevicesFile, ServerConnections::kFromReceiver, m_gssipConnection,
        [this](const GSSIP& gssip) { cbGssip(gssip); }, fromReceiverRc);
    m_gssipMcsq->Connect_ReadOnly(
        m_configuration.ioDevicesFile, ServerConnections::kToReceiver,
        [this](const GSSIP& gssip) { cbGssipPassthrough(gssip); }, toReceiverRc);
    return isGood(serialRc) && isGood(devmemRc) && isGood(fromReceiverRc) && isGood(toReceiverRc);
}

void RovanServer::connectReporters() {
    HealthReporter::Instance().InitHealthReporter(m_serverName, m_deviceIdFactory, m_eventLogTS,
                                                  m_connections.eventLog);
    m_setUp.healthReporter = true;
    PCSMaintReporter::Instance().InitMaintReporter(m_serverName, m_deviceIdFactory, m_maintenanceTS,
                                                   m_connections.maintenance);
    m_setUp.maintenanceReporter = true;
}

void RovanServer::connectWorkers() {
    const Configuration& c = m_configuration;
    ServerActions& actions = *this;
    m_passthroughQuery =
        std::make_unique<PassthroughQuery>(actions, FACE::toStdString(c.environment));
    m_timeDataTransfer = std::make_unique<TimeDataTransfer>(actions, c.debug);
    m_rovanIo.reset();
    m_rovanIo =
        std::make_unique<RovanIo>(m_serverName, c.uartIndex, c.pulseIndex, m_serialPort,
                                  m_gssipMcsq, m_gssipConnection, m_deviceIdFactory, c.debug);
    m_rovanIo->configure(c.setupRedundantPort, c.baud, c.parity);
    m_rovanProcessor.reset();
    m_rovanProcessor =
        std::make_unique<RovanProcessor>(m_serverName, m_tss, m_deviceIdFactory, c.debug);
    m_setUp.processor = true;
    m_rovanProcessor->Framework_Connect();
}

void RovanServer::queueReceiverSetup() {
    // The link sends this list in its order once it is started.
    const auto send = [this](GssipMessagePtr message) { queueMessage(std::move(message)); };
    send(make_disconnect(0));
    if (FACE::toStdString(m_configuration.environment) == "SYSTEM_ENV_RERAD") {
        send(make_simple_command(RovanCommandMsg::e5001_Cmd_5));
        m_supervision.setReradMode(true);
    }
    for (const uint16_t port : kPulsePorts) {
        send(make_pps_setup(kPulse, port));
    }
    forEachMsgId(FACE::toStdString(m_configuration.requestMessageList),
                 [&](uint16_t id) { send(make_request(id)); });
    forEachMsgId(FACE::toStdString(m_configuration.connectMessageList),
                 [&](uint16_t id) { send(make_connect(id)); });
    forEachMsgId(FACE::toStdString(m_configuration.passthroughMessageList),
                 [&](uint16_t id) { m_passthroughMessages.insert(id); });
    if (!m_supervision.isReradMode()) {
        send(make_simple_command(RovanCommandMsg::e5001_Cmd_1));
    }
}

void RovanServer::reportConfiguration() {
    HealthReporter& reporter = HealthReporter::Instance();
    reporter.SendConfigEvent("//aspn://Tessaly/" + m_serverName + ":" + kBuildTimeStamp + "/");
    HestrelPartNumber partNumber;
    partNumber.serverName = m_serverName;
    partNumber.notice = kNotice;
    reporter.SendConfigEvent(partNumber.text());
    Console::line(partNumber.text());
    m_supervision.setReradConfigEvent(reporter.SendConfigEvent(
        m_serverName + " " +
        (m_supervision.isReradMode() ? "Rerad mode ENABLED" : "Rerad mode DISABLED")));
}

void RovanServer::Framework_Disconnect(RETURN_CODE_TYPE::Value& rc) {
    m_setUp = {true, true, true, true, true};
    takeApart();
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

void RovanServer::takeApart() {
    // What is another object's, as the reporters may be, stays as it is.
    if (std::exchange(m_setUp.processor, false) && m_rovanProcessor) {
        m_rovanProcessor->Framework_Disconnect();
    }
    if (std::exchange(m_setUp.healthReporter, false)) {
        HealthReporter::Instance().DoneHealthReporter();
    }
    if (std::exchange(m_setUp.maintenanceReporter, false)) {
        PCSMaintReporter::Instance().DoneMaintReporter();
    }
    if (std::exchange(m_setUp.fpga, false)) {
        FpgaFace::Instance().DoneFpga();
    }
    if (std::exchange(m_setUp.transport, false) && m_tss) {
        RETURN_CODE_TYPE::Value ignored = RETURN_CODE_TYPE::NO_ERROR;
        // The maintenance connection is not among these: it ends with the transport.
        const long long connections[] = {m_connections.command, m_connections.response,
                                         m_connections.eventLog};
        for (const long long connection : connections) {
            m_tss->Unregister_Callback(connection, ignored);
        }
        for (const long long connection : connections) {
            m_tss->Unregister_Sender(connection, ignored);
        }
        for (const long long connection : connections) {
            m_tss->Destroy_Connection(connection, ignored);
        }
    }
}

// SPDX-License-Identifier: Apache-2.0
// Commands from the bus and the answers to them. cbCmd and cbRsp run on the transport's listener
// threads and never wait for the receiver: what needs it goes onto RovanIo::messageQueue, and the
// answer follows from the link's protocol thread. Nor do they publish a command of the server's
// own: that is for the outbox. Answers go out at once, since nothing that hears them publishes.
#include <csignal>
#include <string>

#include "ASPN/CommandStrings.h"
#include "ASPN/EventTypes.h"
#include "ASPN/ServerIds.h"
#include "ASPN/TimeCodeHelper.h"
#include "MSID_messages/RovanCommandMsg.h"
#include "RovanServer/PassthroughQuery.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanServer.h"
#include "face/KD_TypedTS.h"
#include "utility/Console.h"

using FACE::RETURN_CODE_TYPE;

namespace {

using ASPN2::ServerIds;

constexpr int kTypeCommand = 0;
constexpr int kTypeResponse = 1;

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

struct RovanServer::CommandRow {
    std::string text;
    void (RovanServer::*action)(const CommandResponse& cmd);
};

const RovanServer::CommandRow RovanServer::kCommandTable[] = {
    {"SYSTEM_MODE_SELECT_LIVE", &RovanServer::onLiveMode},
    {"SYSTEM_MODE_SELECT_SIMULATION", &RovanServer::onSimulationMode},
    {"ROVAN_DESTROY_STATUS", &RovanServer::onDestroyStatus},
    {"BITSERVER_PING", &RovanServer::onPing},
    {"REQUEST_ANTENNA_STATE", &RovanServer::onAntennaState},
    {"QUERY_ROVAN_STATUS", &RovanServer::onRovanStatus},
    {"ROVAN_SET_STANDBY", &RovanServer::onSetStandby},
    {"ROVAN_SET_CONT", &RovanServer::onSetContinuous},
    {"ROVAN_CV_ZEROIZE", &RovanServer::onZeroize<&ZeroizeProcedure::acceptCvZeroize>},
    {"ROVAN_ZEROIZE", &RovanServer::onZeroize<&ZeroizeProcedure::acceptZeroize>},
    {"ROVAN_DESTROY", &RovanServer::onZeroize<&ZeroizeProcedure::acceptDestroy>},
    {"REQUEST_COMPONENT_CBIT", &RovanServer::onComponentCbit},
    {"REQUEST_PARTNUMBERS", &RovanServer::onPartNumbers},
    {"PASSTHROUGH_ENABLED", &RovanServer::onPassthroughEnabled},
    {"POSTCOMPLETE", &RovanServer::onIgnored},
    {"FIRST_BBIT_DONE", &RovanServer::onFirstBbitDone},
};

void RovanServer::cbCmd(const CommandResponse& cmd) {
    if (!isRunning() || cmd.command_response_type() != kTypeCommand) {
        return;
    }
    // An exception on the library's thread would end the process.
    survive(kCommandTexts, [&] { handleCommand(cmd); });
}

void RovanServer::handleCommand(const CommandResponse& cmd) {
    if (m_configuration.debug) {
        Console::line(
            std::string(__FILE__) + " (" + std::to_string(__LINE__) + ") cbCmd : sourceId = " +
            std::to_string(ServerIds::ofDevice(cmd.header().device_id())) +
            ", commandedId = " + std::to_string(ServerIds::ofDevice(cmd.commanded_device_id())) +
            ", command string = " + cmd.command_response());
    }
    for (const CommandRow& row : kCommandTable) {
        if (row.text == cmd.command_response()) {
            (this->*row.action)(cmd);
            return;
        }
    }
}

void RovanServer::cbRsp(const CommandResponse& rsp) {
    if (isRunning()) {
        survive(kResponseTexts, [&] { handleResponse(rsp); });
    }
}

void RovanServer::handleResponse(const CommandResponse& rsp) {
    const std::string& text = rsp.command_response();
    if (ServerIds::ofDevice(rsp.header().device_id()) == ServerIds::kZelmServer) {
        handleAccessoryResponse(text);
    }
    if (rsp.command_response_type() == kTypeResponse &&
        text == Sys::ResponseString::PassthroughEnabled) {
        m_passthroughQuery->enable();
    }
}

void RovanServer::handleAccessoryResponse(const std::string& text) {
    // However the sanitizing went, it is over.
    if (contains(text, "COMPONENT_ZEROIZE_PASS") || contains(text, "COMPONENT_ZEROIZE_FAIL")) {
        Console::line("ROVAN server shutting down after ZELM sanitize complete");
        commandShutdown();
    }
    if (contains(text, "REQUEST_COMPONENT_CBIT_PASS") ||
        contains(text, "REQUEST_COMPONENT_CBIT_FAIL")) {
        m_bit.onAccessoryDone();
    }
}

void RovanServer::onLiveMode(const CommandResponse& cmd) {
    ASPN2::TimeCodeHelper::Instance().setLiveMode();
    answer(m_cmdResponse.makeResponse(cmd, true));
}

void RovanServer::onSimulationMode(const CommandResponse& cmd) {
    ASPN2::TimeCodeHelper::Instance().setSimMode();
    answer(m_cmdResponse.makeResponse(cmd, true));
}

void RovanServer::onDestroyStatus(const CommandResponse& cmd) {
    answer(m_cmdResponse.makeResponse(cmd, m_zeroize.isIpDataClear()));
}

void RovanServer::onPing(const CommandResponse& cmd) {
    answer(m_cmdResponse.makeResponse(cmd, m_serverName));
}

void RovanServer::onAntennaState(const CommandResponse& cmd) {
    answer(m_cmdResponse.makeResponse(cmd, m_supervision.requestAntennaState(cmd)));
}

void RovanServer::onRovanStatus(const CommandResponse& cmd) {
    answer(m_cmdResponse.makeResponse(cmd, Sys::ResponseString::CurrentRovanStatus +
                                               (m_supervision.isReradMode() ? ",1" : ",0")));
}

void RovanServer::onSetStandby(const CommandResponse& cmd) {
    queueMessage(make_simple_command(RovanCommandMsg::e5001_Cmd_5), cmd);
}

void RovanServer::onSetContinuous(const CommandResponse& cmd) {
    queueMessage(make_simple_command(RovanCommandMsg::e5001_Cmd_1), cmd);
}

template <ZeroizeProcedure::Acceptance (ZeroizeProcedure::*accept)(
    const aspn2_msgs::idl::CommandResponse&)>
void RovanServer::onZeroize(const CommandResponse& cmd) {
    if ((m_zeroize.*accept)(cmd) == ZeroizeProcedure::Acceptance::refused) {
        answer(m_cmdResponse.makeResponseAck(cmd, false));
    }
}

void RovanServer::onComponentCbit(const CommandResponse& cmd) {
    if (m_zeroize.isPending()) {
        answer(m_cmdResponse.makeResponseAck(cmd, false));
    } else if (!m_bit.isRunning()) {
        startBit(cmd, m_supervision.isReradMode());
    }
}

void RovanServer::onPartNumbers(const CommandResponse& cmd) {
    CommandResponse response = m_cmdResponse.makeResponse(cmd, m_versionStatus.createMessage());
    ASPN2::CmdResponse::setTopicId(response, 0);
    answer(response);
}

void RovanServer::onPassthroughEnabled(const CommandResponse& cmd) {
    m_passthroughQuery->enable();
    answer(m_cmdResponse.makeResponse(cmd, true));
}

void RovanServer::onFirstBbitDone(const CommandResponse&) {
    if (m_configuration.debug) {
        const std::string text =
            m_serverName + "CBIT Cmded, " +
            (m_rovanProcessor->getCurrentRcvrFail() ? "RcvrFail8504" : "Not RcvrFail8504, ") +
            (m_supervision.hasFault() ? "Fault9405" : "Not Fault9405");
        Console::line(text);
        sendEvent(__FILE__, __LINE__, EventTypes::eInformation, text);
    }
    if (isCbitRequired() && !m_zeroize.isPending()) {
        m_commandOutbox.post(m_cmdResponse.makeCommand(Sys::CommandString::RequestSystemCBit));
    }
}

void RovanServer::onIgnored(const CommandResponse&) {
}

void RovanServer::sendCommandResponse(long long connection, const CommandResponse& msg) {
    publishCommandResponse("sendCommandResponse", connection, msg);
}

void RovanServer::answer(const CommandResponse& response) {
    publishCommandResponse("cbCmd", m_connections.response, response);
}

void RovanServer::publishCommandResponse(const char* caller, long long connection,
                                         const CommandResponse& msg) {
    const std::string timeAndText =
        std::to_string(msg.header().timestamp_valid().sec()) + ", " + msg.command_response();
    if (m_configuration.debug) {
        Console::line(std::string("RovanServer::") + caller + "(): TOVsec = " + timeAndText);
    }
    RETURN_CODE_TYPE::Value rc = RETURN_CODE_TYPE::NO_ERROR;
    long long transaction = 0;
    m_commandResponseTS->Send_Message(connection, -1, transaction, msg, rc);
    if (rc != RETURN_CODE_TYPE::NO_ERROR) {
        sendEvent(__FILE__, __LINE__, EventTypes::eError,
                  m_serverName + ": Could not publish CommandResponse for TOV = " + timeAndText);
    }
}

void RovanServer::commandShutdown() {
    m_power.offForGood();
    raise(SIGTERM);
}

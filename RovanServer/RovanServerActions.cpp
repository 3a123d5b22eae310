// SPDX-License-Identifier: Apache-2.0
// What the server does for its procedures.
#include <utility>

#include "ASPN/HealthReporter.h"
#include "RovanServer/ReceiverFault.h"
#include "RovanServer/RovanIo.h"
#include "RovanServer/RovanServer.h"

namespace {

/// Where a fault of 9405 comes from, as its event says.
constexpr int kFaultLine = 2456;

}  // namespace

void RovanServer::queueMessage(GssipMessagePtr message) {
    m_rovanIo->messageQueue.emplace_back(std::move(message));
}

void RovanServer::queueMessage(GssipMessagePtr message, AckCallback callback) {
    m_rovanIo->messageQueue.emplace_back(std::move(message), std::move(callback));
}

void RovanServer::queueMessage(GssipMessagePtr message, const CommandResponse& cmd) {
    m_rovanIo->messageQueue.emplace_back(
        std::move(message),
        [this](const CommandResponse& command, bool success) {
            ackMessageCallback(command, success);
        },
        cmd);
}

void RovanServer::ackMessageCallback(const CommandResponse& cmd, bool success) {
    respondAck(cmd, success);
}

void RovanServer::respondText(const CommandResponse& cmd, const std::string& text) {
    sendCommandResponse(m_connections.response, m_cmdResponse.makeResponse(cmd, text));
}

void RovanServer::respondResult(const CommandResponse& cmd, bool pass) {
    sendCommandResponse(m_connections.response, m_cmdResponse.makeResponse(cmd, pass));
}

void RovanServer::respondAck(const CommandResponse& cmd, bool ack) {
    sendCommandResponse(m_connections.response, m_cmdResponse.makeResponseAck(cmd, ack));
}

void RovanServer::sendCommand(const std::string& text) {
    sendCommandResponse(m_connections.command, m_cmdResponse.makeCommand(text));
}

void RovanServer::sendEvent(const char* file, int line, EventTypes::eEventType type,
                            const std::string& text) {
    HealthReporter::Instance().SendEvent(file, line, type, text);
}

uint32_t RovanServer::replaceConfigEvent(const std::string& text, uint32_t handle) {
    return HealthReporter::Instance().ReplaceConfigEvent(text, handle);
}

void RovanServer::reportFault(const std::string& description, const std::string& identity) {
    reportReceiverFault(description, identity, m_serverName.c_str(), kFaultLine);
}

void RovanServer::enableRovanPower() {
    m_power.on();
}

void RovanServer::disableRovanPower() {
    m_power.off();
}

std::chrono::steady_clock::time_point RovanServer::now() const {
    return std::chrono::steady_clock::now();
}

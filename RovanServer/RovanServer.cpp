// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/RovanServer.h"

#include <cstdlib>
#include <exception>

#include "ASPN/CommandStrings.h"
#include "ASPN/ServerIds.h"
#include "RovanServer/PassthroughQuery.h"
#include "RovanServer/RovanIo.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/TimeDataTransfer.h"
#include "face/KD_Devmem.h"
#include "face/KD_SerialPort.h"
#include "face/KD_TSS.h"
#include "face/KD_TypedTS.h"
#include "ioss_mcsq/GssipMcsq.h"

using FACE::RETURN_CODE_TYPE;
using FACE::LCM::Keldra::ReportedState;
using FACE::LCM::Keldra::RequestedState;

RovanServer::RovanServer()
    : m_system(&std::system),
      m_serverId(ASPN2::ServerIds::kRovan),
      m_serverName(ASPN2::ServerIds::to_string(m_serverId)),
      m_power([this](const char* command) { return m_system(command); }),
      m_commandOutbox([this](const CommandResponse& command) {
          survive(kOutboxTexts, [&] { sendCommandResponse(m_connections.command, command); });
      }),
      m_supervision(*this, m_serverName),
      m_zeroize(*this),
      m_bit(
          *this, [this] { return m_rovanProcessor->getCurrentRcvrFail(); },
          [this] { m_supervision.clearBciCable(); }) {
}

RovanServer::~RovanServer() {
    for (const Utility::WorkerThread* thread :
         {&m_serverThread, &m_zeroizeThread, &m_periodicThread, &m_timeDataThread}) {
        if (thread->joinable()) {
            std::terminate();  // before anything that it uses is taken from it
        }
    }
    takeApart();
    m_rovanProcessor.reset();
    m_rovanIo.reset();
}

void RovanServer::Initialize(RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::NO_ACTION;
}

void RovanServer::Finalize(RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::NO_ACTION;
}

void RovanServer::Query_State(ReportedState::Value& state, RETURN_CODE_TYPE::Value& rc) {
    state = m_state;
    rc = RETURN_CODE_TYPE::NO_ERROR;
}

void RovanServer::Request_State_Transition(RequestedState::Value requested,
                                           RETURN_CODE_TYPE::Value& rc) {
    rc = RETURN_CODE_TYPE::NOT_AVAILABLE;
    const bool connected = m_rovanIo && m_rovanProcessor;
    if (requested == RequestedState::START && !isRunning() && connected) {
        startSequence();
        rc = RETURN_CODE_TYPE::NO_ERROR;
    } else if (requested == RequestedState::STOP && isRunning()) {
        stopSequence();
        rc = RETURN_CODE_TYPE::NO_ERROR;
    }
}

void RovanServer::startSequence() {
    m_rovanProcessor->start();
    m_rovanIo->start();
    m_commandOutbox.start();
    {
        const std::lock_guard<std::mutex> lock(m_threadsMutex);
        m_stopping = false;
        m_periodicThread.start([this] { periodicThreadFunction(); });
        m_zeroizeThread.start([this] { zeroizeThreadFunction(); });
        m_timeDataThread.start([this] { timeDataWorkerThreadFunction(); });
    }
    sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
              m_serverName + " started successfully.");
    // Only now: what arrived during the steps above was dropped by the callbacks.
    m_state = ReportedState::RUNNING;
    sendCommand(Sys::CommandString::ServerStarted);
}

void RovanServer::stopSequence() {
    {
        const std::lock_guard<std::mutex> lock(m_threadsMutex);
        m_stopping = true;
    }
    m_rovanIo->stop();
    m_rovanProcessor->stop();
    m_serverThread.stop();
    m_zeroizeThread.stop();
    m_periodicThread.stop();
    m_timeDataThread.stop();
    m_commandOutbox.stop();
    sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
              m_serverName + " stopped successfully.");
    const std::lock_guard<std::mutex> lock(m_gssipMutex);
    m_state = ReportedState::STOPPED;
}

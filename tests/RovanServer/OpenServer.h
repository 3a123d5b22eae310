// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RovanServer/RovanServer.h"

// The server with what its own callbacks and procedures use made visible.
class OpenServer : public RovanServer {
  public:
    using RovanServer::ackMessageCallback;
    using RovanServer::cbCmd;
    using RovanServer::cbGssip;
    using RovanServer::cbGssipPassthrough;
    using RovanServer::cbRsp;
    using RovanServer::disableRovanPower;
    using RovanServer::enableRovanPower;
    using RovanServer::ExceptionTexts;
    using RovanServer::GSSIP;
    using RovanServer::kPeriodicTexts;
    using RovanServer::kServerTexts;
    using RovanServer::kTimeDataTexts;
    using RovanServer::kZeroizeTexts;
    using RovanServer::m_configuration;
    using RovanServer::m_connections;
    using RovanServer::m_system;
    using RovanServer::periodicThreadFunction;
    using RovanServer::survive;
    using RovanServer::timeDataWorkerThreadFunction;
    using RovanServer::zeroizeThreadFunction;
    // The procedures and what they work with.
    using RovanServer::m_bit;
    using RovanServer::m_commandOutbox;
    using RovanServer::m_passthroughMessages;
    using RovanServer::m_passthroughQuery;
    using RovanServer::m_periodicThread;
    using RovanServer::m_rovanProcessor;
    using RovanServer::m_serverThread;
    using RovanServer::m_state;
    using RovanServer::m_stopping;
    using RovanServer::m_supervision;
    using RovanServer::m_timeDataThread;
    using RovanServer::m_timeDataTransfer;
    using RovanServer::m_versionStatus;
    using RovanServer::m_zeroize;
    using RovanServer::m_zeroizeThread;
};

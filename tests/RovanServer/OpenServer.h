// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "RovanServer/RovanServer.h"

// The server with what its own callbacks and procedures use made visible.
class OpenServer : public RovanServer {
  public:
    using RovanServer::cbCmd;
    using RovanServer::cbGssip;
    using RovanServer::cbRsp;
    using RovanServer::disableRovanPower;
    using RovanServer::enableRovanPower;
    using RovanServer::ExceptionTexts;
    using RovanServer::kPeriodicTexts;
    using RovanServer::kServerTexts;
    using RovanServer::kTimeDataTexts;
    using RovanServer::kZeroizeTexts;
    using RovanServer::m_configuration;
    using RovanServer::m_connections;
    using RovanServer::m_system;
    using RovanServer::survive;
};

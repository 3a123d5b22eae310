// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "ASPN/EventTypes.h"
#include "RovanServer/ReceiverMessages.h"
#include "aspn2_msgs/CommandResponse.h"

// What a procedure does to the world outside it: messages to the receiver, answers and commands on
// the bus, events, the receiver's power, and the clock that its time limits are measured by. The
// server is the implementation; a test has one that writes the calls down.
//
// Any thread may call anything. Nothing waits for the receiver, and nothing that fails comes back
// to the caller: a message that finds the queue full is lost, and what cannot be published becomes
// an event.
class ServerActions {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;
    using AckCallback =
        std::function<void(unsigned short msgId, bool success, bool nak, bool rejected)>;

    virtual ~ServerActions() = default;

    /// Queues a message for the receiver.
    virtual void queueMessage(GssipMessagePtr message) = 0;
    /// The same; the link tells `callback` what became of it.
    virtual void queueMessage(GssipMessagePtr message, AckCallback callback) = 0;
    /// The same; the link's result answers `cmd` with "_ACK" or "_NACK".
    virtual void queueMessage(GssipMessagePtr message, const CommandResponse& cmd) = 0;

    // Answers to `cmd`: a text, "_PASS" or "_FAIL", "_ACK" or "_NACK".
    virtual void respondText(const CommandResponse& cmd, const std::string& text) = 0;
    virtual void respondResult(const CommandResponse& cmd, bool pass) = 0;
    virtual void respondAck(const CommandResponse& cmd, bool ack) = 0;
    /// Publishes a command of this server's own.
    virtual void sendCommand(const std::string& text) = 0;

    virtual void sendEvent(const char* file, int line, EventTypes::eEventType type,
                           const std::string& text) = 0;
    /// Replaces the repeated configuration event of that handle; gives the new handle.
    virtual uint32_t replaceConfigEvent(const std::string& text, uint32_t handle) = 0;
    /// Reports a fault of the receiver: a maintenance record, then an event of type 4.
    virtual void reportFault(const std::string& description, const std::string& identity) = 0;

    // Both run shell commands and return when those have ended.
    virtual void enableRovanPower() = 0;
    virtual void disableRovanPower() = 0;

    virtual std::chrono::steady_clock::time_point now() const = 0;

  protected:
    ServerActions() = default;
    ServerActions(const ServerActions&) = default;
    ServerActions& operator=(const ServerActions&) = default;
};

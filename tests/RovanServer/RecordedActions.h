// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "RovanServer/ServerActions.h"

// The actions of a server that does nothing but write down what it is told, in order, one line for
// each call:
//
//   "queue 5001 mode 7"            also "connect 9225", "disconnect 0", "request 5404" and, for the
//                                  extended mode, "5001 mist 3"
//   "queue 5001 mode 8, answers ROVAN_CV_ZEROIZE"
//   "respond COMPONENT_ZEROIZE_PASS to ROVAN_ZEROIZE", "respond PASS to ...", "respond NACK to ..."
//   "command QUERY_PASSTHROUGH_STATE"
//   "event 2 Emergency Zeroize Success"
//   "config event Rovan Rerad mode ENABLED for 7"
//   "fault ST_CABLE_LOSS: The Cable Equalizer does not detect a valid signal"
//   "power off", "power on"
//
// Its clock stands until the test moves it. For tests that stay on one thread.
class RecordedActions : public ServerActions {
  public:
    /// What was done since the last call.
    std::vector<std::string> take() { return std::exchange(m_lines, {}); }

    /// Lets time pass.
    void wait(std::chrono::nanoseconds time) { m_now += time; }

    /// A message as in the lines above.
    static std::string describe(const GssipMessage& message) {
        const std::string id = std::to_string(message.msgId());
        switch (message.wdcnt() == 0 ? message.flagWord() : 0) {
            case 0x9020:
                return "disconnect " + id;
            case 0x9040:
                return "connect " + id;
            case 0x9010:
                return "request " + id;
            default:
                break;
        }
        if (message.msgId() != 5001) {
            return id;
        }
        const unsigned mode = message.data()[4];
        return mode == 64 ? id + " mist " + std::to_string(message.data()[6])
                          : id + " mode " + std::to_string(mode);
    }

    /// The callbacks of the messages queued so far, in the order of the queue; empty where none.
    std::vector<AckCallback> callbacks;
    /// The messages queued so far.
    std::vector<GssipMessagePtr> messages;

    void queueMessage(GssipMessagePtr message) override { queueMessage(message, AckCallback()); }
    void queueMessage(GssipMessagePtr message, AckCallback callback) override {
        m_lines.push_back("queue " + describe(*message));
        callbacks.push_back(std::move(callback));
        messages.push_back(std::move(message));
    }
    void queueMessage(GssipMessagePtr message, const CommandResponse& cmd) override {
        queueMessage(std::move(message), AckCallback());
        m_lines.back() += ", answers " + cmd.command_response();
    }
    void respondText(const CommandResponse& cmd, const std::string& text) override {
        m_lines.push_back("respond " + text + " to " + cmd.command_response());
    }
    void respondResult(const CommandResponse& cmd, bool pass) override {
        respondText(cmd, pass ? "PASS" : "FAIL");
    }
    void respondAck(const CommandResponse& cmd, bool ack) override {
        respondText(cmd, ack ? "ACK" : "NACK");
    }
    void sendCommand(const std::string& text) override { m_lines.push_back("command " + text); }
    void sendEvent(const char*, int, EventTypes::eEventType type,
                   const std::string& text) override {
        m_lines.push_back("event " + std::to_string(static_cast<int>(type)) + " " + text);
    }
    /// The handles count from 100.
    uint32_t replaceConfigEvent(const std::string& text, uint32_t handle) override {
        m_lines.push_back("config event " + text + " for " + std::to_string(handle));
        return m_nextHandle++;
    }
    void reportFault(const std::string& description, const std::string& identity) override {
        m_lines.push_back("fault " + identity + ": " + description);
    }
    void enableRovanPower() override { m_lines.push_back("power on"); }
    void disableRovanPower() override { m_lines.push_back("power off"); }
    std::chrono::steady_clock::time_point now() const override { return m_now; }

  private:
    std::vector<std::string> m_lines;
    uint32_t m_nextHandle = 100;
    std::chrono::steady_clock::time_point m_now{std::chrono::hours(1)};
};

/// A command from the bus with that text.
inline aspn2_msgs::idl::CommandResponse commandOf(const std::string& text) {
    aspn2_msgs::idl::CommandResponse command;
    command.command_response(text);
    return command;
}

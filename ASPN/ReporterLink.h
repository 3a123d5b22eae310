// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "ASPN/FaultHysteresis.h"
#include "face/FACE_TSS.h"
#include "utility/Console.h"

namespace ASPN2 {

// What the reporters of this process have in common: they are initialised once, they publish one
// type of message on one connection, and they tell of a failure on the console instead of to their
// callers.
//
// open and close come from the thread that brings the server up and down; anything else may be
// called by any thread at any time. The transport is shared from open to close, and by a
// publication that is under way. No lock is held while it is called.
template <typename T>
class ReporterLink {
  public:
    /// `className` names the reporter in errors, `shortName` in console lines and as
    /// Init<shortName>.
    ReporterLink(const char* className, const char* shortName)
        : m_className(className), m_shortName(shortName) {}
    ReporterLink(const ReporterLink&) = delete;
    ReporterLink& operator=(const ReporterLink&) = delete;

    /// Makes the connection's publisher and keeps all arguments but `file` and `line`, the place to
    /// name in errors. Throws std::runtime_error without a transport, when opened already (which
    /// changes nothing) or when there can be no publisher (which leaves the link marked as opened:
    /// close it before another try).
    void open(const char* file, int line, const std::string& name, int32_t deviceId,
              const std::shared_ptr<FACE::TSS::TypedTS<T>>& transport, long long connectionId) {
        const std::string init = "Init" + m_shortName + "(" + name + ") ";
        if (transport == nullptr) {
            throw std::runtime_error(init + "called with an empty eventLogTypedTS.");
        }
        if (m_opened.exchange(true)) {
            throw std::runtime_error(init + "called on an already initialized " + m_className +
                                     ".");
        }
        auto rc = FACE::RETURN_CODE_TYPE::NOT_AVAILABLE;
        transport->Register_Sender(connectionId, rc);
        FACE::Return_Code_Value_No_Error_No_Action(
            file, line, (init + "unable to register sender.").c_str(), rc);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_route = {name, deviceId, transport, connectionId};
    }

    /// Lets go of the transport.
    void close() {
        std::shared_ptr<FACE::TSS::TypedTS<T>> transport;  // ends after the lock
        const std::lock_guard<std::mutex> lock(m_mutex);
        transport.swap(m_route.transport);
        m_opened = false;
    }

    bool isOpened() const { return m_opened; }

    void restartSeqNum() { m_nextSeqNum = 0; }

    /// Fills in device id and sequence number and sends. The number is used up also by a message
    /// that cannot be sent. False on any failure.
    bool publish(T& message) {
        const Route route = currentRoute();
        message.header().device_id(route.deviceId);
        message.header().seq_num(m_nextSeqNum++);
        if (route.transport == nullptr) {
            return false;
        }
        long long transaction = 0;
        auto rc = FACE::RETURN_CODE_TYPE::NOT_AVAILABLE;
        route.transport->Send_Message(route.connectionId, 0, transaction, message, rc);
        return rc == FACE::RETURN_CODE_TYPE::NO_ERROR;
    }

    /// "!!!!!! <name> <short name> <text>" on the console.
    void complain(const std::string& text) const {
        Console::line("!!!!!! " + currentRoute().name + ' ' + m_shortName + ' ' + text);
    }

  private:
    struct Route {
        std::string name;
        int32_t deviceId = 0;
        std::shared_ptr<FACE::TSS::TypedTS<T>> transport;
        long long connectionId = -1;
    };

    Route currentRoute() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_route;
    }

    const std::string m_className;
    const std::string m_shortName;
    std::atomic<bool> m_opened{false};
    std::atomic<int64_t> m_nextSeqNum{0};
    mutable std::mutex m_mutex;  // guards the route
    Route m_route;
};

/// Sets up the fault filter as every reporter does.
inline void setUpFaultHysteresis() {
    constexpr int kWindowSeconds = 180;
    constexpr int kThreshold = 16;
    constexpr int kMaxEntries = 2000;
    if (!FaultHysteresis::Instance().OkInitFaultHysteresis(kWindowSeconds, kThreshold,
                                                           kMaxEntries)) {
        std::perror("Unable to configure the Fault Hysteresis\n");
    }
}

}  // namespace ASPN2

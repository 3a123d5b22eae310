// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "RovanServer/ServerActions.h"

class Rovan_9405_Msg;

/// The answer to "REQUEST_ANTENNA_STATE". "Yes" says that a cable is disconnected; that is the
/// sense in which the rest of the system reads it.
std::string make_antenna_response(bool disconnected);

// Follows the receiver's status report, 9405: the two cables of the accessory, the rerad mode and
// the faults. What changes, and what is wrong, becomes events, maintenance records, and answers to
// whoever has asked for the state of the antenna.
//
// process9405 comes on one thread at a time; everything else may be called from any thread.
class ReceiverSupervision {
  public:
    using CommandResponse = aspn2_msgs::idl::CommandResponse;

    /// `name` begins the rerad mode's configuration event.
    ReceiverSupervision(ServerActions& actions, std::string name);

    /// Takes a 9405 frame; one that the message class refuses is dropped. While a built-in test
    /// runs, a change of the rerad mode is not taken over.
    void process9405(const void* bytes, size_t size, bool bitRunning);

    /// Gives the answer's text. From now on each change of the cables is answered to `cmd` too.
    std::string requestAntennaState(const CommandResponse& cmd);

    bool isReradMode() const { return m_reradMode; }
    /// What the configuration says, and the handle of the event that told it.
    void setReradMode(bool reradMode) { m_reradMode = reradMode; }
    void setReradConfigEvent(uint32_t handle) { m_reradConfigEventId = handle; }

    /// The BCI cable counts as connected again until a 9405 says otherwise.
    void clearBciCable() { m_bciCableDisconnected = false; }
    /// A fault was reported since the process started.
    bool hasFault() const { return m_fault9405; }

  private:
    void followCables(const Rovan_9405_Msg& message);
    void handleBciDisconnect();
    void handleSerialConnectionChange();
    void answerAntennaChange();
    void followReradMode(bool reradMode);
    void reportFaults(const Rovan_9405_Msg& message);
    void sendEventAndMaintenanceError(const std::string& description, const std::string& identity);
    bool isAntennaDisconnected() const;

    ServerActions& m_actions;
    const std::string m_name;

    std::atomic<bool> m_bciCableDisconnected{false};  // latched
    std::atomic<bool> m_serialCableDisconnected{false};
    std::atomic<bool> m_fault9405{false};
    std::atomic<bool> m_reradMode{false};
    std::atomic<uint32_t> m_reradConfigEventId{0};

    // Of process9405 alone.
    bool m_lastSerialCableDisconnected = false;
    bool m_lastAntennaDisconnected = false;

    std::mutex m_antennaMutex;
    CommandResponse m_antennaCommand;  // guarded; its device id is 0 until one has come
};

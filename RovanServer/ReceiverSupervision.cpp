// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/ReceiverSupervision.h"

#include <utility>

#include "MSID_messages/Rovan_9405_Msg.h"

std::string make_antenna_response(bool disconnected) {
    return std::string("CURRENT_ANTENNA_STATE,CRPA,") + (disconnected ? "Yes" : "No");
}

ReceiverSupervision::ReceiverSupervision(ServerActions& actions, std::string name)
    : m_actions(actions), m_name(std::move(name)) {
}

void ReceiverSupervision::process9405(const void* bytes, size_t size, bool bitRunning) {
    Rovan_9405_Msg message;
    if (!message.ok_set_9405_gpsip(bytes, static_cast<unsigned>(size))) {
        return;
    }
    followCables(message);
    handleBciDisconnect();
    handleSerialConnectionChange();
    answerAntennaChange();
    if (!bitRunning) {
        followReradMode(message.isInReRad());
    }
    reportFaults(message);
}

void ReceiverSupervision::followCables(const Rovan_9405_Msg& message) {
    if (!m_bciCableDisconnected && message.isBciCableDisconnected()) {
        m_bciCableDisconnected = true;
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                            message.getBciConnectionFailure());
    }
    m_serialCableDisconnected = message.isSerialCableDisconnected();
}

void ReceiverSupervision::handleBciDisconnect() {
    if (m_bciCableDisconnected) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eError, "ZELM_BCI_CABLE_DISCONNECTED");
    }
}

void ReceiverSupervision::handleSerialConnectionChange() {
    const bool disconnected = m_serialCableDisconnected;
    if (disconnected == m_lastSerialCableDisconnected) {
        return;
    }
    m_lastSerialCableDisconnected = disconnected;
    if (disconnected) {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eError,
                            "ZELM_SERIAL_CABLE_DISCONNECTED");
    } else {
        m_actions.sendEvent(__FILE__, __LINE__, EventTypes::eInformation,
                            "ZELM_SERIAL_CABLE_CONNECTED");
    }
}

void ReceiverSupervision::answerAntennaChange() {
    CommandResponse command;
    {
        const std::lock_guard<std::mutex> lock(m_antennaMutex);
        if (m_antennaCommand.header().device_id() == 0) {
            return;
        }
        command = m_antennaCommand;
    }
    const bool disconnected = isAntennaDisconnected();
    if (std::exchange(m_lastAntennaDisconnected, disconnected) != disconnected) {
        m_actions.respondText(command, make_antenna_response(disconnected));
    }
}

void ReceiverSupervision::followReradMode(bool reradMode) {
    if (m_reradMode == reradMode) {
        return;
    }
    m_reradMode = reradMode;
    m_reradConfigEventId = m_actions.replaceConfigEvent(
        m_name + " " + (reradMode ? "Rerad mode ENABLED" : "Rerad mode DISABLED"),
        m_reradConfigEventId);
}

void ReceiverSupervision::reportFaults(const Rovan_9405_Msg& message) {
    struct Fault {
        bool (Rovan_9405_Msg::*isRaised)() const;
        const char* identity;
        const char* description;
    };
    static constexpr Fault kFaults[] = {
        {&Rovan_9405_Msg::isFpgaOff, "FPGA_POWER_FAIL", "FPGA failed to turn on"},
        {&Rovan_9405_Msg::isBciClockOff, "BCI_POWER_FAIL",
         "FPGA Failed to derive clock frequency from BCI input"},
        {&Rovan_9405_Msg::isBciCableDisconnected, "ST_CABLE_LOSS",
         "The Cable Equalizer does not detect a valid signal"},
        {&Rovan_9405_Msg::isFpgaRecievingInvalidSignal, "INVLD_FPGA_SIG",
         "FPGA is not receiving a valid signal"},
        {&Rovan_9405_Msg::isDorvelNotUsingBciClock, "ST_BCI_CLK_FAIL",
         "Dorvel not operating on clock derived from BCI signal"},
        {&Rovan_9405_Msg::isSerialCableDisconnected, "AJ_Com_Fail",
         "Failed to get a BIT response from the AJ"},
    };
    for (const Fault& fault : kFaults) {
        if ((message.*fault.isRaised)()) {
            sendEventAndMaintenanceError(fault.description, fault.identity);
        }
    }
}

void ReceiverSupervision::sendEventAndMaintenanceError(const std::string& description,
                                                       const std::string& identity) {
    m_actions.reportFault(description, identity);
    m_fault9405 = true;
}

std::string ReceiverSupervision::requestAntennaState(const CommandResponse& cmd) {
    {
        const std::lock_guard<std::mutex> lock(m_antennaMutex);
        m_antennaCommand = cmd;
    }
    return make_antenna_response(isAntennaDisconnected());
}

bool ReceiverSupervision::isAntennaDisconnected() const {
    return m_bciCableDisconnected || m_serialCableDisconnected;
}

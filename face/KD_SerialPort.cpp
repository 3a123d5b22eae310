// SPDX-License-Identifier: Apache-2.0
#include "face/KD_SerialPort.h"

namespace FACE::IOSS {

KD_SerialPort::KD_SerialPort(SerialCalls& calls) : ConnectionService(calls) {
}

void KD_SerialPort::Read(long long id, long long timeout, Serial::READ_PAYLOAD_TYPE& payload,
                         Code& rc) {
    if (SerialConnection* const connection = findUsable(id, rc)) {
        rc = connection->read(timeout, payload);
    }
}

void KD_SerialPort::Write(long long id, long long, const Serial::WRITE_PAYLOAD_TYPE& payload,
                          Code& rc) {
    if (SerialConnection* const connection = findUsable(id, rc)) {
        rc = connection->write(payload);
    }
}

void KD_SerialPort::Configure_Connection_Parameters(long long id, long long,
                                                    const IO_PARAMETER_TRANSACTION_TYPE&,
                                                    Code& rc) {
    if (m_connections.findOpen(id, rc) != nullptr) {
        rc = RETURN_CODE_TYPE::NO_ACTION;
    }
}

void KD_SerialPort::Configure_Bus_Parameters(long long id, long long,
                                             IO_PARAMETER_TRANSACTION_TYPE& parameters, Code& rc) {
    SerialConnection* const connection = m_connections.findOpen(id, rc);
    if (connection == nullptr) {
        return;
    }
    if (parameters.parameters.length() == 0) {  // so is an invalid sequence
        rc = RETURN_CODE_TYPE::NO_ACTION;
    } else if (!assignSettings(parameters.parameters, connection->settings)) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
    } else if (!connection->close() || !connection->open()) {
        rc = RETURN_CODE_TYPE::NO_ACTION;
    }
}

}  // namespace FACE::IOSS

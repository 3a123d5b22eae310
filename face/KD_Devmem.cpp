// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Devmem.h"

namespace FACE::IOSS {

KD_Devmem::KD_Devmem(MemoryCalls& calls) : ConnectionService(calls) {
}

void KD_Devmem::Read(long long id, long long, Devmem::READ_PAYLOAD_TYPE& payload, Code& rc) {
    if (const DevmemConnection* const connection = findUsable(id, rc)) {
        rc = connection->read(payload);
    }
}

void KD_Devmem::Write(long long id, long long, const Devmem::WRITE_PAYLOAD_TYPE& payload,
                      Code& rc) {
    if (const DevmemConnection* const connection = findUsable(id, rc)) {
        rc = connection->write(payload);
    }
}

void KD_Devmem::Configure_Connection_Parameters(long long id, long long,
                                                const IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                                Code& rc) {
    DevmemConnection* const connection = m_connections.find(id, rc);
    if (connection == nullptr) {
        return;
    }
    if (connection->isOpen) {
        rc = RETURN_CODE_TYPE::NO_ACTION;
    } else if (!assignSettings(parameters.parameters, connection->settings)) {
        rc = RETURN_CODE_TYPE::INVALID_PARAM;
    }
}

void KD_Devmem::Configure_Bus_Parameters(long long id, long long timeout,
                                         IO_PARAMETER_TRANSACTION_TYPE& parameters, Code& rc) {
    Get_Bus_Configuration(id, timeout, parameters, rc);
}

}  // namespace FACE::IOSS

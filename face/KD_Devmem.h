// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "face/ConnectionService.h"
#include "face/DevmemConnection.h"
#include "face/FACE_IOSS.h"

namespace FACE::IOSS {

// The service of the register blocks in physical memory: typed access through "/dev/mem". Any
// thread may read and write; everything else belongs to bring-up and tear-down.
//
// A region that cannot be mapped is no error of Open_Connection. It has state 4 in
// Get_Connection_Status, and Read and Write give INVALID_MODE.
class KD_Devmem : public ConnectionService<Devmem::IO_Service, DevmemConnection> {
  public:
    explicit KD_Devmem(MemoryCalls& calls = MemoryCalls::plain());

    /// One atomic access of payload.width bits at payload.offset, with a full barrier on both
    /// sides; data narrower than 64 bits is extended with zeros on a read and taken from the low
    /// bytes on a write. NO_ACTION for a width other than 8, 16, 32 and 64 and for an access that
    /// is not wholly inside the region. No system call, no allocation. The offset must be a
    /// multiple of the width, which nobody checks. The time-out has no meaning.
    void Read(long long id, long long timeout, Devmem::READ_PAYLOAD_TYPE& payload,
              Code& rc) override;
    void Write(long long id, long long timeout, const Devmem::WRITE_PAYLOAD_TYPE& payload,
               Code& rc) override;

    /// Changes settings of a closed connection, for its next open; an open one gives NO_ACTION.
    /// INVALID_PARAM, and nothing changes, when any parameter has an unknown id or another
    /// alternative. NO_ERROR without parameters.
    void Configure_Connection_Parameters(long long id, long long timeout,
                                         const IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                         Code& rc) override;

    /// Configures nothing: the same as Get_Bus_Configuration.
    void Configure_Bus_Parameters(long long id, long long timeout,
                                  IO_PARAMETER_TRANSACTION_TYPE& parameters, Code& rc) override;
};

}  // namespace FACE::IOSS

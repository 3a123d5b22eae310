// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "face/ConnectionService.h"
#include "face/FACE_IOSS.h"
#include "face/SerialCalls.h"
#include "face/SerialConnection.h"

namespace FACE::IOSS {

// The service of the serial lines. On one connection one thread may read while another one writes;
// everything else belongs to bring-up and tear-down, and Configure_Bus_Parameters wants no Read or
// Write of its connection under way, since it closes and opens the line.
//
// Nothing throws. A device that cannot be opened is told by NO_ACTION alone; settings that no line
// can have are printed, leave the line usable and show as state 4 in Get_Connection_Status.
class KD_SerialPort : public ConnectionService<Serial::IO_Service, SerialConnection> {
  public:
    explicit KD_SerialPort(SerialCalls& calls = SerialCalls::plain());

    /// One read of at most as many bytes as the payload's sequence has now; it shrinks to what
    /// came, which may be less. TIMED_OUT when nothing came within the time-out, NOT_AVAILABLE when
    /// nothing was there and the time-out is 0, NO_ACTION when the system call failed.
    void Read(long long id, long long timeout, Serial::READ_PAYLOAD_TYPE& payload,
              Code& rc) override;

    /// One write of the whole payload, without time-out. DATA_OVERFLOW when the driver took only a
    /// part, NO_ACTION when the system call failed.
    void Write(long long id, long long timeout, const Serial::WRITE_PAYLOAD_TYPE& payload,
               Code& rc) override;

    /// Not supported: NO_ACTION, or CONNECTION_CLOSED.
    void Configure_Connection_Parameters(long long id, long long timeout,
                                         const IO_PARAMETER_TRANSACTION_TYPE& parameters,
                                         Code& rc) override;

    /// Changes settings of an open connection and opens its line anew. INVALID_PARAM, and nothing
    /// changes, when any parameter has an unknown id or another alternative; NO_ACTION without
    /// parameters and when the line cannot be closed or opened.
    void Configure_Bus_Parameters(long long id, long long timeout,
                                  IO_PARAMETER_TRANSACTION_TYPE& parameters, Code& rc) override;
};

}  // namespace FACE::IOSS

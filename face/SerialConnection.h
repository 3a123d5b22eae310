// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "face/ConnectionService.h"
#include "face/FACE_IOSS.h"
#include "face/SerialCalls.h"
#include "face/SerialSettings.h"

namespace FACE::IOSS {

// One serial line on the device "/dev/ttyS" and the channel number. Owns the descriptor and closes
// it at the end of its life. Faulty means: in use, with one or more settings that no line can have.
//
// While one thread reads another may write; opening and closing want the connection for themselves.
class SerialConnection : public ConfiguredConnection<SerialSettings> {
  public:
    using Calls = SerialCalls;
    using Code = RETURN_CODE_TYPE::Value;

    SerialConnection(std::string itsName, const SerialSettings& itsSettings, SerialCalls& calls);
    SerialConnection(const SerialConnection&) = delete;
    SerialConnection& operator=(const SerialConnection&) = delete;
    ~SerialConnection();

    /// Opens the device with the present settings, of a closed connection, and drops what it had
    /// received. Prints a line for each setting that no line can have. False, and nothing is
    /// printed, when the device cannot be opened.
    bool open();
    /// False, and nothing changes, when the system refuses.
    bool close();
    bool usable() const { return state == kOpen || state == kFaulty; }

    /// One read of at most the payload's length, which shrinks to what there was. TIMED_OUT when
    /// nothing came in time, NOT_AVAILABLE when nothing was there and the time-out is 0.
    Code read(long long timeoutNs, Serial::READ_PAYLOAD_TYPE& payload);
    /// One write of the whole payload; it can wait without limit. DATA_OVERFLOW when only a part
    /// was taken.
    Code write(const Serial::WRITE_PAYLOAD_TYPE& payload);

  private:
    std::string path() const;
    void requestLowLatency();
    /// Prints what is wrong with the settings; true when nothing is.
    bool applySettings();
    /// Costs two system calls when the time-out differs from the last one, and none else.
    void setReadTimeout(long long timeoutNs);

    SerialCalls& m_calls;
    int m_fd = -1;
    long long m_readTimeoutNs = 0;
};

}  // namespace FACE::IOSS

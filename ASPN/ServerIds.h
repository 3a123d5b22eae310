// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace ASPN2 {

// The servers, sensors and clock sources of the wider system: the second byte of a device id.
class ServerIds {
  public:
    static constexpr unsigned char kRovan = 39;
    static constexpr unsigned char kZelmServer = 47;

    /// What a look-up without a match gives.
    static constexpr const char* kInvalid = "INVALID_SERVER_ID";

    /// The server's name, a literal; kInvalid for an id without one.
    static const char* to_string(unsigned char serverId);

    /// The server within a device id.
    static constexpr unsigned char ofDevice(int32_t deviceId) {
        return static_cast<unsigned char>(static_cast<uint32_t>(deviceId) >> 16);
    }
};

}  // namespace ASPN2

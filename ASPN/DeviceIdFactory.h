// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace ASPN2 {

// Makes the device ids that go into a message's header: system id in bits 31 to 24, server id in 23
// to 16, message code in 15 to 8, sub id in 7 to 0. Set up once at bring-up; afterwards any thread
// may make ids.
class DeviceIdFactory {
  public:
    /// System and server id 0.
    DeviceIdFactory() = default;
    DeviceIdFactory(unsigned char systemId, unsigned char serverId);
    DeviceIdFactory(const char* systemName, unsigned char serverId);

    void reset(unsigned char systemId, unsigned char serverId);
    /// Takes the id of a known system name, 0 for any other (see SystemIds).
    void reset(const char* systemName, unsigned char serverId);

    /// Signed, as the bus has it: a system id of 128 or more gives a negative number.
    int32_t makeDeviceId(unsigned char messageCode, unsigned char subId) const;

  private:
    uint32_t m_base = 0;
};

}  // namespace ASPN2

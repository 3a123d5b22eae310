// SPDX-License-Identifier: Apache-2.0
#include "ASPN/DeviceIdFactory.h"

#include "ASPN/SystemIds.h"

namespace ASPN2 {

DeviceIdFactory::DeviceIdFactory(unsigned char systemId, unsigned char serverId) {
    reset(systemId, serverId);
}

DeviceIdFactory::DeviceIdFactory(const char* systemName, unsigned char serverId) {
    reset(systemName, serverId);
}

void DeviceIdFactory::reset(unsigned char systemId, unsigned char serverId) {
    m_base = uint32_t{systemId} << 24 | uint32_t{serverId} << 16;
}

void DeviceIdFactory::reset(const char* systemName, unsigned char serverId) {
    reset(SystemIds::from_string(systemName), serverId);
}

int32_t DeviceIdFactory::makeDeviceId(unsigned char messageCode, unsigned char subId) const {
    return static_cast<int32_t>(m_base | uint32_t{messageCode} << 8 | subId);
}

}  // namespace ASPN2

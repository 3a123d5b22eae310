// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "face/ConnectionService.h"
#include "face/FACE_IOSS.h"
#include "platform/MemoryMap.h"

namespace FACE::IOSS {

struct DevmemSettings {
    uint32_t baseAddress = 0;  // physical
    uint32_t size = 0;         // bytes

    /// In the order of the members, which is that of the parameter ids from 0.
    static const Setting<DevmemSettings> kTable[2];
};

// One region of physical memory. Owns its mapping. Faulty means: not mapped, every access is
// refused.
//
// Any number of threads may read and write an open region; opening and closing want it for
// themselves.
class DevmemConnection : public ConfiguredConnection<DevmemSettings> {
  public:
    using Calls = MemoryCalls;
    using Code = RETURN_CODE_TYPE::Value;

    DevmemConnection(std::string itsName, const DevmemSettings& itsSettings, MemoryCalls& calls);

    /// Maps the region. Always true: whether that went well is told by the state.
    bool open();
    /// Always true.
    bool close();
    bool usable() const { return state == kOpen; }

    // One atomic access of the payload's width with a full barrier before and behind it, no system
    // call, no allocation. NO_ACTION for another width and for an access that is not wholly inside
    // the region. The caller sees to it that the offset is a multiple of the width.
    Code read(Devmem::READ_PAYLOAD_TYPE& payload) const;
    Code write(const Devmem::WRITE_PAYLOAD_TYPE& payload) const;

  private:
    bool contains(uint32_t offset, uint8_t width) const;

    MemoryCalls& m_calls;
    std::unique_ptr<MemoryMap> m_map;
    unsigned char* m_basePointer = nullptr;  // null unless the state is open
};

}  // namespace FACE::IOSS

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "PCSMaintReporter/MaintenanceTypes.h"

namespace ASPN2::Maintenance {

// Where a fault comes from. The default is no source.
struct FaultSource {
    LRU::eLru lru = LRU::eLru0;
    Component::eCmpo component = Component::eCmpo0;
};

using FaultSources = std::array<FaultSource, 4>;

struct DefaultSources {
    int result = 0;
    FaultSources sources{};
};

/// The usual fault sources of a server of the wider system, by its server id; none for an id that
/// no server with sources has.
DefaultSources defaultSourcesOf(unsigned char serverId);

}  // namespace ASPN2::Maintenance

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace FACE::IOSS {

/// Reads the settings of a queue device from a row of its container: once, for the service and for
/// the tools that look at its files. `port` is the number of the device.
template <typename ROW>
void readQueueSettings(ROW& row, uint16_t& port) {
    row("Port", port);
}

}  // namespace FACE::IOSS

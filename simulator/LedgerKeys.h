// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "simulator/Frame.h"

// What a frame and the sample that comes of it say alike, and other frames do not: the same words
// from either side. The sample's numbers are put back into the receiver's formats.
namespace Simulator::LedgerKeys {

/// Of 8504 and PositionVelocity: where it is. All zero without a solution.
Words position(const Bytes& frame8504);
Words position(double latitude, double longitude, double altitude);

/// Of 9391, GPSTime and UTCTime: GPS second of week and nanoseconds.
Words time(const Bytes& frame9391);
Words time(std::int32_t second, double nanoseconds);

}  // namespace Simulator::LedgerKeys

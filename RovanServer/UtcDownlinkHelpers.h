// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "aspn2_msgs/UtcDownlink.h"

// From GPS time to UTC by the parameters of the navigation message (IS-GPS-200, 20.3.3.5.2.4). Pure
// functions, for any thread and any input.
//
// The offset is the current leap seconds, `delta_t_ls`, and the correction a0 + a1 * (seconds since
// `WNt`, `tot`). What is announced for the future (`wn_lsf`, `dn`, `delta_t_lsf`) plays no part: a
// leap second takes effect when the receiver's `delta_t_ls` changes.
namespace UtcDownlinkHelpers {

/// Converts GPS week `week`, `towSec` seconds and `towNsec` nanoseconds of week (any size, any
/// sign) into second of day (0 to 86399), nanoseconds within that second, day of week (0 to 6) and
/// week of UTC. Returns the whole offset from GPS to UTC in seconds.
///
/// `nsec` is not negative and below 1e9, or 1e9 itself when a time less than 1e-7 ns short of the
/// next second rounds up to it. It is not finite when time or parameters are not; the other results
/// then go without the correction.
double ToUtcTimeA(const aspn2_msgs::idl::UtcDownlink& utc, int towSec, double towNsec, int week,
                  int& secOfDay, double& nsec, int& dayOfWeek, int& utcWeek);

/// The conversion in use: ToUtcTimeA.
double ToUtcTime(const aspn2_msgs::idl::UtcDownlink& utc, int towSec, double towNsec, int week,
                 int& secOfDay, double& nsec, int& dayOfWeek, int& utcWeek);

}  // namespace UtcDownlinkHelpers

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "MSID_messages/Rovan_7270_Msg.h"
#include "aspn2_msgs/GPSLineOfSight.h"

/// One measurement as the bus has it: corrected by what the receiver reports with it, its variances
/// replaced where Cno_Based_Measurement_Variance has better ones. A measurement that is not valid
/// is all zero, whatever the report holds. Metres and seconds; for any thread.
aspn2_msgs::idl::gpslos_obs lineOfSightObservationOf(const unpacked_msg7270_t& report);

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "ASPN/Header.h"
#include "aspn2_msgs/common.h"

// Times of bus messages: ToA is the time of arrival (timestamp_arrival), ToV the time of validity
// (timestamp_valid). Every function that makes a stamp takes the time code from TimeCodeHelper. Any
// thread may call, on headers of its own.
//
// FPGA ticks come at 58982400 Hz, which is 4608/78125 per nanosecond. The product ticks * 78125
// leaves the signed 64-bit range at about 1.18e14 ticks, some 23 days of counting; from there on
// the time wraps. A fixed 8 ns is taken off each converted time, so that 0 ticks give a nsec of -8.
namespace ASPN2 {

using IdlHeader = aspn2_msgs::idl::header;

/// The time of arrival.
std::chrono::nanoseconds getNSec_fromToA(const IdlHeader& from);

/// Time of validity of `a` minus that of `b`, in seconds.
double deltaTov(const IdlHeader& a, const IdlHeader& b);
double deltaTov(const header& a, const header& b);

/// Both stamps, field by field, from the first to the second.
void setToVandToA_fromTo(const header& from, IdlHeader& to);
void setToVandToA_fromTo(const IdlHeader& from, header& to);

/// Both stamps, sequence number and device id, from the first to the second.
void copyHeader_fromTo(const header& from, IdlHeader& to);
void copyHeader_fromTo(const IdlHeader& from, header& to);

void setToV_fromNSec(std::chrono::nanoseconds time, IdlHeader& to);
void setToVandToA_fromNSec(std::chrono::nanoseconds time, IdlHeader& to);

void setToV_fromFpgaTicks(unsigned long long ticks, IdlHeader& to);
void setToV_fromFpgaTicks(unsigned long long ticks, header& to);
void setToVandToA_fromFpgaTicks(unsigned long long ticks, IdlHeader& to);
void setToVandToA_fromFpgaTicks(unsigned long long ticks, header& to);
void setToA_fromFpgaTicks(unsigned long long ticks, IdlHeader& to);
void setToA_fromFpgaTicks(unsigned long long ticks, header& to);

}  // namespace ASPN2

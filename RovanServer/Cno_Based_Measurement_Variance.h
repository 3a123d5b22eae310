// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include "aspn2_msgs/GPSLineOfSight.h"

// Variances of pseudorange and delta range measurements by C/N0. For some codes in some channel
// states they take the place of what the receiver reports. Stateless; for any thread.
class Cno_Based_Measurement_Variance {
  public:
    using channel_code_enum = aspn2_msgs::idl::channel_code_enum;
    using channel_state_enum = aspn2_msgs::idl::channel_state_enum;

    // Each either overwrites the variance, in square metres, or leaves it alone. `cn0` may be any
    // number: what lies outside of the tables takes the nearest row.

    static void pr_override_check(double& variance, channel_code_enum code,
                                  channel_state_enum state, int cn0);
    static void dr_override_check(double& variance, channel_code_enum code,
                                  channel_state_enum state, int cn0);

  private:
    static constexpr int kFirstCn0 = 14;
    static constexpr int kLastCn0 = 28;
    using Table = std::array<double, kLastCn0 - kFirstCn0 + 1>;

    static const Table Yprvtable;
    static const Table Mprvtable;
    static const Table Mdrvtable;

    static double at(const Table& table, int cn0);
};

// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/Cno_Based_Measurement_Variance.h"

#include <algorithm>

namespace {

namespace idl = aspn2_msgs::idl;

bool isTrackedM(idl::channel_code_enum code, idl::channel_state_enum state) {
    return code == idl::CHANNEL_CODE_4 &&
           (state == idl::CHANNEL_STATE_3 || state == idl::CHANNEL_STATE_4 ||
            state == idl::CHANNEL_STATE_5);
}

bool isTrackedY(idl::channel_code_enum code, idl::channel_state_enum state) {
    return (code == idl::CHANNEL_CODE_2 || code == idl::CHANNEL_CODE_3) &&
           state == idl::CHANNEL_STATE_3;
}

}  // namespace

using Variances = Cno_Based_Measurement_Variance;

const Variances::Table Variances::Yprvtable{10.6, 10.0, 9.4, 8.8, 8.2, 7.5, 6.9, 6.3,
                                            5.7,  5.1,  4.5, 3.8, 3.2, 2.6, 2.25};
const Variances::Table Variances::Mprvtable{2.15, 1.95, 1.75, 1.5, 1.3,  1.2,  1.0, 0.8,
                                            0.5,  0.35, 0.25, 0.2, 0.18, 0.15, 0.12};
// The one step upward, from 24 to 25, is meant.
const Variances::Table Variances::Mdrvtable{0.17,    0.14,   0.1,     0.07,    0.04,
                                            0.01,    0.002,  0.0018,  0.00055, 0.00045,
                                            0.00033, 0.0004, 0.00035, 0.00025, 0.00017};

void Variances::pr_override_check(double& variance, channel_code_enum code,
                                  channel_state_enum state, int cn0) {
    if (isTrackedY(code, state)) {
        variance = at(Yprvtable, cn0);
    } else if (isTrackedM(code, state)) {
        variance = at(Mprvtable, cn0);
    }
}

void Variances::dr_override_check(double& variance, channel_code_enum code,
                                  channel_state_enum state, int cn0) {
    if (isTrackedM(code, state)) {
        variance = at(Mdrvtable, cn0);
    }
}

double Variances::at(const Table& table, int cn0) {
    return table[static_cast<size_t>(std::clamp(cn0, kFirstCn0, kLastCn0) - kFirstCn0)];
}

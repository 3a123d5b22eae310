// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/LineOfSightObservation.h"

#include "RovanServer/Cno_Based_Measurement_Variance.h"

namespace {

namespace idl = aspn2_msgs::idl;

constexpr double kMsPerSec = 1000.0;

double squared(double x) {
    return x * x;
}

idl::channel_state_enum stateOf(const unpacked_msg7270_t& report) {
    const unsigned state = report.channelState();
    return state >= 1 && state <= 7 ? static_cast<idl::channel_state_enum>(state)
                                    : idl::CHANNEL_STATE_15;
}

idl::channel_frequency_enum frequencyOf(const unpacked_msg7270_t& report) {
    switch (report.frequency()) {
        case 0:
            return idl::CHANNEL_FREQUENCY_1;
        case 1:
            return idl::CHANNEL_FREQUENCY_2;
        default:
            return idl::CHANNEL_FREQUENCY_0;
    }
}

idl::channel_code_enum codeOf(const unpacked_msg7270_t& report) {
    const unsigned code = report.channelCode();
    return static_cast<idl::channel_code_enum>(code > 3 ? 0 : code + 1);
}

idl::iono_correction_source_enum ionoSourceOf(const unpacked_msg7270_t& report) {
    const unsigned source = report.ionoCorrectionSource();
    return static_cast<idl::iono_correction_source_enum>(source < 3 ? source : 0);
}

void setPseudorange(const unpacked_msg7270_t& report, idl::gpslos_obs& obs) {
    obs.pseudorange_measurement(report.pseudorange() - report.pseudorangeCorrection());
    obs.pseudorange_measurement_variance(squared(report.pseudorangeSigma()));
    Cno_Based_Measurement_Variance::pr_override_check(obs.pseudorange_measurement_variance(),
                                                      obs.channel_code(), obs.channel_state(),
                                                      obs.c_n0());
}

void setDeltaRange(const unpacked_msg7270_t& report, idl::gpslos_obs& obs) {
    const double interval = report.deltaRangeIntervalMs() / kMsPerSec;
    double rate = report.rangeRateCorrection();
    // The second term belongs to the tropospheric correction, and is nothing without it.
    if (report.tropoCorrectionApplied() && report.hasSecondRateCorrection()) {
        rate += report.secondRateCorrection();
    }
    obs.deltarange_interval(interval);
    obs.deltarange_measurement(report.deltaRange() - interval * rate);
    obs.deltarange_measurement_variance(squared(report.deltaRangeSigma()));
    Cno_Based_Measurement_Variance::dr_override_check(
        obs.deltarange_measurement_variance(), obs.channel_code(), obs.channel_state(), obs.c_n0());
}

}  // namespace

idl::gpslos_obs lineOfSightObservationOf(const unpacked_msg7270_t& report) {
    idl::gpslos_obs obs;
    obs.prn(static_cast<int32_t>(report.prn()));
    obs.channel_state(stateOf(report));
    obs.channel_frequency(frequencyOf(report));
    obs.channel_code(codeOf(report));
    obs.ere(report.expectedRangeError());
    obs.c_n0(static_cast<int32_t>(report.carrierToNoise()));
    obs.assurance(report.assured() ? idl::ASSURANCE_1 : idl::ASSURANCE_0);
    obs.pseudorange_measurement_valid(report.pseudorangeValid());
    if (report.pseudorangeValid()) {
        setPseudorange(report, obs);
    }
    obs.deltarange_measurement_valid(report.deltaRangeValid());
    if (report.deltaRangeValid()) {
        setDeltaRange(report, obs);
    }
    obs.sv_position_start(report.svPositionStart());
    obs.sv_position_stop(report.svPositionStop());
    obs.tropo_correction_applied(report.tropoCorrectionApplied());
    obs.iono_correction_applied(report.ionoCorrectionApplied());
    obs.iono_correction_source(ionoSourceOf(report));
    return obs;
}

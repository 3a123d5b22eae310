// SPDX-License-Identifier: Apache-2.0
// 9391 and 30409: GPS time, UTC and the parameters that lead from one to the other.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "MSID_messages/Rovan_30409_Msg.h"
#include "MSID_messages/Rovan_9391_Msg.h"
#include "RovanServer/RovanProcessor.h"
#include "RovanServer/RovanProcessorFrame.h"
#include "RovanServer/UtcDownlinkHelpers.h"

namespace {

namespace idl = aspn2_msgs::idl;

constexpr double kNsecPerSec = 1e9;

using Covariance = std::array<std::array<double, 2>, 2>;

Covariance diagonal(double first, double second) {
    return {{{first, 0.0}, {0.0, second}}};
}

// The receiver's deviations are single precision, and so are their squares.
Covariance covarianceOf(const Rovan_9391_Msg& report) {
    const float first = report.firstSigma() * report.firstSigma();
    const float second = report.secondSigma() * report.secondSigma();
    return diagonal(static_cast<double>(first), static_cast<double>(second));
}

/// The nearest whole number, away from zero in the middle; what no int32_t can hold becomes its
/// limit, and 0 if it is no number.
int32_t rounded(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    using Limits = std::numeric_limits<int32_t>;
    return static_cast<int32_t>(std::clamp(std::round(value), static_cast<double>(Limits::min()),
                                           static_cast<double>(Limits::max())));
}

}  // namespace

void RovanProcessor::process30409(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_30409_Msg message;
    if (!message.ok_set_30409_gpsip(frame.bytes, frame.size)) {
        return;
    }
    const msg30409_t report = message.contents();
    if (!Rovan_30409_Msg::isUtc_Valid(report)) {
        return;
    }
    idl::UtcDownlink utc;
    utc.a0(report.a0());
    utc.a1(report.a1());
    utc.tot(rounded(report.tot()));
    utc.WNt(report.WNt());
    utc.delta_t_ls(report.delta_t_ls());
    utc.wn_lsf(report.wn_lsf());
    utc.dn(report.dn());
    utc.delta_t_lsf(report.delta_t_lsf());
    m_utcDownlink.publish(gssip.header(), utc, ": process30409() UTCDownlink PUBLISH ERROR");

    const std::lock_guard<std::mutex> lock(m_dataMutex);
    m_lastUtcDownlink = utc;
}

void RovanProcessor::process9391(const GSSIP& gssip) {
    const RovanProcessorFrame frame(gssip);
    Rovan_9391_Msg message;
    if (!message.ok_set_9391_gpsip(frame.bytes, frame.size)) {
        return;
    }
    publishGpsTime(gssip, message);
    publishUtcTime(gssip, message);
}

void RovanProcessor::publishGpsTime(const GSSIP& gssip, const Rovan_9391_Msg& report) {
    idl::GPSTime time;
    time.gps_tow_sec(report.gpsTimeOfWeek());
    time.gps_tow_nsec(report.gpsTimeOfWeekFraction() * kNsecPerSec);
    time.gps_week(report.gpsWeek());
    time.rcvr_set_time_sec(report.receiverSetTime());
    time.rcvr_set_time_nsec(report.receiverSetTimeFraction() * kNsecPerSec);
    time.rcvr_time_bias(report.clockBias());
    time.rcvr_time_bias_error(report.clockBiasError());
    time.rcvr_time_bias_error_rate(static_cast<double>(report.clockBiasErrorRate()));
    time.covariance(covarianceOf(report));
    m_gpsTime.publish(gssip.header(), time, ": process9391() GPSTime PUBLISH ERROR");
}

// Without parameters the message goes out all the same, with UTC equal to GPS time: a consumer goes
// by the infinite variances.
void RovanProcessor::publishUtcTime(const GSSIP& gssip, const Rovan_9391_Msg& report) {
    std::optional<idl::UtcDownlink> latest;
    {
        const std::lock_guard<std::mutex> lock(m_dataMutex);
        latest = m_lastUtcDownlink;
    }
    const idl::UtcDownlink utc = latest.value_or(idl::UtcDownlink());
    constexpr double kInfinity = std::numeric_limits<double>::infinity();

    idl::UTCTime time;
    time.gps_tow_sec(report.gpsTimeOfWeek());
    time.gps_tow_nsec(report.gpsTimeOfWeekFraction() * kNsecPerSec);
    time.gps_week(report.gpsWeek());
    int dayOfWeek = 0;
    int utcWeek = 0;
    UtcDownlinkHelpers::ToUtcTime(utc, time.gps_tow_sec(), time.gps_tow_nsec(), time.gps_week(),
                                  time.utc_tod_sec(), time.utc_tod_nsec(), dayOfWeek, utcWeek);
    time.a1(utc.a1());
    time.covariance(latest ? covarianceOf(report) : diagonal(kInfinity, kInfinity));
    m_utcTime.publish(gssip.header(), time, ": process9391() UTCTime PUBLISH ERROR");
}

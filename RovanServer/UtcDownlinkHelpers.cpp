// SPDX-License-Identifier: Apache-2.0
#include "RovanServer/UtcDownlinkHelpers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

using aspn2_msgs::idl::UtcDownlink;

namespace {

constexpr double kNsecPerSec = 1e9;
constexpr int64_t kSecPerDay = 86400;
constexpr int64_t kSecPerWeek = 604800;
/// More whole seconds than this have no exact double; far beyond any week number, too.
constexpr double kMaxSeconds = 9007199254740992.0;

// 32-bit arithmetic that wraps: the numbers come from the receiver and may be anything.
int32_t wrappedDifference(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
int32_t wrappedProduct(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// Seconds from the reference time of the parameters to the GPS time.
double elapsedSec(const UtcDownlink& utc, int towSec, double towNsec, int week) {
    const int32_t weeks = wrappedDifference(week, utc.WNt());
    const int32_t seconds = wrappedDifference(towSec, utc.tot());
    return static_cast<double>(wrappedProduct(static_cast<int32_t>(kSecPerWeek), weeks)) +
           (static_cast<double>(seconds) + towNsec * 1e-9);
}

/// Moves whole seconds from `nsec` to `sec` until `nsec` lies within one second. In one step, as a
/// bad parameter can be worth centuries; fmod is exact, like taking away second by second.
void carryIntoSeconds(double& nsec, int64_t& sec) {
    if (!std::isfinite(nsec) || (nsec >= 0.0 && nsec < kNsecPerSec)) {
        return;
    }
    const double rest = std::fmod(nsec, kNsecPerSec);
    const double whole = (nsec - rest) / kNsecPerSec;
    sec += static_cast<int64_t>(std::clamp(whole, -kMaxSeconds, kMaxSeconds));
    if (rest < 0.0) {
        nsec = rest + kNsecPerSec;
        --sec;
    } else {
        nsec = std::fabs(rest);  // a negative time that is whole leaves -0.0
    }
}

/// Moves whole weeks from `sec` to the result until `sec` lies within one week.
int64_t carryIntoWeeks(int64_t& sec) {
    int64_t weeks = sec / kSecPerWeek;
    sec %= kSecPerWeek;
    if (sec < 0) {
        sec += kSecPerWeek;
        --weeks;
    }
    return weeks;
}

int saturated(int64_t value) {
    return static_cast<int>(std::clamp<int64_t>(value, std::numeric_limits<int>::min(),
                                                std::numeric_limits<int>::max()));
}

}  // namespace

double UtcDownlinkHelpers::ToUtcTimeA(const UtcDownlink& utc, int towSec, double towNsec, int week,
                                      int& secOfDay, double& nsec, int& dayOfWeek, int& utcWeek) {
    const double correctionNsec =
        (utc.a0() + elapsedSec(utc, towSec, towNsec, week) * utc.a1()) * kNsecPerSec;
    int64_t sec = int64_t{towSec} - utc.delta_t_ls();
    nsec = towNsec - correctionNsec;
    carryIntoSeconds(nsec, sec);
    utcWeek = saturated(carryIntoWeeks(sec) + week);
    secOfDay = static_cast<int>(sec % kSecPerDay);
    dayOfWeek = static_cast<int>(sec / kSecPerDay);
    return utc.delta_t_ls() + correctionNsec * 1e-9;
}

double UtcDownlinkHelpers::ToUtcTime(const UtcDownlink& utc, int towSec, double towNsec, int week,
                                     int& secOfDay, double& nsec, int& dayOfWeek, int& utcWeek) {
    return ToUtcTimeA(utc, towSec, towNsec, week, secOfDay, nsec, dayOfWeek, utcWeek);
}

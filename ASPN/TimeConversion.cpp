// SPDX-License-Identifier: Apache-2.0
#include "ASPN/TimeConversion.h"

#include <cstdint>

#include "ASPN/TimeCodeHelper.h"

namespace ASPN2 {
namespace {

constexpr int64_t kNsPerSec = 1'000'000'000;
constexpr uint64_t kTickNumerator = 78125;
constexpr int64_t kTickDenominator = 4608;
constexpr int64_t kTickOffsetNs = 8;

// One stamp, whichever of the two headers it comes from or goes to.
struct Stamp {
    int64_t sec;
    int32_t nsec;
    int32_t timeCode;
};

Stamp stampOfNs(int64_t ns) {
    return {ns / kNsPerSec, static_cast<int32_t>(ns % kNsPerSec),
            TimeCodeHelper::Instance().getTimeCode()};
}

Stamp stampOfTicks(unsigned long long ticks) {
    // Multiplied unsigned, where the overflow is defined; the cast keeps the same bits.
    const auto scaled = static_cast<int64_t>(uint64_t{ticks} * kTickNumerator);
    return stampOfNs(scaled / kTickDenominator - kTickOffsetNs);
}

Stamp stampOf(const aspn2_msgs::idl::timestamp& from) {
    return {from.sec(), from.nsec(), from.time_code()};
}

void store(const Stamp& stamp, aspn2_msgs::idl::timestamp& to) {
    to.sec(stamp.sec);
    to.nsec(stamp.nsec);
    to.time_code(stamp.timeCode);
}

Stamp tovOf(const IdlHeader& from) {
    return stampOf(from.timestamp_valid());
}

Stamp tovOf(const header& from) {
    return {from.valid_sec, from.valid_nsec, from.valid_time_code};
}

Stamp toaOf(const IdlHeader& from) {
    return stampOf(from.timestamp_arrival());
}

Stamp toaOf(const header& from) {
    return {from.arrival_sec, from.arrival_nsec, from.arrival_time_code};
}

void setTov(const Stamp& stamp, IdlHeader& to) {
    store(stamp, to.timestamp_valid());
}

void setTov(const Stamp& stamp, header& to) {
    to.valid_sec = stamp.sec;
    to.valid_nsec = stamp.nsec;
    to.valid_time_code = stamp.timeCode;
}

void setToa(const Stamp& stamp, IdlHeader& to) {
    store(stamp, to.timestamp_arrival());
}

void setToa(const Stamp& stamp, header& to) {
    to.arrival_sec = stamp.sec;
    to.arrival_nsec = stamp.nsec;
    to.arrival_time_code = stamp.timeCode;
}

template <typename HEADER>
void setBoth(const Stamp& stamp, HEADER& to) {
    setTov(stamp, to);
    setToa(stamp, to);
}

template <typename FROM, typename TO>
void copyStamps(const FROM& from, TO& to) {
    setTov(tovOf(from), to);
    setToa(toaOf(from), to);
}

// In double from the start: seconds of any size from the bus, and no overflow.
double differenceOf(const Stamp& a, const Stamp& b) {
    return (static_cast<double>(a.sec) - static_cast<double>(b.sec)) +
           (static_cast<double>(a.nsec) - static_cast<double>(b.nsec)) * 1e-9;
}

}  // namespace

std::chrono::nanoseconds getNSec_fromToA(const IdlHeader& from) {
    const Stamp toa = toaOf(from);
    const uint64_t ns =
        static_cast<uint64_t>(toa.sec) * kNsPerSec + static_cast<uint64_t>(int64_t{toa.nsec});
    return std::chrono::nanoseconds(static_cast<int64_t>(ns));
}

double deltaTov(const IdlHeader& a, const IdlHeader& b) {
    return differenceOf(tovOf(a), tovOf(b));
}

double deltaTov(const header& a, const header& b) {
    return differenceOf(tovOf(a), tovOf(b));
}

void setToVandToA_fromTo(const header& from, IdlHeader& to) {
    copyStamps(from, to);
}

void setToVandToA_fromTo(const IdlHeader& from, header& to) {
    copyStamps(from, to);
}

void copyHeader_fromTo(const header& from, IdlHeader& to) {
    copyStamps(from, to);
    to.seq_num(from.seq_num);
    to.device_id(from.device_id);
}

void copyHeader_fromTo(const IdlHeader& from, header& to) {
    copyStamps(from, to);
    to.seq_num = from.seq_num();
    to.device_id = from.device_id();
}

void setToV_fromNSec(std::chrono::nanoseconds time, IdlHeader& to) {
    setTov(stampOfNs(time.count()), to);
}

void setToVandToA_fromNSec(std::chrono::nanoseconds time, IdlHeader& to) {
    setBoth(stampOfNs(time.count()), to);
}

void setToV_fromFpgaTicks(unsigned long long ticks, IdlHeader& to) {
    setTov(stampOfTicks(ticks), to);
}

void setToV_fromFpgaTicks(unsigned long long ticks, header& to) {
    setTov(stampOfTicks(ticks), to);
}

void setToVandToA_fromFpgaTicks(unsigned long long ticks, IdlHeader& to) {
    setBoth(stampOfTicks(ticks), to);
}

void setToVandToA_fromFpgaTicks(unsigned long long ticks, header& to) {
    setBoth(stampOfTicks(ticks), to);
}

void setToA_fromFpgaTicks(unsigned long long ticks, IdlHeader& to) {
    setToa(stampOfTicks(ticks), to);
}

void setToA_fromFpgaTicks(unsigned long long ticks, header& to) {
    setToa(stampOfTicks(ticks), to);
}

}  // namespace ASPN2

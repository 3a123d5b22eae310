// SPDX-License-Identifier: Apache-2.0
#include "simulator/GssipSample.h"

#include <algorithm>
#include <stdexcept>
#include <type_traits>

#include "gssip/GssipFrame.h"

namespace Simulator {
namespace {

constexpr std::uint8_t kEncapsulation[] = {0, 1, 0, 0};  // plain CDR, little-endian, no options

// Byte offsets, encapsulation included.
constexpr std::size_t kSequenceNumber = 4;
constexpr std::size_t kArrival = 12;
constexpr std::size_t kValid = 28;
constexpr std::size_t kDeviceId = 44;
constexpr std::size_t kByteCount = 48;
constexpr std::size_t kDataLength = 52;
// A time: 8 bytes of seconds, 4 of nanoseconds, 4 of time code.
constexpr std::size_t kNanoseconds = 8;
constexpr std::size_t kTimeCode = 12;

template <typename T>
void put(Bytes& bytes, std::size_t offset, T value) {
    auto rest = static_cast<std::make_unsigned_t<T>>(value);
    for (std::size_t i = 0; i < sizeof(T); ++i, rest = static_cast<decltype(rest)>(rest >> 8)) {
        bytes[offset + i] = static_cast<std::uint8_t>(rest & 0xFF);
    }
}

template <typename T>
T get(const std::uint8_t* bytes, std::size_t offset) {
    std::make_unsigned_t<T> value = 0;
    for (std::size_t i = sizeof(T); i-- > 0;) {
        value = static_cast<decltype(value)>(value << 8 | bytes[offset + i]);
    }
    return static_cast<T>(value);
}

void putTime(Bytes& bytes, std::size_t offset, const GssipSample::Time& time) {
    put(bytes, offset, time.sec);
    put(bytes, offset + kNanoseconds, time.nsec);
    put(bytes, offset + kTimeCode, time.timeCode);
}

GssipSample::Time getTime(const std::uint8_t* bytes, std::size_t offset) {
    return {get<std::int64_t>(bytes, offset), get<std::int32_t>(bytes, offset + kNanoseconds),
            get<std::int32_t>(bytes, offset + kTimeCode)};
}

}  // namespace

Bytes GssipSample::encode() const {
    Bytes bytes(kOverhead);
    std::copy(std::begin(kEncapsulation), std::end(kEncapsulation), bytes.begin());
    put(bytes, kSequenceNumber, sequenceNumber);
    putTime(bytes, kArrival, arrival);
    putTime(bytes, kValid, valid);
    put(bytes, kDeviceId, deviceId);
    put(bytes, kByteCount, static_cast<std::int32_t>(frame.size()));
    put(bytes, kDataLength, static_cast<std::uint32_t>(frame.size()));
    bytes.insert(bytes.end(), frame.begin(), frame.end());
    return bytes;
}

std::optional<GssipSample> GssipSample::decode(const std::uint8_t* bytes, std::size_t size) {
    if (!std::equal(bytes, bytes + std::min(size, sizeof kEncapsulation), kEncapsulation)) {
        throw std::runtime_error("no little-endian CDR sample");
    }
    if (size < kOverhead) {
        return std::nullopt;
    }
    const auto length = get<std::uint32_t>(bytes, kDataLength);
    if (get<std::int32_t>(bytes, kByteCount) != static_cast<std::int64_t>(length) ||
        length > Gssip::kMaxFrameBytes) {
        throw std::runtime_error("a sample with a wrong length");
    }
    if (size - kOverhead < length) {
        return std::nullopt;
    }
    GssipSample sample;
    sample.sequenceNumber = get<std::int64_t>(bytes, kSequenceNumber);
    sample.arrival = getTime(bytes, kArrival);
    sample.valid = getTime(bytes, kValid);
    sample.deviceId = get<std::int32_t>(bytes, kDeviceId);
    sample.frame.assign(bytes + kOverhead, bytes + kOverhead + length);
    return sample;
}

}  // namespace Simulator

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

// The file of a recording. All numbers are little endian.
//
//   file     magic, then records, then the end mark
//   magic    8 bytes "ROVANBUS", u32 version 1, u32 zero
//   record   u32 length of the body, u32 CRC-32 of the body, body
//   body of a sample
//            u8 1, i64 nanoseconds since the start, i64 Unix ns sent, i64 Unix ns received,
//            u64 sequence number, topic, type name, publisher: each u16 length and bytes,
//            u32 length and the sample's CDR bytes with their encapsulation
//   body of the end mark
//            u8 2, u64 number of samples
//
// The end mark tells a whole file from one that was cut; nothing stands behind it.
namespace Bus::RecordingFormat {

constexpr std::array<uint8_t, 16> kMagic = {'R', 'O', 'V', 'A', 'N', 'B', 'U', 'S',
                                            1,   0,   0,   0,   0,   0,   0,   0};
constexpr size_t kVersionAt = 8;
constexpr size_t kRecordHeader = 8;
constexpr uint8_t kSample = 1;
constexpr uint8_t kEnd = 2;
constexpr size_t kEndBody = 1 + 8;
// A limit for the memory of a reader. The largest message of a server has a tenth of it.
constexpr size_t kMaxBody = 1 << 20;
constexpr size_t kMaxText = 4096;

template <typename T>
void put(std::vector<uint8_t>& bytes, T value) {
    auto rest = static_cast<uint64_t>(value);
    for (size_t i = 0; i < sizeof(T); ++i, rest >>= 8) {
        bytes.push_back(static_cast<uint8_t>(rest & 0xFF));
    }
}

template <typename T>
T get(const uint8_t* bytes) {
    uint64_t value = 0;
    for (size_t i = sizeof(T); i-- > 0;) {
        value = value << 8 | bytes[i];
    }
    return static_cast<T>(value);
}

/// The CRC-32 of IEEE 802.3.
inline uint32_t crc32(const std::vector<uint8_t>& bytes) {
    uint32_t crc = 0xFFFFFFFF;
    for (const uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~crc;
}

}  // namespace Bus::RecordingFormat

// SPDX-License-Identifier: Apache-2.0
#include "simulator/LedgerKeys.h"

#include <cstring>

#include "gssip/GssipFrame.h"
#include "simulator/MessageBody.h"

namespace Simulator::LedgerKeys {
namespace {

std::uint16_t data(const Bytes& frame, std::size_t word) {
    return frameWord(frame, Gssip::kWordData + word);
}

std::uint64_t little(const Bytes& frame, std::size_t word, std::size_t words) {
    std::uint64_t value = 0;
    for (std::size_t i = words; i > 0; --i) {
        value = value << 16 | data(frame, word + i - 1);
    }
    return value;
}

}  // namespace

Words position(const Bytes& frame8504) {
    constexpr unsigned kNoSolution = 1u << 5;
    Words key(8);
    if ((data(frame8504, 48) & kNoSolution) == 0) {
        for (std::size_t i = 0; i < 6; ++i) {
            key[i] = data(frame8504, 8 + i);
        }
        key[6] = data(frame8504, 28);
        key[7] = data(frame8504, 29);
    }
    return key;
}

Words position(double latitude, double longitude, double altitude) {
    MessageBody body(8);
    body.veskExtended(0, latitude);
    body.veskExtended(3, longitude);
    body.pdpSingle(6, static_cast<float>(altitude));
    return body.words();
}

Words time(const Bytes& frame9391) {
    const std::uint64_t pattern = little(frame9391, 16, 4);
    double fraction = 0;
    std::memcpy(&fraction, &pattern, sizeof fraction);
    return time(static_cast<std::int32_t>(static_cast<std::uint32_t>(little(frame9391, 14, 2))),
                fraction * 1e9);
}

Words time(std::int32_t second, double nanoseconds) {
    MessageBody body(6);
    body.int32(0, second);
    body.ieeeDouble(2, nanoseconds);
    return body.words();
}

}  // namespace Simulator::LedgerKeys

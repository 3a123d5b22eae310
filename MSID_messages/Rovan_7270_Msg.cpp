// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_7270_Msg.h"

#include <cstdio>
#include <string>

#include "MSID_messages/ConsoleText.h"

namespace {

constexpr double kDeltaRangeUnit = 1.0 / (1 << 13);
constexpr double kCorrectionUnit = 1.0 / (1 << 10);
constexpr double kPseudorangeSigmaUnit = 1.0 / (1 << 4);
constexpr double kDeltaRangeSigmaUnit = 1.0 / (1 << 15);

// The last two are equal.
constexpr std::array<double, 16> kExpectedRangeErrors{2.0,    2.8,    4.0,    5.7,   8.0,   11.3,
                                                      16.0,   32.0,   64.0,   128.0, 256.0, 512.0,
                                                      1024.0, 2048.0, 4096.0, 4096.0};

// The console text names this place, whatever the source is called and wherever the line stands.
constexpr const char* kDebugPath = "MSID_messages/Rovan7270Msg";
constexpr int kDebugLine = 44;
constexpr unsigned kDebugWordsPerLine = 5;

std::array<double, 3> threeDoubles(DataWords words, unsigned first) {
    return words.littleEndian<std::array<double, 3>>(first);
}

}  // namespace

uint16_t unpacked_msg7270_t::epochTag() const {
    return words[5];
}
bool unpacked_msg7270_t::deltaRangeValid() const {
    return DataWords(words).bit(6, 1);
}
bool unpacked_msg7270_t::pseudorangeValid() const {
    return DataWords(words).bit(6, 2);
}
double unpacked_msg7270_t::expectedRangeError() const {
    return kExpectedRangeErrors[DataWords(words).bits(6, 7, 4)];
}
unsigned unpacked_msg7270_t::prn() const {
    return DataWords(words).bits(6, 15, 10);
}
unsigned unpacked_msg7270_t::frequency() const {
    return DataWords(words).bits(7, 3, 2);
}
unsigned unpacked_msg7270_t::carrierToNoise() const {
    return DataWords(words).bits(7, 11, 4);
}
unsigned unpacked_msg7270_t::channelState() const {
    return DataWords(words).bits(7, 15, 12);
}
double unpacked_msg7270_t::pseudorange() const {
    return DataWords(words).littleEndian<double>(8);
}
double unpacked_msg7270_t::deltaRange() const {
    return DataWords(words).littleEndian<int32_t>(12) * kDeltaRangeUnit;
}
unsigned unpacked_msg7270_t::deltaRangeIntervalMs() const {
    return words[14];
}
std::array<double, 3> unpacked_msg7270_t::svPositionStart() const {
    return threeDoubles(DataWords(words), 15);
}
std::array<double, 3> unpacked_msg7270_t::svPositionStop() const {
    return threeDoubles(DataWords(words), 27);
}
double unpacked_msg7270_t::pseudorangeCorrection() const {
    return DataWords(words).littleEndian<int32_t>(39) * kCorrectionUnit;
}
double unpacked_msg7270_t::rangeRateCorrection() const {
    return DataWords(words).signedWord(41) * kCorrectionUnit;
}
bool unpacked_msg7270_t::hasSecondRateCorrection() const {
    return DataWords(words).bit(42, 0);
}
double unpacked_msg7270_t::secondRateCorrection() const {
    // Taking bit 0 away leaves twice the signed 15-bit value.
    const int twice = DataWords(words).signedWord(42) & ~1;
    return twice / 2 * kCorrectionUnit;
}
bool unpacked_msg7270_t::assured() const {
    return DataWords(words).bits(53, 2, 1) != 0;
}
bool unpacked_msg7270_t::tropoCorrectionApplied() const {
    return DataWords(words).bit(53, 12);
}
bool unpacked_msg7270_t::ionoCorrectionApplied() const {
    return DataWords(words).bit(53, 13);
}
unsigned unpacked_msg7270_t::ionoCorrectionSource() const {
    return DataWords(words).bits(53, 15, 14);
}
unsigned unpacked_msg7270_t::channelCode() const {
    return DataWords(words).bits(56, 2, 0);
}
double unpacked_msg7270_t::pseudorangeSigma() const {
    return DataWords(words).signedWord(57) * kPseudorangeSigmaUnit;
}
double unpacked_msg7270_t::deltaRangeSigma() const {
    return DataWords(words).signedWord(58) * kDeltaRangeSigmaUnit;
}

Rovan_7270_Msg::Rovan_7270_Msg() : UnpackedMessage(kMsgId) {
}

void Rovan_7270_Msg::unpack_7270() {
    FieldReader(data()).raw(0, m_unpacked.words);
}

void Rovan_7270_Msg::unpack_7270(const packed_msg7270_t& packed, unpacked_msg7270_t& unpacked) {
    FieldReader(packed.words).raw(0, unpacked.words);
}

void Rovan_7270_Msg::debugPrintMessage() const {
    std::string text =
        "At here " + std::string(kDebugPath) + ":" + std::to_string(kDebugLine) + "\n";
    char item[16];
    for (unsigned i = 0; i < kWords + Gssip::kOverheadWords; ++i) {
        if (i % kDebugWordsPerLine == 0) {
            std::snprintf(item, sizeof item, "\n %03u: ", i + 1);
            text += item;
        }
        std::snprintf(item, sizeof item, "%04X ", unsigned{frame()[i]});
        text += item;
    }
    printConsoleText(text + "\n");
}

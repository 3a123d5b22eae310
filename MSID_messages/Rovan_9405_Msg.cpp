// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_9405_Msg.h"

namespace {

constexpr unsigned kWordBci = 26;
constexpr unsigned kWordSerial = 27;
constexpr unsigned kWordReRad = 86;

// Bits of the BCI word.
constexpr unsigned kBitFpgaOff = 0;
constexpr unsigned kBitClockOff = 1;
constexpr unsigned kBitInvalidSignal = 3;
constexpr unsigned kBitClockNotUsed = 4;

// In the order of the bits; the spelling is the interface's own.
constexpr const char* kBciFailures[] = {
    "BCI_ST_FPGA_TURN_ON_FAIL ", "BCI_ST_BCI_CLOCK_TRUN_FAIL ", "BCI_ST_CABLE_LOSS ",
    "BCI_ST_INVLD_FPGA_SIG ",    "BCI_ST_BCI_CLK_FAIL ",
};

}  // namespace

Rovan_9405_Msg::Rovan_9405_Msg() : RovanMessage(kMsgId) {
}

bool Rovan_9405_Msg::isFpgaOff() const {
    return words().bit(kWordBci, kBitFpgaOff);
}

bool Rovan_9405_Msg::isBciClockOff() const {
    return words().bit(kWordBci, kBitClockOff);
}

bool Rovan_9405_Msg::isFpgaRecievingInvalidSignal() const {
    return words().bit(kWordBci, kBitInvalidSignal);
}

bool Rovan_9405_Msg::isDorvelNotUsingBciClock() const {
    return words().bit(kWordBci, kBitClockNotUsed);
}

bool Rovan_9405_Msg::isBciCableDisconnected() const {
    return words().bits(kWordBci, 4, 0) != 0;
}

bool Rovan_9405_Msg::isSerialCableDisconnected() const {
    return words().bit(kWordSerial, 0);
}

bool Rovan_9405_Msg::isInReRad() const {
    return words().bit(kWordReRad, 14);
}

std::string Rovan_9405_Msg::getBciConnectionFailure() const {
    std::string text = "BCI Connection Failures: ";
    unsigned bit = 0;
    for (const char* name : kBciFailures) {
        if (words().bit(kWordBci, bit)) {
            text += name;
        }
        ++bit;
    }
    return text + "\n";
}

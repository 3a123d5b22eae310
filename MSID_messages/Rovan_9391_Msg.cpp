// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/Rovan_9391_Msg.h"

Rovan_9391_Msg::Rovan_9391_Msg() : RovanMessage(kMsgId) {
}

double Rovan_9391_Msg::clockBias() const {
    return words().littleEndian<int32_t>(6) * 0.01;
}
int Rovan_9391_Msg::gpsWeek() const {
    return words().signedWord(12);
}
int32_t Rovan_9391_Msg::gpsTimeOfWeek() const {
    return words().littleEndian<int32_t>(14);
}
double Rovan_9391_Msg::gpsTimeOfWeekFraction() const {
    return words().littleEndian<double>(16);
}
int32_t Rovan_9391_Msg::receiverSetTime() const {
    return words().littleEndian<int32_t>(20);
}
double Rovan_9391_Msg::receiverSetTimeFraction() const {
    return words().littleEndian<double>(24);
}
double Rovan_9391_Msg::clockBiasError() const {
    return words().littleEndian<double>(32);
}
float Rovan_9391_Msg::clockBiasErrorRate() const {
    return words().littleEndian<float>(36);
}
float Rovan_9391_Msg::firstSigma() const {
    return words().littleEndian<float>(44);
}
float Rovan_9391_Msg::secondSigma() const {
    return words().littleEndian<float>(46);
}

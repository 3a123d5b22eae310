// SPDX-License-Identifier: Apache-2.0
#include "MSID_messages/RovancomPortSetup.h"

namespace {

constexpr unsigned kWordValidity = 4;
constexpr uint16_t kValidReceive = 0x8000;
constexpr uint16_t kValidTransmit = 0x4000;
constexpr uint16_t kValidSentences = 0x0800;
constexpr uint16_t kValidPulse = 0x0200;
constexpr uint16_t kValidRedundantPorts = 0x0080;

constexpr unsigned kWordPort = 6;
constexpr unsigned kWordReceive = 7;
constexpr unsigned kWordTransmit = 10;
constexpr unsigned kWordFirstSentence = 23;
constexpr unsigned kWordPulse = 31;
constexpr unsigned kWordRedundantPorts = 33;

bool isBaudCode(unsigned code) {
    return code <= 7 || (code >= 10 && code <= 14);
}

}  // namespace

RovancomPortSetup::e5331_SerialBaud RovancomPortSetup::baudCode(int32_t bitsPerSecond) {
    static constexpr struct {
        int32_t bitsPerSecond;
        e5331_SerialBaud code;
    } kRows[] = {
        {300, e5331_Baud_300},       {600, e5331_Baud_600},       {1200, e5331_Baud_1200},
        {2400, e5331_Baud_2400},     {4800, e5331_Baud_4800},     {19200, e5331_Baud_19200},
        {76800, e5331_Baud_76800},   {38400, e5331_Baud_38400},   {115200, e5331_Baud_115200},
        {230400, e5331_Baud_230400}, {460800, e5331_Baud_460800}, {921600, e5331_Baud_921600},
    };
    for (const auto& row : kRows) {
        if (row.bitsPerSecond == bitsPerSecond) {
            return row.code;
        }
    }
    return e5331_Baud_Other;
}

RovancomPortSetup::RovancomPortSetup()
    : RovanMessage(kMsgId), m_sentences{{"none", 0}, {"DTM", 4},  {"GGA", 5},  {"GLL", 6},
                                        {"GSA", 7},  {"GSV", 8},  {"RMA", 9},  {"RMC", 11},
                                        {"STN", 13}, {"VTG", 14}, {"ZDA", 19}, {"ZLZ", 20}} {
}

void RovancomPortSetup::setPort(e5331Port port) {
    if (port <= e5331_Port_3 || port == e5331_Port_15) {
        setWord(kWordPort, port);
    }
}

void RovancomPortSetup::setPulse(e5331Pulse pulse) {
    setMask(kWordValidity, kValidPulse);
    if (pulse <= e5331_Pulse_3) {
        setWord(kWordPulse, pulse);
    }
}

void RovancomPortSetup::setRecParams(e5331_SerialBaud baud, e5331_SerialParity parity,
                                     e5331_SerialProtocol protocol) {
    setMask(kWordValidity, kValidReceive);
    setLineParams(kWordReceive, baud, parity, protocol);
}

void RovancomPortSetup::setTransParams(e5331_SerialBaud baud, e5331_SerialParity parity,
                                       e5331_SerialProtocol protocol) {
    setMask(kWordValidity, kValidTransmit);
    setLineParams(kWordTransmit, baud, parity, protocol);
}

void RovancomPortSetup::setLineParams(unsigned firstWord, e5331_SerialBaud baud,
                                      e5331_SerialParity parity, e5331_SerialProtocol protocol) {
    const bool protocolKnown = protocol == e5331_Protocol_0 || protocol == e5331_Protocol_2;
    setWord(firstWord, protocolKnown ? protocol : e5331_Protocol_0);
    setWord(firstWord + 1, isBaudCode(baud) ? baud : e5331_Baud_Other);
    setWord(firstWord + 2, parity <= e5331_Parity_2 ? parity : e5331_Parity_0);
}

void RovancomPortSetup::setBaud(e5331_SerialBaud baud, e5331_SerialParity parity) {
    setRecParams(baud, parity, e5331_Protocol_0);
    setTransParams(baud, parity, e5331_Protocol_0);
}

void RovancomPortSetup::setRedundantComPorts(bool enable) {
    setMask(kWordValidity, kValidRedundantPorts);
    setWord(kWordRedundantPorts, enable ? 0 : 1);
}

void RovancomPortSetup::setNMEASentenceID(const std::vector<std::string>& names) {
    setMask(kWordValidity, kValidSentences);
    for (unsigned i = 0; i < kSentences; ++i) {
        setWord(kWordFirstSentence + i, i < names.size() ? m_sentences[names[i]] : uint16_t{0});
    }
}

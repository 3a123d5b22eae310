// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "MSID_messages/RovanMessage.h"

// 5331: sets up a port of the receiver, or its pulse. Every setter but setPort marks its fields as
// valid in word 4. Data words:
//   4         validity: 0x8000 receive parameters, 0x4000 transmit parameters,
//             0x0800 NMEA sentences, 0x0200 pulse, 0x0080 redundant ports
//   6         port
//   7 to 9    receive protocol, baud, parity
//   10 to 12  transmit protocol, baud, parity
//   23 to 29  NMEA sentences 1 to 7
//   31        pulse
//   33        redundant ports: 0 enabled, 1 not
class RovancomPortSetup : public RovanMessage<Msid::wordCount(5331)> {
  public:
    static constexpr uint16_t kMsgId = 5331;
    static constexpr unsigned kSentences = 7;

    // What each port, pulse, protocol and parity number means is the receiver's own affair.
    enum e5331Port : uint16_t {
        e5331_Port_0 = 0,
        e5331_Port_1 = 1,
        e5331_Port_2 = 2,
        e5331_Port_3 = 3,
        e5331_Port_15 = 15,
    };
    enum e5331Pulse : uint16_t {
        e5331_Pulse_0 = 0,
        e5331_Pulse_1 = 1,
        e5331_Pulse_2 = 2,
        e5331_Pulse_3 = 3,
    };
    enum e5331_SerialProtocol : uint16_t { e5331_Protocol_0 = 0, e5331_Protocol_2 = 2 };
    enum e5331_SerialParity : uint16_t {
        e5331_Parity_0 = 0,
        e5331_Parity_1 = 1,
        e5331_Parity_2 = 2,
    };
    enum e5331_SerialBaud : uint16_t {
        e5331_Baud_Other = 0,  // any other speed, 9600 among them
        e5331_Baud_300 = 1,
        e5331_Baud_600 = 2,
        e5331_Baud_1200 = 3,
        e5331_Baud_2400 = 4,
        e5331_Baud_4800 = 5,
        e5331_Baud_19200 = 6,
        e5331_Baud_76800 = 7,
        e5331_Baud_38400 = 10,
        e5331_Baud_115200 = 11,
        e5331_Baud_230400 = 12,
        e5331_Baud_460800 = 13,
        e5331_Baud_921600 = 14,
    };

    /// The code of a line speed in bits per second; e5331_Baud_Other for one without.
    static e5331_SerialBaud baudCode(int32_t bitsPerSecond);

    RovancomPortSetup();

    /// Stores only the ports 0, 1, 2, 3 and 15; does not touch the validity word.
    void setPort(e5331Port port);
    /// Marks the pulse valid in every case; stores it only when it is below 4.
    void setPulse(e5331Pulse pulse);
    /// A protocol, parity or baud code that does not exist is stored as 0.
    void setRecParams(e5331_SerialBaud baud, e5331_SerialParity parity,
                      e5331_SerialProtocol protocol);
    void setTransParams(e5331_SerialBaud baud, e5331_SerialParity parity,
                        e5331_SerialProtocol protocol);
    /// Both directions, with protocol 0.
    void setBaud(e5331_SerialBaud baud, e5331_SerialParity parity);
    /// The receiver's field is inverted: false writes 1.
    void setRedundantComPorts(bool enable);
    /// Takes the first seven names; missing ones count as "none". A name that is not in the map
    /// gives 0 and is added to it.
    void setNMEASentenceID(const std::vector<std::string>& names);

    const std::unordered_map<std::string, uint16_t>& sentenceNumbers() const { return m_sentences; }

  private:
    void setLineParams(unsigned firstWord, e5331_SerialBaud baud, e5331_SerialParity parity,
                       e5331_SerialProtocol protocol);

    std::unordered_map<std::string, uint16_t> m_sentences;
};

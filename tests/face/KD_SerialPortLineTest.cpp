// SPDX-License-Identifier: Apache-2.0
// The terminal attributes that the serial service gives to the system, bit by bit. A
// pseudo-terminal would not show them: the kernel keeps 8 data bits and no parity there, whatever
// is asked.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <string>
#include <utility>

#include "face/KD_SerialPort.h"
#include "tests/face/SerialFakes.h"
#include "tests/face/SerialPortFixture.h"

namespace {

constexpr tcflag_t kParityBits = PARENB | PARODD | CMSPAR;
constexpr tcflag_t kXonXoff = IXON | IXOFF | IXANY;

class KD_SerialPortLine : public SerialPortFixture<RecordingSerial> {
  protected:
    /// Opens the line; gives what was printed.
    std::string opened() {
        return printedBy([this] { EXPECT_EQ(open(), RC::NO_ERROR); });
    }
    /// The same on a connection of its own that differs from "Rovan" in one key.
    std::string openedWith(const std::string& differentKey, const std::string& value) {
        const std::string name = "Line" + std::to_string(m_lines++);
        configuration->containers[name] = configuration->containers["Rovan"];
        configuration->containers[name][differentKey] = value;
        return printedBy([&] {
            Code rc = RC::NO_ACTION;
            port->Open_Connection(name.c_str(), 0, id, rc);
            EXPECT_EQ(rc, RC::NO_ERROR);
        });
    }
    const termios& line() const { return calls.attributes.back(); }

  private:
    int m_lines = 0;
};

TEST_F(KD_SerialPortLine, IsRaw) {
    calls.line.c_iflag = 0x7FFF'FFFF;
    calls.line.c_oflag = OPOST | ONLCR;
    calls.line.c_lflag = ICANON | ECHO | ECHONL | ISIG | IEXTEN | NOFLSH;
    calls.line.c_cc[VTIME] = 77;
    calls.line.c_cc[VMIN] = 78;

    EXPECT_EQ(opened(), "");

    // The flags that make a line cooked, as listed in termios(3).
    EXPECT_EQ(line().c_iflag & (IGNBRK | BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON),
              0u);
    EXPECT_EQ(line().c_oflag & OPOST, 0u);
    EXPECT_EQ(line().c_lflag, tcflag_t{NOFLSH});
    EXPECT_EQ(line().c_cc[VTIME], 0);
    EXPECT_EQ(line().c_cc[VMIN], 0);
}

TEST_F(KD_SerialPortLine, IgnoresModemLinesAndReceivesInAnyCase) {
    key("Baudrate") = key("DataBits") = key("StopBits") = key("Parity") = key("FlowControl") = "99";

    opened();

    EXPECT_EQ(line().c_cflag & (CLOCAL | CREAD), tcflag_t{CLOCAL | CREAD});
}

// The speed codes are those of the kernel's interface (asm-generic/termbits.h), in octal.
TEST_F(KD_SerialPortLine, KnowsThirtyBaudRates) {
    struct Row {
        const char* value;
        speed_t code;
    };
    const Row rows[] = {
        {"50", 01},          {"75", 02},          {"110", 03},         {"134", 04},
        {"150", 05},         {"200", 06},         {"300", 07},         {"600", 010},
        {"1200", 011},       {"1800", 012},       {"2400", 013},       {"4800", 014},
        {"9600", 015},       {"19200", 016},      {"38400", 017},      {"57600", 010001},
        {"115200", 010002},  {"230400", 010003},  {"460800", 010004},  {"500000", 010005},
        {"576000", 010006},  {"921600", 010007},  {"1000000", 010010}, {"1152000", 010011},
        {"1500000", 010012}, {"2000000", 010013}, {"2500000", 010014}, {"3000000", 010015},
        {"3500000", 010016}, {"4000000", 010017},
    };
    static_assert(std::size(rows) == 30);
    for (const Row& row : rows) {
        EXPECT_EQ(openedWith("Baudrate", row.value), "");

        EXPECT_EQ(state(), 2u) << row.value;
        EXPECT_EQ(cfgetispeed(&line()), row.code) << row.value;
        EXPECT_EQ(cfgetospeed(&line()), row.code) << row.value;
        EXPECT_EQ(line().c_cflag & 010017u, row.code) << row.value;
        EXPECT_EQ(line().c_ispeed, row.code) << row.value;
        EXPECT_EQ(line().c_ospeed, row.code) << row.value;
    }
}

TEST_F(KD_SerialPortLine, LeavesTheSpeedAtABaudRateThatItDoesNotKnow) {
    for (const char* const value : {"0", "76800", "14400", "-9600", "4000001", "fast"}) {
        cfsetispeed(&calls.line, B1200);
        cfsetospeed(&calls.line, B1200);
        const std::string number = std::string(value) == "fast" ? "0" : value;

        EXPECT_EQ(
            openedWith("Baudrate", value),
            "KD_SerialPort error opening /dev/ttyS3: Invalid baud rate parameter " + number + "\n");

        EXPECT_EQ(state(), 4u);
        EXPECT_EQ(cfgetospeed(&line()), speed_t{B1200});
        EXPECT_EQ(cfgetispeed(&line()), speed_t{B1200});
    }
}

TEST_F(KD_SerialPortLine, SetsParity) {
    struct Row {
        const char* value;
        tcflag_t fromClear;  // on a line that has none of the three bits
        tcflag_t fromSet;    // on one that has all
    };
    const Row rows[] = {
        {"0", 0, PARODD | CMSPAR},  // the two others have no meaning then and are kept
        {"1", PARENB | PARODD, PARENB | PARODD},
        {"2", PARENB, PARENB},
        {"3", PARENB | PARODD | CMSPAR, PARENB | PARODD | CMSPAR},
        {"4", PARENB | CMSPAR, PARENB | CMSPAR},
    };
    for (const Row& row : rows) {
        for (const bool set : {false, true}) {
            calls.line.c_cflag = set ? kParityBits : 0;
            EXPECT_EQ(openedWith("Parity", row.value), "");

            EXPECT_EQ(state(), 2u) << row.value;
            EXPECT_EQ(line().c_cflag & kParityBits, set ? row.fromSet : row.fromClear) << row.value;
        }
    }
}

TEST_F(KD_SerialPortLine, OpensWithAParityThatThereIsNot) {
    key("Baudrate") = "9600";
    key("Parity") = "9";

    EXPECT_EQ(opened(), "KD_SerialPort error opening /dev/ttyS3: Invalid parity parameter 9\n");

    EXPECT_EQ(state(), 4u);
    EXPECT_EQ(cfgetospeed(&line()), speed_t{B9600});
    EXPECT_EQ(line().c_cflag & PARENB, 0u);
    EXPECT_EQ(write({1}), RC::NO_ERROR);
}

TEST_F(KD_SerialPortLine, SetsStopBits) {
    for (const bool two : {false, true}) {
        calls.line.c_cflag = two ? 0 : CSTOPB;
        EXPECT_EQ(openedWith("StopBits", two ? "2" : "1"), "");

        EXPECT_EQ(state(), 2u);
        EXPECT_EQ(line().c_cflag & CSTOPB, two ? tcflag_t{CSTOPB} : 0u);
    }
}

TEST_F(KD_SerialPortLine, OpensWithStopBitsThatThereAreNot) {
    key("StopBits") = "-3";

    EXPECT_EQ(opened(), "KD_SerialPort error opening /dev/ttyS3: Invalid stop bits parameter -3\n");

    EXPECT_EQ(state(), 4u);
}

TEST_F(KD_SerialPortLine, SetsDataBits) {
    const std::pair<const char*, tcflag_t> rows[] = {
        {"5", CS5}, {"6", CS6}, {"7", CS7}, {"8", CS8}};
    for (const auto& [value, flags] : rows) {
        EXPECT_EQ(openedWith("DataBits", value), "");

        EXPECT_EQ(state(), 2u);
        EXPECT_EQ(line().c_cflag & CSIZE, flags) << value;
    }
}

TEST_F(KD_SerialPortLine, RunsWithFiveDataBitsWhenToldNonsense) {
    key("DataBits") = "9";

    EXPECT_EQ(opened(), "KD_SerialPort error opening /dev/ttyS3: Invalid data bits parameter 9\n");

    EXPECT_EQ(state(), 4u);
    EXPECT_EQ(line().c_cflag & CSIZE, tcflag_t{CS5});
}

TEST_F(KD_SerialPortLine, SetsFlowControl) {
    struct Row {
        const char* value;
        tcflag_t hardware;
        tcflag_t software;
    };
    const Row rows[] = {{"0", 0, 0}, {"1", 0, kXonXoff}, {"2", CRTSCTS, 0}};
    for (const Row& row : rows) {
        for (const bool set : {false, true}) {
            calls.line.c_cflag = set ? CRTSCTS : 0;
            calls.line.c_iflag = set ? kXonXoff : 0;
            EXPECT_EQ(openedWith("FlowControl", row.value), "");

            EXPECT_EQ(state(), 2u) << row.value;
            EXPECT_EQ(line().c_cflag & CRTSCTS, row.hardware) << row.value;
            EXPECT_EQ(line().c_iflag & kXonXoff, row.software) << row.value;
        }
    }
}

TEST_F(KD_SerialPortLine, OpensWithAFlowControlThatThereIsNot) {
    key("FlowControl") = "3";
    calls.line.c_cflag = CRTSCTS;

    EXPECT_EQ(opened(),
              "KD_SerialPort error opening /dev/ttyS3: Invalid flow control parameter 3\n");

    EXPECT_EQ(state(), 4u);
    EXPECT_EQ(line().c_cflag & CRTSCTS, CRTSCTS) << "left as it was";
}

TEST_F(KD_SerialPortLine, NamesEachBadSettingInALineOfItsOwn) {
    key("ChannelNum") = "12";
    key("Baudrate") = "1";
    key("Parity") = "65535";
    key("StopBits") = "0";
    key("DataBits") = "-1";
    key("FlowControl") = "4";

    EXPECT_EQ(opened(),
              "KD_SerialPort error opening /dev/ttyS12: Invalid baud rate parameter 1\n"
              "KD_SerialPort error opening /dev/ttyS12: Invalid parity parameter 65535\n"
              "KD_SerialPort error opening /dev/ttyS12: Invalid stop bits parameter 0\n"
              "KD_SerialPort error opening /dev/ttyS12: Invalid data bits parameter -1\n"
              "KD_SerialPort error opening /dev/ttyS12: Invalid flow control parameter 4\n");

    EXPECT_EQ(calls.attributes.size(), 1u) << "the line is set all the same";
    EXPECT_EQ(state(), 4u);
}

TEST_F(KD_SerialPortLine, ReadsNumbersInAnyBaseAndCutsThemToTheirWidth) {
    key("Baudrate") = "0x1c200";     // 115200
    key("DataBits") = "010";         // octal 8
    key("StopBits") = "65537";       // 1 in 16 bits
    key("Parity") = "0x10002 even";  // 2 in 16 bits, and a word

    EXPECT_EQ(opened(), "");

    EXPECT_EQ(state(), 2u);
    EXPECT_EQ(cfgetospeed(&line()), speed_t{B115200});
    EXPECT_EQ(line().c_cflag & CSIZE, tcflag_t{CS8});
    EXPECT_EQ(line().c_cflag & PARENB, tcflag_t{PARENB});
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "face/KD_SerialPort.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/face/SerialFakes.h"
#include "tests/face/SerialPortFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KD_SerialPort : public SerialPortFixture<RecordingSerial> {};

// ---- Open and close ---------------------------------------------------------------------------

TEST_F(KD_SerialPort, OpensTheDeviceOfItsChannelNumber) {
    key("ChannelNum") = "255";

    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(id, 0);
    EXPECT_THAT(calls.trace, ElementsAre("open /dev/ttyS255", "fcntl F_GETFL", "fcntl F_SETFL",
                                         "ioctl TIOCGSERIAL", "ioctl TIOCSSERIAL", "tcgetattr",
                                         "tcflush", "tcsetattr"));
    EXPECT_THAT(calls.openFlags, ElementsAre(O_RDWR | O_NOCTTY | O_NONBLOCK));
    EXPECT_EQ(state(), 2u);
}

TEST_F(KD_SerialPort, CutsTheChannelNumberToEightBits) {
    key("ChannelNum") = "0x103";

    open();

    EXPECT_EQ(calls.trace.at(0), "open /dev/ttyS3");
}

TEST_F(KD_SerialPort, MakesItsReadsBlocking) {
    calls.fileFlags = O_RDWR | O_NONBLOCK | O_ASYNC;

    open();

    EXPECT_EQ(calls.fileFlags, O_RDWR | O_ASYNC);
}

TEST_F(KD_SerialPort, AsksTheDriverForLowLatency) {
    calls.driverFlags = 0x40;

    open();

    EXPECT_EQ(calls.driverFlags, 0x2040);
}

TEST_F(KD_SerialPort, OpensADriverThatKnowsNoLowLatency) {
    calls.driverRefuses = true;

    EXPECT_EQ(open(), RC::NO_ERROR);
    EXPECT_EQ(state(), 2u);
}

TEST_F(KD_SerialPort, TellsNothingButNoActionWhenTheDeviceCannotBeOpened) {
    calls.failOpen = true;

    EXPECT_EQ(printedBy([&] { EXPECT_EQ(open(), RC::NO_ACTION); }), "");

    EXPECT_EQ(id, -1);
    EXPECT_THAT(calls.trace, ElementsAre("open /dev/ttyS3"));
    id = 0;
    EXPECT_EQ(close(), RC::CONNECTION_CLOSED);
    EXPECT_EQ(read(0, 1), RC::CONNECTION_CLOSED);
    EXPECT_EQ(write({1}), RC::CONNECTION_CLOSED);
}

TEST_F(KD_SerialPort, KeepsAConnectionThatCouldNotBeOpenedForTheNextTry) {
    calls.failOpen = true;
    open();
    calls.failOpen = false;
    configuration->trace.clear();

    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(id, 0);
    EXPECT_THAT(configuration->trace, IsEmpty());
}

TEST_F(KD_SerialPort, ReadsTheConfigurationOfAKnownNameNoMore) {
    open();
    configuration->trace.clear();
    calls.trace.clear();
    const long long first = id;

    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(id, first);
    EXPECT_THAT(configuration->trace, IsEmpty());
    EXPECT_THAT(calls.trace, IsEmpty()) << "an open connection is left alone";
}

TEST_F(KD_SerialPort, OpensAClosedConnectionAgainWithWhatItKnows) {
    open();
    EXPECT_EQ(close(), RC::NO_ERROR);
    EXPECT_THAT(calls.closed, ElementsAre(1000));
    key("ChannelNum") = "7";

    EXPECT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(id, 0);
    EXPECT_EQ(calls.count("open /dev/ttyS3"), 2u);
    EXPECT_EQ(state(), 2u);
}

TEST_F(KD_SerialPort, LeavesAConnectionAloneThatTheSystemDoesNotClose) {
    open();
    calls.failClose = true;

    EXPECT_EQ(close(), RC::NO_ACTION);

    EXPECT_EQ(state(), 2u);
    EXPECT_EQ(write({1}), RC::NO_ERROR);
    calls.failClose = false;
    EXPECT_EQ(close(), RC::NO_ERROR);
}

TEST_F(KD_SerialPort, KeepsItsConnectionsApart) {
    configuration->containers["Second"] = configuration->containers["Rovan"];
    configuration->containers["Second"]["ChannelNum"] = "5";
    open();
    Code rc = RC::NO_ACTION;
    port->Open_Connection("Second", -1, id, rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(calls.count("open /dev/ttyS5"), 1u);
}

TEST_F(KD_SerialPort, ClosesWhatIsOpenAtTheEndOfItsLife) {
    open();
    calls.trace.clear();

    port.reset();

    EXPECT_THAT(calls.trace, ElementsAre("close"));
    EXPECT_THAT(calls.closed, ElementsAre(1000));
}

TEST_F(KD_SerialPort, ClosesNothingThatIsClosedAtTheEndOfItsLife) {
    open();
    close();
    calls.trace.clear();

    port.reset();

    EXPECT_THAT(calls.trace, IsEmpty());
}

// ---- Read -------------------------------------------------------------------------------------

TEST_F(KD_SerialPort, ReadsWhatThereIs) {
    open();
    std::size_t wanted = 0;
    calls.onRead = [&](uint8_t* buffer, std::size_t count) {
        wanted = count;
        buffer[0] = 10;
        buffer[1] = 11;
        return 2;
    };
    input.timestamp = 99;
    input.channel = 99;

    EXPECT_EQ(read(200'000'000, 128), RC::NO_ERROR);

    EXPECT_EQ(wanted, 128u);
    EXPECT_EQ(calls.count("read"), 1u);
    EXPECT_THAT(bytesRead(), ElementsAre(10, 11));
    EXPECT_EQ(input.timestamp, 0);
    EXPECT_EQ(input.channel, 3);
}

TEST_F(KD_SerialPort, ShrinksAViewOfTheCallersBytesToo) {
    open();
    uint8_t bytes[8] = {};
    FACE::Sequence<uint8_t>::RETURN_CODE made;
    FACE::IOSS::Serial::READ_PAYLOAD_TYPE payload{0, 0, {bytes, 8, 8, made}};
    calls.onRead = [](uint8_t* buffer, std::size_t count) {
        buffer[0] = static_cast<uint8_t>(count);
        return 1;
    };
    Code rc = RC::NO_ACTION;

    port->Read(id, 0, payload, rc);

    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(payload.payload.length(), 1u);
    EXPECT_EQ(bytes[0], 8);
}

TEST_F(KD_SerialPort, TellsATimeOutFromAnEmptyPoll) {
    open();

    EXPECT_EQ(read(200'000'000, 4), RC::TIMED_OUT);
    EXPECT_EQ(read(1, 4), RC::TIMED_OUT);
    EXPECT_EQ(read(-1, 4), RC::TIMED_OUT);
    EXPECT_EQ(read(0, 4), RC::NOT_AVAILABLE);
    EXPECT_EQ(input.payload.length(), 4u) << "left as it was";
}

TEST_F(KD_SerialPort, TakesNothingToReadForOrdinary) {
    open();
    calls.onRead = [](uint8_t*, std::size_t) {
        errno = EAGAIN;
        return -1;
    };

    EXPECT_EQ(read(200'000'000, 4), RC::NOT_AVAILABLE);
    EXPECT_EQ(read(0, 4), RC::NOT_AVAILABLE);
}

TEST_F(KD_SerialPort, TellsAnyOtherReadErrorByNoAction) {
    open();
    for (const int error : {EINTR, EIO, EBADF, EINVAL}) {
        calls.onRead = [error](uint8_t*, std::size_t) {
            errno = error;
            return -1;
        };
        EXPECT_EQ(read(0, 4), RC::NO_ACTION) << error;
    }
    EXPECT_EQ(calls.count("read"), 4u) << "no retry";
}

TEST_F(KD_SerialPort, SurvivesAReadIntoNothing) {
    open();
    calls.onRead = [](uint8_t*, std::size_t count) {
        EXPECT_EQ(count, 0u);
        return 0;
    };
    FACE::Sequence<uint8_t>::RETURN_CODE made;
    FACE::IOSS::Serial::READ_PAYLOAD_TYPE invalid{0, 0, {nullptr, 8, 8, made}};
    Code rc = RC::NO_ERROR;

    port->Read(id, 0, invalid, rc);

    EXPECT_EQ(rc, RC::NOT_AVAILABLE);
}

// ---- Time-outs --------------------------------------------------------------------------------

TEST_F(KD_SerialPort, SetsItsTimeOutOnceForEqualReads) {
    open();
    calls.trace.clear();

    read(200'000'000, 1);
    read(200'000'000, 1);

    EXPECT_THAT(calls.trace, ElementsAre("tcgetattr", "tcsetattr", "read", "read"));
}

TEST_F(KD_SerialPort, PollsAfterTheOpenWithoutFurtherAdo) {
    open();
    calls.trace.clear();

    read(0, 1);

    EXPECT_THAT(calls.trace, ElementsAre("read"));
}

TEST_F(KD_SerialPort, StartsAnewWithEachOpen) {
    open();
    read(200'000'000, 1);
    close();
    open();
    EXPECT_EQ(calls.line.c_cc[VTIME], 0);
    calls.trace.clear();

    read(200'000'000, 1);

    EXPECT_THAT(calls.trace, ElementsAre("tcgetattr", "tcsetattr", "read"));
}

TEST_F(KD_SerialPort, RoundsATimeOutUpToTenthsOfASecond) {
    struct Row {
        long long timeout;
        int vtime;
        int vmin;
    };
    open();
    const Row rows[] = {
        {1, 1, 0},  {100'000'000, 1, 0},      {100'000'001, 2, 0},      {200'000'000, 2, 0},
        {-1, 0, 1}, {25'400'000'000, 254, 0}, {25'400'000'001, 255, 0}, {25'500'000'000, 255, 0},
        {0, 0, 0},  {25'500'000'001, 255, 0}, {60'000'000'000, 255, 0}, {LLONG_MAX, 255, 0},
        {-2, 0, 0}, {-1'000'000'000, 0, 0},   {LLONG_MIN, 0, 0},
    };
    for (const Row& row : rows) {
        read(row.timeout, 1);
        EXPECT_EQ(calls.line.c_cc[VTIME], row.vtime) << row.timeout;
        EXPECT_EQ(calls.line.c_cc[VMIN], row.vmin) << row.timeout;
    }
    EXPECT_EQ(calls.attributes.size(), 1 + std::size(rows));
}

TEST_F(KD_SerialPort, ChangesNothingElseWithATimeOut) {
    open();
    const termios before = calls.line;

    read(300'000'000, 1);

    EXPECT_EQ(calls.line.c_iflag, before.c_iflag);
    EXPECT_EQ(calls.line.c_oflag, before.c_oflag);
    EXPECT_EQ(calls.line.c_cflag, before.c_cflag);
    EXPECT_EQ(calls.line.c_lflag, before.c_lflag);
    EXPECT_EQ(cfgetispeed(&calls.line), cfgetispeed(&before));
}

TEST_F(KD_SerialPort, NeverSetsALineFromAttributesThatItCouldNotRead) {
    open();
    calls.failGetAttributes = true;
    calls.trace.clear();

    read(200'000'000, 1);
    calls.failGetAttributes = false;
    read(200'000'000, 1);

    EXPECT_THAT(calls.trace, ElementsAre("tcgetattr", "read", "tcgetattr", "tcsetattr", "read"));
}

TEST_F(KD_SerialPort, TriesAgainToSetATimeOutThatWasRefused) {
    open();
    calls.failSetAttributes = true;
    read(200'000'000, 1);
    calls.failSetAttributes = false;

    read(200'000'000, 1);

    EXPECT_EQ(calls.line.c_cc[VTIME], 2);
}

// ---- Write ------------------------------------------------------------------------------------

TEST_F(KD_SerialPort, WritesTheWholePayloadAtOnce) {
    open();
    std::vector<uint8_t> written;
    calls.onWrite = [&](const uint8_t* buffer, std::size_t count) {
        written.assign(buffer, buffer + count);
        return static_cast<ssize_t>(count);
    };

    EXPECT_EQ(write({0, 255, 17, 19}), RC::NO_ERROR);

    EXPECT_THAT(written, ElementsAre(0, 255, 17, 19));
    EXPECT_EQ(calls.count("write"), 1u);
    EXPECT_EQ(calls.attributes.size(), 1u) << "a write sets no time-out";
}

TEST_F(KD_SerialPort, TellsAShortWriteAndDoesNotRetry) {
    open();
    calls.onWrite = [](const uint8_t*, std::size_t count) {
        return static_cast<ssize_t>(count) - 1;
    };

    EXPECT_EQ(write({1, 2, 3}), RC::DATA_OVERFLOW);
    EXPECT_EQ(calls.count("write"), 1u);
}

TEST_F(KD_SerialPort, TellsAnyWriteErrorByNoAction) {
    open();
    for (const int error : {EAGAIN, EINTR, EIO}) {
        calls.onWrite = [error](const uint8_t*, std::size_t) {
            errno = error;
            return -1;
        };
        EXPECT_EQ(write({1, 2, 3}), RC::NO_ACTION) << error;
    }
}

// ---- Configure_Bus_Parameters -----------------------------------------------------------------

TEST_F(KD_SerialPort, ChangesItsSettingsByOpeningTheLineAgain) {
    open();
    calls.trace.clear();

    EXPECT_EQ(configure(transactionOf({baudParameter(9600), parityParameter(2)})), RC::NO_ERROR);

    EXPECT_THAT(calls.trace, ElementsAre("close", "open /dev/ttyS3", "fcntl F_GETFL",
                                         "fcntl F_SETFL", "ioctl TIOCGSERIAL", "ioctl TIOCSSERIAL",
                                         "tcgetattr", "tcflush", "tcsetattr"));
    EXPECT_EQ(cfgetospeed(&calls.line), speed_t{B9600});
    EXPECT_EQ(calls.line.c_cflag & (PARENB | PARODD | CMSPAR), tcflag_t{PARENB});
    EXPECT_EQ(state(), 2u);
}

TEST_F(KD_SerialPort, ChangesEverySetting) {
    open();
    Parameters parameters;
    parameters.parameters.resize(7);
    for (uint16_t i = 0; i < 7; ++i) {
        parameters.parameters[i].id = i;
    }
    parameters.parameters[0].value.octet_value(9);
    parameters.parameters[1].value.short_value(-5);
    parameters.parameters[2].value.long_value(300);
    parameters.parameters[3].value.short_value(7);
    parameters.parameters[4].value.short_value(2);
    parameters.parameters[5].value.ushort_value(1);
    parameters.parameters[6].value.ushort_value(2);

    EXPECT_EQ(configure(parameters), RC::NO_ERROR);

    EXPECT_EQ(calls.count("open /dev/ttyS9"), 1u);
    EXPECT_EQ(cfgetispeed(&calls.line), speed_t{B300});
    EXPECT_EQ(calls.line.c_cflag & CSIZE, tcflag_t{CS7});
    EXPECT_EQ(calls.line.c_cflag & CSTOPB, tcflag_t{CSTOPB});
    EXPECT_EQ(calls.line.c_cflag & (PARENB | PARODD), tcflag_t{PARENB | PARODD});
    EXPECT_EQ(calls.line.c_cflag & CRTSCTS, CRTSCTS);
    Parameters reported;
    reported.parameters.resize(1);
    reported.parameters[0].id = 1;
    Code rc = RC::NO_ACTION;
    port->Get_Bus_Configuration(id, 0, reported, rc);
    EXPECT_EQ(reported.parameters[0].value.short_value(), -5);
}

TEST_F(KD_SerialPort, TakesTheLastOfSeveralValues) {
    open();

    EXPECT_EQ(configure(transactionOf({baudParameter(300), baudParameter(9600)})), RC::NO_ERROR);

    EXPECT_EQ(cfgetospeed(&calls.line), speed_t{B9600});
}

TEST_F(KD_SerialPort, ChangesNothingWhenAnyParameterIsWrong) {
    open();
    calls.trace.clear();
    FACE::IOSS::IO_PARAMETER_TYPE unknown = baudParameter(300);
    unknown.id = 7;
    FACE::IOSS::IO_PARAMETER_TYPE untagged;  // a short_value
    untagged.id = 2;

    for (const auto& wrong : {unknown, untagged}) {
        EXPECT_EQ(configure(transactionOf({baudParameter(9600), wrong})), RC::INVALID_PARAM);
        EXPECT_EQ(configure(transactionOf({wrong, baudParameter(9600)})), RC::INVALID_PARAM);
    }

    EXPECT_THAT(calls.trace, IsEmpty());
    Parameters reported = transactionOf({baudParameter(0)});
    Code rc = RC::NO_ACTION;
    port->Get_Bus_Configuration(id, 0, reported, rc);
    EXPECT_EQ(reported.parameters[0].value.long_value(), 115200);
}

// The alternative that each parameter must use, by its tag; any other one is refused.
TEST_F(KD_SerialPort, TakesEachSettingInItsOwnAlternativeOnly) {
    const int32_t expectedTag[7] = {11, 0, 1, 0, 0, 3, 3};
    open();
    for (uint16_t parameter = 0; parameter < 7; ++parameter) {
        for (int32_t tag = 0; tag < 12; ++tag) {
            FACE::IOSS::IO_PARAMETER_TYPE p;
            p.id = parameter;
            switch (tag) {
                case 0:
                    p.value.short_value(1);
                    break;
                case 1:
                    p.value.long_value(1);
                    break;
                case 2:
                    p.value.longlong_value(1);
                    break;
                case 3:
                    p.value.ushort_value(1);
                    break;
                case 4:
                    p.value.ulong_value(1);
                    break;
                case 5:
                    p.value.ulonglong_value(1);
                    break;
                case 6:
                    p.value.float_value(1);
                    break;
                case 7:
                    p.value.double_value(1);
                    break;
                case 8:
                    p.value.longdouble_value(1);
                    break;
                case 9:
                    p.value.char_value(1);
                    break;
                case 10:
                    p.value.boolean_value(true);
                    break;
                default:
                    p.value.octet_value(1);
                    break;
            }
            Code rc = RC::INVALID_CONFIG;
            printedBy([&] { rc = configure(transactionOf({p})); });
            EXPECT_EQ(rc, tag == expectedTag[parameter] ? RC::NO_ERROR : RC::INVALID_PARAM)
                << "parameter " << parameter << " tag " << tag;
        }
    }
}

TEST_F(KD_SerialPort, LeavesTheLineAloneWithoutParameters) {
    open();
    calls.trace.clear();
    FACE::Sequence<FACE::IOSS::IO_PARAMETER_TYPE>::RETURN_CODE made;
    Parameters invalid{0, {nullptr, 1, 1, made}};

    EXPECT_EQ(configure({}), RC::NO_ACTION);
    Code rc = RC::NO_ERROR;
    port->Configure_Bus_Parameters(id, 0, invalid, rc);
    EXPECT_EQ(rc, RC::NO_ACTION);

    EXPECT_THAT(calls.trace, IsEmpty());
}

TEST_F(KD_SerialPort, ShowsABadNewValueAsStateFour) {
    open();

    Code rc = RC::NO_ACTION;
    EXPECT_EQ(printedBy([&] { rc = configure(transactionOf({baudParameter(76800)})); }),
              "KD_SerialPort error opening /dev/ttyS3: Invalid baud rate parameter 76800\n");

    EXPECT_EQ(rc, RC::NO_ERROR);
    EXPECT_EQ(state(), 4u);
    printedBy([&] { rc = configure(transactionOf({baudParameter(9600)})); });
    EXPECT_EQ(state(), 2u);
}

TEST_F(KD_SerialPort, RefusesToConfigureAClosedLine) {
    open();
    close();

    EXPECT_EQ(configure(transactionOf({baudParameter(9600)})), RC::CONNECTION_CLOSED);
}

TEST_F(KD_SerialPort, TellsWhenTheLineCouldNotBeOpenedAgain) {
    open();
    calls.failOpen = true;

    EXPECT_EQ(configure(transactionOf({baudParameter(9600)})), RC::NO_ACTION);
    EXPECT_EQ(write({1}), RC::CONNECTION_CLOSED);

    calls.failOpen = false;
    EXPECT_EQ(open(), RC::NO_ERROR);
    EXPECT_EQ(cfgetospeed(&calls.line), speed_t{B9600}) << "the new settings stay";
}

TEST_F(KD_SerialPort, TellsWhenTheLineCouldNotBeClosed) {
    open();
    calls.failClose = true;
    calls.trace.clear();

    EXPECT_EQ(configure(transactionOf({baudParameter(9600)})), RC::NO_ACTION);
    EXPECT_THAT(calls.trace, ElementsAre("close"));

    calls.failClose = false;
}

TEST_F(KD_SerialPort, DoesNotSupportConnectionParameters) {
    open();
    calls.trace.clear();
    Code rc = RC::NO_ERROR;

    port->Configure_Connection_Parameters(id, 0, transactionOf({baudParameter(9600)}), rc);
    EXPECT_EQ(rc, RC::NO_ACTION);
    EXPECT_THAT(calls.trace, IsEmpty());

    close();
    port->Configure_Connection_Parameters(id, 0, transactionOf({baudParameter(9600)}), rc);
    EXPECT_EQ(rc, RC::CONNECTION_CLOSED);
}

}  // namespace

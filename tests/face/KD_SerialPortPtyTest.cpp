// SPDX-License-Identifier: Apache-2.0
// The serial service on a real terminal: a pseudo-terminal in the place of the serial device.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "face/KD_SerialPort.h"
#include "tests/face/SerialFakes.h"
#include "tests/face/SerialPortFixture.h"

namespace {

using testing::ElementsAre;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

class KD_SerialPortPty : public SerialPortFixture<PtySerial> {
  protected:
    /// Reads until that many bytes are together.
    std::vector<uint8_t> readAll(std::size_t wanted) {
        std::vector<uint8_t> all;
        while (all.size() < wanted && read(5'000'000'000, 128) == RC::NO_ERROR) {
            const std::vector<uint8_t> some = bytesRead();
            all.insert(all.end(), some.begin(), some.end());
        }
        return all;
    }
};

std::vector<uint8_t> everyByte() {
    std::vector<uint8_t> bytes;
    for (int i = 0; i < 256; ++i) {
        bytes.push_back(static_cast<uint8_t>(i));
    }
    return bytes;
}

TEST_F(KD_SerialPortPty, CarriesEveryByteBothWays) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    EXPECT_THAT(calls.openedPaths, ElementsAre("/dev/ttyS3"));

    EXPECT_EQ(write(everyByte()), RC::NO_ERROR);
    EXPECT_EQ(calls.received(256), everyByte());

    calls.send(everyByte());
    EXPECT_EQ(readAll(256), everyByte());
}

TEST_F(KD_SerialPortPty, GivesTheLineItsSpeed) {
    key("Baudrate") = "57600";
    ASSERT_EQ(open(), RC::NO_ERROR);
    const termios first = calls.line();
    EXPECT_EQ(cfgetospeed(&first), speed_t{B57600});

    EXPECT_EQ(configure(transactionOf({baudParameter(4'000'000)})), RC::NO_ERROR);

    const termios second = calls.line();
    EXPECT_EQ(cfgetospeed(&second), speed_t{B4000000});
}

TEST_F(KD_SerialPortPty, WorksWithABadSetting) {
    key("Baudrate") = "9600";
    key("Parity") = "9";
    EXPECT_EQ(printedBy([&] { EXPECT_EQ(open(), RC::NO_ERROR); }),
              "KD_SerialPort error opening /dev/ttyS3: Invalid parity parameter 9\n");

    EXPECT_EQ(state(), 4u);
    EXPECT_EQ(write({1, 2}), RC::NO_ERROR);
    EXPECT_THAT(calls.received(2), ElementsAre(1, 2));
    calls.send({3});
    EXPECT_THAT(readAll(1), ElementsAre(3));
}

TEST_F(KD_SerialPortPty, DropsWhatCameBeforeTheOpen) {
    calls.setRaw();
    calls.send({1, 2, 3});
    calls.waitForInput(3);

    ASSERT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(read(0, 8), RC::NOT_AVAILABLE);
}

TEST_F(KD_SerialPortPty, PollsWithoutWaiting) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    const auto start = Clock::now();

    EXPECT_EQ(read(0, 8), RC::NOT_AVAILABLE);

    EXPECT_LT(Clock::now() - start, 5s);
    calls.send({7});
    calls.waitForInput(1);
    EXPECT_EQ(read(0, 8), RC::NO_ERROR);
    EXPECT_THAT(bytesRead(), ElementsAre(7));
}

TEST_F(KD_SerialPortPty, WaitsForTheTimeOut) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    const auto start = Clock::now();

    EXPECT_EQ(read(200'000'000, 8), RC::TIMED_OUT);

    EXPECT_GE(Clock::now() - start, 180ms);  // the kernel counts in its own ticks
}

TEST_F(KD_SerialPortPty, SetsAnEqualTimeOutOnlyOnce) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    EXPECT_EQ(calls.setAttributes, 1u);

    read(1, 8);
    read(1, 8);
    read(1, 8);

    EXPECT_EQ(calls.setAttributes, 2u);
}

TEST_F(KD_SerialPortPty, WaitsWithoutLimitForTheFirstByte) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    std::thread sender([this] {
        std::this_thread::sleep_for(150ms);
        calls.send({42});
    });

    EXPECT_EQ(read(-1, 8), RC::NO_ERROR);

    sender.join();
    EXPECT_THAT(bytesRead(), ElementsAre(42));
}

TEST_F(KD_SerialPortPty, GivesNoMoreThanWasAskedFor) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    calls.send({1, 2, 3});
    calls.waitForInput(3);

    EXPECT_EQ(read(0, 2), RC::NO_ERROR);
    EXPECT_THAT(bytesRead(), ElementsAre(1, 2));
    EXPECT_EQ(read(0, 2), RC::NO_ERROR);
    EXPECT_THAT(bytesRead(), ElementsAre(3));
}

TEST_F(KD_SerialPortPty, OpensAgainAfterAClose) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    EXPECT_EQ(close(), RC::NO_ERROR);
    EXPECT_EQ(write({1}), RC::CONNECTION_CLOSED);

    ASSERT_EQ(open(), RC::NO_ERROR);

    EXPECT_EQ(write({5}), RC::NO_ERROR);
    EXPECT_THAT(calls.received(1), ElementsAre(5));
}

TEST_F(KD_SerialPortPty, SurvivesAHangUp) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    calls.hangUp();

    EXPECT_EQ(read(200'000'000, 8), RC::TIMED_OUT);
    EXPECT_EQ(write({1}), RC::NO_ACTION);
    EXPECT_EQ(close(), RC::NO_ERROR);
}

TEST_F(KD_SerialPortPty, LetsOneThreadReadWhileAnotherWrites) {
    ASSERT_EQ(open(), RC::NO_ERROR);
    constexpr int kRounds = 50;
    std::vector<uint8_t> got;
    std::thread reader([&] { got = readAll(kRounds); });
    std::thread writer([&] {
        for (int i = 0; i < kRounds; ++i) {
            EXPECT_EQ(write({static_cast<uint8_t>(i)}), RC::NO_ERROR);
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        calls.send({static_cast<uint8_t>(i)});
    }

    const std::vector<uint8_t> sent = calls.received(kRounds);
    writer.join();
    reader.join();

    EXPECT_EQ(got.size(), std::size_t{kRounds});
    EXPECT_EQ(got, sent);
    EXPECT_TRUE(std::is_sorted(got.begin(), got.end()));
}

}  // namespace

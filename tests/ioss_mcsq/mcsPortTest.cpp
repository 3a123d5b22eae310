// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "ioss_mcsq/mcsReaderPort.h"
#include "ioss_mcsq/mcsWriterPort.h"
#include "tests/ioss_mcsq/QueueDevices.h"

namespace {

// What `action` puts on standard error.
template <typename ACTION>
std::string errorsOf(ACTION action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

TEST(mcsPort, HasNoNameAndIsNotOpenAtFirst) {
    const mcsReaderPort port;
    EXPECT_FALSE(port.hasSetFilename());
    EXPECT_STREQ(port.get_filename(), "");
    EXPECT_FALSE(port.is_file_open());
    EXPECT_EQ(port.getFileDescriptor(), -1);
}

TEST(mcsPort, KeepsItsNameBeyondTheCallersText) {
    mcsReaderPort port;
    {
        const auto name = std::make_unique<std::string>("short");
        port.set_filename(*name);
    }
    EXPECT_TRUE(port.hasSetFilename());
    EXPECT_STREQ(port.get_filename(), "short");
}

TEST(mcsPort, CannotSayWhetherItCanOpenNothing) {
    mcsWriterPort port;
    EXPECT_EQ(errorsOf([&port] { EXPECT_EQ(port.can_open_file(), -1); }), "");
    EXPECT_EQ(errorsOf([&port] { port.openPort(); }), "Unable to open output pipe file: \n");
    EXPECT_FALSE(port.is_file_open());
}

TEST(mcsPort, CanOpenAFifoThatNobodyReads) {
    const QueueDevices devices;
    devices.makeFifo(1);
    mcsWriterPort port;
    port.set_filename(devices.path(1));
    EXPECT_EQ(errorsOf([&port] { EXPECT_EQ(port.can_open_file(), 1); }), "");
    EXPECT_FALSE(port.is_file_open());
}

TEST(mcsPort, CannotOpenAMissingFile) {
    const QueueDevices devices;
    mcsReaderPort port;
    port.set_filename(devices.path(1));
    EXPECT_EQ(errorsOf([&port] { EXPECT_EQ(port.can_open_file(), 0); }),
              "Unable to open output pipe file: " + devices.path(1) + "\n");
}

TEST(mcsPort, TellsTheReasonWhenDebugging) {
    const QueueDevices devices;
    mcsReaderPort port;
    port.set_filename(devices.path(1));
    port.doDebug(1);
    EXPECT_EQ(
        errorsOf([&port] { port.can_open_file(); }),
        "Unable to open output pipe file: " + devices.path(1) + " (No such file or directory)\n");
}

TEST(mcsPort, NamesTheDirectionInWhichItCouldNotOpen) {
    const QueueDevices devices;
    mcsReaderPort reader;
    mcsWriterPort writer;
    reader.set_filename(devices.path(1));
    writer.set_filename(devices.path(1));
    EXPECT_EQ(errorsOf([&reader] { reader.openPort(); }),
              "Unable to open input pipe file: " + devices.path(1) + "\n");
    EXPECT_EQ(errorsOf([&writer] { writer.openPort(); }),
              "Unable to open output pipe file: " + devices.path(1) + "\n");
    EXPECT_FALSE(reader.is_file_open());
    EXPECT_FALSE(writer.is_file_open());
}

TEST(mcsPort, DoesNotWaitForTheOtherEndOfAFifo) {
    const QueueDevices devices;
    devices.makeFifo(1);
    mcsReaderPort reader;
    mcsWriterPort writer;
    reader.set_filename(devices.path(1));
    writer.set_filename(devices.path(1));
    errorsOf([&writer] { writer.openPort(); });
    EXPECT_FALSE(writer.is_file_open());  // refused: there is no reader
    reader.openPort();
    EXPECT_TRUE(reader.is_file_open());
    writer.openPort();
    EXPECT_TRUE(writer.is_file_open());
}

TEST(mcsPort, CarriesBytesAndNeverWaits) {
    const QueueDevices devices;
    devices.makeFifo(1);
    mcsReaderPort reader;
    mcsWriterPort writer;
    reader.set_filename(devices.path(1));
    writer.set_filename(devices.path(1));
    reader.openPort();
    writer.openPort();
    char buffer[8] = {};
    EXPECT_EQ(reader.readFromPort(buffer, 8), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(writer.writeToPort("abc", 3), 3);
    EXPECT_EQ(reader.readFromPort(buffer, 2), 2);
    EXPECT_EQ(reader.readFromPort(buffer + 2, 6), 1);
    EXPECT_STREQ(buffer, "abc");

    Bytes lot(1 << 20);
    const ssize_t taken = writer.writeToPort(lot.data(), lot.size());
    EXPECT_GT(taken, 0);
    EXPECT_LT(taken, 1 << 20);  // what the FIFO holds
    EXPECT_EQ(writer.writeToPort(lot.data(), lot.size()), -1);
    EXPECT_EQ(errno, EAGAIN);
    writer.closePort();
    EXPECT_EQ(reader.readFromPort(lot.data(), lot.size()), taken);
    EXPECT_EQ(reader.readFromPort(lot.data(), lot.size()), 0);
}

TEST(mcsPort, GivesTheSystemsResultWhenItIsNotOpen) {
    mcsReaderPort reader;
    mcsWriterPort writer;
    char byte = 0;
    EXPECT_EQ(reader.readFromPort(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(writer.writeToPort(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(mcsPort, OwnsItsDescriptor) {
    const QueueDevices devices;
    devices.makeFifo(1);
    int descriptor = -1;
    {
        mcsReaderPort port;
        port.set_filename(devices.path(1));
        port.openPort();
        descriptor = port.getFileDescriptor();
        EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
        port.openPort();  // again: the number is free, so the first one was closed
        EXPECT_EQ(port.getFileDescriptor(), descriptor);
    }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    EXPECT_EQ(errno, EBADF);
}

// A session leader without a terminal takes the first one that it opens, unless it says not to, and
// is then ended by the hang-up of that terminal.
TEST(mcsPort, DoesNotTakeATerminalAsItsOwn) {
    const QueueDevices devices;
    const Descriptor farEnd = devices.makeTerminal(1);
    EXPECT_EXIT(
        {
            setsid();
            mcsReaderPort reader;
            mcsWriterPort writer;
            reader.set_filename(devices.path(1));
            writer.set_filename(devices.path(1));
            const bool probed = reader.can_open_file() == 1;
            reader.openPort();
            writer.openPort();
            const bool opened = reader.is_file_open() && writer.is_file_open();
            const bool tookNone = open("/dev/tty", O_RDWR) < 0 && errno == ENXIO;
            _exit(probed && opened && tookNone ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace

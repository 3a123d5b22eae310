// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "tests/RovanServer/RovanIoFixture.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

class RovanIoConfigureTest : public RovanIoFixture {
  protected:
    // What configure ended with: empty, or the text of its exception.
    std::string configureError(int32_t baud = 115200) {
        try {
            m_link->configure(false, baud, 0);
            return "";
        } catch (const std::runtime_error& e) {
            return e.what();
        }
    }

    // Message 5331 that sets the receiver's speed and parity: validity of both directions, baud and
    // parity of each, port 0.
    static Bytes lineSetup(uint16_t baudCode, uint16_t parity) {
        std::vector<uint16_t> words(50);
        words[4] = 0xC000;
        words[8] = words[11] = baudCode;
        words[9] = words[12] = parity;
        return Frames::frame(5331, words, 0x9000);
    }
};

TEST_F(RovanIoConfigureTest, TellsTheReceiverItsSettingsBeforeItTakesThemOver) {
    makeLink();
    m_link->configure(false, 115200, 1);
    EXPECT_THAT(m_line->journal(),
                ElementsAre("open Rovan -1", "write 5331 9000", "sleep 1500000000",
                            "configure 3 -1 2/1=115200 5/3=1"));
    EXPECT_THAT(m_line->written(), ElementsAre(lineSetup(11, 1)));
    EXPECT_TRUE(m_line->everyWriteUnlimited());
}

TEST_F(RovanIoConfigureTest, SetsUpTheRedundantPortFirst) {
    makeLink();
    m_link->configure(true, 19200, 0);
    EXPECT_THAT(
        m_line->journal(),
        ElementsAre("open Rovan -1", "write 5331 9000", "sleep 1500000000", "write 5331 9000",
                    "sleep 1500000000", "configure 3 -1 2/1=19200 5/3=0"));
    std::vector<uint16_t> redundant(50);
    redundant[4] = 0x0080;
    redundant[6] = 2;
    redundant[33] = 1;
    EXPECT_THAT(m_line->written(),
                ElementsAre(Frames::frame(5331, redundant, 0x9000), lineSetup(6, 0)));
}

TEST_F(RovanIoConfigureTest, EverySpeedHasItsCode) {
    const struct {
        int32_t baud;
        uint16_t code;
    } rows[] = {
        {300, 1},   {600, 2},    {1200, 3},    {2400, 4},    {4800, 5},    {19200, 6},
        {76800, 7}, {38400, 10}, {115200, 11}, {230400, 12}, {460800, 13}, {921600, 14},
        {9600, 0},  {57600, 0},  {0, 0},       {-1, 0},
    };
    for (const auto& row : rows) {
        makeLink();
        m_link->configure(false, row.baud, 0);
        EXPECT_EQ(m_line->written().back(), lineSetup(row.code, 0)) << row.baud;
        EXPECT_THAT(m_line->journal().back(),
                    EndsWith("2/1=" + std::to_string(row.baud) + " 5/3=0"));
    }
}

TEST_F(RovanIoConfigureTest, ParityOtherThanOddAndEvenIsNone) {
    const struct {
        uint16_t parity;
        uint16_t mapped;
    } rows[] = {{0, 0}, {1, 1}, {2, 2}, {3, 0}, {4, 0}, {65535, 0}};
    for (const auto& row : rows) {
        makeLink();
        m_link->configure(false, 115200, row.parity);
        EXPECT_EQ(m_line->written().back(), lineSetup(11, row.mapped)) << row.parity;
        EXPECT_THAT(m_line->journal().back(), EndsWith("5/3=" + std::to_string(row.mapped)));
        // 20 characters of 10 or 11 bits at 115200.
        EXPECT_EQ(m_link->timeToSendDataWordCount(0).count(), row.mapped == 0 ? 1737000 : 1910000);
    }
}

TEST_F(RovanIoConfigureTest, CorrectsTheArrivalStampByTenCharacters) {
    makeLink();
    m_link->configure(false, 115200, 0);  // 100 bits at 115200 are 51200 of 58982400 ticks
    EXPECT_EQ(m_devmem->registers["TimeStamp_Interface+392"], 51200u);
    m_link->configure(false, 115200, 2);  // 110 bits
    EXPECT_EQ(m_devmem->registers["TimeStamp_Interface+392"], 56320u);
    m_link->configure(false, 115200, 3);
    EXPECT_EQ(m_devmem->registers["TimeStamp_Interface+392"], 51200u);
}

TEST_F(RovanIoConfigureTest, WithoutASpeedItWritesNoCorrection) {
    makeLink();
    m_link->configure(false, 0, 0);
    m_link->configure(false, -115200, 0);
    EXPECT_EQ(m_devmem->registers.count("TimeStamp_Interface+392"), 0u);
    EXPECT_EQ(m_link->timeToSendDataWordCount(0).count(), 0);
}

TEST_F(RovanIoConfigureTest, TheTimesOnTheLineAreZeroBefore) {
    makeLink();
    EXPECT_EQ(m_link->timeToSendDataWordCount(200).count(), 0);
    EXPECT_EQ(m_link->timeToSendMessageByteCount(412).count(), 0);
    m_link->configure(false, 115200, 0);
    EXPECT_EQ(m_link->timeToSendDataWordCount(200).count(), 36632000);
    EXPECT_EQ(m_link->timeToSendMessageByteCount(412).count(), 36632000);
}

TEST_F(RovanIoConfigureTest, FailsWhenTheConnectionDoesNotOpen) {
    makeLink();
    m_line->failOpen(RC::NO_ACTION);
    CaptureStdout();
    const std::string error = configureError();
    EXPECT_THAT(error, EndsWith("]:NO_ACTION Unable to open I/O connection"));
    EXPECT_EQ(GetCapturedStdout(), error + "\n");
    EXPECT_THAT(m_line->journal(), ElementsAre("open Rovan -1"));
}

TEST_F(RovanIoConfigureTest, FailsWhenTheLineCannotBeSet) {
    makeLink();
    m_line->failConfigure(RC::INVALID_PARAM);
    EXPECT_THAT(
        configureError(),
        EndsWith("]:INVALID_PARAM Unable to configure I/O parameters for baud rate and parity"));
}

TEST_F(RovanIoConfigureTest, AFailedWriteDoesNotKeepItFromTheRest) {
    makeLink();
    m_line->failWrites(RC::NO_ACTION);
    EXPECT_EQ(configureError(), "");
    EXPECT_THAT(m_line->journal("configure"), testing::SizeIs(1));
    EXPECT_EQ(m_link->counters().writeErrors, 1u);
}

TEST_F(RovanIoConfigureTest, ALinkNeedsAnOpenQueue) {
    m_queueConnection = 77;
    std::string error;
    try {
        makeLink();
    } catch (const std::runtime_error& e) {
        error = e.what();
    }
    EXPECT_THAT(error, EndsWith("]:NOT_AVAILABLE GSSIP Queue was not initialized"));
    EXPECT_THAT(m_line->journal(), IsEmpty());
}

TEST_F(RovanIoConfigureTest, AnotherConfigurationStopsTheThreads) {
    runLink(true);
    ASSERT_TRUE(m_line->waitForReads(2));
    m_link->configure(false, kBaud, 0);
    const size_t reads = m_line->reads();
    m_line->send(Frames::frame(8504, {1}));
    CaptureStdout();
    m_link->flush();
    EXPECT_EQ(GetCapturedStdout(), "RovanIo::flush() number of bytes flushed: 14\n");
    EXPECT_EQ(m_line->reads(), reads + 15);
    EXPECT_THAT(samples(), IsEmpty());
}

TEST_F(RovanIoConfigureTest, TheEndClosesTheConnectionAfterTheThreads) {
    runLink();
    m_link.reset();
    EXPECT_EQ(m_line->journal().back(), "close 3");
    const size_t reads = m_line->reads();
    m_line->send(Frames::frame(8504, {1}));
    EXPECT_EQ(m_line->reads(), reads);
}

}  // namespace

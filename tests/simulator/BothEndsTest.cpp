// SPDX-License-Identifier: Apache-2.0
// The receiver's encoders against the server's decoders and the other way round. The two share no
// code, so that what agrees here is either right or wrong twice in the same way.
#include <gtest/gtest.h>

#include <cmath>

#include "MSID_messages/RovanCommandMsg.h"
#include "MSID_messages/Rovan_30409_Msg.h"
#include "MSID_messages/Rovan_5040_Msg.h"
#include "MSID_messages/Rovan_5042_Msg.h"
#include "MSID_messages/Rovan_5044_Msg.h"
#include "MSID_messages/Rovan_5402_Msg.h"
#include "MSID_messages/Rovan_5404_Msg.h"
#include "MSID_messages/Rovan_8504_Msg.h"
#include "MSID_messages/Rovan_9225_Msg.h"
#include "MSID_messages/Rovan_9391_Msg.h"
#include "MSID_messages/Rovan_9405_Msg.h"
#include "MSID_messages/RovancomPortSetup.h"
#include "gssip/IWriteByteStreams.h"
#include "simulator/FrameScanner.h"
#include "simulator/ReceiverMessages.h"
#include "simulator/Truth.h"

namespace {

using namespace Simulator;

Bytes frame(std::uint16_t msgId, const Words& words) {
    return makeFrame(msgId, 0x8000, words);
}

unsigned size(const Bytes& bytes) {
    return static_cast<unsigned>(bytes.size());
}

TEST(BothEnds, AgreeOnTheNavigationSolution) {
    for (int second = 0; second < 604'800; second += 30'241) {
        const NavigationReport report = Truth(3).at(second + 0.25);
        const Bytes bytes = frame(8504, message8504(report));
        Rovan_8504_Msg message;
        ASSERT_TRUE(message.ok_set_8504_gpsip(bytes.data(), size(bytes)));
        message.unpack_8504();
        const unpacked_msg8504_t& read = message.unpacked();
        EXPECT_EQ(read.time, report.time);
        // 40 bits of fraction, cut off.
        EXPECT_NEAR(read.latitude, report.latitude, std::ldexp(1.0, -39));
        EXPECT_NEAR(read.longitude, report.longitude, std::ldexp(1.0, -41));
        EXPECT_EQ(read.altitude, static_cast<float>(report.altitude));
        EXPECT_EQ(read.eastVelocity, static_cast<float>(report.eastVelocity));
        EXPECT_EQ(read.northVelocity, static_cast<float>(report.northVelocity));
        EXPECT_EQ(read.upVelocity, static_cast<float>(report.upVelocity));
        EXPECT_EQ(read.horizontalPositionError, report.horizontalPositionError);
        EXPECT_EQ(read.verticalVelocityError * 0.03125, report.verticalVelocityError);
        EXPECT_EQ(read.hdop, 9);
        EXPECT_FALSE(read.receiverFailure);
        EXPECT_FALSE(read.noSolution);
        for (std::size_t i = 0; i < report.channels.size(); ++i) {
            const channel_record_8504_t& channel = read.channels[i];
            EXPECT_EQ(channel.prn(), report.channels[i].prn);
            EXPECT_EQ(channel.channel(), report.channels[i].channel);
            EXPECT_EQ(channel.usedInSolution(), report.channels[i].used);
            EXPECT_EQ(channel.signalCode(), report.channels[i].signalCode);
            EXPECT_EQ(channel.frequency(), report.channels[i].frequency);
            EXPECT_EQ(channel.assured(), report.channels[i].assurance != 0);
            EXPECT_EQ(channel.carrierToNoise(), report.channels[i].carrierToNoise);
            EXPECT_EQ(channel.jammerToSignal(), 2 * report.channels[i].jammerToSignal);
            EXPECT_EQ(channel.trackingStatus(), report.channels[i].tracking);
        }
    }
}

TEST(BothEnds, AgreeOnTheTimeSolution) {
    TimeReport report;
    report.clockBias = -1234;
    report.week = 2437;
    report.secondOfWeek = 604'799;
    report.fractionOfSecond = 0.1;
    report.setSecond = -5;
    report.setFraction = 0.7;
    report.clockBiasError = 1e-8;
    report.clockBiasErrorRate = 1e-10F;
    report.timeSigma = 2e-8F;
    report.rateSigma = 3e-10F;
    const Bytes bytes = frame(9391, message9391(report));
    Rovan_9391_Msg message;
    ASSERT_TRUE(message.ok_set_9391_gpsip(bytes.data(), size(bytes)));
    EXPECT_DOUBLE_EQ(message.clockBias(), -12.34);
    EXPECT_EQ(message.gpsWeek(), 2437);
    EXPECT_EQ(message.gpsTimeOfWeek(), 604'799);
    EXPECT_EQ(message.gpsTimeOfWeekFraction(), 0.1);
    EXPECT_EQ(message.receiverSetTime(), -5);
    EXPECT_EQ(message.receiverSetTimeFraction(), 0.7);
    EXPECT_EQ(message.clockBiasError(), 1e-8);
    EXPECT_EQ(message.clockBiasErrorRate(), 1e-10F);
    EXPECT_EQ(message.firstSigma(), 2e-8F);
    EXPECT_EQ(message.secondSigma(), 3e-10F);
}

TEST(BothEnds, AgreeOnTheConnectionStatus) {
    ConnectionReport report;
    report.clockTurnOnFailed = true;
    report.invalidFpgaSignal = true;
    report.rerad = true;
    const Bytes bytes = frame(9405, message9405(report));
    Rovan_9405_Msg message;
    ASSERT_TRUE(message.ok_set_9405_gpsip(bytes.data(), size(bytes)));
    EXPECT_FALSE(message.isFpgaOff());
    EXPECT_TRUE(message.isBciClockOff());
    EXPECT_TRUE(message.isFpgaRecievingInvalidSignal());
    EXPECT_FALSE(message.isDorvelNotUsingBciClock());
    EXPECT_FALSE(message.isSerialCableDisconnected());
    EXPECT_TRUE(message.isInReRad());
}

TEST(BothEnds, AgreeOnTheVersions) {
    const Bytes bytes = frame(9225, message9225({}));
    Rovan_9225_Msg message;
    ASSERT_TRUE(message.OkSetContent(bytes.data(), size(bytes)));
    EXPECT_EQ(message.get_BuildTime_String(), "GPS BuildTime YMD HMS: 24/9/18 - 13:48:46");
    EXPECT_EQ(message.get_PAP_SW_Build_String(), "GPS PAP_Prog_Build_ID: SIM-PAP-1.0");
    EXPECT_EQ(message.get_PSP_Boot_Build_String(), "GPS PSP_Boot_Build_ID: SIM-PSPBOOT-1.0");
    EXPECT_EQ(message.get_HPN_PAP_SW(), "GPS PAP_SW_HPN: 100-1001-001");
    EXPECT_EQ(message.get_HPN_FPGA(), "GPS FPGA_HPN: 100-1007-001");
    EXPECT_EQ(message.get_HPN_HW(), "GPS HW_Version: SIM-A");
    EXPECT_EQ(message.get_HPN_BSL_NoLabel(), "100-1008-001");
    EXPECT_EQ(message.get_FCM_ID(), "GPS FCM_ID: SIM00001");
    EXPECT_TRUE(message.isBootFlagNormal());
    EXPECT_FALSE(message.isPSP_SwAllZeroes());
}

TEST(BothEnds, AgreeOnTheOperatingModeAndTheTimeDataTransfer) {
    KeyReport report;
    report.time = 12.5;
    report.operatingMode = 4;
    report.remainingKeyTime = 0x1234;
    report.cryptoState = 7;
    const Bytes keys = frame(5040, message5040(report));
    Rovan_5040_Msg keyMessage;
    ASSERT_TRUE(keyMessage.ok_set_5040_gpsip(keys.data(), size(keys)));
    keyMessage.unpack_5040();
    EXPECT_EQ(keyMessage.unpacked().time, 12.5);
    EXPECT_EQ(keyMessage.unpacked().operatingMode, 4);
    EXPECT_EQ(keyMessage.unpacked().remainingKeyTime, 0x1234);
    EXPECT_EQ(keyMessage.unpacked().cryptoState, 7);

    for (const bool transfer : {false, true}) {
        const Bytes bytes = frame(5042, message5042(1.5, transfer));
        Rovan_5042_Msg message;
        ASSERT_TRUE(message.ok_set_5042_gpsip(bytes.data(), size(bytes)));
        message.unpack_5042();
        EXPECT_EQ(message.unpacked().time, 1.5);
        EXPECT_EQ(message.unpacked().isDtsCom1, transfer);
    }
}

TEST(BothEnds, AgreeOnEventsZeroizeStatusAndUtc) {
    const Bytes event = frame(5044, message5044(12.5, 34, "IP ZEROIZE COMPLETE"));
    Rovan_5044_Msg eventMessage;
    ASSERT_TRUE(eventMessage.ok_set_5044_gpsip(event.data(), size(event)));
    eventMessage.unpack_5044();
    EXPECT_EQ(eventMessage.unpacked().time, 12.5);
    EXPECT_EQ(eventMessage.unpacked().eventId, 34);
    EXPECT_STREQ(eventMessage.unpacked().text, "IP ZEROIZE COMPLETE");

    const Bytes status = frame(5404, message5404(0, 2));
    Rovan_5404_Msg statusMessage;
    ASSERT_TRUE(statusMessage.ok_set_5404_gpsip(status.data(), size(status)));
    EXPECT_EQ(statusMessage.getIPZeroizeStatus(), Rovan_5404_Msg::e5404_IPZeroize_2);

    const Bytes utc = frame(30409, message30409({}));
    Rovan_30409_Msg utcMessage;
    ASSERT_TRUE(utcMessage.ok_set_30409_gpsip(utc.data(), size(utc)));
    EXPECT_TRUE(utcMessage.isUtc_Valid());
}

// What a message of the server writes to the line, as the receiver's scanner reads it.
class Wire : public IWriteByteStreams {
  public:
    int WriteBytes(const void* bytes, unsigned int count) override {
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        m_frames = m_scanner.feed(first, count);
        return static_cast<int>(count);
    }
    ScannedFrame write(GssipMessage& message) {
        message.WriteMessage(this);
        return m_frames.size() == 1 ? m_frames.front()
                                    : ScannedFrame{ScannedFrame::Kind::Stray, {}};
    }

  private:
    FrameScanner m_scanner;
    std::vector<ScannedFrame> m_frames;
};

TEST(BothEnds, AgreeOnWhatTheServerCommands) {
    Wire wire;
    RovanCommandMsg command;
    command.setSimpleModeCommand(static_cast<RovanCommandMsg::e5001_Command>(7));
    const ScannedFrame mode = wire.write(command);
    EXPECT_EQ(mode.kind, ScannedFrame::Kind::Intact);
    EXPECT_EQ(mode.msgId(), 5001);
    EXPECT_EQ(mode.data(4), 7);

    RovancomPortSetup setup;
    setup.setBaud(static_cast<RovancomPortSetup::e5331_SerialBaud>(14),
                  static_cast<RovancomPortSetup::e5331_SerialParity>(1));
    setup.setPort(static_cast<RovancomPortSetup::e5331Port>(0));
    const ScannedFrame port = wire.write(setup);
    EXPECT_EQ(port.msgId(), 5331);
    EXPECT_EQ(port.data(4), 0xC000);
    EXPECT_EQ(port.data(6), 0);
    EXPECT_EQ(port.data(8), 14);
    EXPECT_EQ(port.data(11), 14);

    Rovan_5402_Msg zeroize;
    zeroize.setIpZeroize();
    const ScannedFrame selection = wire.write(zeroize);
    EXPECT_EQ(selection.msgId(), 5402);
    EXPECT_EQ(selection.data(4), 0x0001);
    EXPECT_EQ(selection.data(5), 0x0020);
}

}  // namespace

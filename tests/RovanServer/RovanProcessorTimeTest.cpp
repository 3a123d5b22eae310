// SPDX-License-Identifier: Apache-2.0
// What 9391 and 30409 become on the bus.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "aspn2_msgs/GPSTimePubSubTypes.h"
#include "aspn2_msgs/UTCTimePubSubTypes.h"
#include "aspn2_msgs/UtcDownlinkPubSubTypes.h"
#include "tests/RovanServer/RovanProcessorBus.h"
#include "tests/RovanServer/RovanProcessorTimeAndKeysGolden.h"

using namespace processor_test;
using aspn2_msgs::idl::GPSTime;
using aspn2_msgs::idl::UtcDownlink;
using aspn2_msgs::idl::UTCTime;
using testing::ElementsAre;

namespace {

namespace golden = TimeAndKeysGolden;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Frame timeReport() {
    return Frame(9391, 84);
}
/// At that GPS time.
Frame timeReport(int32_t towSec, double towFraction, int16_t week = 2000) {
    Frame frame = timeReport();
    frame.number<int32_t>(14, towSec).number<double>(16, towFraction).number<int16_t>(12, week);
    return frame;
}

/// Valid by the first source, all zero but the leap seconds.
Frame utcReport(int16_t leapSeconds, uint16_t msgId = 30409) {
    Frame frame(msgId, 32);
    frame.word(6, 1).word(30, 1).number<int16_t>(28, leapSeconds);
    return frame;
}

struct Times {
    GPSTime gps;
    UTCTime utc;
};

// The bus with subscribers to the three topics.
class TimeBus {
  public:
    explicit TimeBus(int domain) : bus(domain) {}

    Times timesOf(const Frame& frame) { return timesOf(frame.sample()); }
    Times timesOf(const GSSIP& sample) {
        const size_t before = gpsTimes.count();
        bus.processor.process9391(sample);
        await([&] { return gpsTimes.count() == before + 1 && utcTimes.count() == before + 1; });
        return {gpsTimes.messages().back(), utcTimes.messages().back()};
    }
    UtcDownlink downlinkOf(const Frame& frame) { return downlinkOf(frame.sample()); }
    UtcDownlink downlinkOf(const GSSIP& sample) {
        const size_t before = downlinks.count();
        bus.processor.process30409(sample);
        await([&] { return downlinks.count() == before + 1; });
        return downlinks.messages().back();
    }

    transport_test::Inbox<GPSTime> gpsTimes;
    transport_test::Inbox<UTCTime> utcTimes;
    transport_test::Inbox<UtcDownlink> downlinks;
    ProcessorOnBus bus;

  private:
    static void await(const std::function<bool()>& messages) {
        if (!transport_test::eventually(messages)) {
            throw std::runtime_error("not all messages came");
        }
    }

    const std::unique_ptr<transport_test::Face<GPSTime>> m_gpsFace =
        listen(bus, "GPSTime", gpsTimes);
    const std::unique_ptr<transport_test::Face<UTCTime>> m_utcFace =
        listen(bus, "UTCTime", utcTimes);
    const std::unique_ptr<transport_test::Face<UtcDownlink>> m_downlinkFace =
        listen(bus, "UtcDownlink", downlinks);
};

template <typename MESSAGE>
std::array<double, 2> variancesOf(const MESSAGE& message) {
    EXPECT_EQ(message.covariance()[0][1], 0.0);
    EXPECT_EQ(message.covariance()[1][0], 0.0);
    return {message.covariance()[0][0], message.covariance()[1][1]};
}

}  // namespace

TEST(RovanProcessorTime, BringsTheGoldenFramesToTheBus) {
    TimeBus time(100);
    const UtcDownlink firstDownlink = time.downlinkOf(sampleOf(golden::kFrame30409));
    const UtcDownlink downlink = time.downlinkOf(sampleOf(golden::kFrame30409));
    const Times first = time.timesOf(sampleOf(golden::kFrame9391));
    const Times times = time.timesOf(sampleOf(golden::kFrame9391));

    using namespace aspn2_msgs::idl;
    EXPECT_EQ(cdrOf<UtcDownlinkPubSubType>(downlink), golden::kUtcDownlinkCdr);
    EXPECT_EQ(cdrOf<GPSTimePubSubType>(times.gps), golden::kGpsTimeCdr);
    EXPECT_EQ(cdrOf<UTCTimePubSubType>(times.utc), golden::kUtcTimeCdr);

    // System 3, server 39, then message code and sub id.
    EXPECT_EQ(times.gps.header().device_id(), 0x03272600);
    EXPECT_EQ(times.utc.header().device_id(), 0x03272900);
    EXPECT_EQ(downlink.header().device_id(), 0x03272500);
    for (const auto* header : {&firstDownlink.header(), &first.gps.header(), &first.utc.header()}) {
        expectGoldenStamps(*header);
        EXPECT_EQ(header->seq_num(), 0);
    }
}

TEST(RovanProcessorTime, TranslatesEachFieldOf9391) {
    TimeBus time(101);
    Frame frame = timeReport(604799, 0.25, 2345);
    frame.number<int32_t>(6, 123456789);
    frame.number<int32_t>(20, 86400).number<double>(24, 0.5);
    frame.number<double>(32, 0.001).number<float>(36, 0.1f);
    frame.number<float>(44, 0.1f).number<float>(46, 12.3f);

    const GPSTime gps = time.timesOf(frame).gps;

    EXPECT_EQ(gps.gps_tow_sec(), 604799);
    EXPECT_EQ(gps.gps_tow_nsec(), 250000000.0);
    EXPECT_EQ(gps.gps_week(), 2345);
    EXPECT_EQ(gps.rcvr_set_time_sec(), 86400);
    EXPECT_EQ(gps.rcvr_set_time_nsec(), 500000000.0);
    EXPECT_EQ(gps.rcvr_time_bias(), 1234567.8900000001);  // what a double makes of 0.01
    EXPECT_EQ(gps.rcvr_time_bias_error(), 0.001);
    // The nearest single to 0.1, and the nearest single to its square: the double square would be
    // 0.010000000298023226.
    EXPECT_EQ(gps.rcvr_time_bias_error_rate(), 0.10000000149011612);
    EXPECT_THAT(variancesOf(gps), ElementsAre(0.010000000707805157, 151.29000854492188));
}

TEST(RovanProcessorTime, TranslatesNegativeFieldsOf9391) {
    TimeBus time(102);
    Frame frame = timeReport(-7, -0.5, -3);
    frame.number<int32_t>(6, -1);
    frame.number<int32_t>(20, -2000000000).number<double>(24, -0.125);
    frame.number<double>(32, -2.5).number<float>(36, -0.25f);
    frame.number<float>(44, -3.0f).number<float>(46, -0.5f);

    const Times times = time.timesOf(frame);

    EXPECT_EQ(times.gps.gps_tow_sec(), -7);
    EXPECT_EQ(times.gps.gps_tow_nsec(), -500000000.0);
    EXPECT_EQ(times.gps.gps_week(), -3);
    EXPECT_EQ(times.gps.rcvr_set_time_sec(), -2000000000);
    EXPECT_EQ(times.gps.rcvr_set_time_nsec(), -125000000.0);
    EXPECT_EQ(times.gps.rcvr_time_bias(), -0.01);
    EXPECT_EQ(times.gps.rcvr_time_bias_error(), -2.5);
    EXPECT_EQ(times.gps.rcvr_time_bias_error_rate(), -0.25);
    EXPECT_THAT(variancesOf(times.gps), ElementsAre(9.0, 0.25));
    // 7.5 s before the week begins.
    EXPECT_EQ(times.utc.utc_tod_sec(), 86392);
    EXPECT_EQ(times.utc.utc_tod_nsec(), 500000000.0);
}

TEST(RovanProcessorTime, CopiesNumbersThatAreNotFinite) {
    TimeBus time(103);
    time.downlinkOf(utcReport(18));
    Frame frame = timeReport(100, std::nan(""));
    frame.number<double>(24, kInfinity).number<double>(32, -kInfinity);
    frame.number<float>(36, std::nanf("")).number<float>(44, 1e30f).number<float>(46, 1e-30f);

    const Times times = time.timesOf(frame);

    EXPECT_TRUE(std::isnan(times.gps.gps_tow_nsec()));
    EXPECT_EQ(times.gps.rcvr_set_time_nsec(), kInfinity);
    EXPECT_EQ(times.gps.rcvr_time_bias_error(), -kInfinity);
    EXPECT_TRUE(std::isnan(times.gps.rcvr_time_bias_error_rate()));
    // The squares leave the range of single precision.
    EXPECT_THAT(variancesOf(times.gps), ElementsAre(kInfinity, 0.0));
    EXPECT_THAT(variancesOf(times.utc), ElementsAre(kInfinity, 0.0));
    EXPECT_TRUE(std::isnan(times.utc.gps_tow_nsec()));
    EXPECT_TRUE(std::isnan(times.utc.utc_tod_nsec()));
    EXPECT_EQ(times.utc.utc_tod_sec(), 82);
}

TEST(RovanProcessorTime, GivesGpsTimeWithInfiniteVariancesWithoutParameters) {
    TimeBus time(104);
    Frame frame = timeReport(604799, 0.75, 2345);
    frame.number<float>(44, 2.0f).number<float>(46, 3.0f);

    const Times times = time.timesOf(frame);

    EXPECT_EQ(times.utc.gps_tow_sec(), 604799);
    EXPECT_EQ(times.utc.gps_tow_nsec(), 750000000.0);
    EXPECT_EQ(times.utc.gps_week(), 2345);
    EXPECT_EQ(times.utc.utc_tod_sec(), 86399);
    EXPECT_EQ(times.utc.utc_tod_nsec(), 750000000.0);
    EXPECT_EQ(times.utc.a1(), 0.0);
    EXPECT_THAT(variancesOf(times.utc), ElementsAre(kInfinity, kInfinity));
    EXPECT_THAT(variancesOf(times.gps), ElementsAre(4.0, 9.0));
}

TEST(RovanProcessorTime, AppliesTheLatestParameters) {
    TimeBus time(105);
    Frame parameters = utcReport(18);
    // Half a second, and 2^-20 of the 604800 + 100 - 56 s since the reference time.
    parameters.number<double>(16, 0.5).number<double>(12, std::ldexp(1.0, -20));
    parameters.number<int16_t>(25, 1999).number<double>(20, 56.0);
    Frame frame = timeReport(100, 0.0);
    frame.number<float>(44, 2.0f).number<float>(46, 3.0f);

    time.downlinkOf(parameters);
    const Times times = time.timesOf(frame);

    EXPECT_EQ(times.utc.gps_tow_sec(), 100);
    EXPECT_EQ(times.utc.gps_tow_nsec(), 0.0);
    EXPECT_EQ(times.utc.gps_week(), 2000);
    // 604844 / 2^20 = 0.576824188232421875: 100 - 18 - 1.076824188232421875.
    EXPECT_EQ(times.utc.utc_tod_sec(), 80);
    EXPECT_DOUBLE_EQ(times.utc.utc_tod_nsec(), 923175811.767578125);
    EXPECT_EQ(times.utc.a1(), std::ldexp(1.0, -20));
    EXPECT_THAT(variancesOf(times.utc), ElementsAre(4.0, 9.0));

    time.downlinkOf(utcReport(18));
    const Times later = time.timesOf(frame);
    EXPECT_EQ(later.utc.utc_tod_sec(), 82);
    EXPECT_EQ(later.utc.utc_tod_nsec(), 0.0);
    EXPECT_EQ(later.utc.a1(), 0.0);
}

TEST(RovanProcessorTime, CrossesTheWeekAndTheLeapSecond) {
    TimeBus time(106);
    Frame announced = utcReport(18);
    announced.number<int16_t>(24, 19).number<int16_t>(27, 1999).number<int16_t>(26, 7);

    time.downlinkOf(announced);
    EXPECT_EQ(time.timesOf(timeReport(5, 0.0)).utc.utc_tod_sec(), 86387);
    EXPECT_EQ(time.timesOf(timeReport(17, 0.5)).utc.utc_tod_sec(), 86399);
    EXPECT_EQ(time.timesOf(timeReport(18, 0.5)).utc.utc_tod_sec(), 0);
    EXPECT_EQ(time.timesOf(timeReport(100, 0.0)).utc.utc_tod_sec(), 82) << "announced only";

    time.downlinkOf(utcReport(19));
    EXPECT_EQ(time.timesOf(timeReport(18, 0.5)).utc.utc_tod_sec(), 86399);
    EXPECT_EQ(time.timesOf(timeReport(100, 0.0)).utc.utc_tod_sec(), 81);
}

TEST(RovanProcessorTime, TranslatesEachFieldOf30409) {
    TimeBus time(107);
    Frame frame = utcReport(-5);
    frame.number<double>(12, -1.5e-14).number<double>(16, 2.5e-9).number<double>(20, 405504.0);
    frame.word(24, 0x8000).word(25, 0x7FFF).word(26, 0xFFFE).word(27, 0xFFFD);

    const UtcDownlink downlink = time.downlinkOf(frame);

    EXPECT_EQ(downlink.a1(), -1.5e-14);
    EXPECT_EQ(downlink.a0(), 2.5e-9);
    EXPECT_EQ(downlink.tot(), 405504);
    EXPECT_EQ(downlink.delta_t_lsf(), -32768);
    EXPECT_EQ(downlink.WNt(), 32767);
    EXPECT_EQ(downlink.dn(), -2);
    EXPECT_EQ(downlink.wn_lsf(), -3);
    EXPECT_EQ(downlink.delta_t_ls(), -5);
}

TEST(RovanProcessorTime, RoundsTheReferenceTimeToTheNearestSecond) {
    TimeBus time(108);
    const std::pair<double, int32_t> rows[] = {
        {0.49999999999999994, 0},
        {0.5, 1},
        {2.5, 3},
        {-2.5, -3},
        {-0.4, 0},
        {604799.6, 604800},
        {2147483646.4, 2147483646},
        {2147483647.6, INT32_MAX},
        {-1e300, INT32_MIN},
        {kInfinity, INT32_MAX},
        {std::nan(""), 0},
    };
    for (const auto& [tot, expected] : rows) {
        Frame frame = utcReport(18);
        frame.number<double>(20, tot);
        EXPECT_EQ(time.downlinkOf(frame).tot(), expected) << tot;
    }
}

// Bit 0 of words 6, 9 and 30 in all combinations, the bits round them the other way.
TEST(RovanProcessorTime, DropsParametersThatAreNotValid) {
    TimeBus time(109);
    time.downlinkOf(utcReport(18));
    int64_t published = 1;
    for (unsigned i = 0; i < 8; ++i) {
        const bool valid = i >= 5;
        Frame frame = utcReport(static_cast<int16_t>(20 + i));
        frame.word(6, 0xFFFE | (i & 1)).word(9, 0xFFFE | (i >> 1 & 1)).word(30, 0xFFFE | i >> 2);

        time.bus.processor.process30409(frame.sample());

        published += valid ? 1 : 0;
        const int leapSeconds = valid ? 20 + static_cast<int>(i) : 18;
        EXPECT_EQ(time.timesOf(timeReport(100, 0.0)).utc.utc_tod_sec(), 100 - leapSeconds) << i;
    }
    EXPECT_EQ(published, 4);
    // The dropped ones have used no number.
    EXPECT_EQ(time.downlinkOf(utcReport(18)).header().seq_num(), published);
    EXPECT_EQ(time.downlinks.count(), 5u);
    EXPECT_TRUE(time.bus.newEvents().empty());
}

TEST(RovanProcessorTime, TakesParametersUnderBothIds) {
    TimeBus time(110);

    time.downlinkOf(utcReport(18, 30409));
    const UtcDownlink other = time.downlinkOf(utcReport(17, 9409));

    EXPECT_EQ(other.delta_t_ls(), 17);
    EXPECT_EQ(other.header().seq_num(), 1);
    EXPECT_EQ(time.timesOf(timeReport(100, 0.0)).utc.utc_tod_sec(), 83);
}

TEST(RovanProcessorTime, KeepsParametersAcrossARestartAndAFailedPublish) {
    TimeBus time(111);
    time.downlinkOf(utcReport(17));

    time.bus.processor.start();
    time.bus.processor.stop();
    time.bus.processor.start();
    EXPECT_EQ(time.timesOf(timeReport(100, 0.0)).utc.utc_tod_sec(), 83);
    time.bus.processor.stop();

    auto rc = RC::NO_ERROR;
    time.bus.tss->Unregister_Sender(time.bus.id("UtcDownlink"), rc);
    time.bus.processor.process30409(utcReport(18).sample());
    EXPECT_THAT(linesOf(time.bus.newEvents()),
                ElementsAre(publishError("process30409() UTCDownlink", 1)));
    EXPECT_EQ(time.downlinks.count(), 1u);
    EXPECT_EQ(time.timesOf(timeReport(100, 0.0)).utc.utc_tod_sec(), 82);
}

TEST(RovanProcessorTime, TriesUtcTimeThoughGpsTimeFails) {
    TimeBus time(112);
    auto rc = RC::NO_ERROR;

    time.bus.tss->Unregister_Sender(time.bus.id("GPSTime"), rc);
    time.bus.processor.process9391(timeReport(100, 0.0).sample());
    EXPECT_THAT(linesOf(time.bus.newEvents()),
                ElementsAre(publishError("process9391() GPSTime", 0)));
    EXPECT_TRUE(transport_test::eventually([&] { return time.utcTimes.count() == 1; }));
    EXPECT_EQ(time.utcTimes.messages()[0].utc_tod_sec(), 100);

    time.bus.tss->Unregister_Sender(time.bus.id("UTCTime"), rc);
    time.bus.processor.process9391(timeReport(100, 0.0).sample());
    EXPECT_THAT(linesOf(time.bus.newEvents()),
                ElementsAre(publishError("process9391() GPSTime", 1),
                            publishError("process9391() UTCTime", 1)));
    EXPECT_EQ(time.gpsTimes.count(), 0u);
    EXPECT_EQ(time.utcTimes.count(), 1u);
}

TEST(RovanProcessorTime, PublishesGpsTimeThenUtcTime) {
    const transport_test::ConnectionsFile file(containers(113));
    std::mutex mutex;
    std::string order;
    const auto note = [&](char letter) {
        const std::lock_guard<std::mutex> lock(mutex);
        order += letter;
    };
    const auto tss = transport_test::join(file);
    transport_test::Face<GPSTime> gps(tss);
    transport_test::Face<UTCTime> utc(tss);
    // A process hears its own messages on the publishing thread, so that they come in their order.
    gps.registerCallback(transport_test::connect(*tss, "GPSTime"), [&](auto&&...) { note('G'); });
    utc.registerCallback(transport_test::connect(*tss, "UTCTime"), [&](auto&&...) { note('U'); });
    RovanProcessor processor("Rovan", tss, ASPN2::DeviceIdFactory("TessalyPlus", 39), false);
    processor.Framework_Connect();

    processor.process9391(timeReport().sample());
    processor.process9391(timeReport().sample());

    const auto noted = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return order;
    };
    EXPECT_TRUE(transport_test::eventually([&] { return noted().size() == 4; }));
    EXPECT_EQ(noted(), "GUGU");
}

TEST(RovanProcessorTime, DropsFramesOfAnotherLengthInSilence) {
    TimeBus time(114);
    const auto parametersOf = [](unsigned wdcnt) {
        return Frame(30409, wdcnt).word(6, 1).word(30, 1).word(28, 18).sample();
    };

    time.bus.processor.process9391(Frame(9391, 83).sample());
    time.bus.processor.process9391(Frame(9391, 85).sample());
    time.bus.processor.process9391(sampleOf({}));
    time.bus.processor.process30409(parametersOf(31));
    time.bus.processor.process30409(parametersOf(33));
    time.bus.processor.process30409(sampleOf(Bytes(10)));

    EXPECT_TRUE(time.bus.newEvents().empty());
    // The first frames that are taken still have number 0, and there were no parameters.
    const Times times = time.timesOf(timeReport(100, 0.0));
    EXPECT_EQ(times.gps.header().seq_num(), 0);
    EXPECT_EQ(times.utc.header().seq_num(), 0);
    EXPECT_EQ(times.utc.utc_tod_sec(), 100);
    EXPECT_EQ(time.downlinkOf(parametersOf(32)).header().seq_num(), 0);
}

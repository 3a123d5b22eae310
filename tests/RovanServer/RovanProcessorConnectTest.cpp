// SPDX-License-Identifier: Apache-2.0
// The processor's connections.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/RovanServer/RovanProcessorBus.h"

using namespace processor_test;
using testing::HasSubstr;

namespace {

RovanProcessor processorOn(const std::shared_ptr<FACE::TSS::KD_TSS>& tss) {
    return {"Rovan", tss, ASPN2::DeviceIdFactory("TessalyPlus", 39), false};
}

/// What Framework_Connect says when it fails, having said the same on the console; empty if it does
/// not fail.
std::string failure(RovanProcessor& processor) {
    std::string what;
    testing::internal::CaptureStdout();
    try {
        processor.Framework_Connect();
    } catch (const std::runtime_error& e) {
        what = e.what();
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), what.empty() ? "" : what + "\n");
    return what;
}

// Labels in the order of the checks, which is that of connecting.
const std::pair<const char*, const char*> kLabels[] = {
    {"UtcDownlink", "RovanProcessor() utcDownlink_rcv"},
    {"PositionVelocity", "RovanProcessor() pv_rcv"},
    {"ReceiverStatus", "RovanProcessor() rcvrStatus_rcv"},
    {"ChannelStatus", "RovanProcessor() chanStatus_rcv"},
    {"GPSTime", "RovanProcessor() gpsTime_rcv"},
    {"UTCTime", "RovanProcessor() utcTime_rcv"},
    {"ChallengedEnvironment", "RovanProcessor() challEnv_rcv"},
    {"GPSCryptoStatus", "RovanProcessor() gpsCryptoStatus_rcv"},
    {"GPSLineOfSight", "RovanProcessor() gpsLineOfSight_rcv"},
    {"SVStatus", "RovanProcessor() svStatus_rcv"},
};

}  // namespace

TEST(RovanProcessorConnect, MakesElevenConnectionsInOrderAndTenSenders) {
    const transport_test::ConnectionsFile file(containers(191));
    const auto tss = transport_test::join(file);
    RovanProcessor processor = processorOn(tss);

    EXPECT_EQ(failure(processor), "");

    ASSERT_EQ(topics().size(), 11u);
    for (unsigned i = 0; i < 11; ++i) {
        const auto& connection = tss->connectionMap_mutex_at(i);
        EXPECT_EQ(connection.topicName, topics()[i]);
        EXPECT_EQ(connection.isPublisher(), topics()[i] != "MaintenanceEvent") << topics()[i];
    }
    EXPECT_THROW(tss->connectionMap_mutex_at(11), std::out_of_range);
}

TEST(RovanProcessorConnect, RemovesTenSendersAndLeavesTheMaintenanceConnection) {
    const transport_test::ConnectionsFile file(containers(192));
    const auto tss = transport_test::join(file);
    RovanProcessor processor = processorOn(tss);
    processor.Framework_Connect();
    // A sender that somebody else put on the maintenance connection must stay.
    transport_test::Face<MaintenanceEvent> maintenance(tss);
    ASSERT_EQ(maintenance.registerSender(transport_test::connect(*tss, "MaintenanceEvent")),
              RC::NO_ERROR);

    processor.Framework_Disconnect();

    for (unsigned i = 0; i < 11; ++i) {
        EXPECT_EQ(tss->connectionMap_mutex_at(i).isPublisher(), topics()[i] == "MaintenanceEvent")
            << topics()[i];
    }
}

TEST(RovanProcessorConnect, CanConnectAgainOnlyAfterDisconnecting) {
    const transport_test::ConnectionsFile file(containers(193));
    const auto tss = transport_test::join(file);
    RovanProcessor processor = processorOn(tss);
    processor.Framework_Connect();

    const std::string second = failure(processor);
    processor.Framework_Disconnect();

    EXPECT_THAT(second, HasSubstr(":NO_ACTION RovanProcessor() utcDownlink_rcv"));
    EXPECT_EQ(failure(processor), "");
}

TEST(RovanProcessorConnect, NamesTheConnectionThatFails) {
    unsigned checked = 0;
    for (const auto& [topic, label] : kLabels) {
        const transport_test::ConnectionsFile file(containers(194, {topic}));
        const auto tss = transport_test::join(file);
        RovanProcessor processor = processorOn(tss);

        EXPECT_THAT(failure(processor), HasSubstr(std::string(":INVALID_CONFIG ") + label));

        // The other connections were made all the same, but nothing can be sent.
        for (unsigned i = 0; i < 10; ++i) {
            EXPECT_NE(tss->connectionMap_mutex_at(i).topicName, topic);
            EXPECT_FALSE(tss->connectionMap_mutex_at(i).isPublisher());
        }
        ++checked;
    }
    EXPECT_EQ(checked, 10u);
}

TEST(RovanProcessorConnect, NamesTheFirstOfSeveralThatFail) {
    const transport_test::ConnectionsFile file(
        containers(195, {"SVStatus", "GPSTime", "ReceiverStatus", "MaintenanceEvent"}));
    const auto tss = transport_test::join(file);
    RovanProcessor processor = processorOn(tss);

    EXPECT_THAT(failure(processor), HasSubstr("RovanProcessor() rcvrStatus_rcv"));
}

TEST(RovanProcessorConnect, DoesWithoutTheMaintenanceConnection) {
    const transport_test::ConnectionsFile file(containers(196, {"MaintenanceEvent"}));
    const auto tss = transport_test::join(file);
    RovanProcessor processor = processorOn(tss);

    EXPECT_EQ(failure(processor), "");

    for (unsigned i = 0; i < 10; ++i) {
        EXPECT_TRUE(tss->connectionMap_mutex_at(i).isPublisher());
    }
}

TEST(RovanProcessorConnect, FailsOnATransportThatNeverJoinedTheBus) {
    RovanProcessor processor = processorOn(std::make_shared<FACE::TSS::KD_TSS>("Rovan"));

    EXPECT_THAT(failure(processor), HasSubstr(":NOT_AVAILABLE RovanProcessor() utcDownlink_rcv"));
}

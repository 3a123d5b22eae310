// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <fastdds/dds/topic/TopicDataType.hpp>

#include <iterator>
#include <string>

#include "TransportBus.h"
#include "face/KD_Topic_Helpers.h"

namespace {

using FACE::TSS::Topics::GetPubSubType;

class KnownType : public testing::TestWithParam<const char*> {};

TEST_P(KnownType, IsMadeUnderItsNameOnTheBus) {
    const std::string type = GetParam();

    const auto made = GetPubSubType(type + "PubSubType");

    ASSERT_NE(made, nullptr);
    EXPECT_EQ(std::string(made->getName()), "aspn2_msgs::idl::" + type);
}

const char* const kTypes[] = {"Altitude",
                              "BitReport",
                              "BitEntryStatus",
                              "ChallengedEnvironment",
                              "ChannelStatus",
                              "CommandResponse",
                              "DeltaTimeAndFrequency",
                              "EventLog",
                              "GNSS",
                              "GNSSSubframe",
                              "GPSTime",
                              "IMU",
                              "MaintenanceEvent",
                              "MeasurementIncorporationStatus",
                              "KeldraPNT",
                              "NavigationMode",
                              "PositionVelocity",
                              "PositionVelocityAttitude",
                              "ThreeAxisMagnetometer",
                              "TimeAtTheTone",
                              "UtcDownlink",
                              "UTCTime",
                              "GSSIP",
                              "Velocity3D",
                              "ReceiverStatus",
                              "GPSLineOfSight",
                              "GPSCryptoStatus",
                              "AssuranceState",
                              "PlatformDynamics",
                              "TimeSync",
                              "SVStatus",
                              "ForwardReverseStatus"};
static_assert(std::size(kTypes) == 32);

INSTANTIATE_TEST_SUITE_P(TopicHelpers, KnownType, testing::ValuesIn(kTypes),
                         [](const auto& type) { return std::string(type.param); });

TEST(TopicHelpers, LetAConnectionsFileNameEveryType) {
    std::map<std::string, transport_test::Parameters> containers = {
        {"FastRtps", transport_test::busSettings(125)}};
    for (const char* type : kTypes) {
        containers[type] = transport_test::carries(type);
    }
    const transport_test::ConnectionsFile file(containers);
    const auto transport = transport_test::join(file);

    long long id = 0;
    for (const char* type : kTypes) {
        EXPECT_EQ(transport_test::connect(*transport, type), id++);
        EXPECT_TRUE(transport->isTopicRegistered((std::string("aspn2_msgs::idl::") + type).c_str()))
            << type;
    }
}

TEST(TopicHelpers, MakeANewInstanceAtEachCall) {
    const auto first = GetPubSubType("EventLogPubSubType");
    const auto second = GetPubSubType("EventLogPubSubType");

    EXPECT_NE(first, second);
}

TEST(TopicHelpers, MakeNothingOfAnUnknownKey) {
    EXPECT_EQ(GetPubSubType(""), nullptr);
    EXPECT_EQ(GetPubSubType("EventLog"), nullptr);
    EXPECT_EQ(GetPubSubType("eventlogpubsubtype"), nullptr);
    EXPECT_EQ(GetPubSubType("EventLogPubSubType "), nullptr);
    EXPECT_EQ(GetPubSubType("aspn2_msgs::idl::EventLogPubSubType"), nullptr);
    EXPECT_EQ(GetPubSubType("UnheardPubSubType"), nullptr);
}

// What only ever travels inside a message is no topic.
TEST(TopicHelpers, MakeNoRecordThatIsNoMessage) {
    for (const char* record :
         {"channel_status_obs", "interference_type_set", "key_type_set", "gpslos_obs", "sv_set",
          "lru_comp_set", "bit_comp_set", "gnss_obs", "meas_type_set", "header", "timestamp"}) {
        EXPECT_EQ(GetPubSubType(std::string(record) + "PubSubType"), nullptr) << record;
    }
}

}  // namespace

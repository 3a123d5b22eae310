// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <fastdds/dds/topic/TopicDataType.hpp>

#include <string>

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

INSTANTIATE_TEST_SUITE_P(TopicHelpers, KnownType,
                         testing::Values("ChallengedEnvironment", "ChannelStatus",
                                         "CommandResponse", "EventLog", "GPSTime",
                                         "MaintenanceEvent", "PositionVelocity", "UtcDownlink",
                                         "UTCTime", "GSSIP", "ReceiverStatus", "GPSLineOfSight",
                                         "GPSCryptoStatus", "SVStatus"),
                         [](const auto& type) { return std::string(type.param); });

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
}

}  // namespace

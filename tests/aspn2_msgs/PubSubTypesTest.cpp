// SPDX-License-Identifier: Apache-2.0
#include "PubSubTypesSuite.h"
#include "SampleMessages.h"

namespace pubsub {

using namespace aspn2_msgs::idl;

using ServerTypes = ::testing::Types<
    PositionVelocityPubSubType, ReceiverStatusPubSubType, ChannelStatusPubSubType,
    channel_status_obsPubSubType, GPSTimePubSubType, UTCTimePubSubType, UtcDownlinkPubSubType,
    ChallengedEnvironmentPubSubType, interference_type_setPubSubType, GPSCryptoStatusPubSubType,
    key_type_setPubSubType, GPSLineOfSightPubSubType, gpslos_obsPubSubType, SVStatusPubSubType,
    sv_setPubSubType, CommandResponsePubSubType, EventLogPubSubType, MaintenanceEventPubSubType,
    lru_comp_setPubSubType, GSSIPPubSubType>;
INSTANTIATE_TYPED_TEST_SUITE_P(Server, PubSubTypes, ServerTypes);

}  // namespace pubsub

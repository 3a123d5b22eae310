// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Topic_Helpers.h"

#include <fastdds/dds/topic/TopicDataType.hpp>

#include "aspn2_msgs/ChallengedEnvironmentPubSubTypes.h"
#include "aspn2_msgs/ChannelStatusPubSubTypes.h"
#include "aspn2_msgs/CommandResponsePubSubTypes.h"
#include "aspn2_msgs/EventLogPubSubTypes.h"
#include "aspn2_msgs/GPSCryptoStatusPubSubTypes.h"
#include "aspn2_msgs/GPSLineOfSightPubSubTypes.h"
#include "aspn2_msgs/GPSTimePubSubTypes.h"
#include "aspn2_msgs/GSSIPPubSubTypes.h"
#include "aspn2_msgs/MaintenanceEventPubSubTypes.h"
#include "aspn2_msgs/PositionVelocityPubSubTypes.h"
#include "aspn2_msgs/ReceiverStatusPubSubTypes.h"
#include "aspn2_msgs/SVStatusPubSubTypes.h"
#include "aspn2_msgs/UTCTimePubSubTypes.h"
#include "aspn2_msgs/UtcDownlinkPubSubTypes.h"

namespace FACE::TSS::Topics {
namespace {

using eprosima::fastdds::dds::TopicDataType;
using namespace aspn2_msgs::idl;

template <typename PubSubType>
std::unique_ptr<TopicDataType> make() {
    return std::make_unique<PubSubType>();
}

struct Row {
    const char* key;
    std::unique_ptr<TopicDataType> (*make)();
};

// A further type of the bus is one row here.
constexpr Row kTypes[] = {
    {"ChallengedEnvironmentPubSubType", make<ChallengedEnvironmentPubSubType>},
    {"ChannelStatusPubSubType", make<ChannelStatusPubSubType>},
    {"CommandResponsePubSubType", make<CommandResponsePubSubType>},
    {"EventLogPubSubType", make<EventLogPubSubType>},
    {"GPSTimePubSubType", make<GPSTimePubSubType>},
    {"MaintenanceEventPubSubType", make<MaintenanceEventPubSubType>},
    {"PositionVelocityPubSubType", make<PositionVelocityPubSubType>},
    {"UtcDownlinkPubSubType", make<UtcDownlinkPubSubType>},
    {"UTCTimePubSubType", make<UTCTimePubSubType>},
    {"GSSIPPubSubType", make<GSSIPPubSubType>},
    {"ReceiverStatusPubSubType", make<ReceiverStatusPubSubType>},
    {"GPSLineOfSightPubSubType", make<GPSLineOfSightPubSubType>},
    {"GPSCryptoStatusPubSubType", make<GPSCryptoStatusPubSubType>},
    {"SVStatusPubSubType", make<SVStatusPubSubType>},
};

}  // namespace

std::unique_ptr<TopicDataType> GetPubSubType(const std::string& key) {
    for (const Row& row : kTypes) {
        if (key == row.key) {
            return row.make();
        }
    }
    return nullptr;
}

}  // namespace FACE::TSS::Topics

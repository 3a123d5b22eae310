// SPDX-License-Identifier: Apache-2.0
#include "face/KD_Topic_Helpers.h"

#include <fastdds/dds/topic/TopicDataType.hpp>

#include "aspn2_msgs/AltitudePubSubTypes.h"
#include "aspn2_msgs/AssuranceStatePubSubTypes.h"
#include "aspn2_msgs/BitEntryStatusPubSubTypes.h"
#include "aspn2_msgs/BitReportPubSubTypes.h"
#include "aspn2_msgs/ChallengedEnvironmentPubSubTypes.h"
#include "aspn2_msgs/ChannelStatusPubSubTypes.h"
#include "aspn2_msgs/CommandResponsePubSubTypes.h"
#include "aspn2_msgs/DeltaTimeAndFrequencyPubSubTypes.h"
#include "aspn2_msgs/EventLogPubSubTypes.h"
#include "aspn2_msgs/ForwardReverseStatusPubSubTypes.h"
#include "aspn2_msgs/GNSSPubSubTypes.h"
#include "aspn2_msgs/GNSSSubframePubSubTypes.h"
#include "aspn2_msgs/GPSCryptoStatusPubSubTypes.h"
#include "aspn2_msgs/GPSLineOfSightPubSubTypes.h"
#include "aspn2_msgs/GPSTimePubSubTypes.h"
#include "aspn2_msgs/GSSIPPubSubTypes.h"
#include "aspn2_msgs/IMUPubSubTypes.h"
#include "aspn2_msgs/KeldraPNTPubSubTypes.h"
#include "aspn2_msgs/MaintenanceEventPubSubTypes.h"
#include "aspn2_msgs/MeasurementIncorporationStatusPubSubTypes.h"
#include "aspn2_msgs/NavigationModePubSubTypes.h"
#include "aspn2_msgs/PlatformDynamicsPubSubTypes.h"
#include "aspn2_msgs/PositionVelocityAttitudePubSubTypes.h"
#include "aspn2_msgs/PositionVelocityPubSubTypes.h"
#include "aspn2_msgs/ReceiverStatusPubSubTypes.h"
#include "aspn2_msgs/SVStatusPubSubTypes.h"
#include "aspn2_msgs/ThreeAxisMagnetometerPubSubTypes.h"
#include "aspn2_msgs/TimeAtTheTonePubSubTypes.h"
#include "aspn2_msgs/TimeSyncPubSubTypes.h"
#include "aspn2_msgs/UTCTimePubSubTypes.h"
#include "aspn2_msgs/UtcDownlinkPubSubTypes.h"
#include "aspn2_msgs/Velocity3DPubSubTypes.h"

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
    {"AltitudePubSubType", make<AltitudePubSubType>},
    {"BitReportPubSubType", make<BitReportPubSubType>},
    {"BitEntryStatusPubSubType", make<BitEntryStatusPubSubType>},
    {"ChallengedEnvironmentPubSubType", make<ChallengedEnvironmentPubSubType>},
    {"ChannelStatusPubSubType", make<ChannelStatusPubSubType>},
    {"CommandResponsePubSubType", make<CommandResponsePubSubType>},
    {"DeltaTimeAndFrequencyPubSubType", make<DeltaTimeAndFrequencyPubSubType>},
    {"EventLogPubSubType", make<EventLogPubSubType>},
    {"GNSSPubSubType", make<GNSSPubSubType>},
    {"GNSSSubframePubSubType", make<GNSSSubframePubSubType>},
    {"GPSTimePubSubType", make<GPSTimePubSubType>},
    {"IMUPubSubType", make<IMUPubSubType>},
    {"MaintenanceEventPubSubType", make<MaintenanceEventPubSubType>},
    {"MeasurementIncorporationStatusPubSubType", make<MeasurementIncorporationStatusPubSubType>},
    {"KeldraPNTPubSubType", make<KeldraPNTPubSubType>},
    {"NavigationModePubSubType", make<NavigationModePubSubType>},
    {"PositionVelocityPubSubType", make<PositionVelocityPubSubType>},
    {"PositionVelocityAttitudePubSubType", make<PositionVelocityAttitudePubSubType>},
    {"ThreeAxisMagnetometerPubSubType", make<ThreeAxisMagnetometerPubSubType>},
    {"TimeAtTheTonePubSubType", make<TimeAtTheTonePubSubType>},
    {"UtcDownlinkPubSubType", make<UtcDownlinkPubSubType>},
    {"UTCTimePubSubType", make<UTCTimePubSubType>},
    {"GSSIPPubSubType", make<GSSIPPubSubType>},
    {"Velocity3DPubSubType", make<Velocity3DPubSubType>},
    {"ReceiverStatusPubSubType", make<ReceiverStatusPubSubType>},
    {"GPSLineOfSightPubSubType", make<GPSLineOfSightPubSubType>},
    {"GPSCryptoStatusPubSubType", make<GPSCryptoStatusPubSubType>},
    {"AssuranceStatePubSubType", make<AssuranceStatePubSubType>},
    {"PlatformDynamicsPubSubType", make<PlatformDynamicsPubSubType>},
    {"TimeSyncPubSubType", make<TimeSyncPubSubType>},
    {"SVStatusPubSubType", make<SVStatusPubSubType>},
    {"ForwardReverseStatusPubSubType", make<ForwardReverseStatusPubSubType>},
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

std::vector<std::string> pubSubTypeKeys() {
    std::vector<std::string> keys;
    for (const Row& row : kTypes) {
        keys.emplace_back(row.key);
    }
    return keys;
}

}  // namespace FACE::TSS::Topics

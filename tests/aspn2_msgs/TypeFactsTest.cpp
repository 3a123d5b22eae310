// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "FurtherSampleMessages.h"

// What the bus library asks of every type before the first message: its name and how much memory a
// message may take.
namespace {

using namespace aspn2_msgs::idl;
using eprosima::fastdds::dds::TopicDataType;

struct Facts {
    const char* name;
    size_t maxSize;  // without the encapsulation; a sequence counts as 100 elements
    bool bounded;
    bool plain;
    size_t (*maxSizeOf)(size_t alignment);
    std::unique_ptr<TopicDataType> (*make)();
};

template <typename T, typename PUBSUB>
Facts factsOf(const char* name, size_t maxSize, bool bounded, bool plain) {
    return {name,
            maxSize,
            bounded,
            plain,
            T::getMaxCdrSerializedSize,
            []() -> std::unique_ptr<TopicDataType> { return std::make_unique<PUBSUB>(); }};
}

#define FACTS(type, ...) factsOf<type, type##PubSubType>(#type, __VA_ARGS__)
const Facts kFacts[] = {
    FACTS(PositionVelocity, 384, true, true),
    FACTS(ReceiverStatus, 72, true, true),
    FACTS(ChannelStatus, 4452, false, false),
    FACTS(channel_status_obs, 44, false, false),
    FACTS(GPSTime, 136, true, true),
    FACTS(UTCTime, 112, true, true),
    FACTS(UtcDownlink, 88, true, true),
    FACTS(ChallengedEnvironment, 1652, false, false),
    FACTS(interference_type_set, 16, false, false),
    FACTS(GPSCryptoStatus, 2052, false, false),
    FACTS(key_type_set, 20, false, false),
    FACTS(GPSLineOfSight, 14456, false, false),
    FACTS(gpslos_obs, 144, false, false),
    FACTS(SVStatus, 2449, false, false),
    FACTS(sv_set, 21, false, false),
    FACTS(CommandResponse, 316, false, false),
    FACTS(EventLog, 308, false, false),
    FACTS(MaintenanceEvent, 168, true, true),
    FACTS(lru_comp_set, 8, true, true),
    FACTS(GSSIP, 152, false, false),
    FACTS(Altitude, 64, true, true),
    FACTS(AssuranceState, 48, false, false),
    FACTS(BitEntryStatus, 47, true, true),
    FACTS(BitReport, 860, false, false),
    FACTS(bit_comp_set, 8, true, true),
    FACTS(DeltaTimeAndFrequency, 72, true, true),
    FACTS(ForwardReverseStatus, 52, false, false),
    FACTS(GNSS, 4076, false, false),
    FACTS(gnss_obs, 44, false, false),
    FACTS(GNSSSubframe, 176, false, false),
    FACTS(IMU, 96, true, true),
    FACTS(MeasurementIncorporationStatus, 1252, false, false),
    FACTS(meas_type_set, 12, true, true),
    FACTS(KeldraPNT, 212, false, false),
    FACTS(NavigationMode, 48, false, false),
    FACTS(PlatformDynamics, 1296, true, true),
    FACTS(PositionVelocityAttitude, 768, true, true),
    FACTS(ThreeAxisMagnetometer, 144, true, true),
    FACTS(TimeAtTheTone, 44, true, true),
    FACTS(TimeSync, 64, true, true),
    FACTS(Velocity3D, 144, true, true),
};
#undef FACTS

TEST(TypeFacts, AreThoseOfEveryMessageAndEverySubmessage) {
    constexpr size_t kMessages = 32;
    constexpr size_t kSubmessages = 9;
    EXPECT_EQ(std::size(kFacts), kMessages + kSubmessages);
    for (const Facts& facts : kFacts) {
        const auto type = facts.make();
        EXPECT_STREQ(type->getName(), (std::string("aspn2_msgs::idl::") + facts.name).c_str());
        EXPECT_EQ(facts.maxSizeOf(0), facts.maxSize) << facts.name;
        EXPECT_EQ(type->m_typeSize, facts.maxSize + 4) << facts.name;
        EXPECT_EQ(type->is_bounded(), facts.bounded) << facts.name;
        EXPECT_EQ(type->is_plain(), facts.plain) << facts.name;
    }
}

}  // namespace

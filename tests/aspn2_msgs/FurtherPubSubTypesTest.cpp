// SPDX-License-Identifier: Apache-2.0
#include "FurtherSampleMessages.h"
#include "PubSubTypesSuite.h"

namespace pubsub {

using namespace aspn2_msgs::idl;

using FurtherTypes =
    ::testing::Types<AltitudePubSubType, AssuranceStatePubSubType, BitEntryStatusPubSubType,
                     BitReportPubSubType, bit_comp_setPubSubType, DeltaTimeAndFrequencyPubSubType,
                     ForwardReverseStatusPubSubType, GNSSPubSubType, gnss_obsPubSubType,
                     GNSSSubframePubSubType, IMUPubSubType,
                     MeasurementIncorporationStatusPubSubType, meas_type_setPubSubType,
                     KeldraPNTPubSubType, NavigationModePubSubType, PlatformDynamicsPubSubType,
                     PositionVelocityAttitudePubSubType, ThreeAxisMagnetometerPubSubType,
                     TimeAtTheTonePubSubType, TimeSyncPubSubType, Velocity3DPubSubType>;
INSTANTIATE_TYPED_TEST_SUITE_P(Further, PubSubTypes, FurtherTypes);

}  // namespace pubsub

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SampleMessages.h"
#include "aspn2_msgs/AltitudePubSubTypes.h"
#include "aspn2_msgs/AssuranceStatePubSubTypes.h"
#include "aspn2_msgs/BitEntryStatusPubSubTypes.h"
#include "aspn2_msgs/BitReportPubSubTypes.h"
#include "aspn2_msgs/DeltaTimeAndFrequencyPubSubTypes.h"
#include "aspn2_msgs/ForwardReverseStatusPubSubTypes.h"
#include "aspn2_msgs/GNSSPubSubTypes.h"
#include "aspn2_msgs/GNSSSubframePubSubTypes.h"
#include "aspn2_msgs/IMUPubSubTypes.h"
#include "aspn2_msgs/KeldraPNTPubSubTypes.h"
#include "aspn2_msgs/MeasurementIncorporationStatusPubSubTypes.h"
#include "aspn2_msgs/NavigationModePubSubTypes.h"
#include "aspn2_msgs/PlatformDynamicsPubSubTypes.h"
#include "aspn2_msgs/PositionVelocityAttitudePubSubTypes.h"
#include "aspn2_msgs/ThreeAxisMagnetometerPubSubTypes.h"
#include "aspn2_msgs/TimeAtTheTonePubSubTypes.h"
#include "aspn2_msgs/TimeSyncPubSubTypes.h"
#include "aspn2_msgs/Velocity3DPubSubTypes.h"

// The same for the types that other servers use.
namespace samples {

/// 0.5, 1.5, 2.5 ... row after row.
template <size_t N>
std::array<std::array<double, N>, N> numbered() {
    std::array<std::array<double, N>, N> matrix;
    for (size_t row = 0; row < N; ++row) {
        for (size_t column = 0; column < N; ++column) {
            matrix[row][column] = static_cast<double>(N * row + column) + 0.5;
        }
    }
    return matrix;
}

template <>
inline idl::Altitude make() {
    idl::Altitude m;
    m.header(make<idl::header>());
    m.altitude(-432.125);
    m.variance(6.25);
    return m;
}

template <>
inline idl::AssuranceState make() {
    idl::AssuranceState m;
    m.header(make<idl::header>());
    m.assurance_state(idl::ASSURANCE_STATE_2);
    return m;
}

template <>
inline idl::BitEntryStatus make() {
    idl::BitEntryStatus m;
    m.header(make<idl::header>());
    m.requestedEntryAvailable(true);
    m.testCodeOfRequestedEntry(0x91);
    m.subTestCodeOfRequestedEntry(0x1F);
    return m;
}

template <>
inline idl::bit_comp_set make() {
    idl::bit_comp_set r;
    r.server_id(39);
    r.has_communicated(true);
    r.warn_received(false);
    r.error_received(true);
    r.critical_received(false);
    return r;
}

template <>
inline idl::BitReport make() {
    idl::bit_comp_set other;
    other.server_id(-47);
    other.has_communicated(false);
    other.warn_received(true);
    other.error_received(false);
    other.critical_received(true);

    idl::BitReport m;
    m.header(make<idl::header>());
    m.bit_rollup(true);
    m.num_servers_expected(9);
    m.num_servers_available(8);
    m.bit_components({make<idl::bit_comp_set>(), other});
    return m;
}

template <>
inline idl::DeltaTimeAndFrequency make() {
    idl::DeltaTimeAndFrequency m;
    m.header(make<idl::header>());
    m.dt(-1.25e-7);
    m.variance(4e-14);
    m.freqB(1e-10);
    return m;
}

template <>
inline idl::ForwardReverseStatus make() {
    idl::ForwardReverseStatus m;
    m.header(make<idl::header>());
    m.DirectionInput(idl::DIRECTIONINPUT_1);
    m.EstimatedDirection(static_cast<idl::EstimatedDirection_enum>(400));
    return m;
}

template <>
inline idl::gnss_obs make() {
    idl::gnss_obs r;
    r.prn(21);
    r.satellite_system(idl::SATELLITE_SYSTEM_1);
    r.type(idl::TYPE_2);
    r.band(idl::BAND_3);
    r.attrib(idl::ATTRIB_4);
    r.observation(2.25e7);
    r.LLI(5);
    r.signal_strength(6);
    r.lock_count(-7);
    return r;
}

template <>
inline idl::GNSS make() {
    idl::gnss_obs other;
    other.prn(-22);
    other.satellite_system(static_cast<idl::satellite_system_enum>(301));
    other.type(static_cast<idl::type_enum>(302));
    other.band(static_cast<idl::band_enum>(303));
    other.attrib(static_cast<idl::attrib_enum>(0xFFFFFFFFU));
    other.observation(kInfinity);
    other.LLI(15);
    other.signal_strength(16);
    other.lock_count(17);

    idl::GNSS m;
    m.header(make<idl::header>());
    m.week_number(2345);
    m.seconds_of_week(345678.5);
    m.time_system(idl::TIME_SYSTEM_3);
    m.epoch_flag(-1);
    m.num_satellites(10);
    m.num_measurements(2);
    m.obs({make<idl::gnss_obs>(), other});
    return m;
}

template <>
inline idl::GNSSSubframe make() {
    idl::GNSSSubframe m;
    m.header(make<idl::header>());
    m.gnss_msg_id(-0x0102030405060708);
    m.prn(31);
    m.subframe_satellite_system(idl::SUBFRAME_SATELLITE_SYSTEM_6);
    m.freq_slot_id(-7);
    m.num_bytes(3);
    m.data_vector({0x8B, 0x00, 0xFE});
    return m;
}

template <>
inline idl::IMU make() {
    idl::IMU m;
    m.header(make<idl::header>());
    m.delta_v({0.01, -0.02, 9.81});
    m.delta_theta({1e-5, -2e-5, 3e-5});
    return m;
}

template <>
inline idl::meas_type_set make() {
    idl::meas_type_set r;
    r.meas_set_id(3);
    r.meas_avail(12);
    r.meas_used(11);
    return r;
}

template <>
inline idl::MeasurementIncorporationStatus make() {
    idl::meas_type_set other;
    other.meas_set_id(-4);
    other.meas_avail(14);
    other.meas_used(13);

    idl::MeasurementIncorporationStatus m;
    m.header(make<idl::header>());
    m.num_measurement_types(2);
    m.meas_types({make<idl::meas_type_set>(), other});
    return m;
}

template <>
inline idl::KeldraPNT make() {
    idl::KeldraPNT m;
    m.header(make<idl::header>());
    m.GPS_Time(345678.25);
    m.UTC_Time(345660.25);
    m.ECEF_Pos_X(4.5e6);
    m.ECEF_Pos_Y(-5.5e5);
    m.ECEF_Pos_Z(4.25e6);
    m.ECEF_Vel_X(1.5);
    m.ECEF_Vel_Y(-2.5);
    m.ECEF_Vel_Z(3.5);
    m.Roll(0.25);
    m.Pitch(-0.125);
    m.Heading(3.0625);
    m.Horz_PosError(4.5);
    m.Vert_PosError(5.5);
    m.Horz_Vel_Error(6.5);
    m.Vert_VelError(7.5);
    m.Time_Error(8.5);
    m.Roll_Error(9.5);
    m.Pitch_Error(10.5);
    m.Heading_Error(kInfinity);
    m.GPS_Week(2345);
    m.KD_PNT_Solution_Assurance(idl::KD_PNT_SOLUTION_ASSURANCE_7);
    return m;
}

template <>
inline idl::NavigationMode make() {
    idl::NavigationMode m;
    m.header(make<idl::header>());
    m.navigation_mode(static_cast<idl::navigation_mode_enum>(500));
    return m;
}

template <>
inline idl::PlatformDynamics make() {
    idl::PlatformDynamics m;
    m.header(make<idl::header>());
    m.velocity({1.5, 2.5, 3.5});
    m.acceleration({-1.5, -2.5, -3.5});
    m.attitude({4.5, 5.5, 6.5});
    m.attitude_rate({-4.5, -5.5, -6.5});
    m.covariance(numbered<12>());
    return m;
}

template <>
inline idl::PositionVelocityAttitude make() {
    idl::PositionVelocityAttitude m;
    m.header(make<idl::header>());
    m.position(make<idl::PositionVelocity>().position());
    m.velocity({1.5, 2.5, 3.5});
    m.attitude({4.5, 5.5, 6.5});
    m.covariance(numbered<9>());
    return m;
}

template <>
inline idl::ThreeAxisMagnetometer make() {
    idl::ThreeAxisMagnetometer m;
    m.header(make<idl::header>());
    m.field({2e-5, -1e-6, 4.5e-5});
    m.covariance(numbered<3>());
    return m;
}

template <>
inline idl::TimeAtTheTone make() {
    idl::TimeAtTheTone m;
    m.header(make<idl::header>());
    return m;
}

template <>
inline idl::TimeSync make() {
    idl::TimeSync m;
    m.header(make<idl::header>());
    m.SyncCount(0x0A0B0C0D0E0F1011);
    m.Time_NS(-123456789012);
    return m;
}

template <>
inline idl::Velocity3D make() {
    idl::Velocity3D m;
    m.header(make<idl::header>());
    m.x(1.25);
    m.y(-2.25);
    m.z(3.25);
    m.covariance(numbered<3>());
    return m;
}

}  // namespace samples

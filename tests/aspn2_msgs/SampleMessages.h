// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

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

// One message of each type with values that tell its fields apart, and with enumeration values that
// have no enumerator. golden/make_golden.py has the same values and works out their bytes.
namespace samples {

namespace idl = aspn2_msgs::idl;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <typename T>
T make();

template <>
inline idl::header make() {
    idl::header h;
    h.seq_num(0x0102030405060708);
    h.timestamp_arrival().sec(0x1112131415161718);
    h.timestamp_arrival().nsec(0x21222324);
    h.timestamp_arrival().time_code(100);
    h.timestamp_valid().sec(-2);
    h.timestamp_valid().nsec(0x41424344);
    h.timestamp_valid().time_code(101);
    h.device_id(0x01270305);
    return h;
}

template <>
inline idl::PositionVelocity make() {
    idl::PositionVelocity m;
    m.header(make<idl::header>());
    m.position().latitude(0.75);
    m.position().longitude(-1.5);
    m.position().altitude(1234.5);
    m.velocity({10.5, -20.25, 0.125});
    for (size_t row = 0; row < 6; ++row) {
        for (size_t column = 0; column < 6; ++column) {
            m.covariance()[row][column] =
                row == column ? kInfinity : static_cast<double>(6 * row + column);
        }
    }
    return m;
}

template <>
inline idl::ReceiverStatus make() {
    idl::ReceiverStatus m;
    m.header(make<idl::header>());
    m.rcvr_fail(true);
    m.num_satellites_avail(11);
    m.num_satellites_used(9);
    m.pdop(1.75);
    m.tdop(0.875);
    return m;
}

template <>
inline idl::channel_status_obs make() {
    idl::channel_status_obs r;
    r.prn(7);
    r.channel(1);
    r.rinex3_satellite_system(idl::RINEX3_SATELLITE_SYSTEM_0);
    r.rinex3_band(idl::RINEX3_BAND_1);
    r.rinex3_attribute(idl::RINEX3_ATTRIBUTE_15);
    r.gnss_tracking_status(idl::GNSS_TRACKING_STATUS_5);
    r.carrier_to_noise(45.5F);
    r.jammer_to_signal(-3.25F);
    r.used_in_solution(true);
    r.gnss_corrections_used(idl::GNSS_CORRECTIONS_USED_8);
    r.assurance_level(idl::ASSURANCE_LEVEL_2);
    return r;
}

template <>
inline idl::ChannelStatus make() {
    idl::channel_status_obs unlisted;
    unlisted.prn(-32);
    unlisted.channel(2);
    unlisted.rinex3_satellite_system(static_cast<idl::rinex3_satellite_system_enum>(200));
    unlisted.rinex3_band(static_cast<idl::rinex3_band_enum>(201));
    unlisted.rinex3_attribute(static_cast<idl::rinex3_attribute_enum>(202));
    unlisted.gnss_tracking_status(static_cast<idl::gnss_tracking_status_enum>(203));
    unlisted.carrier_to_noise(0.125F);
    unlisted.jammer_to_signal(std::numeric_limits<float>::infinity());
    unlisted.used_in_solution(false);
    unlisted.gnss_corrections_used(static_cast<idl::gnss_corrections_used_enum>(204));
    unlisted.assurance_level(static_cast<idl::assurance_level_enum>(0xFFFFFFFEU));

    idl::ChannelStatus m;
    m.header(make<idl::header>());
    m.num_channels(2);
    m.channels({make<idl::channel_status_obs>(), unlisted});
    return m;
}

template <>
inline idl::GPSTime make() {
    idl::GPSTime m;
    m.header(make<idl::header>());
    m.rcvr_set_time_sec(86399);
    m.rcvr_set_time_nsec(999999999.5);
    m.rcvr_time_bias(1e-6);
    m.rcvr_time_bias_error(2e-9);
    m.rcvr_time_bias_error_rate(-3e-12);
    m.gps_tow_sec(604799);
    m.gps_tow_nsec(123456789.25);
    m.gps_week(2345);
    m.covariance({{{1.5, 2.5}, {3.5, 4.5}}});
    return m;
}

template <>
inline idl::UTCTime make() {
    idl::UTCTime m;
    m.header(make<idl::header>());
    m.gps_tow_sec(604799);
    m.gps_tow_nsec(123456789.25);
    m.gps_week(2345);
    m.utc_tod_sec(86400);
    m.utc_tod_nsec(5e8);
    m.a1(-4.5e-15);
    m.covariance({{{kInfinity, 0.0}, {-0.0, kInfinity}}});
    return m;
}

template <>
inline idl::UtcDownlink make() {
    idl::UtcDownlink m;
    m.header(make<idl::header>());
    m.a0(1.5e-9);
    m.a1(-2.5e-15);
    m.tot(405504);
    m.WNt(2346);
    m.delta_t_ls(18);
    m.wn_lsf(2347);
    m.dn(7);
    m.delta_t_lsf(-19);
    return m;
}

template <>
inline idl::interference_type_set make() {
    idl::interference_type_set r;
    r.interference_band(idl::INTERFERENCE_BAND_7);
    r.interference_signal(idl::INTERFERENCE_SIGNAL_3);
    r.interference_type(idl::INTERFERENCE_TYPE_1);
    r.interference_value(-1);
    return r;
}

template <>
inline idl::ChallengedEnvironment make() {
    idl::interference_type_set unlisted;
    unlisted.interference_band(idl::INTERFERENCE_BAND_7);
    unlisted.interference_signal(idl::INTERFERENCE_SIGNAL_15);
    unlisted.interference_type(static_cast<idl::interference_type_enum>(0x80000000U));
    unlisted.interference_value(1);

    idl::ChallengedEnvironment m;
    m.header(make<idl::header>());
    m.num_interference_types(2);
    m.interference_types({make<idl::interference_type_set>(), unlisted});
    return m;
}

template <>
inline idl::key_type_set make() {
    idl::key_type_set r;
    r.key_type(idl::KEY_TYPE_9);
    r.remaining_key_time(86400);
    r.key_status(idl::KEY_STATUS_5);
    r.key_load_status(idl::KEY_LOAD_STATUS_2);
    r.key_zeroization_status(idl::KEY_ZEROIZATION_STATUS_3);
    return r;
}

template <>
inline idl::GPSCryptoStatus make() {
    idl::key_type_set unlisted;
    unlisted.key_type(static_cast<idl::key_type_enum>(100));
    unlisted.remaining_key_time(-1);
    unlisted.key_status(static_cast<idl::key_status_enum>(101));
    unlisted.key_load_status(static_cast<idl::key_load_status_enum>(102));
    unlisted.key_zeroization_status(static_cast<idl::key_zeroization_status_enum>(103));

    idl::GPSCryptoStatus m;
    m.header(make<idl::header>());
    m.num_key_types(2);
    m.key_types({make<idl::key_type_set>(), unlisted});
    return m;
}

template <>
inline idl::gpslos_obs make() {
    idl::gpslos_obs r;
    r.prn(12);
    r.channel_state(idl::CHANNEL_STATE_5);
    r.channel_frequency(idl::CHANNEL_FREQUENCY_1);
    r.channel_code(idl::CHANNEL_CODE_4);
    r.ere(2.5);
    r.c_n0(44);
    r.assurance(idl::ASSURANCE_1);
    r.pseudorange_measurement_valid(true);
    r.pseudorange_measurement(2.0e7);
    r.pseudorange_measurement_variance(0.5);
    r.deltarange_measurement_valid(false);
    r.deltarange_measurement(-123.75);
    r.deltarange_measurement_variance(0.0625);
    r.deltarange_interval(1.0);
    r.sv_position_start({1.5, 2.5, 3.5});
    r.sv_position_stop({-1.5, -2.5, -3.5});
    r.tropo_correction_applied(true);
    r.iono_correction_applied(false);
    r.iono_correction_source(idl::IONO_CORRECTION_SOURCE_2);
    return r;
}

template <>
inline idl::GPSLineOfSight make() {
    idl::gpslos_obs other;
    other.prn(13);
    other.channel_state(idl::CHANNEL_STATE_15);
    other.channel_frequency(idl::CHANNEL_FREQUENCY_2);
    other.channel_code(idl::CHANNEL_CODE_3);
    other.ere(4.85);
    other.c_n0(-1);
    other.assurance(static_cast<idl::assurance_enum>(77));
    other.pseudorange_measurement_valid(false);
    other.pseudorange_measurement(2.1e7);
    other.pseudorange_measurement_variance(1.5);
    other.deltarange_measurement_valid(true);
    other.deltarange_measurement(0.1);
    other.deltarange_measurement_variance(1e-9);
    other.deltarange_interval(0.02);
    other.sv_position_start({1e6, 2e6, 3e6});
    other.sv_position_stop({4e6, 5e6, 6e6});
    other.tropo_correction_applied(false);
    other.iono_correction_applied(true);
    other.iono_correction_source(idl::IONO_CORRECTION_SOURCE_0);

    idl::GPSLineOfSight m;
    m.header(make<idl::header>());
    m.num_measurements(2);
    m.obs({make<idl::gpslos_obs>(), other});
    return m;
}

template <>
inline idl::sv_set make() {
    idl::sv_set r;
    r.svid(31);
    r.rinex3_gnss_enum(idl::RINEX3_GNSS_ENUM_0);
    r.healthy(true);
    r.azimuth(359);
    r.elevation(-5);
    r.rising(false);
    return r;
}

template <>
inline idl::SVStatus make() {
    idl::sv_set unlisted;
    unlisted.svid(32);
    unlisted.rinex3_gnss_enum(static_cast<idl::rinex3_gnss_enum_enum>(99));
    unlisted.healthy(false);
    unlisted.azimuth(1);
    unlisted.elevation(90);
    unlisted.rising(true);

    idl::SVStatus m;
    m.header(make<idl::header>());
    m.num_svs(2);
    m.svs({make<idl::sv_set>(), unlisted});
    return m;
}

template <>
inline idl::CommandResponse make() {
    idl::CommandResponse m;
    m.header(make<idl::header>());
    m.commanded_device_id(0x02110200);
    m.command_identifier(-17);
    m.command_response_type(idl::COMMAND_RESPONSE_TYPE_1);
    m.command_response("REQUEST_CBIT_PASS");
    return m;
}

template <>
inline idl::EventLog make() {
    idl::EventLog m;
    m.header(make<idl::header>());
    m.event_log_type(idl::EVENT_LOG_TYPE_3);
    m.eventlog("Rovan[12]:text");
    return m;
}

template <>
inline idl::lru_comp_set make() {
    idl::lru_comp_set r;
    r.lru_id(39);
    r.component_id(-7);
    return r;
}

template <>
inline idl::MaintenanceEvent make() {
    const auto set = [](int32_t lru, int32_t component) {
        idl::lru_comp_set r;
        r.lru_id(lru);
        r.component_id(component);
        return r;
    };
    idl::MaintenanceEvent m;
    m.header(make<idl::header>());
    m.fault_sources({set(39, -7), set(1, 2), set(3, 4), set(0, 0)});
    m.criticality_id(5);
    m.category_id(6);
    m.location_id(7);
    m.outcome_id(8);
    m.repeat_in_seconds(3600);
    std::memcpy(m.identity().data(), "GPS\0leftover\0\0\0\xff", 16);
    std::memcpy(m.description().data(), "receiver failed", 15);
    m.description()[55] = 'z';
    return m;
}

template <>
inline idl::GSSIP make() {
    idl::GSSIP m;
    m.header(make<idl::header>());
    m.num_bytes(5);
    m.data({0x81, 0x00, 0xFF, 0x7F, 0x0A});
    return m;
}

}  // namespace samples

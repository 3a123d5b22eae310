// SPDX-License-Identifier: Apache-2.0
#include <fastcdr/Cdr.h>
#include <fastcdr/FastBuffer.h>
#include <gtest/gtest.h>

#include "Shape.h"
#include "aspn2_msgs/Records.h"

// The shape of the generated classes of this server's types, checked by the compiler: every field
// with its type and its overloads.
namespace {

namespace idl = aspn2_msgs::idl;

PLAIN(timestamp, sec, int64_t);
PLAIN(timestamp, nsec, int32_t);
PLAIN(timestamp, time_code, int32_t);
PLAIN(header, seq_num, int64_t);
RECORD(header, timestamp_arrival, idl::timestamp);
RECORD(header, timestamp_valid, idl::timestamp);
PLAIN(header, device_id, int32_t);
PLAIN(geodeticposition3d_type, latitude, double);
PLAIN(geodeticposition3d_type, longitude, double);
PLAIN(geodeticposition3d_type, altitude, double);
RECORD(PositionVelocity, header, idl::header);
RECORD(PositionVelocity, position, idl::geodeticposition3d_type);
RECORD(PositionVelocity, velocity, std::array<double, 3>);
RECORD(PositionVelocity, covariance, std::array<std::array<double, 6>, 6>);
RECORD(ReceiverStatus, header, idl::header);
PLAIN(ReceiverStatus, rcvr_fail, bool);
PLAIN(ReceiverStatus, num_satellites_avail, int32_t);
PLAIN(ReceiverStatus, num_satellites_used, int32_t);
PLAIN(ReceiverStatus, pdop, double);
PLAIN(ReceiverStatus, tdop, double);
RECORD(ChannelStatus, header, idl::header);
PLAIN(ChannelStatus, num_channels, int32_t);
RECORD(ChannelStatus, channels, std::vector<idl::channel_status_obs>);
PLAIN(channel_status_obs, prn, int32_t);
PLAIN(channel_status_obs, channel, int32_t);
PLAIN(channel_status_obs, rinex3_satellite_system, idl::rinex3_satellite_system_enum);
PLAIN(channel_status_obs, rinex3_band, idl::rinex3_band_enum);
PLAIN(channel_status_obs, rinex3_attribute, idl::rinex3_attribute_enum);
PLAIN(channel_status_obs, gnss_tracking_status, idl::gnss_tracking_status_enum);
PLAIN(channel_status_obs, carrier_to_noise, float);
PLAIN(channel_status_obs, jammer_to_signal, float);
PLAIN(channel_status_obs, used_in_solution, bool);
PLAIN(channel_status_obs, gnss_corrections_used, idl::gnss_corrections_used_enum);
PLAIN(channel_status_obs, assurance_level, idl::assurance_level_enum);
RECORD(GPSTime, header, idl::header);
PLAIN(GPSTime, rcvr_set_time_sec, int32_t);
PLAIN(GPSTime, rcvr_set_time_nsec, double);
PLAIN(GPSTime, rcvr_time_bias, double);
PLAIN(GPSTime, rcvr_time_bias_error, double);
PLAIN(GPSTime, rcvr_time_bias_error_rate, double);
PLAIN(GPSTime, gps_tow_sec, int32_t);
PLAIN(GPSTime, gps_tow_nsec, double);
PLAIN(GPSTime, gps_week, int32_t);
RECORD(GPSTime, covariance, std::array<std::array<double, 2>, 2>);
RECORD(UTCTime, header, idl::header);
PLAIN(UTCTime, gps_tow_sec, int32_t);
PLAIN(UTCTime, gps_tow_nsec, double);
PLAIN(UTCTime, gps_week, int32_t);
PLAIN(UTCTime, utc_tod_sec, int32_t);
PLAIN(UTCTime, utc_tod_nsec, double);
PLAIN(UTCTime, a1, double);
RECORD(UTCTime, covariance, std::array<std::array<double, 2>, 2>);
RECORD(UtcDownlink, header, idl::header);
PLAIN(UtcDownlink, a0, double);
PLAIN(UtcDownlink, a1, double);
PLAIN(UtcDownlink, tot, int32_t);
PLAIN(UtcDownlink, WNt, int32_t);
PLAIN(UtcDownlink, delta_t_ls, int32_t);
PLAIN(UtcDownlink, wn_lsf, int32_t);
PLAIN(UtcDownlink, dn, int32_t);
PLAIN(UtcDownlink, delta_t_lsf, int32_t);
RECORD(ChallengedEnvironment, header, idl::header);
PLAIN(ChallengedEnvironment, num_interference_types, int32_t);
RECORD(ChallengedEnvironment, interference_types, std::vector<idl::interference_type_set>);
PLAIN(interference_type_set, interference_band, idl::interference_band_enum);
PLAIN(interference_type_set, interference_signal, idl::interference_signal_enum);
PLAIN(interference_type_set, interference_type, idl::interference_type_enum);
PLAIN(interference_type_set, interference_value, int32_t);
RECORD(GPSCryptoStatus, header, idl::header);
PLAIN(GPSCryptoStatus, num_key_types, int32_t);
RECORD(GPSCryptoStatus, key_types, std::vector<idl::key_type_set>);
PLAIN(key_type_set, key_type, idl::key_type_enum);
PLAIN(key_type_set, remaining_key_time, int32_t);
PLAIN(key_type_set, key_status, idl::key_status_enum);
PLAIN(key_type_set, key_load_status, idl::key_load_status_enum);
PLAIN(key_type_set, key_zeroization_status, idl::key_zeroization_status_enum);
RECORD(GPSLineOfSight, header, idl::header);
PLAIN(GPSLineOfSight, num_measurements, int32_t);
RECORD(GPSLineOfSight, obs, std::vector<idl::gpslos_obs>);
PLAIN(gpslos_obs, prn, int32_t);
PLAIN(gpslos_obs, channel_state, idl::channel_state_enum);
PLAIN(gpslos_obs, channel_frequency, idl::channel_frequency_enum);
PLAIN(gpslos_obs, channel_code, idl::channel_code_enum);
PLAIN(gpslos_obs, ere, double);
PLAIN(gpslos_obs, c_n0, int32_t);
PLAIN(gpslos_obs, assurance, idl::assurance_enum);
PLAIN(gpslos_obs, pseudorange_measurement_valid, bool);
PLAIN(gpslos_obs, pseudorange_measurement, double);
PLAIN(gpslos_obs, pseudorange_measurement_variance, double);
PLAIN(gpslos_obs, deltarange_measurement_valid, bool);
PLAIN(gpslos_obs, deltarange_measurement, double);
PLAIN(gpslos_obs, deltarange_measurement_variance, double);
PLAIN(gpslos_obs, deltarange_interval, double);
RECORD(gpslos_obs, sv_position_start, std::array<double, 3>);
RECORD(gpslos_obs, sv_position_stop, std::array<double, 3>);
PLAIN(gpslos_obs, tropo_correction_applied, bool);
PLAIN(gpslos_obs, iono_correction_applied, bool);
PLAIN(gpslos_obs, iono_correction_source, idl::iono_correction_source_enum);
RECORD(SVStatus, header, idl::header);
PLAIN(SVStatus, num_svs, int32_t);
RECORD(SVStatus, svs, std::vector<idl::sv_set>);
PLAIN(sv_set, svid, int32_t);
PLAIN(sv_set, rinex3_gnss_enum, idl::rinex3_gnss_enum_enum);
PLAIN(sv_set, healthy, bool);
PLAIN(sv_set, azimuth, int32_t);
PLAIN(sv_set, elevation, int32_t);
PLAIN(sv_set, rising, bool);
RECORD(CommandResponse, header, idl::header);
PLAIN(CommandResponse, commanded_device_id, int32_t);
PLAIN(CommandResponse, command_identifier, int32_t);
PLAIN(CommandResponse, command_response_type, idl::command_response_type_enum);
RECORD(CommandResponse, command_response, std::string);
RECORD(EventLog, header, idl::header);
PLAIN(EventLog, event_log_type, idl::event_log_type_enum);
RECORD(EventLog, eventlog, std::string);
RECORD(MaintenanceEvent, header, idl::header);
RECORD(MaintenanceEvent, fault_sources, std::array<idl::lru_comp_set, 4>);
PLAIN(MaintenanceEvent, criticality_id, int32_t);
PLAIN(MaintenanceEvent, category_id, int32_t);
PLAIN(MaintenanceEvent, location_id, int32_t);
PLAIN(MaintenanceEvent, outcome_id, int32_t);
PLAIN(MaintenanceEvent, repeat_in_seconds, int32_t);
RECORD(MaintenanceEvent, identity, std::array<char, 16>);
RECORD(MaintenanceEvent, description, std::array<char, 56>);
PLAIN(lru_comp_set, lru_id, int32_t);
PLAIN(lru_comp_set, component_id, int32_t);
RECORD(GSSIP, header, idl::header);
PLAIN(GSSIP, num_bytes, int32_t);
RECORD(GSSIP, data, std::vector<uint8_t>);

static_assert(
    shape::areUnsigned32<
        idl::assurance_enum, idl::assurance_level_enum, idl::channel_code_enum,
        idl::channel_frequency_enum, idl::channel_state_enum, idl::command_response_type_enum,
        idl::event_log_type_enum, idl::gnss_corrections_used_enum, idl::gnss_tracking_status_enum,
        idl::interference_band_enum, idl::interference_signal_enum, idl::interference_type_enum,
        idl::iono_correction_source_enum, idl::key_load_status_enum, idl::key_status_enum,
        idl::key_type_enum, idl::key_zeroization_status_enum, idl::rinex3_attribute_enum,
        idl::rinex3_band_enum, idl::rinex3_gnss_enum_enum, idl::rinex3_satellite_system_enum>);

TEST(Header, IsEightSixteenSixteenAndFourBytesWithoutPadding) {
    EXPECT_EQ(idl::timestamp::getMaxCdrSerializedSize(), 16u);
    EXPECT_EQ(idl::header::getMaxCdrSerializedSize(), 44u);
    EXPECT_EQ(idl::geodeticposition3d_type::getMaxCdrSerializedSize(), 24u);
}

TEST(Header, HasTheDeviceIdRightBehindTheStamps) {
    using eprosima::fastcdr::Cdr;
    idl::header header;
    header.seq_num(INT64_MIN);
    header.device_id(0x01270200);
    std::array<char, 44> bytes{};
    eprosima::fastcdr::FastBuffer buffer(bytes.data(), bytes.size());
    Cdr cdr(buffer, Cdr::BIG_ENDIANNESS, Cdr::DDS_CDR);

    header.serialize(cdr);

    EXPECT_EQ(cdr.getSerializedDataLength(), 44u);
    EXPECT_EQ(bytes[0], static_cast<char>(0x80));
    EXPECT_EQ(std::string(bytes.data() + 40, 4), std::string("\x01\x27\x02\x00", 4));
}

TEST(Header, HasNoKey) {
    EXPECT_FALSE(idl::timestamp::isKeyDefined());
    EXPECT_FALSE(idl::header::isKeyDefined());
    EXPECT_FALSE(idl::geodeticposition3d_type::isKeyDefined());
}

}  // namespace

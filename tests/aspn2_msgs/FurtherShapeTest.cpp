// SPDX-License-Identifier: Apache-2.0
#include "Shape.h"
#include "aspn2_msgs/Records.h"

// The shape of the generated classes of the types that other servers use.
namespace idl = aspn2_msgs::idl;

RECORD(Altitude, header, idl::header);
PLAIN(Altitude, altitude, double);
PLAIN(Altitude, variance, double);
RECORD(AssuranceState, header, idl::header);
PLAIN(AssuranceState, assurance_state, idl::assurance_state_enum);
RECORD(BitEntryStatus, header, idl::header);
PLAIN(BitEntryStatus, requestedEntryAvailable, bool);
PLAIN(BitEntryStatus, testCodeOfRequestedEntry, uint8_t);
PLAIN(BitEntryStatus, subTestCodeOfRequestedEntry, uint8_t);
RECORD(BitReport, header, idl::header);
PLAIN(BitReport, bit_rollup, bool);
PLAIN(BitReport, num_servers_expected, int32_t);
PLAIN(BitReport, num_servers_available, int32_t);
RECORD(BitReport, bit_components, std::vector<idl::bit_comp_set>);
PLAIN(bit_comp_set, server_id, int32_t);
PLAIN(bit_comp_set, has_communicated, bool);
PLAIN(bit_comp_set, warn_received, bool);
PLAIN(bit_comp_set, error_received, bool);
PLAIN(bit_comp_set, critical_received, bool);
RECORD(DeltaTimeAndFrequency, header, idl::header);
PLAIN(DeltaTimeAndFrequency, dt, double);
PLAIN(DeltaTimeAndFrequency, variance, double);
PLAIN(DeltaTimeAndFrequency, freqB, double);
RECORD(ForwardReverseStatus, header, idl::header);
PLAIN(ForwardReverseStatus, DirectionInput, idl::DirectionInput_enum);
PLAIN(ForwardReverseStatus, EstimatedDirection, idl::EstimatedDirection_enum);
RECORD(GNSS, header, idl::header);
PLAIN(GNSS, week_number, int32_t);
PLAIN(GNSS, seconds_of_week, double);
PLAIN(GNSS, time_system, idl::time_system_enum);
PLAIN(GNSS, epoch_flag, int32_t);
PLAIN(GNSS, num_satellites, int32_t);
PLAIN(GNSS, num_measurements, int32_t);
RECORD(GNSS, obs, std::vector<idl::gnss_obs>);
PLAIN(gnss_obs, prn, int32_t);
PLAIN(gnss_obs, satellite_system, idl::satellite_system_enum);
PLAIN(gnss_obs, type, idl::type_enum);
PLAIN(gnss_obs, band, idl::band_enum);
PLAIN(gnss_obs, attrib, idl::attrib_enum);
PLAIN(gnss_obs, observation, double);
PLAIN(gnss_obs, LLI, int32_t);
PLAIN(gnss_obs, signal_strength, int32_t);
PLAIN(gnss_obs, lock_count, int32_t);
RECORD(GNSSSubframe, header, idl::header);
PLAIN(GNSSSubframe, gnss_msg_id, int64_t);
PLAIN(GNSSSubframe, prn, int32_t);
PLAIN(GNSSSubframe, subframe_satellite_system, idl::subframe_satellite_system_enum);
PLAIN(GNSSSubframe, freq_slot_id, int32_t);
PLAIN(GNSSSubframe, num_bytes, int32_t);
RECORD(GNSSSubframe, data_vector, std::vector<uint8_t>);
RECORD(IMU, header, idl::header);
RECORD(IMU, delta_v, std::array<double, 3>);
RECORD(IMU, delta_theta, std::array<double, 3>);
RECORD(MeasurementIncorporationStatus, header, idl::header);
PLAIN(MeasurementIncorporationStatus, num_measurement_types, int32_t);
RECORD(MeasurementIncorporationStatus, meas_types, std::vector<idl::meas_type_set>);
PLAIN(meas_type_set, meas_set_id, int32_t);
PLAIN(meas_type_set, meas_avail, int32_t);
PLAIN(meas_type_set, meas_used, int32_t);
RECORD(KeldraPNT, header, idl::header);
PLAIN(KeldraPNT, GPS_Time, double);
PLAIN(KeldraPNT, UTC_Time, double);
PLAIN(KeldraPNT, ECEF_Pos_X, double);
PLAIN(KeldraPNT, ECEF_Pos_Y, double);
PLAIN(KeldraPNT, ECEF_Pos_Z, double);
PLAIN(KeldraPNT, ECEF_Vel_X, double);
PLAIN(KeldraPNT, ECEF_Vel_Y, double);
PLAIN(KeldraPNT, ECEF_Vel_Z, double);
PLAIN(KeldraPNT, Roll, double);
PLAIN(KeldraPNT, Pitch, double);
PLAIN(KeldraPNT, Heading, double);
PLAIN(KeldraPNT, Horz_PosError, double);
PLAIN(KeldraPNT, Vert_PosError, double);
PLAIN(KeldraPNT, Horz_Vel_Error, double);
PLAIN(KeldraPNT, Vert_VelError, double);
PLAIN(KeldraPNT, Time_Error, double);
PLAIN(KeldraPNT, Roll_Error, double);
PLAIN(KeldraPNT, Pitch_Error, double);
PLAIN(KeldraPNT, Heading_Error, double);
PLAIN(KeldraPNT, GPS_Week, int64_t);
PLAIN(KeldraPNT, KD_PNT_Solution_Assurance, idl::KD_PNT_Solution_Assurance_enum);
RECORD(NavigationMode, header, idl::header);
PLAIN(NavigationMode, navigation_mode, idl::navigation_mode_enum);
RECORD(PlatformDynamics, header, idl::header);
RECORD(PlatformDynamics, velocity, std::array<double, 3>);
RECORD(PlatformDynamics, acceleration, std::array<double, 3>);
RECORD(PlatformDynamics, attitude, std::array<double, 3>);
RECORD(PlatformDynamics, attitude_rate, std::array<double, 3>);
RECORD(PlatformDynamics, covariance, std::array<std::array<double, 12>, 12>);
RECORD(PositionVelocityAttitude, header, idl::header);
RECORD(PositionVelocityAttitude, position, idl::geodeticposition3d_type);
RECORD(PositionVelocityAttitude, velocity, std::array<double, 3>);
RECORD(PositionVelocityAttitude, attitude, std::array<double, 3>);
RECORD(PositionVelocityAttitude, covariance, std::array<std::array<double, 9>, 9>);
RECORD(ThreeAxisMagnetometer, header, idl::header);
RECORD(ThreeAxisMagnetometer, field, std::array<double, 3>);
RECORD(ThreeAxisMagnetometer, covariance, std::array<std::array<double, 3>, 3>);
RECORD(TimeAtTheTone, header, idl::header);
RECORD(TimeSync, header, idl::header);
PLAIN(TimeSync, SyncCount, int64_t);
PLAIN(TimeSync, Time_NS, int64_t);
RECORD(Velocity3D, header, idl::header);
PLAIN(Velocity3D, x, double);
PLAIN(Velocity3D, y, double);
PLAIN(Velocity3D, z, double);
RECORD(Velocity3D, covariance, std::array<std::array<double, 3>, 3>);

static_assert(shape::areUnsigned32<idl::assurance_state_enum, idl::attrib_enum, idl::band_enum,
                                   idl::DirectionInput_enum, idl::EstimatedDirection_enum,
                                   idl::KD_PNT_Solution_Assurance_enum, idl::navigation_mode_enum,
                                   idl::satellite_system_enum, idl::subframe_satellite_system_enum,
                                   idl::time_system_enum, idl::type_enum>);

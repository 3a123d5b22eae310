// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "aspn2_msgs/ChallengedEnvironment.h"
#include "aspn2_msgs/ChannelStatus.h"
#include "aspn2_msgs/CommandResponse.h"
#include "aspn2_msgs/EventLog.h"
#include "aspn2_msgs/GPSCryptoStatus.h"
#include "aspn2_msgs/GPSLineOfSight.h"
#include "aspn2_msgs/GPSTime.h"
#include "aspn2_msgs/GSSIP.h"
#include "aspn2_msgs/MaintenanceEvent.h"
#include "aspn2_msgs/PositionVelocity.h"
#include "aspn2_msgs/ReceiverStatus.h"
#include "aspn2_msgs/SVStatus.h"
#include "aspn2_msgs/UTCTime.h"
#include "aspn2_msgs/UtcDownlink.h"

// The fields of every record of the bus, in the order of the wire. Whatever shows, stores or fills
// a message is a visitor of this table: Fields<T>::each(record, visit) calls visit(name, field) for
// each field, with the field as the record's getter gives it, so that a record that is not const
// can be filled. A further type is a further block here and a line in Message.cpp.
namespace Bus {

namespace idl = aspn2_msgs::idl;

template <typename T>
struct Fields {
    static constexpr bool known = false;
};

/// True for the records, false for numbers, texts, arrays and sequences.
template <typename T>
constexpr bool isRecord = Fields<T>::known;

#define BUS_RECORD(type)                                 \
    template <>                                          \
    struct Fields<idl::type> {                           \
        static constexpr bool known = true;              \
        template <typename RECORD, typename VISIT>       \
        static void each(RECORD& record, VISIT&& visit); \
    };                                                   \
    template <typename RECORD, typename VISIT>           \
    void Fields<idl::type>::each(RECORD& record, VISIT&& visit)
#define BUS_FIELD(name) visit(#name, record.name())

BUS_RECORD(timestamp) {
    BUS_FIELD(sec);
    BUS_FIELD(nsec);
    BUS_FIELD(time_code);
}

BUS_RECORD(header) {
    BUS_FIELD(seq_num);
    BUS_FIELD(timestamp_arrival);
    BUS_FIELD(timestamp_valid);
    BUS_FIELD(device_id);
}

BUS_RECORD(geodeticposition3d_type) {
    BUS_FIELD(latitude);
    BUS_FIELD(longitude);
    BUS_FIELD(altitude);
}

BUS_RECORD(PositionVelocity) {
    BUS_FIELD(header);
    BUS_FIELD(position);
    BUS_FIELD(velocity);
    BUS_FIELD(covariance);
}

BUS_RECORD(ReceiverStatus) {
    BUS_FIELD(header);
    BUS_FIELD(rcvr_fail);
    BUS_FIELD(num_satellites_avail);
    BUS_FIELD(num_satellites_used);
    BUS_FIELD(pdop);
    BUS_FIELD(tdop);
}

BUS_RECORD(channel_status_obs) {
    BUS_FIELD(prn);
    BUS_FIELD(channel);
    BUS_FIELD(rinex3_satellite_system);
    BUS_FIELD(rinex3_band);
    BUS_FIELD(rinex3_attribute);
    BUS_FIELD(gnss_tracking_status);
    BUS_FIELD(carrier_to_noise);
    BUS_FIELD(jammer_to_signal);
    BUS_FIELD(used_in_solution);
    BUS_FIELD(gnss_corrections_used);
    BUS_FIELD(assurance_level);
}

BUS_RECORD(ChannelStatus) {
    BUS_FIELD(header);
    BUS_FIELD(num_channels);
    BUS_FIELD(channels);
}

BUS_RECORD(GPSTime) {
    BUS_FIELD(header);
    BUS_FIELD(rcvr_set_time_sec);
    BUS_FIELD(rcvr_set_time_nsec);
    BUS_FIELD(rcvr_time_bias);
    BUS_FIELD(rcvr_time_bias_error);
    BUS_FIELD(rcvr_time_bias_error_rate);
    BUS_FIELD(gps_tow_sec);
    BUS_FIELD(gps_tow_nsec);
    BUS_FIELD(gps_week);
    BUS_FIELD(covariance);
}

BUS_RECORD(UTCTime) {
    BUS_FIELD(header);
    BUS_FIELD(gps_tow_sec);
    BUS_FIELD(gps_tow_nsec);
    BUS_FIELD(gps_week);
    BUS_FIELD(utc_tod_sec);
    BUS_FIELD(utc_tod_nsec);
    BUS_FIELD(a1);
    BUS_FIELD(covariance);
}

BUS_RECORD(UtcDownlink) {
    BUS_FIELD(header);
    BUS_FIELD(a0);
    BUS_FIELD(a1);
    BUS_FIELD(tot);
    BUS_FIELD(WNt);
    BUS_FIELD(delta_t_ls);
    BUS_FIELD(wn_lsf);
    BUS_FIELD(dn);
    BUS_FIELD(delta_t_lsf);
}

BUS_RECORD(interference_type_set) {
    BUS_FIELD(interference_band);
    BUS_FIELD(interference_signal);
    BUS_FIELD(interference_type);
    BUS_FIELD(interference_value);
}

BUS_RECORD(ChallengedEnvironment) {
    BUS_FIELD(header);
    BUS_FIELD(num_interference_types);
    BUS_FIELD(interference_types);
}

BUS_RECORD(key_type_set) {
    BUS_FIELD(key_type);
    BUS_FIELD(remaining_key_time);
    BUS_FIELD(key_status);
    BUS_FIELD(key_load_status);
    BUS_FIELD(key_zeroization_status);
}

BUS_RECORD(GPSCryptoStatus) {
    BUS_FIELD(header);
    BUS_FIELD(num_key_types);
    BUS_FIELD(key_types);
}

BUS_RECORD(gpslos_obs) {
    BUS_FIELD(prn);
    BUS_FIELD(channel_state);
    BUS_FIELD(channel_frequency);
    BUS_FIELD(channel_code);
    BUS_FIELD(ere);
    BUS_FIELD(c_n0);
    BUS_FIELD(assurance);
    BUS_FIELD(pseudorange_measurement_valid);
    BUS_FIELD(pseudorange_measurement);
    BUS_FIELD(pseudorange_measurement_variance);
    BUS_FIELD(deltarange_measurement_valid);
    BUS_FIELD(deltarange_measurement);
    BUS_FIELD(deltarange_measurement_variance);
    BUS_FIELD(deltarange_interval);
    BUS_FIELD(sv_position_start);
    BUS_FIELD(sv_position_stop);
    BUS_FIELD(tropo_correction_applied);
    BUS_FIELD(iono_correction_applied);
    BUS_FIELD(iono_correction_source);
}

BUS_RECORD(GPSLineOfSight) {
    BUS_FIELD(header);
    BUS_FIELD(num_measurements);
    BUS_FIELD(obs);
}

BUS_RECORD(sv_set) {
    BUS_FIELD(svid);
    BUS_FIELD(rinex3_gnss_enum);
    BUS_FIELD(healthy);
    BUS_FIELD(azimuth);
    BUS_FIELD(elevation);
    BUS_FIELD(rising);
}

BUS_RECORD(SVStatus) {
    BUS_FIELD(header);
    BUS_FIELD(num_svs);
    BUS_FIELD(svs);
}

BUS_RECORD(CommandResponse) {
    BUS_FIELD(header);
    BUS_FIELD(commanded_device_id);
    BUS_FIELD(command_identifier);
    BUS_FIELD(command_response_type);
    BUS_FIELD(command_response);
}

BUS_RECORD(EventLog) {
    BUS_FIELD(header);
    BUS_FIELD(event_log_type);
    BUS_FIELD(eventlog);
}

BUS_RECORD(lru_comp_set) {
    BUS_FIELD(lru_id);
    BUS_FIELD(component_id);
}

BUS_RECORD(MaintenanceEvent) {
    BUS_FIELD(header);
    BUS_FIELD(fault_sources);
    BUS_FIELD(criticality_id);
    BUS_FIELD(category_id);
    BUS_FIELD(location_id);
    BUS_FIELD(outcome_id);
    BUS_FIELD(repeat_in_seconds);
    BUS_FIELD(identity);
    BUS_FIELD(description);
}

BUS_RECORD(GSSIP) {
    BUS_FIELD(header);
    BUS_FIELD(num_bytes);
    BUS_FIELD(data);
}

#undef BUS_FIELD
#undef BUS_RECORD

}  // namespace Bus

#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out the bytes that the bus types must have on the wire, without any bus library.

The rules are those of plain CDR (OMG CORBA, "CDR Transfer Syntax"; RTPS, "Data Encapsulation"): four
bytes of encapsulation (0, then 1 for little or 0 for big endian, then two option bytes), after which
every primitive is aligned to its own size, counted from behind the encapsulation, with zero padding.
An enumeration is an unsigned 32-bit number, a bool one byte, a string its length with the terminator
as unsigned 32-bit number, the characters and the terminator, a sequence its element count and the
elements, an array just its elements, a record just its fields.

Run it in this folder: it writes two files for each type, .hex with the bytes in either order and .json
with every field by its name, as the tools are to show it. The values stand a second time, as objects,
in SampleMessages.h and FurtherSampleMessages.h.
"""

import json
import struct

INF = float("inf")


class Cdr:
    def __init__(self, order):
        self.order = order
        self.body = b""

    def number(self, code, value):
        size = struct.calcsize(code)
        self.body += b"\0" * (-len(self.body) % size)
        self.body += struct.pack(self.order + code, value)

    def put(self, kind, value):
        codes = {"i32": "i", "u32": "I", "i64": "q", "f32": "f", "f64": "d", "u8": "B", "bool": "?"}
        if kind in codes:
            self.number(codes[kind], value)
        elif kind == "string":
            text = value.encode() + b"\0"
            self.number("I", len(text))
            self.body += text
        elif kind.startswith("chars"):
            size = int(kind[5:])
            assert len(value) == size
            self.body += value
        elif kind == "record":
            for _, *field in value:
                self.put(*field)
        elif kind.startswith("array "):
            for element in value:
                self.put(kind[6:], element)
        elif kind.startswith("sequence "):
            self.number("I", len(value))
            for element in value:
                self.put(kind[9:], element)
        else:
            raise ValueError(kind)


def named(kind, value):
    """The value for JSON, which has no infinity: that is a word."""
    if kind == "record":
        return {name: named(*field) for name, *field in value}
    if kind.startswith(("array ", "sequence ")):
        return [named(kind.split(" ", 1)[1], element) for element in value]
    if kind.startswith("chars"):
        return value.split(b"\0")[0].decode()
    return "Infinity" if value == INF else value


def encode(fields, order):
    cdr = Cdr(order)
    cdr.put("record", fields)
    return bytes([0, 1 if order == "<" else 0, 0, 0]) + cdr.body


def numbered(size):
    """A square matrix: 0.5, 1.5, 2.5 ... row after row."""
    return [[size * row + column + 0.5 for column in range(size)] for row in range(size)]


STAMP_A = [("sec", "i64", 0x1112131415161718), ("nsec", "i32", 0x21222324), ("time_code", "i32", 100)]
STAMP_V = [("sec", "i64", -2), ("nsec", "i32", 0x41424344), ("time_code", "i32", 101)]
HEADER = ("header", "record", [
    ("seq_num", "i64", 0x0102030405060708), ("timestamp_arrival", "record", STAMP_A),
    ("timestamp_valid", "record", STAMP_V), ("device_id", "i32", 0x01270305)])
POSITION = ("position", "record", [
    ("latitude", "f64", 0.75), ("longitude", "f64", -1.5), ("altitude", "f64", 1234.5)])

CHANNEL_1 = [
    ("prn", "i32", 7), ("channel", "i32", 1), ("rinex3_satellite_system", "u32", 0),
    ("rinex3_band", "u32", 1), ("rinex3_attribute", "u32", 15), ("gnss_tracking_status", "u32", 5),
    ("carrier_to_noise", "f32", 45.5), ("jammer_to_signal", "f32", -3.25),
    ("used_in_solution", "bool", True), ("gnss_corrections_used", "u32", 8),
    ("assurance_level", "u32", 2)]
CHANNEL_2 = [
    ("prn", "i32", -32), ("channel", "i32", 2), ("rinex3_satellite_system", "u32", 200),
    ("rinex3_band", "u32", 201), ("rinex3_attribute", "u32", 202),
    ("gnss_tracking_status", "u32", 203), ("carrier_to_noise", "f32", 0.125),
    ("jammer_to_signal", "f32", INF), ("used_in_solution", "bool", False),
    ("gnss_corrections_used", "u32", 204), ("assurance_level", "u32", 0xFFFFFFFE)]
INTERFERENCE_1 = [
    ("interference_band", "u32", 7), ("interference_signal", "u32", 3),
    ("interference_type", "u32", 1), ("interference_value", "i32", -1)]
INTERFERENCE_2 = [
    ("interference_band", "u32", 7), ("interference_signal", "u32", 15),
    ("interference_type", "u32", 0x80000000), ("interference_value", "i32", 1)]
KEY_1 = [
    ("key_type", "u32", 9), ("remaining_key_time", "i32", 86400), ("key_status", "u32", 5),
    ("key_load_status", "u32", 2), ("key_zeroization_status", "u32", 3)]
KEY_2 = [
    ("key_type", "u32", 100), ("remaining_key_time", "i32", -1), ("key_status", "u32", 101),
    ("key_load_status", "u32", 102), ("key_zeroization_status", "u32", 103)]
LOS_1 = [
    ("prn", "i32", 12), ("channel_state", "u32", 5), ("channel_frequency", "u32", 1),
    ("channel_code", "u32", 4), ("ere", "f64", 2.5), ("c_n0", "i32", 44), ("assurance", "u32", 1),
    ("pseudorange_measurement_valid", "bool", True), ("pseudorange_measurement", "f64", 2.0e7),
    ("pseudorange_measurement_variance", "f64", 0.5),
    ("deltarange_measurement_valid", "bool", False), ("deltarange_measurement", "f64", -123.75),
    ("deltarange_measurement_variance", "f64", 0.0625), ("deltarange_interval", "f64", 1.0),
    ("sv_position_start", "array f64", [1.5, 2.5, 3.5]),
    ("sv_position_stop", "array f64", [-1.5, -2.5, -3.5]),
    ("tropo_correction_applied", "bool", True), ("iono_correction_applied", "bool", False),
    ("iono_correction_source", "u32", 2)]
LOS_2 = [
    ("prn", "i32", 13), ("channel_state", "u32", 15), ("channel_frequency", "u32", 2),
    ("channel_code", "u32", 3), ("ere", "f64", 4.85), ("c_n0", "i32", -1), ("assurance", "u32", 77),
    ("pseudorange_measurement_valid", "bool", False), ("pseudorange_measurement", "f64", 2.1e7),
    ("pseudorange_measurement_variance", "f64", 1.5),
    ("deltarange_measurement_valid", "bool", True), ("deltarange_measurement", "f64", 0.1),
    ("deltarange_measurement_variance", "f64", 1e-9), ("deltarange_interval", "f64", 0.02),
    ("sv_position_start", "array f64", [1e6, 2e6, 3e6]),
    ("sv_position_stop", "array f64", [4e6, 5e6, 6e6]),
    ("tropo_correction_applied", "bool", False), ("iono_correction_applied", "bool", True),
    ("iono_correction_source", "u32", 0)]
SV_1 = [
    ("svid", "i32", 31), ("rinex3_gnss_enum", "u32", 0), ("healthy", "bool", True),
    ("azimuth", "i32", 359), ("elevation", "i32", -5), ("rising", "bool", False)]
SV_2 = [
    ("svid", "i32", 32), ("rinex3_gnss_enum", "u32", 99), ("healthy", "bool", False),
    ("azimuth", "i32", 1), ("elevation", "i32", 90), ("rising", "bool", True)]


def lru(lru_id, component_id):
    return [("lru_id", "i32", lru_id), ("component_id", "i32", component_id)]


BIT_1 = [
    ("server_id", "i32", 39), ("has_communicated", "bool", True), ("warn_received", "bool", False),
    ("error_received", "bool", True), ("critical_received", "bool", False)]
BIT_2 = [
    ("server_id", "i32", -47), ("has_communicated", "bool", False), ("warn_received", "bool", True),
    ("error_received", "bool", False), ("critical_received", "bool", True)]
OBS_1 = [
    ("prn", "i32", 21), ("satellite_system", "u32", 1), ("type", "u32", 2), ("band", "u32", 3),
    ("attrib", "u32", 4), ("observation", "f64", 2.25e7), ("LLI", "i32", 5),
    ("signal_strength", "i32", 6), ("lock_count", "i32", -7)]
OBS_2 = [
    ("prn", "i32", -22), ("satellite_system", "u32", 301), ("type", "u32", 302),
    ("band", "u32", 303), ("attrib", "u32", 0xFFFFFFFF), ("observation", "f64", INF),
    ("LLI", "i32", 15), ("signal_strength", "i32", 16), ("lock_count", "i32", 17)]
MEAS_1 = [("meas_set_id", "i32", 3), ("meas_avail", "i32", 12), ("meas_used", "i32", 11)]
MEAS_2 = [("meas_set_id", "i32", -4), ("meas_avail", "i32", 14), ("meas_used", "i32", 13)]

MESSAGES = {
    "PositionVelocity": [
        HEADER, POSITION, ("velocity", "array f64", [10.5, -20.25, 0.125]),
        ("covariance", "array array f64",
         [[INF if row == column else 6.0 * row + column for column in range(6)] for row in range(6)])],
    "ReceiverStatus": [
        HEADER, ("rcvr_fail", "bool", True), ("num_satellites_avail", "i32", 11),
        ("num_satellites_used", "i32", 9), ("pdop", "f64", 1.75), ("tdop", "f64", 0.875)],
    "channel_status_obs": CHANNEL_1,
    "ChannelStatus": [
        HEADER, ("num_channels", "i32", 2), ("channels", "sequence record", [CHANNEL_1, CHANNEL_2])],
    "GPSTime": [
        HEADER, ("rcvr_set_time_sec", "i32", 86399), ("rcvr_set_time_nsec", "f64", 999999999.5),
        ("rcvr_time_bias", "f64", 1e-6), ("rcvr_time_bias_error", "f64", 2e-9),
        ("rcvr_time_bias_error_rate", "f64", -3e-12), ("gps_tow_sec", "i32", 604799),
        ("gps_tow_nsec", "f64", 123456789.25), ("gps_week", "i32", 2345),
        ("covariance", "array array f64", [[1.5, 2.5], [3.5, 4.5]])],
    "UTCTime": [
        HEADER, ("gps_tow_sec", "i32", 604799), ("gps_tow_nsec", "f64", 123456789.25),
        ("gps_week", "i32", 2345), ("utc_tod_sec", "i32", 86400), ("utc_tod_nsec", "f64", 5e8),
        ("a1", "f64", -4.5e-15), ("covariance", "array array f64", [[INF, 0.0], [-0.0, INF]])],
    "UtcDownlink": [
        HEADER, ("a0", "f64", 1.5e-9), ("a1", "f64", -2.5e-15), ("tot", "i32", 405504),
        ("WNt", "i32", 2346), ("delta_t_ls", "i32", 18), ("wn_lsf", "i32", 2347), ("dn", "i32", 7),
        ("delta_t_lsf", "i32", -19)],
    "interference_type_set": INTERFERENCE_1,
    "ChallengedEnvironment": [
        HEADER, ("num_interference_types", "i32", 2),
        ("interference_types", "sequence record", [INTERFERENCE_1, INTERFERENCE_2])],
    "key_type_set": KEY_1,
    "GPSCryptoStatus": [
        HEADER, ("num_key_types", "i32", 2), ("key_types", "sequence record", [KEY_1, KEY_2])],
    "gpslos_obs": LOS_1,
    "GPSLineOfSight": [
        HEADER, ("num_measurements", "i32", 2), ("obs", "sequence record", [LOS_1, LOS_2])],
    "sv_set": SV_1,
    "SVStatus": [HEADER, ("num_svs", "i32", 2), ("svs", "sequence record", [SV_1, SV_2])],
    "CommandResponse": [
        HEADER, ("commanded_device_id", "i32", 0x02110200), ("command_identifier", "i32", -17),
        ("command_response_type", "u32", 1), ("command_response", "string", "REQUEST_CBIT_PASS")],
    "EventLog": [HEADER, ("event_log_type", "u32", 3), ("eventlog", "string", "Rovan[12]:text")],
    "lru_comp_set": lru(39, -7),
    "MaintenanceEvent": [
        HEADER,
        ("fault_sources", "array record", [lru(39, -7), lru(1, 2), lru(3, 4), lru(0, 0)]),
        ("criticality_id", "i32", 5), ("category_id", "i32", 6), ("location_id", "i32", 7),
        ("outcome_id", "i32", 8), ("repeat_in_seconds", "i32", 3600),
        # What follows the terminator travels too.
        ("identity", "chars16", b"GPS\0" + b"leftover" + b"\0\0\0\xff"),
        ("description", "chars56", b"receiver failed".ljust(55, b"\0") + b"z")],
    "GSSIP": [
        HEADER, ("num_bytes", "i32", 5), ("data", "sequence u8", [0x81, 0x00, 0xFF, 0x7F, 0x0A])],
    "Altitude": [HEADER, ("altitude", "f64", -432.125), ("variance", "f64", 6.25)],
    "AssuranceState": [HEADER, ("assurance_state", "u32", 2)],
    "BitEntryStatus": [
        HEADER, ("requestedEntryAvailable", "bool", True), ("testCodeOfRequestedEntry", "u8", 0x91),
        ("subTestCodeOfRequestedEntry", "u8", 0x1F)],
    "bit_comp_set": BIT_1,
    "BitReport": [
        HEADER, ("bit_rollup", "bool", True), ("num_servers_expected", "i32", 9),
        ("num_servers_available", "i32", 8), ("bit_components", "sequence record", [BIT_1, BIT_2])],
    "DeltaTimeAndFrequency": [
        HEADER, ("dt", "f64", -1.25e-7), ("variance", "f64", 4e-14), ("freqB", "f64", 1e-10)],
    "ForwardReverseStatus": [HEADER, ("DirectionInput", "u32", 1), ("EstimatedDirection", "u32", 400)],
    "gnss_obs": OBS_1,
    "GNSS": [
        HEADER, ("week_number", "i32", 2345), ("seconds_of_week", "f64", 345678.5),
        ("time_system", "u32", 3), ("epoch_flag", "i32", -1), ("num_satellites", "i32", 10),
        ("num_measurements", "i32", 2), ("obs", "sequence record", [OBS_1, OBS_2])],
    "GNSSSubframe": [
        HEADER, ("gnss_msg_id", "i64", -0x0102030405060708), ("prn", "i32", 31),
        ("subframe_satellite_system", "u32", 6), ("freq_slot_id", "i32", -7), ("num_bytes", "i32", 3),
        ("data_vector", "sequence u8", [0x8B, 0x00, 0xFE])],
    "IMU": [
        HEADER, ("delta_v", "array f64", [0.01, -0.02, 9.81]),
        ("delta_theta", "array f64", [1e-5, -2e-5, 3e-5])],
    "meas_type_set": MEAS_1,
    "MeasurementIncorporationStatus": [
        HEADER, ("num_measurement_types", "i32", 2),
        ("meas_types", "sequence record", [MEAS_1, MEAS_2])],
    "KeldraPNT": [
        HEADER, ("GPS_Time", "f64", 345678.25), ("UTC_Time", "f64", 345660.25),
        ("ECEF_Pos_X", "f64", 4.5e6), ("ECEF_Pos_Y", "f64", -5.5e5), ("ECEF_Pos_Z", "f64", 4.25e6),
        ("ECEF_Vel_X", "f64", 1.5), ("ECEF_Vel_Y", "f64", -2.5), ("ECEF_Vel_Z", "f64", 3.5),
        ("Roll", "f64", 0.25), ("Pitch", "f64", -0.125), ("Heading", "f64", 3.0625),
        ("Horz_PosError", "f64", 4.5), ("Vert_PosError", "f64", 5.5), ("Horz_Vel_Error", "f64", 6.5),
        ("Vert_VelError", "f64", 7.5), ("Time_Error", "f64", 8.5), ("Roll_Error", "f64", 9.5),
        ("Pitch_Error", "f64", 10.5), ("Heading_Error", "f64", INF), ("GPS_Week", "i64", 2345),
        ("KD_PNT_Solution_Assurance", "u32", 7)],
    "NavigationMode": [HEADER, ("navigation_mode", "u32", 500)],
    "PlatformDynamics": [
        HEADER, ("velocity", "array f64", [1.5, 2.5, 3.5]),
        ("acceleration", "array f64", [-1.5, -2.5, -3.5]), ("attitude", "array f64", [4.5, 5.5, 6.5]),
        ("attitude_rate", "array f64", [-4.5, -5.5, -6.5]),
        ("covariance", "array array f64", numbered(12))],
    "PositionVelocityAttitude": [
        HEADER, POSITION, ("velocity", "array f64", [1.5, 2.5, 3.5]),
        ("attitude", "array f64", [4.5, 5.5, 6.5]), ("covariance", "array array f64", numbered(9))],
    "ThreeAxisMagnetometer": [
        HEADER, ("field", "array f64", [2e-5, -1e-6, 4.5e-5]),
        ("covariance", "array array f64", numbered(3))],
    "TimeAtTheTone": [HEADER],
    "TimeSync": [HEADER, ("SyncCount", "i64", 0x0A0B0C0D0E0F1011), ("Time_NS", "i64", -123456789012)],
    "Velocity3D": [
        HEADER, ("x", "f64", 1.25), ("y", "f64", -2.25), ("z", "f64", 3.25),
        ("covariance", "array array f64", numbered(3))],
}


def hex_lines(data):
    return "".join(data[i:i + 16].hex(" ") + "\n" for i in range(0, len(data), 16))


for name, message in MESSAGES.items():
    with open(name + ".hex", "w") as file:
        file.write("little\n" + hex_lines(encode(message, "<")))
        file.write("big\n" + hex_lines(encode(message, ">")))
    with open(name + ".json", "w") as file:
        file.write(json.dumps(named("record", message)) + "\n")

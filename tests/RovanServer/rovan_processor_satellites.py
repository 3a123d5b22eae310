#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out golden 5047, 5048, 7270 and 8080 frames and what must reach the bus for them, and prints
RovanProcessorSatellitesGolden.h.

    python3 rovan_processor_satellites.py |
        clang-format --assume-filename=RovanProcessorSatellitesGolden.h > RovanProcessorSatellitesGolden.h

Nothing of the project is used. Frames are written from the receiver's byte tables, with bits that must
not matter round every field; measurements are exact arithmetic on fractions, rounded once; the bus
messages are encoded by hand as little-endian plain CDR, with each primitive aligned to its own size
counted from the end of the 4-byte encapsulation.
"""
import struct
from fractions import Fraction

# --- frames


def checksum(words):
    return -sum(words) & 0xFFFF


def frame(msg_id, data):
    words = list(struct.unpack("<%dH" % (len(data) // 2), data))
    head = [0x81FF, msg_id, len(words), 0x8000]
    everything = head + [checksum(head)] + words + [checksum(words)]
    return struct.pack("<%dH" % len(everything), *everything)


def filler(size):
    """Bytes that must not matter."""
    return bytearray(0x5B * (i % 13 + 1) & 0xFF for i in range(size))


def place(data, offset, form, *values):
    struct.pack_into("<" + form, data, offset, *values)


def pdp_double(value):
    """Sign, exponent (excess 128) and 55 bits of 0.1fraction; the first word holds the first bits."""
    sign, magnitude, exponent = int(value < 0), abs(Fraction(value)), 128
    while magnitude >= 1:
        magnitude, exponent = magnitude / 2, exponent + 1
    while magnitude < Fraction(1, 2):
        magnitude, exponent = magnitude * 2, exponent - 1
    fraction = (magnitude - Fraction(1, 2)) * 2 ** 56
    assert fraction.denominator == 1
    f = int(fraction)
    return sign << 15 | exponent << 7 | f >> 48, f >> 32 & 0xFFFF, f >> 16 & 0xFFFF, f & 0xFFFF


# --- CDR

ARRIVAL = (1234567, 123456789, 100)  # the stamps of RovanProcessorGolden.h
VALID = (7654321, 987654321, 101)
SEQ_NUM = 1  # the second message of each topic
BASE = 3 << 24 | 39 << 16


class Cdr:
    def __init__(self, code):
        self.data = b""
        self.put("q", SEQ_NUM)
        for sec, nsec, time_code in (ARRIVAL, VALID):
            self.put("q", sec).put("i", nsec, time_code)
        self.put("i", BASE | code << 8)

    def put(self, form, *values):
        size = struct.calcsize(form)
        for value in values:
            self.data += b"\0" * (-len(self.data) % size) + struct.pack("<" + form, value)
        return self

    def bytes(self):
        return b"\x00\x01\x00\x00" + self.data


# --- 5047 and 5048: svid, health, azimuth, elevation, flags

SV_TIMES = Fraction(345600) + Fraction(1, 8), Fraction(345600) + Fraction(1, 2)
SV_RECORDS = (
    [(5, 1, 270, -7, 1), (0, 1, 99, 45, 1), (0xFFFF, 0, 0xFFFF, -32768, 0xFFFE), (17, 0x8000, 0, 90, 3),
     (0, 0, 0, 0, 0), (32, 0, 359, 0, 0)],
    [(0, 1, 1, 1, 1), (1, 0x0100, 180, 32767, 0xFFFF), (2, 1, 181, 5, 0), (0, 0, 0, 0, 0),
     (0, 1, 2, 3, 1), (31, 0, 1, -1, 1)],
)

sv_frames = []
satellites = []
for msg_id, time, records in zip((5047, 5048), SV_TIMES, SV_RECORDS):
    data = filler(200)
    place(data, 0, "4H", *pdp_double(time))
    for i, record in enumerate(records):
        place(data, 8 + 32 * i, "HHHhH", *record)
        if record[0] != 0:
            satellites.append(record)
    sv_frames.append(frame(msg_id, data))

sv_status = Cdr(60).put("i", len(satellites)).put("I", len(satellites))
for svid, health, azimuth, elevation, flags in satellites:
    sv_status.put("i", svid).put("I", 0).put("?", health != 0).put("i", azimuth, elevation)
    sv_status.put("?", flags & 1 == 1)

# --- 7270: three measurements of epoch 0xC0DE

EPOCH = 0xC0DE
URA = [2.0, 2.8, 4.0, 5.7, 8.0, 11.3, 16.0, 32.0, 64.0, 128.0, 256.0, 512.0, 1024.0, 2048.0, 4096.0, 4096.0]

# Both measurements valid, with all corrections, variances from the tables of code 4.
FIRST = dict(dr_valid=1, pr_valid=1, ura=5, prn=63, frequency=1, cn0=22, state=4, range=21234567.890625,
             delta=-1234567, interval=333, correction=-76543, rate=-4321, second_flag=1, second=-7777,
             assurance=2, tropo=1, iono=1, source=2, code=3, range_sigma=-123, delta_sigma=4567,
             start=(1.25e7, -2.5e7, 0.1), stop=(1.25e7 + 3.5, -2.5e7 - 1.25, -0.1))
# Both valid, the second rate without its correction, reported variances.
SECOND = dict(dr_valid=1, pr_valid=1, ura=14, prn=1, frequency=0, cn0=255, state=3, range=-19999999.5,
              delta=2 ** 31 - 1, interval=65535, correction=2 ** 31 - 1, rate=32767, second_flag=1,
              second=16383, assurance=0, tropo=0, iono=1, source=3, code=0, range_sigma=32767,
              delta_sigma=-32768, start=(-1.0, 2.0, -3.0), stop=(4.0, -5.0, 6.0))
# Nothing valid, and every field beyond what the bus knows.
THIRD = dict(dr_valid=0, pr_valid=0, ura=0, prn=42, frequency=3, cn0=17, state=9, range=1.0,
             delta=1, interval=1, correction=1, rate=1, second_flag=1, second=1,
             assurance=1, tropo=1, iono=0, source=1, code=6, range_sigma=1, delta_sigma=1,
             start=(7.0, 8.0, 9.0), stop=(10.0, 11.0, 12.0))

los_frames = []
line_of_sight = Cdr(50).put("i", 3).put("I", 3)
for m in (FIRST, SECOND, THIRD):
    data = filler(118)
    place(data, 10, "H", EPOCH)
    place(data, 12, "B", 0b1001 | m["dr_valid"] << 1 | m["pr_valid"] << 2 | m["ura"] << 4)
    place(data, 13, "B", 0b11 | m["prn"] << 2)
    place(data, 14, "H", 0b11 | m["frequency"] << 2 | m["cn0"] << 4 | m["state"] << 12)
    place(data, 16, "d", m["range"])
    place(data, 24, "i", m["delta"])
    place(data, 28, "H", m["interval"])
    place(data, 30, "3d", *m["start"])
    place(data, 54, "3d", *m["stop"])
    place(data, 78, "i", m["correction"])
    place(data, 82, "h", m["rate"])
    place(data, 84, "h", m["second"] * 2 | m["second_flag"])
    place(data, 106, "B", 0xF9 | m["assurance"] << 1)
    place(data, 107, "B", 0x0F | m["tropo"] << 4 | m["iono"] << 5 | m["source"] << 6)
    place(data, 112, "B", 0xF8 | m["code"])
    place(data, 114, "h", m["range_sigma"])
    place(data, 116, "h", m["delta_sigma"])
    los_frames.append(frame(7270, data))

    code = m["code"] + 1 if m["code"] <= 3 else 0
    state = m["state"] if 1 <= m["state"] <= 7 else 15
    range_m = range_variance = delta_m = delta_variance = interval = 0.0
    if m["pr_valid"]:
        range_m = float(Fraction(m["range"]) - Fraction(m["correction"], 2 ** 10))
        range_variance = float(Fraction(m["range_sigma"], 2 ** 4) ** 2)
    if m["dr_valid"]:
        interval = float(Fraction(m["interval"], 1000))
        rate = Fraction(m["rate"], 2 ** 10)
        if m["tropo"] and m["second_flag"]:
            rate += Fraction(m["second"], 2 ** 10)
        # The receiver's interval is a double, and so is the way that it stands for.
        way = Fraction(float(Fraction(interval) * rate))
        delta_m = float(Fraction(m["delta"], 2 ** 13) - way)
        delta_variance = float(Fraction(m["delta_sigma"], 2 ** 15) ** 2)
    if m is FIRST:  # C/N0 22 of code 4 in state 4
        assert (code, state, m["cn0"]) == (4, 4, 22)
        range_variance, delta_variance = 0.5, 0.00055

    line_of_sight.put("i", m["prn"]).put("I", state, {0: 1, 1: 2}.get(m["frequency"], 0), code)
    line_of_sight.put("d", URA[m["ura"]]).put("i", m["cn0"]).put("I", 1 if m["assurance"] else 0)
    line_of_sight.put("?", m["pr_valid"]).put("d", range_m, range_variance)
    line_of_sight.put("?", m["dr_valid"]).put("d", delta_m, delta_variance, interval)
    line_of_sight.put("d", *m["start"]).put("d", *m["stop"])
    line_of_sight.put("?", m["tropo"], m["iono"]).put("I", m["source"] if m["source"] < 3 else 0)

# --- 8080: indications 0, 2 and the fourth

data = filler(12)
place(data, 8, "B", 0b11110101)
frame_8080 = frame(8080, data)
environment = Cdr(43).put("i", 4).put("I", 4)
for kind, value, signal in ((1, 1, 15), (1, 1, 4), (1, 0, 3), (0, 1, 15)):
    environment.put("I", 7, signal, kind).put("i", value)


# --- C++ text

def octets(data):
    return "{" + ", ".join("0x%02X" % b for b in data) + "}"


print("// SPDX-License-Identifier: Apache-2.0")
print("// Made by rovan_processor_satellites.py, which says how. Do not edit.")
print("#pragma once\n\n#include <cstdint>\n#include <vector>\n")
print("namespace SatellitesGolden {\n")
for name, data in (("5047", sv_frames[0]), ("5048", sv_frames[1]), ("8080", frame_8080)):
    print("inline const std::vector<uint8_t> kFrame%s = %s;\n" % (name, octets(data)))
print("// One epoch.")
print("inline const std::vector<uint8_t> kFrames7270[] = {%s};\n" % ", ".join(map(octets, los_frames)))
print("// The second samples on the bus, encapsulation included.")
for name, cdr in (("SVStatus", sv_status), ("LineOfSight", line_of_sight),
                  ("ChallengedEnvironment", environment)):
    print("inline const std::vector<uint8_t> k%sCdr = %s;\n" % (name, octets(cdr.bytes())))
print("}  // namespace SatellitesGolden")

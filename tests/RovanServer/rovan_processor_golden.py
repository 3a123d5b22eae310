#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out a golden 8504 frame and what must reach the bus for it, and prints RovanProcessorGolden.h.

    python3 rovan_processor_golden.py |
        clang-format --assume-filename=RovanProcessorGolden.h > RovanProcessorGolden.h

Nothing of the project is used. The frame is written bit by bit from the receiver's word table, numbers
by exact arithmetic (fractions); the bus messages are encoded by hand as little-endian plain CDR, with
each primitive aligned to its own size counted from the end of the 4-byte encapsulation.
"""
import math
import struct
from fractions import Fraction


def checksum(words):
    return -sum(words) & 0xFFFF


def normalised(value, fraction_bits):
    """Sign, exponent (excess 128) and fraction bits of 0.1fraction times a power of two, truncated."""
    value = Fraction(value)
    sign, magnitude, exponent = int(value < 0), abs(value), 128
    while magnitude >= 1:
        magnitude, exponent = magnitude / 2, exponent + 1
    while magnitude < Fraction(1, 2):
        magnitude, exponent = magnitude * 2, exponent - 1
    fraction = int((magnitude - Fraction(1, 2)) * 2 ** (fraction_bits + 1))
    exact = (Fraction(1, 2) + Fraction(fraction, 2 ** (fraction_bits + 1))) * Fraction(2) ** (exponent - 128)
    return sign, exponent, fraction, float(-exact if sign else exact)


def pdp_double(value):
    s, e, f, exact = normalised(value, 55)
    return [s << 15 | e << 7 | f >> 48, f >> 32 & 0xFFFF, f >> 16 & 0xFFFF, f & 0xFFFF], exact


def pdp_single(value):
    s, e, f, exact = normalised(value, 23)
    return [s << 15 | e << 7 | f >> 16, f & 0xFFFF], exact


def vesk_extended(value):
    s, e, f, exact = normalised(value, 39)
    return [(f & 0xFF) << 8 | e, f >> 8 & 0xFFFF, s << 15 | f >> 24], exact


class Cdr:
    def __init__(self):
        self.data = b""

    def put(self, form, *values):
        size = struct.calcsize(form)
        for value in values:
            self.data += b"\0" * (-len(self.data) % size) + struct.pack("<" + form, value)
        return self

    def bytes(self):
        return b"\x00\x01\x00\x00" + self.data


def header(cdr, seq_num, device_id):
    cdr.put("q", seq_num)
    for sec, nsec, time_code in (ARRIVAL, VALID):
        cdr.put("q", sec).put("i", nsec, time_code)
    return cdr.put("i", device_id)


ARRIVAL = (1234567, 123456789, 100)
VALID = (7654321, 987654321, 101)
SEQ_NUM = 1

# --- the frame

data = [0x1111 * (i % 15 + 1) & 0xFFFF for i in range(200)]  # words that must not matter


def place(first, words):
    data[first:first + len(words)] = words


place(0, pdp_double(Fraction(345600) + Fraction(1, 8))[0])
words, latitude = vesk_extended("0.8712345678901")
place(8, words)
words, longitude = vesk_extended("-1.3245678901234")
place(11, words)
words, altitude = pdp_single("1234.5678")
place(28, words)
words, east = pdp_single("-45.671234")
place(30, words)
words, north = pdp_single("210.98765")
place(32, words)
words, up = pdp_single("3.1415927")
place(34, words)
HPE, VPE, HVE, VVE = 13, 21, 37, 59
place(44, [HPE, VPE, HVE, VVE])
data[48] = 0b1010010100010110  # bit 4: receiver failure; bits 5 to 7 clear
HDOP, VDOP, TDOP = 17, 23, 31
place(55, [HDOP, VDOP, TDOP])
data[58] = 0b0101001100100101  # bits 12 to 11 are 10 binary, bits 10 to 9 are 01

# prn, channel, used, signal code, frequency, assurance bits, C/N0, J/S count, tracking state
channels = [(i * 7 % 256, i, i % 3 == 0, i % 8, i % 4, i // 8, 2 * i % 64, (3 * i + 1) % 64, i % 16)
            for i in range(32)]
raw = b""
for prn, channel, used, code, frequency, assurance, c_n0, j_s, state in channels:
    word1 = 0x70 | code | frequency << 7 | assurance << 11 | 0xE000  # bits round the fields set
    word2 = c_n0 | j_s << 6 | 0xF000
    raw += struct.pack("<BBHHBB", prn, channel | used << 7, word1, word2, 0xA5, 0xF0 | state)
place(72, list(struct.unpack("<128H", raw)))

head = [0x81FF, 8504, 200, 0x8000]
frame = struct.pack("<206H", *(head + [checksum(head)] + data + [checksum(data)]))

# --- what must come of it

velocity = [north, east, -up]
h, w = HVE * 0.03125, VVE * 0.03125
variances = [HPE * HPE * 0.5, HPE * HPE * 0.5, float(VPE * VPE), h * h * 0.5, h * h * 0.5, w * w]
available = sum(state in (3, 4, 5) for *_, state in channels)
used_count = sum(c[2] for c in channels)
a, b = HDOP / 10.0, VDOP / 10.0
pdop, tdop = math.sqrt(a * a + b * b), TDOP / 10.0
observations = []
for prn, channel, used, code, frequency, assurance, c_n0, j_s, state in channels:
    observations.append((prn, channel, 0, {1: 0, 2: 1}.get(frequency, 7),
                         {2: 1, 3: 0, 4: 3, 5: 4, 6: 4}.get(code, 15), state if 1 <= state <= 7 else 0,
                         float(c_n0), float(2 * j_s), used, 8, 1 if assurance else 2))

BASE = 3 << 24 | 39 << 16
pv = header(Cdr(), SEQ_NUM, BASE | 32 << 8 | 1).put("d", latitude, longitude, altitude, *velocity)
for row in range(6):
    for column in range(6):
        pv.put("d", variances[row] if row == column else 0.0)
status = header(Cdr(), SEQ_NUM, BASE | 48 << 8).put("?", True).put("i", available, used_count)
status.put("d", pdop, tdop)
chan = header(Cdr(), SEQ_NUM, BASE | 36 << 8).put("i", 32).put("I", 32)
for o in observations:
    chan.put("i", o[0], o[1]).put("I", *o[2:6]).put("f", o[6], o[7]).put("?", o[8]).put("I", o[9], o[10])


# --- C++ text

def array(values):
    return "{" + ", ".join(v.hex() if isinstance(v, float) else str(v).lower() for v in values) + "}"


def octets(values):
    return "{" + ", ".join("0x%02X" % b for b in values) + "}"


print("// SPDX-License-Identifier: Apache-2.0")
print("// Made by rovan_processor_golden.py, which says how. Do not edit.")
print("#pragma once\n\n#include <cstdint>\n#include <vector>\n")
print("namespace RovanProcessorGolden {\n")
print("struct Stamp { int64_t sec; int32_t nsec; int32_t timeCode; };")
print("constexpr Stamp kArrival%s;" % array(ARRIVAL))
print("constexpr Stamp kValid%s;" % array(VALID))
print("constexpr int64_t kSeqNum = %d;\n" % SEQ_NUM)
print("constexpr double kLatitude = %s;" % latitude.hex())
print("constexpr double kLongitude = %s;" % longitude.hex())
print("constexpr double kAltitude = %s;" % altitude.hex())
print("constexpr double kVelocity[] = %s;" % array(velocity))
print("constexpr double kVariances[] = %s;" % array(variances))
print("constexpr int kAvailable = %d;" % available)
print("constexpr int kUsed = %d;" % used_count)
print("constexpr double kPdop = %s;" % pdop.hex())
print("constexpr double kTdop = %s;\n" % tdop.hex())
print("struct Observation { int prn, channel; unsigned satelliteSystem, band, attribute, trackingStatus; "
      "float carrierToNoise, jammerToSignal; bool usedInSolution; unsigned corrections, assurance; };")
print("constexpr Observation kObservations[] = {%s};\n" % ", ".join(
    "{%s}" % ", ".join(("%.1ff" % v) if isinstance(v, float) else str(v).lower() for v in o)
    for o in observations))
print("inline const std::vector<uint8_t> kFrame = %s;\n" % octets(frame))
print("// The samples on the bus, encapsulation included.")
for name, cdr in (("PositionVelocity", pv), ("ReceiverStatus", status), ("ChannelStatus", chan)):
    print("inline const std::vector<uint8_t> k%sCdr = %s;\n" % (name, octets(cdr.bytes())))
print("}  // namespace RovanProcessorGolden")

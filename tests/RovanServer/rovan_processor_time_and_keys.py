#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out golden 9391, 30409, 5040 and 8040 frames, what must reach the bus for them, and a table of
conversions from GPS time to UTC, and prints RovanProcessorTimeAndKeysGolden.h.

    python3 rovan_processor_time_and_keys.py |
        clang-format --assume-filename=RovanProcessorTimeAndKeysGolden.h > RovanProcessorTimeAndKeysGolden.h

Nothing of the project is used. Frames are written word by word from the receiver's word tables; UTC is
exact arithmetic on fractions with floor division, not a loop over seconds; the bus messages are encoded
by hand as little-endian plain CDR, with each primitive aligned to its own size counted from the end of
the 4-byte encapsulation.
"""
import math
import struct
from fractions import Fraction

DAY, WEEK = 86400, 604800


def wrap32(value):
    return (value + 2 ** 31) % 2 ** 32 - 2 ** 31


def single(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


# --- frames

def checksum(words):
    return -sum(words) & 0xFFFF


def frame(msg_id, words):
    head = [0x81FF, msg_id, len(words), 0x8000]
    everything = head + [checksum(head)] + words + [checksum(words)]
    return struct.pack("<%dH" % len(everything), *everything)


def filler(count):
    """Words that must not matter."""
    return [0x1357 * (i % 11 + 1) & 0xFFFF for i in range(count)]


def place(words, first, form, value):
    raw = struct.pack("<" + form, value)
    words[first:first + len(raw) // 2] = struct.unpack("<%dH" % (len(raw) // 2), raw)


# --- CDR

class Cdr:
    def __init__(self, device_id):
        self.data = b""
        self.put("q", SEQ_NUM)
        for sec, nsec, time_code in (ARRIVAL, VALID):
            self.put("q", sec).put("i", nsec, time_code)
        self.put("i", device_id)

    def put(self, form, *values):
        size = struct.calcsize(form)
        for value in values:
            self.data += b"\0" * (-len(self.data) % size) + struct.pack("<" + form, value)
        return self

    def bytes(self):
        return b"\x00\x01\x00\x00" + self.data


# The stamps of RovanProcessorGolden.h, and the second message of each topic.
ARRIVAL = (1234567, 123456789, 100)
VALID = (7654321, 987654321, 101)
SEQ_NUM = 1
BASE = 3 << 24 | 39 << 16


# --- from GPS time to UTC

def utc_of(a0, a1, tot, wnt, leap, tow_sec, tow_nsec, week):
    """Second of day, nanoseconds, day, week and offset, all exact."""
    elapsed = wrap32(WEEK * wrap32(week - wnt)) + wrap32(tow_sec - tot) + Fraction(tow_nsec) / 10 ** 9
    offset = leap + Fraction(a0) + elapsed * Fraction(a1)
    total_nsec = (week * WEEK + tow_sec - offset) * 10 ** 9 + Fraction(tow_nsec)
    sec, nsec = divmod(total_nsec, 10 ** 9)
    utc_week, rest = divmod(sec, WEEK)
    return rest % DAY, nsec, rest // DAY, utc_week, offset


# a0, a1, tot, WNt, delta_t_ls, seconds, nanoseconds and week of GPS
CONVERSIONS = [
    # As broadcast: a few nanoseconds, a drift of femtoseconds per second.
    (9.31322574615479e-10, 8.88178419700125e-16, 405504, 2297, 18, 345600, 250000000.0, 2297),
    (-1.86264514923096e-09, -2.66453525910038e-15, 61440, 2297, 18, 17, 999999999.0, 2298),
    (4.65661287307739e-09, 3.5527136788005e-15, 589824, 2047, 18, 604799, 999999990.0, 2048),
    # The last and the first seconds of the UTC day, and of the week, under 18 leap seconds.
    (0.0, 0.0, 0, 2300, 18, 86417, 999999999.5, 2300),
    (0.0, 0.0, 0, 2300, 18, 86418, 0.0, 2300),
    (0.0, 0.0, 0, 2300, 18, 17, 0.0, 2300),
    (0.0, 0.0, 0, 2300, 18, 18, 0.0, 2300),
    # The same instants with the second, the day and the week crossed by the correction alone.
    (1e-9, 0.0, 0, 2300, 18, 18, 0.5, 2300),
    (-1e-9, 0.0, 0, 2300, 18, 17, 999999999.5, 2300),
    # Leap seconds of either sign, and more than a week of them.
    (0.0, 0.0, 0, 2300, 0, 5, 1.0, 2300),
    (0.0, 0.0, 0, 2300, -1, 604799, 1.0, 2300),
    (0.0, 0.0, 0, 2300, 32767, 5, 1.0, 2300),
    (0.0, 0.0, 0, 2300, -32768, 604799, 1.0, 2300),
    # Corrections of many seconds and weeks, by either parameter.
    (2.75, 0.0, 0, 2300, 18, 100, 500000000.0, 2300),
    (-2.75, 0.0, 0, 2300, 18, 100, 500000000.0, 2300),
    (1209600.25, 0.0, 0, 2300, 18, 100, 0.0, 2300),
    (-1209600.25, 0.0, 0, 2300, 18, 100, 0.0, 2300),
    (0.0, 2.0 ** -10, 100, 2299, 18, 100, 0.0, 2300),
    (0.0, -2.0 ** -10, 100, 2299, 18, 100, 0.0, 2300),
    (0.0, 2.0 ** -10, 604700, 2301, 18, 100, 750000000.0, 2300),
    # Nanoseconds and seconds beyond their range.
    (0.0, 0.0, 0, 2300, 18, 100, 3500000000.0, 2300),
    (0.0, 0.0, 0, 2300, 18, 100, -3500000000.0, 2300),
    (0.0, 0.0, 0, 2300, 18, 12345678, 1.0, 2300),
    (0.0, 0.0, 0, 2300, 18, -12345678, 1.0, 2300),
    (0.0, 0.0, 0, 2300, 18, 2 ** 31 - 1, 1.0, 2300),
    (0.0, 0.0, 0, 2300, 18, -2 ** 31, 1.0, 2300),
    # The elapsed time leaves 32 bits: by its weeks, and by its seconds.
    (0.0, 2.0 ** -20, 0, -1700, 18, 100, 0.0, 2300),
    (0.0, 2.0 ** -20, 0, 32767, 18, 100, 0.0, -32768),
    (0.0, 2.0 ** -20, -2 ** 31, 2300, 18, 100, 0.0, 2300),
    (0.0, 2.0 ** -20, 2 ** 31 - 1, 2300, 18, -100, 0.0, 2300),
]

# --- the golden time: a UTC that lies in the week before

A0, A1, TOT, WNT, LSF, DN, WN_LSF, LEAP = 2.0 ** -29, -3 * 2.0 ** -47, 405503.5, 2300, 19, 7, -97, 18
TOW_SEC, TOW_FRACTION, GPS_WEEK = 12, 0.375, 2301
SET_SEC, SET_FRACTION = 987654321, 0.8125
BIAS_COUNT, BIAS_ERROR, ERROR_RATE = -1234567, 0.0123456789, single(-3.3e-5)
SIGMA_1, SIGMA_2 = single(0.1), single(1234.567)

words = filler(84)
place(words, 6, "i", BIAS_COUNT)
place(words, 12, "h", GPS_WEEK)
place(words, 14, "i", TOW_SEC)
place(words, 16, "d", TOW_FRACTION)
place(words, 20, "i", SET_SEC)
place(words, 24, "d", SET_FRACTION)
place(words, 32, "d", BIAS_ERROR)
place(words, 36, "f", ERROR_RATE)
place(words, 44, "f", SIGMA_1)
place(words, 46, "f", SIGMA_2)
frame_9391 = frame(9391, words)

words = filler(32)
words[6], words[9], words[30] = 0xFFFE, 0x0001, 0x0001  # the second source only
place(words, 12, "d", A1)
place(words, 16, "d", A0)
place(words, 20, "d", TOT)
for i, value in zip(range(24, 29), (LSF, WNT, DN, WN_LSF, LEAP)):
    place(words, i, "h", value)
frame_30409 = frame(30409, words)

utc_sec, utc_nsec, utc_day, utc_week, _ = utc_of(A0, A1, 405504, WNT, LEAP, TOW_SEC, TOW_FRACTION * 1e9,
                                                 GPS_WEEK)
assert (utc_sec, utc_day, utc_week) == (86394, 6, 2300)
# Binary parameters: the exact result is a double, and rounding on the way to it changes nothing.
tow_nsec = TOW_FRACTION * 1e9
correction = (A0 + (604800.0 + (12.0 - 405504.0 + tow_nsec * 1e-9)) * A1) * 1e9
assert tow_nsec - correction == float(utc_nsec)

# Squares in single precision; the exact product of two singles is a double.
variances = [single(SIGMA_1 * SIGMA_1), single(SIGMA_2 * SIGMA_2)]
assert variances[0] != SIGMA_1 * SIGMA_1
covariance = [variances[0], 0.0, 0.0, variances[1]]

gps = Cdr(BASE | 38 << 8).put("i", SET_SEC).put("d", SET_FRACTION * 1e9, BIAS_COUNT * 0.01, BIAS_ERROR,
                                                ERROR_RATE)
gps.put("i", TOW_SEC).put("d", tow_nsec).put("i", GPS_WEEK).put("d", *covariance)
utc = Cdr(BASE | 41 << 8).put("i", TOW_SEC).put("d", tow_nsec).put("i", GPS_WEEK)
utc.put("i", int(utc_sec)).put("d", float(utc_nsec), A1, *covariance)
downlink = Cdr(BASE | 37 << 8).put("d", A0, A1).put("i", 405504, WNT, LEAP, WN_LSF, DN, LSF)

# --- the golden keys

words = filler(88)
words[49], words[75], words[77] = 0xFFFA, 0xBEEF, 0xABC5
frame_5040 = frame(5040, words)
crypto_5040 = [(9, 0xBEEF, 1, 2, 2)]  # state 5: status 1, zeroization 2; the load status of the start

words = filler(25)


def key_word(active, failed, remaining, zeroization):
    return active | failed << 1 | remaining << 2 | zeroization << 12 | 0xC000


words[4:7] = [key_word(1, 0, 1000, 1), key_word(0, 1, 1, 2), key_word(1, 1, 513, 3)]
words[9] = 0b01 | 0b0110 << 2 | 200 << 6 | 2 << 14  # the first key active; loads 2 and 3 failed
frame_8040 = frame(8040, words)
crypto_8040 = [(0, 1000, 2, 0, 2), (1, 1, 1, 1, 1), (2, 513, 2, 1, 3), (5, 200, 2, 0, 3), (6, 2, 1, 1, 3),
               (7, 0, 5, 1, 3), (8, 0, 5, 0, 3)]


def crypto(sets):
    cdr = Cdr(BASE | 51 << 8).put("i", len(sets)).put("I", len(sets))
    for key_type, remaining, status, load, zeroization in sets:
        cdr.put("I", key_type).put("i", remaining).put("I", status, load, zeroization)
    return cdr


# --- C++ text

def number(value):
    if isinstance(value, Fraction):
        value = float(value)
    if isinstance(value, float):
        return value.hex()
    return "INT32_MIN" if value == -2 ** 31 else str(int(value))


def braces(values):
    return "{" + ", ".join(number(v) for v in values) + "}"


def octets(data):
    return "{" + ", ".join("0x%02X" % b for b in data) + "}"


print("// SPDX-License-Identifier: Apache-2.0")
print("// Made by rovan_processor_time_and_keys.py, which says how. Do not edit.")
print("#pragma once\n\n#include <cstdint>\n#include <vector>\n")
print("namespace TimeAndKeysGolden {\n")
print("// Parameters, GPS time, and the UTC and the offset that must come of them.")
print("struct Conversion { double a0, a1; int tot, WNt, leapSec, towSec; double towNsec; int week; "
      "int secOfDay; double nsec; int dayOfWeek, utcWeek; double offset; };")
rows = []
for c in CONVERSIONS:
    sec, nsec, day, week, offset = utc_of(*c)
    rows.append(braces(list(c) + [int(sec), nsec, int(day), int(week), offset]))
print("constexpr Conversion kConversions[] = {%s};\n" % ", ".join(rows))
for name, data in (("9391", frame_9391), ("30409", frame_30409), ("5040", frame_5040), ("8040", frame_8040)):
    print("inline const std::vector<uint8_t> kFrame%s = %s;\n" % (name, octets(data)))
print("// The second samples on the bus, encapsulation included.")
for name, cdr in (("GpsTime", gps), ("UtcTime", utc), ("UtcDownlink", downlink),
                  ("CryptoStatus5040", crypto(crypto_5040)), ("CryptoStatus8040", crypto(crypto_8040))):
    print("inline const std::vector<uint8_t> k%sCdr = %s;\n" % (name, octets(cdr.bytes())))
print("}  // namespace TimeAndKeysGolden")

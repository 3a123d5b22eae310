#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out what the tests of the simulated receiver expect of its satellite, key and interference
messages, and of its geometry. Nothing of the project is used: words come from the word tables, numbers
from exact fractions, places from the closed formulas in 50 decimal digits.

    python3 expected_words.py
"""
import struct
from decimal import Decimal, getcontext
from fractions import Fraction

getcontext().prec = 50


def pdp_double(value):
    """Sign, excess-128 exponent of 0.1f..., 55 fraction bits."""
    value = Fraction(value)
    if value == 0:
        return [0, 0, 0, 0]
    sign, value, exponent = int(value < 0), abs(value), 128
    while value >= 1:
        value, exponent = value / 2, exponent + 1
    while value < Fraction(1, 2):
        value, exponent = value * 2, exponent - 1
    pattern = sign << 63 | exponent << 55 | int((value - Fraction(1, 2)) * 2 ** 56)
    return [pattern >> 48, pattern >> 32 & 0xFFFF, pattern >> 16 & 0xFFFF, pattern & 0xFFFF]


def ieee(value):
    return list(struct.unpack("<4H", struct.pack("<d", value)))


def long(value):
    return list(struct.unpack("<2H", struct.pack("<i", value)))


def short(value):
    return value & 0xFFFF


def show(name, words):
    print(name, len(words))
    print("   ", ", ".join("{%d, 0x%04X}" % (i, w) for i, w in enumerate(words) if w))


def put(words, at, values):
    words[at:at + len(values)] = values


def keys_8040():
    words = [0] * 25
    put(words, 0, pdp_double(Fraction(1)))
    words[4] = 1 | 0 << 1 | 1023 << 2 | 0 << 12
    words[5] = 0 | 1 << 1 | 1 << 2 | 1 << 12
    words[6] = 1 | 1 << 1 | 512 << 2 | 2 << 12
    words[9] = 3 | 1 << 2 | 0 << 3 | 1 << 4 | 0 << 5 | 0xA5 << 6 | 2 << 14
    return words


def satellites_5047():
    words = [0] * 100
    put(words, 0, pdp_double(Fraction(1209599, 2)))
    put(words, 4, [31, 1, 359, short(-5), 1])
    put(words, 4 + 16 * 2, [7, 0, 0, 90, 0])
    put(words, 4 + 16 * 5, [32, 1, 180, short(-90), 0])
    return words


def measurement_7270(negative):
    words = [0] * 59
    sign = -1 if negative else 1
    put(words, 0, pdp_double(Fraction(2)))
    words[5] = 65535
    words[6] = 1 << 1 | 0 << 2 | 9 << 4 | 33 << 10
    words[7] = 1 << 2 | 0xB4 << 4 | 5 << 12
    put(words, 8, ieee(2.0e7))
    put(words, 12, long(round(sign * Fraction("123.45") * 2 ** 13)))
    words[14] = 1000
    for axis, (start, stop) in enumerate(zip((1.5, -2.25, 2.5e7), (-1.5, 2.25, -2.5e7))):
        put(words, 15 + 4 * axis, ieee(start))
        put(words, 27 + 4 * axis, ieee(stop))
    put(words, 39, long(round(sign * Fraction("80.3") * 2 ** 10)))
    words[41] = short(round(sign * Fraction("0.75") * 2 ** 10))
    words[42] = short(round(sign * Fraction("0.125") * 2 ** 10) << 1 | 1)
    words[53] = 2 << 1 | 1 << 12 | 0 << 13 | 2 << 14
    words[56] = 3
    words[57] = short(round(Fraction("1.5") * 16))
    words[58] = short(round(Fraction("0.005") * 2 ** 15))
    return words


PI = Decimal("3.14159265358979323846264338327950288419716939937510582")


def sine(x):
    term, total, n = x, x, 1
    while abs(term) > Decimal("1e-45"):
        n += 2
        term = -term * x * x / ((n - 1) * n)
        total += term
    return total


def cosine(x):
    return sine(PI / 2 - x)


def earth_fixed(latitude, longitude, altitude):
    axis, e2 = Decimal(6378137), Decimal("0.00669437999014")
    lat, lon = Decimal(latitude) * PI / 180, Decimal(longitude) * PI / 180
    normal = axis / (1 - e2 * sine(lat) ** 2).sqrt()
    across = (normal + altitude) * cosine(lat)
    return across * cosine(lon), across * sine(lon), (normal * (1 - e2) + altitude) * sine(lat)


show("8040", keys_8040())
show("5047", satellites_5047())
show("7270", measurement_7270(False))
show("7270 negative", measurement_7270(True))
for place in (("54", "7.5", 30), ("-33.5", "-170.25", -12)):
    print(place, ["%.6f" % c for c in earth_fixed(*place)])

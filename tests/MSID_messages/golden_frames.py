#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out the golden frames of the receiver messages and prints GoldenFrames.h.

    python3 golden_frames.py | clang-format --assume-filename=GoldenFrames.h > GoldenFrames.h

Nothing of the project is used: the frames are made from the word tables below, and the numbers by
exact arithmetic (fractions) from the definition of the formats. Each received message comes in two
frames: one of pseudo-random data words, and one with every data bit inverted, so that every single
bit takes both values; no two words are alike, so that a field read from a wrong word shows.
"""
import math
import struct
from fractions import Fraction

WORD_COUNTS = {5040: 88, 5042: 100, 7270: 59, 8040: 25, 8080: 6, 8504: 200, 9391: 84, 30409: 32, 5047: 100}


class Random:
    """xorshift32."""

    def __init__(self, seed):
        self.state = seed * 2654435761 & 0xFFFFFFFF

    def word(self):
        x = self.state
        x ^= x << 13 & 0xFFFFFFFF
        x ^= x >> 17
        x ^= x << 5 & 0xFFFFFFFF
        self.state = x
        return x >> 8 & 0xFFFF


def checksum(words):
    return -sum(words) & 0xFFFF


def frame(msg_id, data, flags=0x9000):
    header = [0x81FF, msg_id, len(data), flags]
    words = header + [checksum(header)] + list(data)
    if data:
        words.append(checksum(data))
    return b"".join(struct.pack("<H", w) for w in words)


# --- number formats: sign, exponent, fraction bits as an integer, number of fraction bits

def scaled(sign, exponent, fraction, size):
    """0.1fraction times 2 to the (exponent - 128), exactly."""
    value = (Fraction(1, 2) + Fraction(fraction, 2 ** (size + 1))) * Fraction(2) ** (exponent - 128)
    return -value if sign else value


def cut_to_double(value):
    """Towards zero to 53 significant bits."""
    if value == 0:
        return 0.0
    magnitude, power = abs(value), 0
    while magnitude >= 2 ** 53:
        magnitude, power = magnitude / 2, power + 1
    while magnitude < 2 ** 52:
        magnitude, power = magnitude * 2, power - 1
    result = Fraction(int(magnitude)) * Fraction(2) ** power
    exact = float(result)
    assert Fraction(exact) == result
    return -exact if value < 0 else exact


def pdp_double_parts(w):
    return w[0] >> 15, w[0] >> 7 & 0xFF, (w[0] & 0x7F) << 48 | w[1] << 32 | w[2] << 16 | w[3], 55


def pdp_double(w):
    return 0.0 if not any(w[:4]) else cut_to_double(scaled(*pdp_double_parts(w)))


def pdp_modf(w):
    """Whole part and fraction of a PDP double, each cut to a double by itself."""
    if not any(w[:4]):
        return 0.0, 0.0
    value = scaled(*pdp_double_parts(w))
    whole = Fraction(int(value))
    return cut_to_double(whole), cut_to_double(value - whole)


def single(sign, exponent, fraction):
    """The three smallest exponents are zero to the single conversion."""
    return 0.0 if exponent < 3 else cut_to_double(scaled(sign, exponent, fraction, 23))


def pdp_single(w):
    return single(w[0] >> 15, w[0] >> 7 & 0xFF, (w[0] & 0x7F) << 16 | w[1])


def vesk_extended(w):
    if not any(w[:3]):
        return 0.0
    fraction = (w[2] & 0x7FFF) << 24 | w[1] << 8 | w[0] >> 8
    return cut_to_double(scaled(w[2] >> 15, w[0] & 0xFF, fraction, 39))


def vesk_single(w):
    return single(w[1] >> 15, w[0] & 0xFF, (w[1] & 0x7FFF) << 8 | w[0] >> 8)


def signed(value, size):
    return value - (1 << size) if value >> (size - 1) else value


def ieee(form, w):
    """Little-endian bytes as they lie in the frame."""
    size = struct.calcsize(form)
    return struct.unpack("<" + form, b"".join(struct.pack("<H", x) for x in w)[:size])[0]


def bits(word, high, low):
    return word >> low & (1 << high - low + 1) - 1


# --- C++ text

def text(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, Single):
        return text(float(value.value)) + "f"
    if isinstance(value, float):
        if not math.isfinite(value):
            raise NotFinite
        return value.hex()
    if isinstance(value, (list, tuple)):
        return "{" + ", ".join(text(v) for v in value) + "}"
    return str(value)


class NotFinite(Exception):
    pass


class Unsuitable(Exception):
    pass


class Single:
    def __init__(self, value):
        self.value = value


def emit_bytes(data):
    return "{" + ", ".join("0x%02X" % b for b in data) + "}"


# --- field tables: data words to the expected members, in the order of the C++ structures

def unpack_5040(w):
    return [pdp_double(w), w[18:25], w[25], bits(w[33], 3, 0), w[42], Single(vesk_single(w[44:])),
            bits(w[46], 3, 0), bits(w[49], 3, 0), w[71], w[72], w[73], signed(w[74], 16) / 100.0, w[75],
            w[76], bits(w[77], 3, 0), Single(vesk_single(w[78:])), bits(w[80], 3, 0),
            Single(vesk_single(w[36:])), bits(w[38], 3, 0), Single(vesk_single(w[82:])),
            bits(w[84], 3, 0), bits(w[61], 0, 0)]


def unpack_5042(w):
    return [pdp_double(w), bool(bits(w[48], 1, 1)), bits(w[58], 7, 0)]


def unpack_8080(w):
    return [pdp_double(w), w[4], w[5]]


def unpack_8040(w):
    return [pdp_double(w), [[k] for k in w[4:7]], w[7:9], [w[9]], w[10:25]]


def require_invertible_8504(w):
    """Numbers that can be packed again: no exponent so small that a conversion gives zero. And a time
    whose whole seconds and fraction are both there, in one of the two frames."""
    exponents = [w[i] >> 7 & 0xFF for i in (0, 4, 14, 18, 22, 26, 28, 30, 32, 34, 42)]
    exponents += [w[i] & 0xFF for i in (8, 11, 61, 63)]
    if min(exponents) < 3 or max(exponents) > 252 or not (129 <= exponents[0] <= 183 or
                                                         129 <= 255 - exponents[0] <= 183):
        raise Unsuitable


def unpack_8504(w):
    require_invertible_8504(w)
    f = [pdp_double(w), pdp_double(w[4:]), vesk_extended(w[8:]), vesk_extended(w[11:]),
         pdp_double(w[14:]), pdp_double(w[18:]), pdp_double(w[22:])]
    f += [Single(pdp_single(w[i:])) for i in (26, 28, 30, 32, 34, 42)]
    f += w[44:48]
    f += [bits(w[48], 3, 0), bool(bits(w[48], 4, 4)), bool(bits(w[48], 5, 5)), bits(w[48], 7, 6),
          bits(w[48], 9, 8), bits(w[48], 15, 10), w[49]]
    f += [bits(w[50], 7, 0), bits(w[50], 8, 8), bits(w[50], 9, 9), bits(w[50], 10, 10), bits(w[50], 15, 11)]
    four_bytes = struct.pack("<HH", w[51], w[52])
    f.append([nibble for b in four_bytes for nibble in (b & 15, b >> 4)])
    f += w[55:58]
    f += [bits(w[58], 7, 0), bits(w[58], 8, 8), bits(w[58], 10, 9), bits(w[58], 12, 11),
          bits(w[58], 14, 13), bits(w[58], 15, 15)]
    f += [bits(w[59], 2, 0), bits(w[59], 7, 3), bits(w[59], 15, 8)]
    f += [bits(w[60], 1, 0), bits(w[60], 2, 2), bits(w[60], 7, 3), bits(w[60], 15, 8)]
    f += [Single(vesk_single(w[61:])), Single(vesk_single(w[63:]))]
    f += [bits(w[65], 3, 0), bits(w[65], 7, 4), bits(w[65], 15, 8)]
    raw = b"".join(struct.pack("<H", x) for x in w[72:200])
    f.append([[list(raw[i:i + 8])] for i in range(0, 256, 8)])
    f += list(pdp_modf(w))
    return f


def unpack_7270(w):
    ranges = [2.0, 2.8, 4.0, 5.7, 8.0, 11.3, 16.0, 32.0, 64.0, 128.0, 256.0, 512.0, 1024.0, 2048.0, 4096.0,
              4096.0]
    doubles = [ieee("d", w[i:]) for i in (8, 15, 19, 23, 27, 31, 35)]
    return [w[5], bool(bits(w[6], 1, 1)), bool(bits(w[6], 2, 2)), ranges[bits(w[6], 7, 4)],
            bits(w[6], 15, 10), bits(w[7], 3, 2), bits(w[7], 11, 4), bits(w[7], 15, 12), doubles[0],
            ieee("i", w[12:]) * 0.0001220703125, w[14], doubles[1:4], doubles[4:7],
            ieee("i", w[39:]) * 0.0009765625, signed(w[41], 16) * 0.0009765625, bool(w[42] & 1),
            signed(w[42] >> 1, 15) * 0.0009765625, bits(w[53], 2, 1) != 0, bool(bits(w[53], 12, 12)),
            bool(bits(w[53], 13, 13)), bits(w[53], 15, 14), bits(w[56], 2, 0), signed(w[57], 16) * 0.0625,
            signed(w[58], 16) * 3.0517578125e-5]


def unpack_9391(w):
    return [ieee("i", w[6:]) * 0.01, signed(w[12], 16), ieee("i", w[14:]), ieee("d", w[16:]),
            ieee("i", w[20:]), ieee("d", w[24:]), ieee("d", w[32:]), Single(ieee("f", w[36:])),
            Single(ieee("f", w[44:])), Single(ieee("f", w[46:]))]


def unpack_30409(w):
    return [bool(w[6] & 1), bool(w[9] & 1), ieee("d", w[12:]), ieee("d", w[16:]), ieee("d", w[20:])] + \
        [signed(x, 16) for x in w[24:29]] + [bool(w[30] & 1)]


def unpack_svrise(w):
    records = []
    for i in range(6):
        r = w[4 + 16 * i:20 + 16 * i]
        records.append([r[0], r[1], r[2], signed(r[3], 16), r[4], r[5:16]])
    return [pdp_double(w), records]


RECEIVED = [(5040, unpack_5040), (5042, unpack_5042), (7270, unpack_7270), (8040, unpack_8040),
            (8080, unpack_8080), (8504, unpack_8504), (9391, unpack_9391), (30409, unpack_30409),
            (5047, unpack_svrise)]


def random_data(msg_id, attempt):
    rnd = Random(msg_id + (attempt << 16))
    seen = set()
    data = []
    while len(data) < WORD_COUNTS[msg_id]:
        w = rnd.word()
        if w not in seen and 0xFFFF - w not in seen:
            seen.add(w)
            data.append(w)
    return data


def samples(msg_id, unpack):
    """The two frames with what is expected of them, from the first words that are fit."""
    for attempt in range(1000):
        data = random_data(msg_id, attempt)
        try:
            return ["{%s, %s}" % (emit_bytes(frame(msg_id, words)), text(unpack(words)))
                    for words in (data, [0xFFFF - w for w in data])]
        except (NotFinite, Unsuitable):
            pass
    raise RuntimeError("no fit words for message %d" % msg_id)


# --- frames to the receiver: name, message id, {data word: value}

SENT = [
    ("PowerOnCommand", 5001, 31, {}),
    ("ContinuousCommand", 5001, 31, {4: 1}),
    ("StandbyCommand", 5001, 31, {4: 5}),
    ("EmergencyZeroize", 5001, 31, {4: 7}),
    ("CvZeroizeCommand", 5001, 31, {4: 8}),
    ("MistCommand", 5001, 31, {4: 64, 5: 0x3823, 6: 3}),
    ("LineSpeed115200", 5331, 50, {4: 0xC000, 6: 0, 7: 0, 8: 11, 9: 1, 10: 0, 11: 11, 12: 1}),
    ("RedundantPort", 5331, 50, {4: 0x0080, 6: 2, 33: 1}),
    ("PulseOnPort15", 5331, 50, {4: 0x0200, 6: 15, 31: 2}),
    ("Sentences", 5331, 50, {4: 0x0800, 23: 5, 24: 11, 25: 19, 26: 20, 27: 4, 28: 0, 29: 14}),
    ("ReceiverSetup", 5313, 100, {4: 0x0003, 43: 11, 44: 2}),
    ("IpZeroize", 5402, 67, {4: 0x0001, 5: 0x0020}),
    ("CvZeroize", 5402, 67, {4: 0x0010, 5: 0x0001}),
    ("Mission84", 5402, 67, {5: 0x0008, 6: 84}),
]
HEADERS = [("Connect8504", 8504, 0x9040), ("Disconnect0", 0, 0x9020), ("Request9225", 9225, 0x9010),
           ("Acknowledge8504", 8504, 0x8800)]


def main():
    print("// SPDX-License-Identifier: Apache-2.0")
    print("// Made by golden_frames.py, which says how. Do not edit.")
    print("#pragma once\n\n#include <array>\n#include <cstdint>\n#include <vector>\n")
    for name in ("5040", "5042", "8040", "8080", "8504", "SVRise"):
        print('#include "MSID_messages/Rovan_%s_Msg.h"' % name)
    print("\nnamespace Golden {\n")
    print("using Bytes = std::vector<uint8_t>;\n")
    print("template <typename EXPECTED> struct Sample { Bytes frame; EXPECTED expected; };\n")
    print("struct Measurement7270 { unsigned epochTag; bool deltaRangeValid, pseudorangeValid; "
          "double expectedRangeError; unsigned prn, frequency, carrierToNoise, channelState; "
          "double pseudorange, deltaRange; unsigned deltaRangeIntervalMs; "
          "std::array<double, 3> svPositionStart, svPositionStop; "
          "double pseudorangeCorrection, rangeRateCorrection; bool hasSecondRateCorrection; "
          "double secondRateCorrection; bool assured, tropoCorrectionApplied, ionoCorrectionApplied; "
          "unsigned ionoCorrectionSource, channelCode; double pseudorangeSigma, deltaRangeSigma; };\n")
    print("struct Time9391 { double clockBias; int gpsWeek; int32_t gpsTimeOfWeek; "
          "double gpsTimeOfWeekFraction; int32_t receiverSetTime; "
          "double receiverSetTimeFraction, clockBiasError; float clockBiasErrorRate, firstSigma, "
          "secondSigma; };\n")
    print("struct Utc30409 { bool sourceOneValid, sourceTwoValid; double a1, a0, tot; "
          "int delta_t_lsf, WNt, dn, wn_lsf, delta_t_ls; bool utcDataValid; };\n")
    kinds = {5040: "unpacked_msg5040_t", 5042: "unpacked_msg5042_t", 8040: "unpacked_msg8040_t",
             8080: "unpacked_msg8080_t", 8504: "unpacked_msg8504_t", 5047: "unpacked_SVRiseMsg_t",
             7270: "Measurement7270", 9391: "Time9391", 30409: "Utc30409"}
    for msg_id, unpack in RECEIVED:
        print("inline const std::array<Sample<%s>, 2> k%d{{%s}};\n" %
              (kinds[msg_id], msg_id, ", ".join(samples(msg_id, unpack))))
    for name, msg_id, count, values in SENT:
        data = [values.get(i, 0) for i in range(count)]
        print("inline const Bytes k%s = %s;\n" % (name, emit_bytes(frame(msg_id, data))))
    for name, msg_id, flags in HEADERS:
        print("inline const Bytes k%s = %s;\n" % (name, emit_bytes(frame(msg_id, [], flags))))
    print("}  // namespace Golden")


main()

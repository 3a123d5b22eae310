#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Works out the bytes that the bus types must have on the wire, without any bus library.

The rules are those of plain CDR (OMG CORBA, "CDR Transfer Syntax"; RTPS, "Data Encapsulation"): four
bytes of encapsulation (0, then 1 for little or 0 for big endian, then two option bytes), after which
every primitive is aligned to its own size, counted from behind the encapsulation, with zero padding.
An enumeration is an unsigned 32-bit number, a bool one byte, a string its length with the terminator
as unsigned 32-bit number, the characters and the terminator, a sequence its element count and the
elements, an array just its elements, a record just its fields.

Run it in this folder: it writes one .hex file for each type. The values stand a second time, as
objects, in SampleMessages.h.
"""

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
            for field in value:
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


def encode(fields, order):
    cdr = Cdr(order)
    cdr.put("record", fields)
    return bytes([0, 1 if order == "<" else 0, 0, 0]) + cdr.body


STAMP_A = [("i64", 0x1112131415161718), ("i32", 0x21222324), ("i32", 100)]
STAMP_V = [("i64", -2), ("i32", 0x41424344), ("i32", 101)]
HEADER = ("record", [("i64", 0x0102030405060708), ("record", STAMP_A), ("record", STAMP_V),
                     ("i32", 0x01270305)])

CHANNEL_1 = [("i32", 7), ("i32", 1), ("u32", 0), ("u32", 1), ("u32", 15), ("u32", 5),
             ("f32", 45.5), ("f32", -3.25), ("bool", True), ("u32", 8), ("u32", 2)]
CHANNEL_2 = [("i32", -32), ("i32", 2), ("u32", 200), ("u32", 201), ("u32", 202), ("u32", 203),
             ("f32", 0.125), ("f32", INF), ("bool", False), ("u32", 204), ("u32", 0xFFFFFFFE)]
INTERFERENCE_1 = [("u32", 7), ("u32", 3), ("u32", 1), ("i32", -1)]
INTERFERENCE_2 = [("u32", 7), ("u32", 15), ("u32", 0x80000000), ("i32", 1)]
KEY_1 = [("u32", 9), ("i32", 86400), ("u32", 5), ("u32", 2), ("u32", 3)]
KEY_2 = [("u32", 100), ("i32", -1), ("u32", 101), ("u32", 102), ("u32", 103)]
LOS_1 = [("i32", 12), ("u32", 5), ("u32", 1), ("u32", 4), ("f64", 2.5), ("i32", 44), ("u32", 1),
         ("bool", True), ("f64", 2.0e7), ("f64", 0.5), ("bool", False), ("f64", -123.75),
         ("f64", 0.0625), ("f64", 1.0), ("array f64", [1.5, 2.5, 3.5]),
         ("array f64", [-1.5, -2.5, -3.5]), ("bool", True), ("bool", False), ("u32", 2)]
LOS_2 = [("i32", 13), ("u32", 15), ("u32", 2), ("u32", 3), ("f64", 4.85), ("i32", -1), ("u32", 77),
         ("bool", False), ("f64", 2.1e7), ("f64", 1.5), ("bool", True), ("f64", 0.1),
         ("f64", 1e-9), ("f64", 0.02), ("array f64", [1e6, 2e6, 3e6]),
         ("array f64", [4e6, 5e6, 6e6]), ("bool", False), ("bool", True), ("u32", 0)]
SV_1 = [("i32", 31), ("u32", 0), ("bool", True), ("i32", 359), ("i32", -5), ("bool", False)]
SV_2 = [("i32", 32), ("u32", 99), ("bool", False), ("i32", 1), ("i32", 90), ("bool", True)]
LRU = [("i32", 39), ("i32", -7)]

MESSAGES = {
    "PositionVelocity": [
        HEADER, ("f64", 0.75), ("f64", -1.5), ("f64", 1234.5), ("array f64", [10.5, -20.25, 0.125]),
        ("array f64", [INF if n % 7 == 0 else float(n) for n in range(36)])],
    "ReceiverStatus": [
        HEADER, ("bool", True), ("i32", 11), ("i32", 9), ("f64", 1.75), ("f64", 0.875)],
    "channel_status_obs": CHANNEL_1,
    "ChannelStatus": [
        HEADER, ("i32", 2), ("sequence record", [CHANNEL_1, CHANNEL_2])],
    "GPSTime": [
        HEADER, ("i32", 86399), ("f64", 999999999.5), ("f64", 1e-6), ("f64", 2e-9), ("f64", -3e-12),
        ("i32", 604799), ("f64", 123456789.25), ("i32", 2345), ("array f64", [1.5, 2.5, 3.5, 4.5])],
    "UTCTime": [
        HEADER, ("i32", 604799), ("f64", 123456789.25), ("i32", 2345), ("i32", 86400),
        ("f64", 5e8), ("f64", -4.5e-15), ("array f64", [INF, 0.0, -0.0, INF])],
    "UtcDownlink": [
        HEADER, ("f64", 1.5e-9), ("f64", -2.5e-15), ("i32", 405504), ("i32", 2346), ("i32", 18),
        ("i32", 2347), ("i32", 7), ("i32", -19)],
    "interference_type_set": INTERFERENCE_1,
    "ChallengedEnvironment": [
        HEADER, ("i32", 2), ("sequence record", [INTERFERENCE_1, INTERFERENCE_2])],
    "key_type_set": KEY_1,
    "GPSCryptoStatus": [HEADER, ("i32", 2), ("sequence record", [KEY_1, KEY_2])],
    "gpslos_obs": LOS_1,
    "GPSLineOfSight": [HEADER, ("i32", 2), ("sequence record", [LOS_1, LOS_2])],
    "sv_set": SV_1,
    "SVStatus": [HEADER, ("i32", 2), ("sequence record", [SV_1, SV_2])],
    "CommandResponse": [
        HEADER, ("i32", 0x02110200), ("i32", -17), ("u32", 1), ("string", "REQUEST_CBIT_PASS")],
    "EventLog": [HEADER, ("u32", 3), ("string", "Rovan[12]:text")],
    "lru_comp_set": LRU,
    "MaintenanceEvent": [
        HEADER, ("array record", [LRU, [("i32", 1), ("i32", 2)], [("i32", 3), ("i32", 4)],
                                  [("i32", 0), ("i32", 0)]]),
        ("i32", 5), ("i32", 6), ("i32", 7), ("i32", 8), ("i32", 3600),
        # What follows the terminator travels too.
        ("chars16", b"GPS\0" + b"leftover" + b"\0\0\0\xff"),
        ("chars56", b"receiver failed".ljust(55, b"\0") + b"z")],
    "GSSIP": [HEADER, ("i32", 5), ("sequence u8", [0x81, 0x00, 0xFF, 0x7F, 0x0A])],
}


def hex_lines(data):
    return "".join(data[i:i + 16].hex(" ") + "\n" for i in range(0, len(data), 16))


for name, message in MESSAGES.items():
    with open(name + ".hex", "w") as file:
        file.write("little\n" + hex_lines(encode(message, "<")))
        file.write("big\n" + hex_lines(encode(message, ">")))

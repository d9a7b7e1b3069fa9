#!/usr/bin/env python3
"""Writes the seed inputs of fuzz_clipboard_decoder: IPTC records in the
private clipboard form, each named for what it exercises.

    fuzz/make_clipboard_seeds.py [OUTPUT_FOLDER]
"""
import os
import struct
import sys


def value(kind, payload):
    return bytes([kind]) + struct.pack("<I", len(payload)) + payload


def text(s):
    return value(1, s)


def field(ident, *values):
    return struct.pack("<II", ident, len(values)) + b"".join(values)


def record(*fields, version=1, count=None):
    return struct.pack("<HI", version, len(fields) if count is None else count) + b"".join(fields)


HARBOUR = record(field(3), field(5, text(b"Harbour at dusk")),
                 field(25, text(b"harbour"), text(b"boats"), text(b"sea")),
                 field(90, text(b"\xc5lesund")), field(55, text(b"#TODAY")), field(0, value(3, b"\x04\x00")))

SEEDS = {
    "empty_record": record(),
    "harbour_record": HARBOUR,
    "every_value_kind": record(field(200, value(0, b""), text(b"t"), value(2, b"\x02\x00"), value(3, b"\x04\x00"),
                                     value(4, struct.pack("<i", -5)), value(5, struct.pack("<d", 0.1)),
                                     value(7, struct.pack("<d", 45000.0)), value(8, struct.pack("<d", 0.5)),
                                     value(9, bytes(range(20))))),
    "trailing_bytes": HARBOUR + b"\0" * 10,
    "version_2": record(field(5, text(b"x")), version=2),
    "field_count_past_end": record(field(5, text(b"x")), count=1000),
    "value_length_past_end": record(field(120, bytes([1]) + struct.pack("<I", 0x7FFFFFFF) + b"abc")),
    "unknown_kind": record(field(5, value(6, b"ab"))),
    "number_with_wrong_length": record(field(0, value(3, b"\x04\x00\x00"))),
}


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "corpus",
                                                                "fuzz_clipboard_decoder")
    os.makedirs(folder, exist_ok=True)
    for name, data in SEEDS.items():
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main()

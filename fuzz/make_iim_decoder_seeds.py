#!/usr/bin/env python3
"""Writes the seed inputs of fuzz_iim_decoder: small image-resource sections
and bare IIM blocks, each named for the decoder rule it exercises.

    fuzz/make_iim_decoder_seeds.py [OUTPUT_FOLDER]
"""
import os
import struct
import sys


def dataset(record, number, data, big=True):
    return bytes([0x1C, record, number]) + struct.pack(">H" if big else "<H", len(data)) + data


def resource(signature, ident, name, data):
    out = signature + struct.pack(">H", ident) + bytes([len(name)]) + name
    if (len(name) + 1) % 2:
        out += b"\0"
    out += struct.pack(">I", len(data)) + data
    if len(data) % 2:
        out += b"\0"
    return out


VERSION = dataset(2, 0, b"\x00\x02")
IIM = VERSION + dataset(2, 120, b"caption\nline two\r") + dataset(2, 25, b"k1") + dataset(2, 25, b"k2") \
    + dataset(2, 55, b"20240229") + dataset(2, 60, b"102030+0100") + dataset(2, 80, b"#NOW")

SEEDS = {
    "iim_plain": IIM,
    "iim_little_endian": dataset(2, 0, b"\x02\x00") + dataset(2, 120, b"le", big=False)
        + dataset(2, 25, b"kw", big=False),
    "iim_record1_false_marker": dataset(1, 90, b"\x1b" + dataset(2, 5, b"X")) + IIM,
    "iim_length_past_end": bytes([0x1C, 2, 120, 0x7F, 0xFF]) + dataset(2, 25, b"k"),
    "iim_truncated_length": bytes([0x1C, 2, 120, 0x00]),
    "iim_macros": VERSION + b"".join(dataset(2, 200 + i, w) for i, w in enumerate(
        [b"#TODAY", b" #now ", b"#FILEDATE", b"#2weeksfromtoday", b"#TODAYX"])),
    "resources_iptc": resource(b"8BIM", 0x0404, b"", IIM),
    "resources_lower_case": resource(b"8bim", 0x0404, b"", IIM),
    "resources_odd_sizes_and_names": resource(b"8BIM", 0x0409, b"n", b"abc")
        + resource(b"8BIM", 0x03ED, b"ab", b"x") + resource(b"8BIM", 0x0404, b"iptc", IIM),
    "resources_size_zero_first": resource(b"8BIM", 0x0409, b"", b"") + resource(b"8BIM", 0x0404, b"", IIM),
    "resources_iptc_without_record2": resource(b"8BIM", 0x0404, b"", dataset(1, 0, b"abc"))
        + resource(b"8BIM", 0x0404, b"", IIM),
    "resources_size_past_end": resource(b"8BIM", 0x0409, b"", b"abcd")[:-2],
    "resources_unknown_signature": resource(b"MeSa", 0x0409, b"", b"ab") + resource(b"8BIM", 0x0404, b"", IIM),
}


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "corpus",
                                                                "fuzz_iim_decoder")
    os.makedirs(folder, exist_ok=True)
    for name, data in SEEDS.items():
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Writes the seed inputs of the TIFF and Photoshop fuzz targets: small crafted
files, each named for the container rule it exercises, plus a few small files
of the public corpus (../shared/corpus) when it is there.

    fuzz/make_tiff_psd_seeds.py [CORPUS_FOLDER]

The reader and the writer of a container share their seeds.
"""
import os
import shutil
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))


def iim(*datasets):
    out = b"\x1c\x02\x00\x00\x02\x00\x02"
    for number, text in datasets:
        out += bytes([0x1C, 2, number]) + struct.pack(">H", len(text)) + text
    return out + (b"\0" if len(out) % 2 else b"")


CAPTION = iim((120, b"caption"), (25, b"sea"), (25, b"sky"))

# ---- TIFF ------------------------------------------------------------------

TYPE_SIZES = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8, 7: 1}


class Tiff:
    """A growing TIFF: pieces are appended, directories filled in later."""

    def __init__(self, big_endian):
        self.e = ">" if big_endian else "<"
        self.data = bytearray(b"MM\0*" if big_endian else b"II*\0") + bytearray(4)

    def append(self, blob):
        if len(self.data) % 2:
            self.data += b"\0"
        offset = len(self.data)
        self.data += blob
        return offset

    def reserve(self, entries):
        return self.append(bytes(2 + 12 * entries + 4))

    def values(self, fmt, values):
        return b"".join(struct.pack(self.e + fmt, v) for v in values)

    def fill(self, offset, fields, next_offset=0):
        out = struct.pack(self.e + "H", len(fields))
        for tag, typ, values in fields:
            if isinstance(values, bytes):
                blob, count = values, len(values) // TYPE_SIZES[typ]
            else:
                blob, count = self.values({3: "H", 4: "I", 5: "I"}[typ], values), len(values)
                if typ == 5:
                    count //= 2
            if len(blob) > 4:
                blob = struct.pack(self.e + "I", self.append(blob))
            out += struct.pack(self.e + "HHI", tag, typ, count) + blob.ljust(4, b"\0")
        out += struct.pack(self.e + "I", next_offset)
        self.data[offset:offset + len(out)] = out

    def first(self, offset):
        self.data[4:8] = struct.pack(self.e + "I", offset)
        return bytes(self.data)


def tiff_seeds():
    seeds = {}
    for big, order in ((False, "ii"), (True, "mm")):
        t = Tiff(big)
        ifd = t.reserve(4)
        strip = t.append(bytes(range(16)))
        t.fill(ifd, [(256, 4, [4]), (273, 4, [strip]), (279, 4, [16]), (33723, 4, CAPTION)])
        seeds[order + "_iptc_entry_long"] = t.first(ifd)

        t = Tiff(big)
        ifd = t.reserve(6)
        strips = [t.append(b"\x11" * 12), t.append(b"\x22" * 13)]
        t.fill(ifd, [(256, 4, [4]), (258, 3, [8, 8, 8]), (270, 2, b"a description\0"), (273, 4, strips),
                     (279, 4, [12, 13]), (282, 5, [72, 1])])
        seeds[order + "_all_tags_below"] = t.first(ifd)

    t = Tiff(True)
    ifd, strip = t.reserve(5), None
    strip = t.append(b"\x33" * 24)
    exif, gps = t.reserve(1), t.reserve(1)
    t.fill(ifd, [(256, 4, [4]), (273, 3, [strip]), (279, 3, [24]), (34665, 4, [exif]), (34853, 4, [gps])])
    t.fill(exif, [(33434, 5, [1, 250])])
    t.fill(gps, [(2, 5, [52, 1, 30, 1, 0, 1])])
    seeds["mm_exif_gps_behind"] = t.first(ifd)

    t = Tiff(False)
    ifd = t.reserve(7)
    tiles = [t.append(b"\x44" * 16), t.append(b"\x55" * 16)]
    free = t.append(b"\x66" * 6)
    t.fill(ifd, [(256, 4, [8]), (288, 4, [free]), (289, 4, [6]), (324, 4, tiles), (325, 4, [16, 16]),
                 (37000, 2, b"private\0"), (50000, 3, [1])])
    seeds["ii_tiles_free_private_tag"] = t.first(ifd)

    t = Tiff(True)
    strip = t.append(b"\x77" * 20)
    ifd = t.reserve(3)
    t.fill(ifd, [(256, 4, [5]), (273, 4, [strip]), (279, 4, [20])])
    seeds["mm_directory_at_end"] = t.first(ifd)

    t = Tiff(False)
    ifd0, ifd1 = t.reserve(1), t.reserve(1)
    t.fill(ifd0, [(33723, 7, b"\x1c\x01\x5a\x00\x03\x1b\x25\x47")], ifd1)
    t.fill(ifd1, [(33723, 7, CAPTION)])
    seeds["ii_second_directory_has_record_2"] = t.first(ifd0)

    t = Tiff(True)
    ifd = t.reserve(1)
    t.fill(ifd, [(33723, 7, CAPTION)], 8)
    seeds["mm_directory_loop"] = t.first(ifd)

    t = Tiff(False)
    ifd = t.reserve(1)
    t.fill(ifd, [(33723, 4, struct.pack("<I", 30))])
    data = bytearray(t.first(ifd))
    data[8 + 2 + 4:8 + 2 + 8] = struct.pack("<I", 4000)  # count past the end
    seeds["ii_iptc_count_past_end"] = bytes(data)

    t = Tiff(True)
    ifd = t.reserve(1)
    t.fill(ifd, [(33723, 4, struct.pack(">I", 8))])
    data = bytearray(t.first(ifd))
    data[8 + 2 + 4:8 + 2 + 8] = struct.pack(">I", 4)  # value laid over the directory
    seeds["mm_iptc_over_directory"] = bytes(data)

    seeds["big_tiff_header"] = b"II+\0\x08\0\0\0" + struct.pack("<Q", 16) + bytes(8)
    return seeds


# ---- Photoshop documents -----------------------------------------------------


def resource(ident, data, name=b"", signature=b"8BIM"):
    out = signature + struct.pack(">H", ident) + bytes([len(name)]) + name
    if (len(name) + 1) % 2:
        out += b"\0"
    out += struct.pack(">I", len(data)) + data
    return out + (b"\0" if len(data) % 2 else b"")


def psd(resources, version=1, section_length=None):
    header = b"8BPS" + struct.pack(">H", version) + bytes(6) + struct.pack(">HIIHH", 3, 5, 4, 8, 3)
    section = b"".join(resources)
    length = len(section) if section_length is None else section_length
    return header + struct.pack(">I", 4) + b"\1\2\3\4" + struct.pack(">I", length) + section + bytes(6) + b"image"


RESOLUTION = resource(0x03ED, b"\0\x48\0\0\0\1\0\1")


def psd_seeds():
    return {
        "iptc_with_room": psd([RESOLUTION, resource(0x0404, CAPTION + bytes(600))]),
        "iptc_without_room": psd([RESOLUTION, resource(0x0404, iim())]),
        "no_iptc": psd([RESOLUTION, resource(0x0425, bytes(16), b"digest")]),
        "named_iptc_odd_size": psd([resource(0x0404, CAPTION + b"\0\0\0", b"IPTC-NAA record")]),
        "other_signature_first": psd([resource(0x0425, b"\1", signature=b"PHUT"), resource(0x0404, CAPTION)]),
        "two_iptc_records": psd([resource(0x0404, iim()), RESOLUTION, resource(0x0404, CAPTION, signature=b"8bim")]),
        "section_past_end": psd([RESOLUTION], section_length=4000),
        "large_document_version": psd([resource(0x0404, CAPTION)], version=2),
    }


# Small files of the public corpus: real layouts, and broken ones that other
# readers crashed on.
CORPUS_SEEDS = {
    "tiff": ["tiff/ex2_mini9.tif", "tiff/et_ExifTool.tif", "raw/et_Nikon.nef",
             "malformed/ex2_heap-oob-write.tiff", "malformed/ex2_issue_2339_poc.tiff"],
    "psd": ["psd/et_Photoshop.psd", "malformed/ex2_issue_3513_poc.psd",
            "malformed/mde_AssertionError.PsdReader.extract.psd"],
}


def main():
    corpus = sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "..", "..", "shared", "corpus")
    for kind, seeds in (("tiff", tiff_seeds()), ("psd", psd_seeds())):
        for target in ("fuzz_%s_reader" % kind, "fuzz_%s_writer" % kind):
            folder = os.path.join(HERE, "corpus", target)
            os.makedirs(folder, exist_ok=True)
            for name, data in seeds.items():
                with open(os.path.join(folder, name), "wb") as f:
                    f.write(data)
            for path in CORPUS_SEEDS[kind]:
                source = os.path.join(corpus, path)
                if os.path.isfile(source):
                    shutil.copyfile(source, os.path.join(folder, "corpus_" + os.path.basename(path)))


if __name__ == "__main__":
    main()

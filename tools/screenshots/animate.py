#!/usr/bin/env python3
"""Makes one animated PNG of frames that are PNGs themselves, as the format's extension describes it.

  animate.py FILM FOLDER    the frames are named NUMBER-LEFT-TOP-MILLISECONDS.png, the first one being whole
"""
import re
import struct
import sys
import zlib
from pathlib import Path

SIGNATURE = b"\x89PNG\r\n\x1a\n"


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def read(path):
    """The header, and the pixels as they are compressed."""
    data = path.read_bytes()
    at, header, pixels = len(SIGNATURE), b"", b""
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + size]
        header = body if kind == b"IHDR" else header
        pixels += body if kind == b"IDAT" else b""
        at += size + 12
    return header, pixels


def smaller(pixels):
    return min(pixels, zlib.compress(zlib.decompress(pixels), 9), key=len)


def main():
    film, folder = sys.argv[1:]
    frames = sorted(Path(folder).glob("*.png"))
    whole, _ = read(frames[0])
    out = SIGNATURE + chunk(b"IHDR", whole) + chunk(b"acTL", struct.pack(">II", len(frames), 0))
    number = 0
    for index, frame in enumerate(frames):
        left, top, lasts = map(int, re.fullmatch(r"\d+-(\d+)-(\d+)-(\d+)", frame.stem).groups())
        header, pixels = read(frame)
        if header[8:] != whole[8:]:
            sys.exit(f"{frame.name} is of another kind than the first frame.")
        width, height = struct.unpack(">II", header[:8])
        out += chunk(b"fcTL", struct.pack(">IIIIIHHBB", number, width, height, left, top, min(lasts, 65535), 1000, 0, 0))
        number += 1
        if index == 0:
            out += chunk(b"IDAT", smaller(pixels))
        else:
            out += chunk(b"fdAT", struct.pack(">I", number) + smaller(pixels))
            number += 1
    Path(film).write_bytes(out + chunk(b"IEND", b""))


main()

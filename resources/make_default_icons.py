#!/usr/bin/env python3
"""Writes the default account icons: small uncompressed RGBA TIFF files (one
strip, unassociated alpha) showing a green ledger page with ruled lines.
Run from this folder: python3 make_default_icons.py"""
import struct


def pixel(x, y, size):
    margin = size // 8
    inside = margin <= x < size - margin and margin <= y < size - margin
    if not inside:
        return (0, 0, 0, 0)
    border = max(1, size // 32)
    if (x < margin + border or x >= size - margin - border or y < margin + border
            or y >= size - margin - border):
        return (20, 90, 50, 255)
    ruling = max(4, size // 8)
    if (y - margin) % ruling == 0:
        return (120, 170, 140, 255)
    if x == margin + size // 4:
        return (200, 60, 60, 255)
    return (236, 246, 238, 255)


def tiff(size):
    pixels = bytearray()
    for y in range(size):
        for x in range(size):
            pixels.extend(pixel(x, y, size))
    entries = []  # (tag, type, count, value-or-offset)
    header_size = 8
    bits_offset = header_size
    image_offset = bits_offset + 8
    ifd_offset = image_offset + len(pixels)
    entries = [
        (256, 3, 1, size),            # ImageWidth
        (257, 3, 1, size),            # ImageLength
        (258, 3, 4, bits_offset),     # BitsPerSample 8,8,8,8
        (259, 3, 1, 1),               # Compression: none
        (262, 3, 1, 2),               # Photometric: RGB
        (273, 4, 1, image_offset),    # StripOffsets
        (277, 3, 1, 4),               # SamplesPerPixel
        (278, 3, 1, size),            # RowsPerStrip
        (279, 4, 1, len(pixels)),     # StripByteCounts
        (284, 3, 1, 1),               # PlanarConfiguration: chunky
        (338, 3, 1, 2),               # ExtraSamples: unassociated alpha
    ]
    out = bytearray(b"II*\x00" + struct.pack("<I", ifd_offset))
    out += struct.pack("<4H", 8, 8, 8, 8)
    out += pixels
    out += struct.pack("<H", len(entries))
    for tag, kind, count, value in entries:
        if kind == 3 and count == 1:
            out += struct.pack("<HHIHH", tag, kind, count, value, 0)
        else:
            out += struct.pack("<HHII", tag, kind, count, value)
    out += struct.pack("<I", 0)
    return bytes(out)


if __name__ == "__main__":
    with open("accounticon_default.tiff", "wb") as f:
        f.write(tiff(32))
    with open("accounticon_default_128.tiff", "wb") as f:
        f.write(tiff(128))

# SPDX-License-Identifier: Apache-2.0
"""Puts event information tables with parental ratings into a transport stream. Part of make_rights.py."""
import struct

PACKET = 188
EVENTS_PID = 0x12
PRESENT_FOLLOWING = 0x4E
PARENTAL_RATING = 0x55


def checksum(data):
    value = 0xFFFFFFFF
    for byte in data:
        value ^= byte << 24
        for _ in range(8):
            value = ((value << 1) ^ (0x04C11DB7 if value & 0x80000000 else 0)) & 0xFFFFFFFF
    return value


def section(service, number, version, ratings):
    """One event; ratings: (three-letter country, code)."""
    entries = b"".join(country.encode() + bytes([code]) for country, code in ratings)
    descriptor = bytes([PARENTAL_RATING, len(entries)]) + entries if ratings else b""
    event = struct.pack(">H5s3sH", 1 + number, b"\xe0\x00\x00\x00\x00", b"\x01\x00\x00", 0x8000 | len(descriptor)) + descriptor
    body = struct.pack(">HBBBHHBB", service, 0xC1 | version << 1, number, 1, 1, 1, 1, PRESENT_FOLLOWING) + event
    table = struct.pack(">BH", PRESENT_FOLLOWING, 0xF000 | len(body) + 4) + body
    return table + struct.pack(">I", checksum(table))


def packet(counter, content):
    payload = b"\x00" + content
    return bytes([0x47, 0x40 | EVENTS_PID >> 8, EVENTS_PID & 0xFF, 0x10 | counter & 0x0F]) + payload.ljust(PACKET - 4, b"\xff")


def pidOf(stream, at):
    return (stream[at + 1] & 0x1F) << 8 | stream[at + 2]


def serviceOf(stream):
    at = next(at for at in range(0, len(stream), PACKET) if pidOf(stream, at) == 0)
    return struct.unpack(">H", stream[at + 13 : at + 15])[0]


def firstMedia(stream):
    """Where the tables at the start end."""
    return next(at for at in range(0, len(stream), PACKET) if pidOf(stream, at) not in (0, 0x11, 0x1000))


def rated(stream, events):
    """events: (part of the stream from 0 to 1, ratings). The first is there before the first picture. Each comes with a following
    event that is rated 18 and must not count yet."""
    service = serviceOf(stream)
    out = stream
    for version, (part, ratings) in reversed(list(enumerate(events))):
        at = max(firstMedia(stream), int(len(stream) * part) // PACKET * PACKET)
        tables = (packet(2 * version, section(service, 0, version, ratings)),
                  packet(2 * version + 1, section(service, 1, version, [("DEU", 15)])))
        out = out[:at] + b"".join(tables) + out[at:]
    return out

# SPDX-License-Identifier: Apache-2.0
"""Encrypts fragmented MP4 as the common encryption standard says (ISO/IEC 23001-7), schemes "cenc" and "cbcs". Part of make_rights.py.

One track a file. Of video only slices are encrypted, and their first bytes stay clear; of sound everything is.
"""
import base64
import re
import struct

from cryptography.hazmat.primitives.ciphers import Cipher, algorithms, modes

CLEARKEY_SYSTEM = "1077efec-c0b2-4d02-ace3-3c1e52e2fb4b"
BLOCK = 16
CLEAR_BYTES_OF_SLICE = 68  # the length field, the header, and a little of what follows
CRYPT_BLOCKS, SKIP_BLOCKS = 1, 9
SLICES = (1, 5)
PROTECTED_ENTRIES = {b"avc1": b"encv", b"mp4a": b"enca"}


def box(kind, *parts):
    content = b"".join(parts)
    return struct.pack(">I4s", 8 + len(content), kind) + content


def fullBox(kind, version, flags, *parts):
    return box(kind, struct.pack(">I", version << 24 | flags), *parts)


def boxes(data, start=0, end=None):
    at, end = start, len(data) if end is None else end
    while at + 8 <= end:
        size, kind = struct.unpack(">I4s", data[at : at + 8])
        yield kind, data[at : at + size]
        at += size


def rebuilt(data, path, change):
    """The same boxes, with change(box) in the place of each box at the path."""
    out = b""
    for kind, each in boxes(data):
        if kind == path[0]:
            each = change(each) if len(path) == 1 else box(kind, rebuilt(each[8:], path[1:], change))
        out += each
    return out


def find(data, *path):
    for kind, each in boxes(data):
        if kind == path[0]:
            return each if len(path) == 1 else find(each[8:], *path[1:])
    raise ValueError("no box %s" % path[0])


class Protection:
    """How one track is encrypted."""

    def __init__(self, scheme, kid, key, video):
        self.scheme = scheme
        self.kid = bytes.fromhex(kid)
        self.key = bytes.fromhex(key)
        self.video = video
        self.count = 0
        self.constant_iv = bytes(range(BLOCK))

    # -- the beginning of a track

    def trackEncryption(self):
        if self.scheme == b"cenc":
            return fullBox(b"tenc", 0, 0, bytes([0, 0, 1, 8]), self.kid)
        pattern = CRYPT_BLOCKS << 4 | SKIP_BLOCKS if self.video else 0
        return fullBox(b"tenc", 1, 0, bytes([0, pattern, 1, 0]), self.kid, bytes([BLOCK]), self.constant_iv)

    def sampleDescription(self, description):
        entry = description[16:]
        size, kind = struct.unpack(">I4s", entry[:8])
        scheme = box(b"sinf", box(b"frma", kind), fullBox(b"schm", 0, 0, self.scheme, struct.pack(">I", 0x10000)),
                     box(b"schi", self.trackEncryption()))
        return box(b"stsd", description[8:16], box(PROTECTED_ENTRIES[kind], entry[8:size], scheme))

    def initialization(self, data, systems=()):
        data = rebuilt(data, [b"moov", b"trak", b"mdia", b"minf", b"stbl", b"stsd"], self.sampleDescription)
        return rebuilt(data, [b"moov"], lambda moov: moov if not systems else box(b"moov", moov[8:], *map(self.pssh, systems)))

    def pssh(self, system):
        return fullBox(b"pssh", 1, 0, bytes.fromhex(system.replace("-", "")), struct.pack(">I", 1), self.kid, struct.pack(">I", 0))

    # -- segments

    def subsamples(self, sample):
        """(clear, encrypted) byte counts."""
        if not self.video:
            return [(0, len(sample))]
        parts = []
        at = 0
        while at < len(sample):
            size = struct.unpack(">I", sample[at : at + 4])[0] + 4
            isSlice = sample[at + 4] & 31 in SLICES
            clear = size if not isSlice else min(size, CLEAR_BYTES_OF_SLICE + max(0, size - CLEAR_BYTES_OF_SLICE) % BLOCK)
            parts.append((clear, size - clear))
            at += size
        return parts

    def encryptCenc(self, sample, parts, iv):
        cipher = Cipher(algorithms.AES(self.key), modes.CTR(iv + bytes(8))).encryptor()
        out, at = bytearray(sample), 0
        for clear, encrypted in parts:
            at += clear
            out[at : at + encrypted] = cipher.update(bytes(out[at : at + encrypted]))
            at += encrypted
        return bytes(out)

    def encryptCbcs(self, sample, parts):
        out, at = bytearray(sample), 0
        crypt, skip = (CRYPT_BLOCKS, SKIP_BLOCKS) if self.video else (1, 0)
        for clear, encrypted in parts:
            at += clear
            end = at + encrypted
            cipher = Cipher(algorithms.AES(self.key), modes.CBC(self.constant_iv)).encryptor()
            while end - at >= BLOCK:
                size = min(crypt * BLOCK, (end - at) // BLOCK * BLOCK)
                out[at : at + size] = cipher.update(bytes(out[at : at + size]))
                at = min(end, at + size + skip * BLOCK)
            at = end
        return bytes(out)

    def encrypt(self, sample):
        """Gives (the encrypted sample, its auxiliary information)."""
        parts = self.subsamples(sample)
        self.count += 1
        iv = struct.pack(">Q", self.count) if self.scheme == b"cenc" else b""
        table = struct.pack(">H", len(parts)) + b"".join(struct.pack(">HI", *part) for part in parts) if self.video else b""
        return self.encryptCenc(sample, parts, iv) if iv else self.encryptCbcs(sample, parts), iv + table

    def segment(self, data):
        out, fragment = b"", None
        for kind, each in boxes(data):
            if kind == b"sidx":
                continue  # sizes change; templates do without
            if kind == b"moof":
                fragment = each
            elif kind == b"mdat" and fragment is not None:
                out += self.fragment(fragment, each[8:])
                fragment = None
            else:
                out += each
        return out

    def fragment(self, moof, media):
        samples, auxiliary, at = [], [], 0
        for size in sampleSizes(moof):
            sample, information = self.encrypt(media[at : at + size])
            samples.append(sample)
            auxiliary.append(information)
            at += size
        tables = self.auxiliaryBoxes(auxiliary)
        size = len(withTables(moof, tables, 0, 0))
        whole = withTables(moof, tables, 0, size + 8)
        if tables:
            offset = whole.rindex(tables[-1]) + 16  # of the first entry, from the fragment's start
            whole = withTables(moof, tables, offset, size + 8)
        return whole + box(b"mdat", *samples)

    def auxiliaryBoxes(self, auxiliary):
        """saiz, senc; saio goes between them and is made when its offset is known."""
        if not any(auxiliary):
            return []  # a constant IV and no subsamples: there is nothing to tell
        count = struct.pack(">I", len(auxiliary))
        return [fullBox(b"saiz", 0, 0, b"\x00", count, bytes(map(len, auxiliary))),
                fullBox(b"senc", 0, 2 if self.video else 0, count, *auxiliary)]


def protectionOf(initialization, scheme, kid, key):
    """None for a track of another kind than picture and sound: that stays clear."""
    description = find(initialization, b"moov")[8:]
    for name in (b"trak", b"mdia", b"minf", b"stbl", b"stsd"):
        description = find(description, name)[8:]
    entry = description[12:16]
    return Protection(scheme, kid, key, entry == b"avc1") if entry in PROTECTED_ENTRIES else None


def sampleSizes(moof):
    run = find(moof[8:], b"traf", b"trun")
    flags, count = struct.unpack(">II", run[8:16])
    flags &= 0xFFFFFF
    at = 16 + (4 if flags & 1 else 0) + (4 if flags & 4 else 0)
    fields = [flag for flag in (0x100, 0x200, 0x400, 0x800) if flags & flag]
    if 0x200 in fields:
        place = fields.index(0x200) * 4
        return [struct.unpack(">I", run[at + i * 4 * len(fields) + place :][:4])[0] for i in range(count)]
    header = find(moof[8:], b"traf", b"tfhd")
    flags = struct.unpack(">I", header[8:12])[0] & 0xFFFFFF
    at = 16 + (8 if flags & 1 else 0) + (4 if flags & 2 else 0) + (4 if flags & 8 else 0)
    return [struct.unpack(">I", header[at : at + 4])[0]] * count


def withTables(moof, tables, auxiliary_offset, data_offset):
    def track(fragment):
        run = lambda each: each[:16] + struct.pack(">i", data_offset) + each[20:]
        content = rebuilt(fragment[8:], [b"trun"], run)
        if tables:
            content += tables[0] + fullBox(b"saio", 0, 0, struct.pack(">II", 1, auxiliary_offset)) + tables[1]
        return box(b"traf", content)

    return box(b"moof", rebuilt(moof[8:], [b"traf"], track))


def uuid(kid):
    return "-".join(re.fullmatch(r"(.{8})(.{4})(.{4})(.{4})(.{12})", kid).groups())


def psshText(kid, system):
    return base64.b64encode(Protection(b"cenc", kid, kid, True).pssh(system)).decode()

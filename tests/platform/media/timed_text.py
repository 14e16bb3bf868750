# SPDX-License-Identifier: Apache-2.0
"""Timed text for the sample media: documents, and the boxes that carry them in MP4 files and segments. ffmpeg writes none of these.

A document here is (start in ms, end in ms, bytes).
"""
import random
import struct

TIMESCALE = 1000
SEGMENT_TYPE = struct.pack(">4sI4s4s", b"msdh", 0, b"msdh", b"msix")
MATRIX = struct.pack(">9I", 0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000)
NAMESPACES = ('xmlns="http://www.w3.org/ns/ttml" xmlns:tts="http://www.w3.org/ns/ttml#styling" '
              'xmlns:ttp="http://www.w3.org/ns/ttml#parameter" ttp:timeBase="media"')
FONT_DATA = "AAEAAAAKAIAAAwAgT1MvMg=="


# ---- documents

def clock(ms):
    return "%02d:%02d:%02d.%03d" % (ms // 3600000, ms // 60000 % 60, ms // 1000 % 60, ms % 1000)


def document(language, start, end, text, head="", style='tts:fontFamily="proportionalSansSerif"'):
    return ('<?xml version="1.0" encoding="UTF-8"?>\n<tt %s xml:lang="%s"><head>%s<styling><style xml:id="s" tts:color="white" '
            'tts:backgroundColor="black" %s/></styling><layout><region xml:id="r" tts:origin="10%% 70%%" tts:extent="80%% 20%%" '
            'tts:displayAlign="after"/></layout></head>\n<body><div><p region="r" style="s" begin="%s" end="%s">%s</p></div></body></tt>\n'
            % (NAMESPACES, language, head, style, clock(start), clock(end), text)).encode()


def every(language, ms, seconds):
    """A document for each span of that length."""
    return [(start, start + ms, document(language, start, start + ms, "%s %d<br/>zw\u00f6lf \u2713" % (language, start)))
            for start in range(0, seconds * 1000, ms)]


def odd(seconds):
    """What must be passed on as it is: malformed, large, empty of text, with fonts; then silence."""
    noise = random.Random(5)
    large = "".join(noise.choice("abcdefghij klmnopqrst") for _ in range(1 << 20))
    fonts = ('<resources><font family="Downloaded" src="fonts/one.ttf"/><font family="Embedded"><source>'
             '<data type="font/sfnt">%s</data></source></font></resources>' % FONT_DATA)
    texts = [
        b"<tt><body><p begin='0s' & never closed \xff\xfe\x00 bytes",
        document("ita", 1000, 2000, large),
        document("ita", 2000, 3000, "two fonts", fonts, 'tts:fontFamily="Downloaded, Embedded"'),
        document("ita", 3000, 4000, "a font that the manifest offers", "", 'tts:fontFamily="Offered"'),
        document("ita", 4000, 5000, "known fonts", fonts, 'tts:fontFamily="Offered, Embedded"'),
    ]
    return [(number * 1000, (number + 1) * 1000, text) for number, text in enumerate(texts) if number < seconds]


# ---- boxes

def box(kind, *parts):
    content = b"".join(parts)
    return struct.pack(">I4s", 8 + len(content), kind.encode()) + content


def full(kind, version, flags, *parts):
    return box(kind, struct.pack(">I", version << 24 | flags), *parts)


def packedLanguage(language):
    first, second, third = (ord(letter) - 96 for letter in language)
    return struct.pack(">H", first << 10 | second << 5 | third)


def text(value):
    return value.encode() + b"\0"


def sampleTables(documents, offset):
    """Where the samples are: one chunk for each. Without documents the tables of a file in fragments, which are empty."""
    offsets = []
    for _, _, data in documents:
        offsets.append(offset)
        offset += len(data)
    count = len(documents)
    return [
        full("stts", 0, 0, struct.pack(">I", count), *(struct.pack(">II", 1, end - start) for start, end, _ in documents)),
        full("stsc", 0, 0, struct.pack(">I", min(count, 1)), struct.pack(">III", 1, 1, 1) if count else b""),
        full("stsz", 0, 0, struct.pack(">II", 0, count), *(struct.pack(">I", len(data)) for _, _, data in documents)),
        full("stco", 0, 0, struct.pack(">I", count), *(struct.pack(">I", each) for each in offsets)),
    ]


def track(number, language, documents=(), offset=0, movie_timescale=TIMESCALE):
    length = documents[-1][1] if documents else 0
    entry = box("stpp", b"\0" * 6, struct.pack(">H", 1), text("http://www.w3.org/ns/ttml"), text(""), text(""))
    tables = box("stbl", full("stsd", 0, 0, struct.pack(">I", 1), entry), *sampleTables(documents, offset))
    reference = box("dinf", full("dref", 0, 0, struct.pack(">I", 1), full("url ", 0, 1)))
    media = box("mdia", full("mdhd", 0, 0, struct.pack(">IIII", 0, 0, TIMESCALE, length), packedLanguage(language), b"\0\0"),
                full("hdlr", 0, 0, b"\0" * 4, b"subt", b"\0" * 12, text("Subtitles")), box("minf", full("sthd", 0, 0), reference, tables))
    head = full("tkhd", 0, 3, struct.pack(">IIIII", 0, 0, number, 0, length * movie_timescale // TIMESCALE), b"\0" * 16, MATRIX, b"\0" * 8)
    return box("trak", head, media)


def trackDefaults(number):
    return full("trex", 0, 0, struct.pack(">IIIII", number, 1, 0, 0, 0))


def initSegment(language):
    movie = full("mvhd", 0, 0, struct.pack(">IIII", 0, 0, TIMESCALE, 0), struct.pack(">IH", 0x10000, 0x100), b"\0" * 10, MATRIX, b"\0" * 24,
                 struct.pack(">I", 2))
    return box("ftyp", b"iso6", b"\0" * 4, b"iso6dash") + box("moov", movie, track(1, language), box("mvex", trackDefaults(1)))


def fragment(sequence, number, documents):
    def head(offset):
        samples = b"".join(struct.pack(">III", end - start, len(data), 0x02000000) for start, end, data in documents)
        run = full("trun", 0, 0x000701, struct.pack(">Ii", len(documents), offset), samples)
        return box("moof", full("mfhd", 0, 0, struct.pack(">I", sequence)),
                   box("traf", full("tfhd", 0, 0x020000, struct.pack(">I", number)), full("tfdt", 1, 0, struct.pack(">Q", documents[0][0])), run))
    return head(len(head(0)) + 8) + box("mdat", b"".join(data for _, _, data in documents))


def emptySegment(number, segment_ms):
    """Nothing is said for so long: one sample without a document."""
    start = (number - 1) * segment_ms
    return box("styp", SEGMENT_TYPE) + fragment(number, 1, [(start, start + segment_ms, b"")])


def segments(language, documents, segment_ms):
    """The initialisation segment, and the media segments by number from 1 on."""
    parts = {}
    for each in documents:
        parts.setdefault(each[0] // segment_ms + 1, []).append(each)
    return initSegment(language), {number: box("styp", SEGMENT_TYPE) + fragment(number, 1, part) for number, part in parts.items()}


def boxesOf(data, start=0, end=None):
    end = len(data) if end is None else end
    while start < end:
        size, kind = struct.unpack_from(">I4s", data, start)
        yield kind.decode("latin-1"), start, size
        start += size


def children(data):
    return [(kind, data[start:start + size]) for kind, start, size in boxesOf(data, 8)]


def moved(data, distance):
    """A track whose media lie further on in the file."""
    if data[4:8] in (b"trak", b"mdia", b"minf", b"stbl"):
        return box(data[4:8].decode(), *(moved(child, distance) for _, child in children(data)))
    if data[4:8] != b"stco":
        return data
    offsets = struct.unpack_from(">%dI" % struct.unpack_from(">I", data, 12)[0], data, 16)
    return data[:16] + b"".join(struct.pack(">I", each + distance) for each in offsets)


def intoFile(source, tracks):
    """An MP4 file whose index comes last, with these (language, documents) as more tracks."""
    parts = [(kind, source[start:start + size]) for kind, start, size in boxesOf(source)]
    texts = box("mdat", *(data for _, documents in tracks for _, _, data in documents))
    out = b""
    for kind, data in parts:
        if kind == "moov":
            movie = dict(children(data))
            offset = len(parts[0][1]) + 8
            more = []
            for number, (language, documents) in enumerate(tracks):
                more.append(track(90 + number, language, documents, offset, movieTimescale(movie)))
                offset += sum(len(each) for _, _, each in documents)
            data = box("moov", *(moved(child, len(texts)) for _, child in children(data)), *more)
        out += data
        if kind == "ftyp":
            out += texts
    return out


def intoFragments(source, tracks):
    """A fragmented MP4 file with these as more tracks, of which a fragment goes before the picture's of the same second."""
    out = b""
    rest = {number: list(documents) for number, (_, documents) in enumerate(tracks)}
    moofs = 0
    total = sum(1 for kind, _, _ in boxesOf(source) if kind == "moof")
    length = max(documents[-1][1] for _, documents in tracks)
    for kind, start, size in boxesOf(source):
        data = source[start:start + size]
        if kind == "moov":
            own = children(data)
            data = box("moov", *(child for name, child in own if name != "mvex"),
                       *(track(90 + number, language) for number, (language, _) in enumerate(tracks)),
                       *(withDefaults(child, tracks, length * movieTimescale(dict(own)) // TIMESCALE) for name, child in own if name == "mvex"))
        elif kind == "moof":
            moofs += 1
            for number, documents in rest.items():
                part = [each for each in documents if each[0] * total < moofs * length]
                rest[number] = documents[len(part):]
                if part:
                    out += fragment(1000 * (number + 1) + moofs, 90 + number, part)
        elif kind in ("mfra", "sidx"):
            continue
        out += data
    return out


def movieTimescale(children_of_movie):
    return struct.unpack_from(">I", children_of_movie["mvhd"], 20)[0]


def withDefaults(data, tracks, length):
    """Without an index of fragments, this box is what says how long the file plays."""
    own = [child for kind, child in children(data) if kind != "mehd"]
    return box("mvex", full("mehd", 0, 0, struct.pack(">I", length)), *own, *(trackDefaults(90 + number) for number in range(len(tracks))))

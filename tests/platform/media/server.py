#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The web server of the tests and the demo: files with ranges and keep-alive, faults on request, live streams by the clock.

    server.py --root DIR [--port 0] [--until-eof]

It listens on the loopback address only and prints one line, "PORT n", as soon as it answers. --until-eof: it ends when its
standard input does, so it never outlives who started it.

    /PATH                      a file of DIR; GET and HEAD, one byte range
    /fault/status/CODE/PATH    answers with that status and no media
    /fault/close/PATH          closes the connection in the middle of the body, for every request
    /fault/stall/PATH          sends the first half of the body, then nothing more
    /fault/hang/PATH           takes the request and never answers
    /fault/drop/PATH           closes the connection without an answer
    /slow/RATE/PATH            at most RATE bytes a second ("60k" is 60000)
    /redirect/PATH             302 to /PATH
    /live/dash/live.mpd        live DASH: a moving window over the on-demand segments, repeated without end
    /live/dash/periods.mpd     the same with English and German sound; a new period begins every PERIOD_S seconds
    /live/hls/live.m3u8        live HLS: the same, the last three segments only
    /live/hls/window.m3u8      live HLS with a window of ten segments
    /live/dry/...              these, but from the first request on nothing is added
    /live/dip/...              the same, but after DIP_S seconds all that is missing is there
    /licence/KIND              POST: a ClearKey licence for the sample keys. good, or wrong (other keys), none (no keys), junk, huge,
                               refused, silent
    /requests                  what was asked for so far, one JSON object a line: method, path, range, agent, languages
"""
import argparse
import base64
import email.utils
import json
import math
import os
import re
import socket
import socketserver
import struct
import sys
import threading
import time
import urllib.parse

TYPES = {
    ".mp4": "video/mp4", ".m4s": "video/mp4", ".m4a": "audio/mp4", ".ts": "video/mp2t", ".mp3": "audio/mpeg", ".aac": "audio/aac",
    ".mpd": "application/dash+xml", ".m3u8": "application/vnd.apple.mpegurl", ".html": "text/html; charset=utf-8",
    ".htm": "text/html", ".js": "text/javascript; charset=utf-8", ".json": "application/json", ".xml": "application/xml", ".vtt": "text/vtt",
    ".ttml": "application/ttml+xml", ".css": "text/css; charset=utf-8", ".png": "image/png", ".svg": "image/svg+xml",
    ".xhtml": "application/xhtml+xml", ".hbbtv": "application/vnd.hbbtv.xhtml+xml", ".HBBTV": "Application/vnd.HbbTV.xhtml+XML",
    ".ait": "application/vnd.dvb.ait+xml", ".cas": "application/vnd.oipf.ContentAccessStreaming+xml",
}
REASONS = {200: "OK", 204: "No Content", 206: "Partial Content", 302: "Found", 400: "Bad Request", 401: "Unauthorized", 403: "Forbidden", 404: "Not Found",
           405: "Method Not Allowed", 410: "Gone", 416: "Range Not Satisfiable", 500: "Internal Server Error", 503: "Service Unavailable"}
CHUNK = 65536
LARGEST_BODY = 65536


class Request:
    def __init__(self, method, target, headers, keep_alive, body):
        self.method = method
        self.path = urllib.parse.unquote(urllib.parse.urlsplit(target).path)
        self.headers = headers
        self.keep_alive = keep_alive
        self.body = body


class BadRequest(Exception):
    pass


def parseRange(text, size):
    """Gives (first, last), None for the whole body, or False when the range lies outside."""
    match = re.fullmatch(r"bytes=(\d*)-(\d*)", text or "")
    if not match or match.group(0) == "bytes=-":
        return None
    if not match.group(1):
        first, last = max(0, size - int(match.group(2))), size - 1
    else:
        first, last = int(match.group(1)), min(int(match.group(2) or size - 1), size - 1)
    return (first, last) if first <= last and first < size else False


class Handler(socketserver.StreamRequestHandler):
    """One connection. The request line and the headers are read by hand: this answers in a fraction of a millisecond."""

    disable_nagle_algorithm = True
    rbufsize = 65536

    def handle(self):
        try:
            while self.serveOne():
                pass
        except (ConnectionError, TimeoutError, ValueError, BadRequest):
            pass  # the client went away or spoke nonsense: the connection ends, which is the whole answer

    def serveOne(self):
        request = self.readRequest()
        if request is None:
            return False
        self.server.note(request)
        self.answer(request)
        return request.keep_alive and not self.server.stopping.is_set()

    def readRequest(self):
        line = self.rfile.readline(65536)
        if not line.strip():
            return None
        parts = line.decode("latin-1").split()
        if len(parts) != 3:
            raise BadRequest()
        headers = {}
        while True:
            line = self.rfile.readline(65536)
            if line in (b"\r\n", b"\n", b""):
                break
            name, _, value = line.decode("latin-1").partition(":")
            headers[name.strip().lower()] = value.strip()
        keep_alive = parts[2] == "HTTP/1.1" and headers.get("connection", "").lower() != "close"
        body = self.rfile.read(min(LARGEST_BODY, int(headers.get("content-length", 0)))) if parts[0] == "POST" else b""
        return Request(parts[0], parts[1], headers, keep_alive, body)

    def answer(self, request):
        if request.method == "POST" and request.path.startswith("/licence/"):
            return self.sendLicence(request, request.path[len("/licence/"):])
        if request.method not in ("GET", "HEAD"):
            return self.sendStatus(request, 405)
        for prefix, action in ROUTES:
            if request.path.startswith(prefix):
                return action(self, request, request.path[len(prefix):])
        return self.sendFile(request, request.path)

    # -- answers

    def head(self, request, status, length, kind, extra=()):
        lines = ["HTTP/1.1 %d %s" % (status, REASONS.get(status, "Status")), "Date: " + email.utils.formatdate(usegmt=True),
                 "Content-Type: " + kind, "Content-Length: %d" % length, "Accept-Ranges: bytes", "Access-Control-Allow-Origin: *",
                 "Connection: " + ("keep-alive" if request.keep_alive else "close"), *extra]
        return ("\r\n".join(lines) + "\r\n\r\n").encode("latin-1")

    def sendStatus(self, request, status, extra=()):
        text = "<!DOCTYPE html>\n<title>%d</title>\n<p>%s</p>\n" % (status, REASONS.get(status, "Status"))
        body = b"" if status == 204 else text.encode()
        head = self.head(request, status, len(body), "text/html; charset=utf-8", extra)
        self.request.sendall(head if request.method == "HEAD" else head + body)

    def sendBytes(self, request, body, kind, extra=()):
        head = self.head(request, 200, len(body), kind, extra)
        self.request.sendall(head if request.method == "HEAD" else head + body)

    def openBody(self, request, path, limit=None):
        """Sends the head for a file; gives (file, first, count) of the body that is to follow, or None when there is none."""
        name = os.path.normpath(os.path.join(self.server.root, path.lstrip("/")))
        if not name.startswith(self.server.root + os.sep) or not os.path.isfile(name):
            self.sendStatus(request, 404)
            return None
        size = os.path.getsize(name)
        span = parseRange(request.headers.get("range"), size)
        if span is False:
            self.sendStatus(request, 416, ["Content-Range: bytes */%d" % size])
            return None
        first, last = span or (0, size - 1)
        extra = ["Content-Range: bytes %d-%d/%d" % (first, last, size)] if span else []
        kind = TYPES.get(os.path.splitext(name)[1], "application/octet-stream")
        head = self.head(request, 206 if span else 200, last - first + 1, kind, extra)
        if request.method == "HEAD" or last < first:
            self.request.sendall(head)
            return None
        self.request.send(head, socket.MSG_MORE)
        end = last + 1 if limit is None else max(first, min(last + 1, limit(size)))
        return open(name, "rb"), first, end - first

    def sendLicence(self, request, kind):
        """ClearKey licences for the sample keys, and answers that are none."""
        if kind == "refused":
            return self.sendStatus(request, 403)
        if kind == "silent":
            return self.faultHang(request, "")
        with open(os.path.join(self.server.root, "rights", "keys.json"), encoding="utf-8") as file:
            known = {bytes.fromhex(kid): bytes.fromhex(key) for kid, key in json.load(file).items()}
        text = lambda data: base64.urlsafe_b64encode(data).rstrip(b"=").decode()
        asked = [base64.urlsafe_b64decode(kid + "=" * (-len(kid) % 4)) for kid in json.loads(request.body)["kids"]]
        keys = [{"kty": "oct", "kid": text(kid), "k": text(known[kid] if kind == "good" else bytes(16))} for kid in asked if kid in known]
        answer = json.dumps({"keys": [] if kind == "none" else keys, "type": "temporary"})
        answer = {"junk": "{\"keys\": [", "huge": answer[:-1] + " " * 100000 + "}"}.get(kind, answer)
        self.sendBytes(request, answer.encode(), "application/json")

    def sendFile(self, request, path):
        body = self.openBody(request, path)
        if body is None:
            return
        file, first, count = body
        with file:
            while count > 0:
                sent = os.sendfile(self.request.fileno(), file.fileno(), first, count)
                if sent == 0:
                    raise ConnectionError()
                first, count = first + sent, count - sent

    def sendSlowly(self, request, rest):
        rate_text, _, path = rest.partition("/")
        rate = int(rate_text[:-1]) * 1000 if rate_text.endswith("k") else int(rate_text)
        body = self.openBody(request, path)
        if body is None:
            return
        file, first, count = body
        with file:
            file.seek(first)
            piece = max(256, rate // 20)
            while count > 0:
                data = file.read(min(piece, count))
                self.request.sendall(data)
                count -= len(data)
                if self.server.stopping.wait(len(data) / rate):
                    raise ConnectionError()

    def sendRedirect(self, request, rest):
        self.sendStatus(request, 302, ["Location: /" + rest])

    def sendRequests(self, request, _rest):
        self.sendBytes(request, self.server.noted(), "application/json")

    # -- faults

    def faultStatus(self, request, rest):
        status = int(rest.partition("/")[0])
        self.sendStatus(request, status, ('WWW-Authenticate: Basic realm="films"',) if status == 401 else ())

    def sendHalf(self, request, path):
        body = self.openBody(request, path, limit=lambda size: size // 2)
        if body is None:
            return
        file, first, count = body
        with file:
            file.seek(first)
            self.request.sendall(file.read(count))

    def faultClose(self, request, path):
        self.sendHalf(request, path)
        raise ConnectionError()

    def faultStall(self, request, path):
        self.sendHalf(request, path)
        self.waitUntilGone()

    def faultStream(self, request, path):
        """As a server does that makes what it sends: no length, no ranges; half as fast again as the films need."""
        with open(os.path.join(self.server.root, path), "rb") as file:
            request.keep_alive = False
            head = self.head(request, 200, 0, TYPES[os.path.splitext(path)[1]]).replace(b"Content-Length: 0\r\n", b"")
            self.request.sendall(head.replace(b"Accept-Ranges: bytes", b"Accept-Ranges: none"))
            while data := file.read(7500):
                self.request.sendall(data)
                if self.server.stopping.wait(0.05):
                    break
        raise ConnectionError()

    def faultPlain(self, request, path):
        """As a simple server does: the length, no ranges, and no word about them."""
        with open(os.path.join(self.server.root, path), "rb") as file:
            body = file.read()
        head = self.head(request, 200, len(body), TYPES[os.path.splitext(path)[1]])
        self.request.sendall(head.replace(b"Accept-Ranges: bytes\r\n", b""))
        if request.method == "HEAD":
            return
        for at in range(0, len(body), 20000):
            self.request.sendall(body[at:at + 20000])
            if self.server.stopping.wait(0.05):
                break

    def faultQuiet(self, request, path):
        """Ranges, but no word about them."""
        head = self.head
        self.head = lambda *arguments: head(*arguments).replace(b"Accept-Ranges: bytes\r\n", b"")
        try:
            self.sendFile(request, path)
        finally:
            del self.head

    def faultHang(self, _request, _path):
        self.waitUntilGone()

    def faultDrop(self, _request, _path):
        raise ConnectionError()

    def waitUntilGone(self):
        """Holds the connection until the client closes it or the server ends."""
        self.request.settimeout(0.2)
        while not self.server.stopping.is_set():
            try:
                if self.request.recv(CHUNK) == b"":
                    break
            except TimeoutError:
                continue
        raise ConnectionError()

    # -- live

    def sendLive(self, request, rest):
        head, _, tail = rest.partition("/")
        body = self.server.dried[head].answer(tail) if head in self.server.dried else self.server.live.answer(rest)
        if body is None:
            return self.sendStatus(request, 404)
        return self.sendBytes(request, body, TYPES.get(os.path.splitext(rest)[1], "application/octet-stream"), ["Cache-Control: no-store"])


ROUTES = [
    ("/fault/status/", Handler.faultStatus), ("/fault/close/", Handler.faultClose), ("/fault/stall/", Handler.faultStall),
    ("/fault/stream/", Handler.faultStream), ("/fault/plain/", Handler.faultPlain), ("/fault/quiet/", Handler.faultQuiet),
    ("/fault/hang", Handler.faultHang), ("/fault/drop", Handler.faultDrop), ("/slow/", Handler.sendSlowly),
    ("/redirect/", Handler.sendRedirect), ("/requests", Handler.sendRequests), ("/live/", Handler.sendLive),
]


class LiveStreams:
    """Live presentations made from the first 16 s of the on-demand segments, repeated with times that go on.

    16 s because a whole number of AAC frames (750 at 48 kHz) fits: the repetition has neither gap nor overlap. The
    presentation began AGE_S before the server did, so that a window is there at once.
    """

    SEGMENT_S = 2
    COUNT = 8
    AGE_S = 60
    DASH_WINDOW_S = 30
    DIP_S = 12
    PERIOD_S = 4

    def __init__(self, root, dry_s=0):
        self.root = root
        self.dry_s = dry_s
        self.began = int(time.time()) - self.AGE_S  # whole seconds: the manifest states it so
        self.turn_packets = None
        self.dry_since = None

    def answer(self, path):
        if path == "dash/live.mpd":
            return self.manifest("dash/av.mpd")
        if path == "dash/periods.mpd":
            return self.inPeriods(self.manifest("dash/tracks.mpd"))
        if path in ("hls/live.m3u8", "hls/window.m3u8"):
            return self.playlist(3 if path == "hls/live.m3u8" else 10)
        match = re.fullmatch(r"dash/(init-\d+\.m4s)", path)
        if match:
            return self.file("dash/" + match.group(1))
        match = re.fullmatch(r"dash/seg-(\d+)-(\d+)\.m4s", path)
        if match:
            return self.dashSegment(match.group(1), int(match.group(2)))
        match = re.fullmatch(r"hls/live_(\d+)\.ts", path)
        return self.hlsSegment(int(match.group(1))) if match else None

    def file(self, path):
        name = os.path.join(self.root, path)
        if not os.path.isfile(name):
            return None
        with open(name, "rb") as file:
            return file.read()

    def complete(self):
        """How many segments are complete by now."""
        now = time.time()
        if self.dry_s:
            self.dry_since = self.dry_since or now
            if now < self.dry_since + self.dry_s:
                now = self.dry_since
        return int((now - self.began) // self.SEGMENT_S)

    def manifest(self, path):
        text = self.file(path)
        if text is None:
            return None
        stamp = lambda seconds: time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(seconds))
        text = text.decode()
        live = ('type="dynamic" availabilityStartTime="%s" publishTime="%s" minimumUpdatePeriod="PT2S" timeShiftBufferDepth="PT%dS" '
                'suggestedPresentationDelay="PT6S"' % (stamp(self.began), stamp(time.time()), self.DASH_WINDOW_S))
        text = re.sub(r'type="static"', live, text)
        text = re.sub(r'\s+mediaPresentationDuration="[^"]*"', "", text)
        return text.encode()

    def inPeriods(self, manifest):
        """The manifest with the periods of the window in place of its own: picture and the first two sounds."""
        if manifest is None:
            return None
        text = manifest.decode()
        sets = re.findall(r"[ \t]*<AdaptationSet.*?</AdaptationSet>\n", text, re.DOTALL)[:3]
        now = time.time() - self.began
        periods = ""
        for number in range(max(0, int((now - self.DASH_WINDOW_S) // self.PERIOD_S)), int(now // self.PERIOD_S) + 1):
            start = number * self.PERIOD_S
            body = re.sub(r'timescale="(\d+)"', lambda match: '%s presentationTimeOffset="%d"' % (match.group(), start * int(match.group(1))), "".join(sets))
            body = body.replace('startNumber="1"', 'startNumber="%d"' % (start // self.SEGMENT_S + 1))
            periods += '\t<Period id="%d" start="PT%dS">\n%s\t</Period>\n' % (number, start, body)
        return re.sub(r"[ \t]*<Period.*</Period>\n", lambda _: periods, text, flags=re.DOTALL).encode()

    def dashSegment(self, representation, number):
        if not 1 <= number <= self.complete():
            return None
        source = self.file("dash/seg-%s-%05d.m4s" % (representation, (number - 1) % self.COUNT + 1))
        init = self.file("dash/init-%s.m4s" % representation)
        if source is None or init is None:
            return None
        return shiftFragments(source, number, timescale(init) * self.COUNT * self.SEGMENT_S * ((number - 1) // self.COUNT))

    def playlist(self, count):
        last = self.complete()
        first = max(0, last - count)
        lines = ["#EXTM3U", "#EXT-X-VERSION:6", "#EXT-X-TARGETDURATION:%d" % self.SEGMENT_S, "#EXT-X-MEDIA-SEQUENCE:%d" % first,
                 "#EXT-X-INDEPENDENT-SEGMENTS"]
        for number in range(first, last):
            lines += ["#EXTINF:%.3f," % self.SEGMENT_S, "live_%d.ts" % number]
        return ("\n".join(lines) + "\n").encode()

    def hlsSegment(self, number):
        if not 0 <= number < self.complete():
            return None
        source = self.file("hls/muxed_%03d.ts" % (number % self.COUNT))
        if source is None:
            return None
        turns = number // self.COUNT
        return shiftTransport(source, 90000 * self.COUNT * self.SEGMENT_S * turns, self.packets(), turns)

    def packets(self):
        """How many packets with a payload each PID has in one turn: its continuity counter goes on by that."""
        if self.turn_packets is None:
            counts = {}
            for number in range(self.COUNT):
                data = self.file("hls/muxed_%03d.ts" % number) or b""
                for packet in range(0, len(data) - 187, 188):
                    pid = packetId(data, packet)
                    counts[pid] = counts.get(pid, 0) + (data[packet + 3] >> 4 & 1)
            self.turn_packets = counts
        return self.turn_packets


def boxes(data, first, end):
    """The (type, begin, end) of each MP4 box in a part of a file; begin is that of the content."""
    while first + 8 <= end:
        size, kind = struct.unpack_from(">I4s", data, first)
        if size < 8:
            return
        yield kind, first + 8, min(first + size, end)
        first += size


def findBoxes(data, path, first=0, end=None):
    end = len(data) if end is None else end
    for kind, begin, stop in boxes(data, first, end):
        if kind != path[0]:
            continue
        if len(path) == 1:
            yield begin
        else:
            yield from findBoxes(data, path[1:], begin, stop)


def timescale(init):
    begin = next(findBoxes(init, [b"moov", b"trak", b"mdia", b"mdhd"]))
    return struct.unpack_from(">I", init, begin + (20 if init[begin] == 1 else 12))[0]


def shiftFragments(data, number, ticks):
    """The same fragments at a later time: sequence number, decode time and segment index are set anew."""
    data = bytearray(data)
    for begin in findBoxes(data, [b"moof", b"mfhd"]):
        struct.pack_into(">I", data, begin + 4, number)
    for begin in findBoxes(data, [b"moof", b"traf", b"tfdt"]):
        shiftField(data, begin + 4, ticks, data[begin] == 1)
    for begin in findBoxes(data, [b"sidx"]):
        shiftField(data, begin + 12, ticks, data[begin] == 1)
    return bytes(data)


def shiftField(data, offset, ticks, is_long):
    form = ">Q" if is_long else ">I"
    struct.pack_into(form, data, offset, struct.unpack_from(form, data, offset)[0] + ticks)


def packetId(data, packet):
    return (data[packet + 1] & 0x1F) << 8 | data[packet + 2]


def shiftTransport(data, ticks, packets, turns):
    """The same transport stream at a later time: clock references and time stamps are moved by ticks of 1/90000 s."""
    data = bytearray(data)
    for packet in range(0, len(data) - 187, 188):
        counter = data[packet + 3] + packets.get(packetId(data, packet), 0) * turns
        data[packet + 3] = data[packet + 3] & 0xF0 | counter & 0x0F
        control = data[packet + 3] >> 4 & 3
        payload = packet + 4
        if control & 2:
            length = data[payload]
            if length >= 7 and data[payload + 1] & 0x10:
                shiftClock(data, payload + 2, ticks)
            payload += 1 + length
        if control & 1 and data[packet + 1] & 0x40 and payload + 19 <= packet + 188 and data[payload:payload + 3] == b"\0\0\1":
            shiftStamps(data, payload, ticks)
    return bytes(data)


def shiftClock(data, offset, ticks):
    base = int.from_bytes(data[offset:offset + 5], "big") >> 7
    rest = int.from_bytes(data[offset:offset + 6], "big") & 0x7FFF
    base = (base + ticks) & 0x1FFFFFFFF
    data[offset:offset + 6] = ((base << 15) | rest).to_bytes(6, "big")


def shiftStamps(data, pes, ticks):
    flags = data[pes + 7] >> 6
    if flags & 2:
        shiftStamp(data, pes + 9, ticks)
    if flags == 3:
        shiftStamp(data, pes + 14, ticks)


def shiftStamp(data, offset, ticks):
    first, middle, last = data[offset], *struct.unpack_from(">HH", data, offset + 1)
    value = (first >> 1 & 7) << 30 | (middle >> 1) << 15 | last >> 1
    value = (value + ticks) & 0x1FFFFFFFF
    data[offset] = first & 0xF0 | (value >> 30) << 1 | 1
    struct.pack_into(">HH", data, offset + 1, (value >> 15 & 0x7FFF) << 1 | 1, (value & 0x7FFF) << 1 | 1)


class Server(socketserver.ThreadingTCPServer):
    allow_reuse_address = True
    daemon_threads = True
    request_queue_size = 512

    def __init__(self, root, port=0):
        super().__init__(("127.0.0.1", port), Handler)
        self.root = os.path.realpath(root)
        self.live = LiveStreams(self.root)
        self.dried = {"dry": LiveStreams(self.root, math.inf), "dip": LiveStreams(self.root, LiveStreams.DIP_S)}
        self.stopping = threading.Event()
        self.noted_requests = []
        self.note_lock = threading.Lock()

    @property
    def port(self):
        return self.server_address[1]

    def note(self, request):
        entry = {"method": request.method, "path": request.path, "range": request.headers.get("range"),
                 "agent": request.headers.get("user-agent"), "languages": request.headers.get("accept-language")}
        with self.note_lock:
            self.noted_requests.append(entry)

    def noted(self):
        with self.note_lock:
            return "".join(json.dumps(entry) + "\n" for entry in self.noted_requests).encode()

    def start(self):
        """Serves on a thread of its own; for programs that use this file as a module."""
        threading.Thread(target=self.serve_forever, args=(0.05,), daemon=True).start()
        return self

    def stop(self):
        self.stopping.set()
        self.shutdown()
        self.server_close()


def endWithInput(server):
    while os.read(0, CHUNK):
        pass
    server.stop()


def main():
    parser = argparse.ArgumentParser(description="Serves sample media on the loopback address.")
    parser.add_argument("--root", required=True, help="the folder to serve")
    parser.add_argument("--port", type=int, default=0, help="0 (default) takes a free one")
    parser.add_argument("--until-eof", action="store_true", help="end when standard input ends")
    options = parser.parse_args()
    if not os.path.isdir(options.root):
        parser.error("no such folder: " + options.root)
    server = Server(options.root, options.port)
    if options.until_eof:
        threading.Thread(target=endWithInput, args=(server,), daemon=True).start()
    print("PORT %d" % server.port, flush=True)
    try:
        server.serve_forever(0.05)
    except KeyboardInterrupt:
        pass
    return 0


if __name__ == "__main__":
    sys.exit(main())

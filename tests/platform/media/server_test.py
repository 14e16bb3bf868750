#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tests of the web server that the other tests lean on.   server_test.py MEDIA_FOLDER"""
import http.client
import json
import os
import re
import socket
import subprocess
import sys
import time
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import server as media_server  # noqa: E402

MEDIA = sys.argv.pop()
SMALL_ANSWER_S = 0.001


class ServerTest(unittest.TestCase):
    def setUp(self):
        self.server = media_server.Server(MEDIA).start()
        self.client = http.client.HTTPConnection("127.0.0.1", self.server.port, timeout=10)

    def tearDown(self):
        self.client.close()
        self.server.stop()

    def get(self, path, method="GET", **headers):
        self.client.request(method, path, headers=headers)
        answer = self.client.getresponse()
        return answer, answer.read()

    def content(self, path):
        with open(os.path.join(MEDIA, path), "rb") as file:
            return file.read()

    def test_whole_file_with_its_type(self):
        for path, kind in (("two.mp4", "video/mp4"), ("dash/av.mpd", "application/dash+xml"), ("tone.mp3", "audio/mpeg"),
                           ("hls/master.m3u8", "application/vnd.apple.mpegurl"), ("two.ts", "video/mp2t")):
            answer, body = self.get("/" + path)
            self.assertEqual((answer.status, answer.getheader("Content-Type")), (200, kind))
            self.assertEqual(body, self.content(path))

    def test_ranges(self):
        whole = self.content("short/two.mp4")
        for text, part in (("bytes=10-19", whole[10:20]), ("bytes=400000-", whole[400000:]), ("bytes=-7", whole[-7:])):
            answer, body = self.get("/short/two.mp4", Range=text)
            self.assertEqual((answer.status, body), (206, part))
        answer, _ = self.get("/short/two.mp4", Range="bytes=99999999-")
        self.assertEqual(answer.status, 416)

    def test_head_has_no_body(self):
        answer, body = self.get("/two.mp4", method="HEAD")
        self.assertEqual((int(answer.getheader("Content-Length")), body), (len(self.content("two.mp4")), b""))

    def test_nothing_outside_the_folder(self):
        for path in ("/../server.py", "/%2e%2e/%2e%2e/etc/passwd", "/dash"):
            self.assertEqual(self.get(path)[0].status, 404)

    def test_statuses_and_redirect(self):
        for code in (403, 404, 500):
            self.assertEqual(self.get("/fault/status/%d/two.mp4" % code)[0].status, code)
        answer, _ = self.get("/redirect/short/two.mp4")
        self.assertEqual((answer.status, answer.getheader("Location")), (302, "/short/two.mp4"))

    def test_close_in_the_middle(self):
        with self.assertRaises(http.client.IncompleteRead) as caught:
            self.get("/fault/close/short/two.mp4")
        self.assertEqual(len(caught.exception.partial), len(self.content("short/two.mp4")) // 2)

    def test_drop_and_hang(self):
        with self.assertRaises(ConnectionError):
            self.get("/fault/drop/two.mp4")
        silent = http.client.HTTPConnection("127.0.0.1", self.server.port, timeout=0.3)
        silent.request("GET", "/fault/hang/two.mp4")
        with self.assertRaises(TimeoutError):
            silent.getresponse()
        silent.close()

    def test_slow(self):
        began = time.monotonic()
        _, body = self.get("/slow/100k/short/tone.aac")
        self.assertEqual(body, self.content("short/tone.aac"))
        self.assertGreater(time.monotonic() - began, len(body) / 100000 * 0.8)

    def test_live_hls_moves_on(self):
        _, body = self.get("/live/hls/window.m3u8")
        names = [line for line in body.decode().splitlines() if line.endswith(".ts")]
        self.assertEqual(len(names), 10)
        self.assertNotIn(b"ENDLIST", body)
        _, segment = self.get("/live/hls/" + names[0])
        self.assertEqual((segment[0], len(segment) % 188), (0x47, 0))
        self.server.live.began -= 4
        _, later = self.get("/live/hls/window.m3u8")
        self.assertEqual([line for line in later.decode().splitlines() if line.endswith(".ts")][:8], names[2:])

    def test_live_that_dries_up_stays_as_it_was_and_a_dip_ends(self):
        for dried in self.server.dried.values():
            dried.began -= 60
        before, _ = (self.get("/live/dry/hls/live.m3u8")[1], self.get("/live/dip/hls/live.m3u8"))
        for dried in self.server.dried.values():
            dried.began -= 20
            dried.dry_since -= 20
        self.assertEqual(self.get("/live/dry/hls/live.m3u8")[1], before)
        self.assertNotEqual(self.get("/live/dip/hls/live.m3u8")[1], before)
        self.assertIn(b"live_", before)

    def test_live_dash_repeats_with_later_times(self):
        _, body = self.get("/live/dash/live.mpd")
        self.assertIn(b'type="dynamic"', body)
        first, eight_later = (self.get("/live/dash/seg-0-%05d.m4s" % number)[1] for number in (2, 10))
        self.assertEqual(self.decodeTime(eight_later) - self.decodeTime(first), 16 * self.timescale())
        self.assertEqual(self.get("/live/dash/seg-0-99999.m4s")[0].status, 404)

    def test_live_dash_in_periods_begins_a_new_one_in_time(self):
        periods = lambda: re.findall(rb'<Period id="(\d+)" start="PT(\d+)S">.*?startNumber="(\d+)".*?</Period>', self.get("/live/dash/periods.mpd")[1], re.DOTALL)
        before = periods()
        self.server.live.began -= self.server.live.PERIOD_S
        self.assertIn(int(periods()[-1][0]) - int(before[-1][0]), (1, 2))  # another one may begin just now
        for number, start, segment in before:
            self.assertEqual(int(start), int(number) * self.server.live.PERIOD_S)
            self.assertEqual(int(segment), int(start) // self.server.live.SEGMENT_S + 1)

    def decodeTime(self, segment):
        begin = next(media_server.findBoxes(segment, [b"moof", b"traf", b"tfdt"]))
        return int.from_bytes(segment[begin + 4:begin + (12 if segment[begin] == 1 else 8)], "big")

    def timescale(self):
        return media_server.timescale(self.content("dash/init-0.m4s"))

    def test_tells_what_was_asked_for(self):
        self.get("/two.mp4", method="HEAD", **{"User-Agent": "Sample/1.0", "Accept-Language": "de"})
        entries = [json.loads(line) for line in self.get("/requests")[1].splitlines()]
        self.assertEqual(entries[0], {"method": "HEAD", "path": "/two.mp4", "range": None, "agent": "Sample/1.0", "languages": "de"})

    def test_answers_fast(self):
        """The middle one of many small requests: a slow server would be measured in place of the player."""
        connection = socket.create_connection(("127.0.0.1", self.server.port))
        size, times = len(self.content("dash/init-0.m4s")), []
        for _ in range(200):
            began = time.perf_counter()
            connection.sendall(b"GET /dash/init-0.m4s HTTP/1.1\r\nHost: loopback\r\n\r\n")
            received = b""
            while received.count(b"\r\n\r\n") == 0 or len(received.split(b"\r\n\r\n", 1)[1]) < size:
                received += connection.recv(65536)
            times.append(time.perf_counter() - began)
        connection.close()
        self.assertLess(sorted(times)[len(times) // 2], SMALL_ANSWER_S)


class ProgramTest(unittest.TestCase):
    def test_prints_its_port_and_ends_with_its_input(self):
        command = [sys.executable, os.path.join(HERE, "server.py"), "--root", MEDIA, "--until-eof"]
        with subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as process:
            word, port = process.stdout.readline().split()
            self.assertEqual(word, "PORT")
            client = http.client.HTTPConnection("127.0.0.1", int(port), timeout=10)
            client.request("GET", "/stamp")
            self.assertEqual(client.getresponse().status, 200)
            client.close()
            process.stdin.close()
            self.assertEqual(process.wait(timeout=10), 0)


if __name__ == "__main__":
    unittest.main()

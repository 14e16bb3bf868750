#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tests of avc-run from outside: exit statuses, messages, options.

    runner_test.py --avc-run FILE --media DIR --examples DIR
"""
import argparse
import json
import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "media"))
import server as media_server  # noqa: E402

parser = argparse.ArgumentParser()
parser.add_argument("--avc-run", required=True)
parser.add_argument("--media", required=True)
parser.add_argument("--examples", required=True)
OPTIONS, UNITTEST_ARGUMENTS = parser.parse_known_args()

PLAY = """
const video = document.createElement("object");
video.type = "%s";
document.body.appendChild(video);
video.onPlayStateChange = (state) => { if (state === 1) setTimeout(() => exit(0), %d); if (state === 6) exit(9); };
video.data = "%s";
video.play(1);
"""


def pngPixels(data):
    """(width, height, rows of RGB or RGBA bytes, bytes per pixel) of an 8-bit PNG without interlace."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "no PNG"
    at, packed, head = 8, b"", None
    while at < len(data):
        length, kind = struct.unpack_from(">I4s", data, at)
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            head = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    width, height, depth, colour = head[:4]
    assert depth == 8 and colour in (2, 6) and head[6] == 0, "another kind of PNG: %s" % (head,)
    size = 3 if colour == 2 else 4
    return width, height, unfilter(zlib.decompress(packed), width * size, size), size


def unfilter(raw, stride, size):
    rows, before = [], bytearray(stride)
    for at in range(0, len(raw), stride + 1):
        kind, row = raw[at], bytearray(raw[at + 1:at + 1 + stride])
        for index in range(stride):
            left = row[index - size] if index >= size else 0
            above = before[index]
            corner = before[index - size] if index >= size else 0
            row[index] = (row[index] + (0, left, above, (left + above) // 2, paeth(left, above, corner))[kind]) & 255
        rows.append(row)
        before = row
    return rows


def paeth(left, above, corner):
    guess = left + above - corner
    distances = abs(guess - left), abs(guess - above), abs(guess - corner)
    return (left, above, corner)[distances.index(min(distances))]


class RunnerTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = media_server.Server(OPTIONS.media).start()
        cls.base = "http://127.0.0.1:%d/" % cls.server.port

    @classmethod
    def tearDownClass(cls):
        cls.server.stop()

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()

    def tearDown(self):
        self.folder.cleanup()

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def script(self, text, name="script.js"):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def run_(self, *arguments):
        return subprocess.run([OPTIONS.avc_run, *arguments], stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
                              check=False)

    def runScript(self, text, *options):
        return self.run_(*options, self.script(text))

    # -- ends

    def test_ends_with_0_when_nothing_can_happen_any_more(self):
        result = self.runScript("let n = 0; const t = setInterval(() => { if (++n === 3) clearInterval(t); }, 1);")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def test_ends_with_the_status_of_exit(self):
        self.assertEqual(self.runScript("exit(7); console.log('not reached');").returncode, 7)

    def test_ends_with_1_for_an_uncaught_error_and_says_where(self):
        result = self.runScript("\nnull.x;")
        self.assertEqual(result.returncode, 1)
        self.assertIn("script.js", result.stderr)
        self.assertIn("2", result.stderr)

    def test_ends_with_1_for_a_syntax_error(self):
        result = self.runScript("let = ;")
        self.assertEqual(result.returncode, 1)
        self.assertIn("SyntaxError", result.stderr)

    def test_ends_with_1_for_a_rejection_that_nobody_handles(self):
        self.assertEqual(self.runScript("Promise.reject(new Error('lost'));").returncode, 1)

    def test_ends_with_2_for_wrong_usage_in_one_line(self):
        for arguments in ((), ("--no-such-option", "x.js"), ("--timeout", "soon", "x.js"), (self.path("missing.js"),)):
            result = self.run_(*arguments)
            self.assertEqual((result.returncode, result.stdout), (2, ""), arguments)
            self.assertGreater(len(result.stderr.strip()), 0)

    def test_ends_with_3_for_the_time_out(self):
        self.assertEqual(self.runScript("setInterval(() => {}, 10);", "--timeout", "0.5").returncode, 3)

    def test_help_and_version(self):
        for option, word in (("--help", "--snapshot"), ("--version", "0.1.0")):
            result = self.run_(option)
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertIn(word, result.stdout)

    # -- the script's world

    def test_several_scripts_share_one_world(self):
        first, second = self.script("var told = 'first';", "a.js"), self.script("console.log(told, 'second');", "b.js")
        self.assertEqual(self.run_(first, second).stdout, "first second\n")

    def test_arguments_and_files(self):
        script = self.script("console.log(arguments.length, arguments[0], readFile(arguments[1]));")
        note = self.script("a note", "note.txt")
        self.assertEqual(self.run_(script, "--", "one", note).stdout, "2 one a note\n")

    def test_a_missing_media_library_or_plugin_is_one_clear_line(self):
        for option in ("--media-library", "--plugin"):
            result = self.run_(option, self.path("none.so"), self.script("document.createElement('object');"))
            self.assertNotEqual(result.returncode, 0)
            self.assertIn("none.so", result.stderr)

    # -- what it records

    def test_trace_is_one_object_a_line_in_order_of_time(self):
        trace = self.path("trace.jsonl")
        result = self.runScript(PLAY % ("video/mp4", 100, self.base + "short/two.mp4"), "--trace", trace)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        with open(trace, encoding="utf-8") as file:
            lines = [json.loads(line) for line in file]
        text = json.dumps(lines)
        for word in ("PLAY", "1.00", "INPUT", "BUFFER_READY", "onPlayStateChange", "READY_TO_PLAY"):
            self.assertIn(word, text)
        self.assertGreater(len(lines), 15)

    def test_snapshot_shows_the_video_plane(self):
        picture = self.path("frame.png")
        result = self.runScript(PLAY % ("video/mp4", 300, self.base + "short/two.mp4"), "--snapshot", picture)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        with open(picture, "rb") as file:
            width, height, rows, size = pngPixels(file.read())
        self.assertEqual((width, height), (1280, 720))
        colours = {bytes(row[x:x + 3]) for row in rows[::36] for x in range(0, width * size, size * 40)}
        self.assertGreater(len(colours), 20, "the picture is almost of one colour")

    def test_a_recording_that_is_not_whole_is_told(self):
        recording = self.path("full.wav")
        os.symlink("/dev/full", recording)
        result = self.runScript(PLAY % ("video/mp4", 300, self.base + "short/two.mp4"), "--record-audio", recording)
        self.assertEqual(result.stderr, "avc-run: the recording %s is not whole: No space left on device\n" % recording)
        self.assertEqual(result.returncode, 1)

    def test_address_without_a_host_is_one_error(self):
        for kind in ("video/mp4", "application/dash+xml", "application/vnd.oipf.ContentAccessStreaming+xml"):
            result = self.runScript(PLAY % (kind, 0, "http:///two.mp4"))
            self.assertEqual(result.returncode, 9, kind)
            self.assertNotIn("CRITICAL", result.stderr, kind)

    # -- the examples

    def test_examples_say_how_they_are_used(self):
        for names in (("hello/hello.js",), ("rated/rated.js",), ("player/player.js", "player/tour.js"),
                      ("subtitles/subtitle_view.js", "subtitles/show.js")):
            result = self.run_("--timeout", "20", *(os.path.join(OPTIONS.examples, *name.split("/")) for name in names))
            self.assertEqual((result.returncode, result.stdout), (2, ""), names)
            usage = "usage: avc-run .*examples/%s -- http://.*\n" % names[-1]
            self.assertTrue(re.fullmatch(usage, result.stderr), result.stderr)

    def test_hello_plays_to_the_end(self):
        hello = os.path.join(OPTIONS.examples, "hello", "hello.js")
        result = self.run_("--timeout", "30", hello, "--", self.base + "short/two.mp4")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        states = [line.split()[1] for line in result.stdout.splitlines()]
        self.assertEqual([state for state in states if state != "7"], ["3", "4", "1", "5"])

    def test_hello_says_when_it_cannot(self):
        hello = os.path.join(OPTIONS.examples, "hello", "hello.js")
        result = self.run_("--timeout", "30", hello, "--", self.base + "none.mp4")
        self.assertEqual(result.returncode, 1)
        self.assertIn("playState 6", result.stdout)

    def test_subtitles_are_read(self):
        folder = os.path.join(OPTIONS.examples, "subtitles")
        scripts = [os.path.join(folder, "node_modules", "imsc", "dist", "imsc.all.min.js"), os.path.join(folder, "subtitle_view.js"),
                   os.path.join(folder, "show.js")]
        for path, kind, text in (("short/dash/text.mpd", "application/dash+xml", "deu %d000 / zw\u00f6lf \u2713"),
                                 ("short/hls/text.m3u8", "application/vnd.apple.mpegurl", "deu %d & more / second line")):
            result = self.run_("--timeout", "30", *scripts, "--", self.base + path, kind, "deu")
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
            for second in range(1, 4):
                self.assertIn((text % second).replace(" 0000 ", " 0 "), result.stdout)
        result = self.run_("--timeout", "30", *scripts, "--", self.base + "short/dash/text.mpd", "application/dash+xml", "spa")
        self.assertEqual(result.returncode, 1)
        self.assertIn("there are no subtitles in spa", result.stdout)

    def test_the_player_goes_its_tour(self):
        scripts = [os.path.join(OPTIONS.examples, "player", name) for name in ("player.js", "tour.js")]
        result = self.run_("--timeout", "60", *scripts, "--", self.base + "two.mp4", "video/mp4")
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        for word in ("connecting", "buffering", "playing", "paused", "speed 2", "speed -2", "finished", "stopped"):
            self.assertIn(word, result.stdout)

    def runRated(self, path, *arguments):
        return self.run_("--timeout", "30", "--parental-limit", "12", os.path.join(OPTIONS.examples, "rated", "rated.js"), "--",
                         self.base + path, *arguments)

    def test_rated_content_is_unlocked_and_plays(self):
        result = self.runRated("rights/rated-16.cas", "application/vnd.oipf.ContentAccessStreaming+xml", "16")
        self.assertEqual(result.returncode, 0, result.stdout)
        rated = [line for line in result.stdout.splitlines() if not line.startswith("playState")]
        self.assertEqual(rated, ["rated 16 (dvb-si, DE) - blocked", "unlocked up to 16", "rated 16 (dvb-si, DE) - allowed"])
        self.assertEqual(result.stdout.splitlines()[-1], "playState 5")

    def test_rated_content_stays_blocked(self):
        result = self.runRated("rights/rated-16.cas")
        self.assertEqual(result.returncode, 1)
        self.assertNotIn("playState 1", result.stdout)

    def test_content_without_rights_names_them(self):
        result = self.runRated("rights/foreign-rights.cas")
        self.assertEqual(result.returncode, 1)
        self.assertIn("no rights to cid:7 of urn:dvb:casystemid:19219 http://issuer.example/rights?id=7", result.stdout)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *UNITTEST_ARGUMENTS])
